<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>QObject</name>
    <message>
        <source>Welcome to upload frequently used files</source>
        <translation>Willkommen! Legen Sie hier Ihre häufig verwendeten Dateien ab</translation>
    </message>
    <message>
        <source>Drag and drop or copy the files you want to synchronize here.
Your files will be synchronized across multiple devices.</source>
        <translation>Ziehen oder kopieren Sie die Dateien, die synchronisiert werden sollen, hierher.
Ihre Dateien werden auf allen Ihren Geräten synchronisiert.</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::ComputerItemWatcher</name>
    <message>
        <source>Disks</source>
        <translation>Laufwerke</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::EventsHandler</name>
    <message>
        <source>Kelo Drive</source>
        <translation>Kelo Drive</translation>
    </message>
    <message>
        <source>Open failed</source>
        <translation>Öffnen fehlgeschlagen</translation>
    </message>
    <message>
        <source>The file has not finished synchronization, please keep the Kelo Drive running normally and open it after the synchronization is completed.</source>
        <translation>Die Datei ist noch nicht vollständig synchronisiert. Bitte lassen Sie Kelo Drive weiterlaufen und öffnen Sie die Datei, sobald die Synchronisierung abgeschlossen ist.</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixEntryEntity</name>
    <message>
        <source>Kelo Drive</source>
        <translation>Kelo Drive</translation>
    </message>
    <message>
        <source>Used space %1</source>
        <translation>Belegt: %1</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixEntryMenuScene</name>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>In neuem Fenster öffnen</translation>
    </message>
    <message>
        <source>Open main panel</source>
        <translation>Hauptfenster öffnen</translation>
    </message>
    <message>
        <source>Sync detail</source>
        <translation>Synchronisierungsdetails</translation>
    </message>
    <message>
        <source>Cloud recycle bin</source>
        <translation>Cloud-Papierkorb</translation>
    </message>
    <message>
        <source>Resume sync</source>
        <translation>Synchronisierung fortsetzen</translation>
    </message>
    <message>
        <source>Pause sync</source>
        <translation>Synchronisierung pausieren</translation>
    </message>
    <message>
        <source>Upgrade enterprise</source>
        <translation>Auf Enterprise upgraden</translation>
    </message>
    <message>
        <source>Kelo Drive Settings</source>
        <translation>Kelo Drive-Einstellungen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixLoginWidget</name>
    <message>
        <source>Kelo Drive</source>
        <translation>Kelo Drive</translation>
    </message>
    <message>
        <source>Automatic Synchronization</source>
        <translation>Automatische Synchronisierung</translation>
    </message>
    <message>
        <source>Automatic detection of cloud updates
Bi-directional local cloud synchronization</source>
        <translation>Änderungen in der Cloud werden automatisch erkannt
Abgleich in beide Richtungen zwischen Computer und Cloud</translation>
    </message>
    <message>
        <source>Cross-platform Collaboration</source>
        <translation>Plattformübergreifend zusammenarbeiten</translation>
    </message>
    <message>
        <source>Kelo ID Unified Login
Multi-Device Collaboration</source>
        <translation>Eine Anmeldung mit Ihrer Kelo ID
Zusammenarbeit auf allen Geräten</translation>
    </message>
    <message>
        <source>Secure Backup</source>
        <translation>Sichere Datensicherung</translation>
    </message>
    <message>
        <source>Easy to retrieve accidentally deleted documents
Always protect the security of documents</source>
        <translation>Versehentlich gelöschte Dokumente einfach wiederherstellen
Ihre Dokumente sind jederzeit geschützt</translation>
    </message>
    <message>
        <source>Open Kelo Drive</source>
        <translation>Kelo Drive öffnen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixPlugin</name>
    <message>
        <source>Kelo Drive</source>
        <translation>Kelo Drive</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixTitleWidget</name>
    <message>
        <source>The current synchronization has been paused, click &lt;a href=&quot;%1&quot;&gt;Continue Synchronization &lt;/a&gt;to keep the synchronization status</source>
        <translation>Die Synchronisierung ist angehalten. Klicken Sie auf &lt;a href=&quot;%1&quot;&gt;Fortsetzen&lt;/a&gt;, um weiter abzugleichen</translation>
    </message>
    <message>
        <source>Insufficient local disk space, some files cannot be synchronized</source>
        <translation>Zu wenig lokaler Speicherplatz, einige Dateien können nicht synchronisiert werden</translation>
    </message>
    <message>
        <source>Insufficient cloud disk space</source>
        <translation>Zu wenig Cloud-Speicherplatz</translation>
    </message>
    <message>
        <source>Currently the network is not available, please check the network connection</source>
        <translation>Das Netzwerk ist derzeit nicht verfügbar. Bitte überprüfen Sie die Netzwerkverbindung</translation>
    </message>
    <message>
        <source>The flow rate has been exhausted</source>
        <translation>Das Datenvolumen ist aufgebraucht</translation>
    </message>
    <message>
        <source>File synchronization has been suspended, please &lt;a href=&quot;%1&quot;&gt;start the Kelo Drive client &lt;/a&gt;first</source>
        <translation>Die Dateisynchronisierung ist unterbrochen. Bitte &lt;a href=&quot;%1&quot;&gt;starten Sie zuerst den Kelo Drive-Client&lt;/a&gt;</translation>
    </message>
    <message>
        <source>%1 completed, %2 remaining, %3 anomalies. &lt;a href=&quot;%4&quot;&gt;View synchronization details&lt;/a&gt;</source>
        <translation>%1 abgeschlossen, %2 ausstehend, %3 Fehler. &lt;a href=&quot;%4&quot;&gt;Synchronisierungsdetails anzeigen&lt;/a&gt;</translation>
    </message>
    <message>
        <source>%1 completed, %2 remaining. &lt;a href=&quot;%3&quot;&gt;View synchronization details&lt;/a&gt;</source>
        <translation>%1 abgeschlossen, %2 ausstehend. &lt;a href=&quot;%3&quot;&gt;Synchronisierungsdetails anzeigen&lt;/a&gt;</translation>
    </message>
    <message>
        <source>Kelo Drive Synchronization %1 Exception, &lt;a href=&quot;%2&quot;&gt;view&lt;/a&gt;</source>
        <translation>Kelo Drive: %1 Fehler bei der Synchronisierung, &lt;a href=&quot;%2&quot;&gt;anzeigen&lt;/a&gt;</translation>
    </message>
    <message>
        <source>Files have been synchronized</source>
        <translation>Alle Dateien sind synchronisiert</translation>
    </message>
    <message>
        <source>Checking for updated synchronization files</source>
        <translation>Es wird nach geänderten Dateien gesucht</translation>
    </message>
</context>
</TS>
