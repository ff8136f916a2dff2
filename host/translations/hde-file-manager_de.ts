<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>hdeapp::FileOperations</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>&quot;%1&quot; already exists</source>
        <translation>„%1“ ist bereits vorhanden</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;</source>
        <translation>Der Ordner „%1“ kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Cannot create the folder</source>
        <translation>Ordner kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>New Document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>cannot create &quot;%1&quot;: %2</source>
        <translation>„%1“ kann nicht erstellt werden: %2</translation>
    </message>
    <message>
        <source>Cannot create the file</source>
        <translation>Datei kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>cannot create the link &quot;%1&quot;</source>
        <translation>Die Verknüpfung „%1“ kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Cannot create the link</source>
        <translation>Verknüpfung kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Cannot change the permissions</source>
        <translation>Berechtigungen können nicht geändert werden</translation>
    </message>
    <message>
        <source>Cannot move the files</source>
        <translation>Dateien können nicht verschoben werden</translation>
    </message>
    <message>
        <source>Cannot copy the files</source>
        <translation>Dateien können nicht kopiert werden</translation>
    </message>
    <message>
        <source>no target folder</source>
        <translation>kein Zielordner</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not exist</source>
        <translation>„%1“ ist nicht vorhanden</translation>
    </message>
    <message>
        <source>the name is unchanged</source>
        <translation>der Name ist unverändert</translation>
    </message>
    <message>
        <source>cannot rename &quot;%1&quot;: %2</source>
        <translation>„%1“ kann nicht umbenannt werden: %2</translation>
    </message>
    <message>
        <source>Cannot rename</source>
        <translation>Umbenennen nicht möglich</translation>
    </message>
    <message>
        <source>Cannot move to the trash</source>
        <translation>Verschieben in den Papierkorb nicht möglich</translation>
    </message>
    <message>
        <source>Cannot delete</source>
        <translation>Löschen nicht möglich</translation>
    </message>
    <message>
        <source>nothing to remove</source>
        <translation>nichts zu entfernen</translation>
    </message>
    <message>
        <source>Cannot restore</source>
        <translation>Wiederherstellen nicht möglich</translation>
    </message>
    <message>
        <source>nothing to restore</source>
        <translation>nichts wiederherzustellen</translation>
    </message>
    <message>
        <source>Cannot hide the files</source>
        <translation>Dateien können nicht ausgeblendet werden</translation>
    </message>
</context>
<context>
    <name>hfmbase::FileInfo</name>
    <message>
        <source>Folder is empty</source>
        <translation>Der Ordner ist leer</translation>
    </message>
    <message>
        <source>Loading...</source>
        <translation>Wird geladen …</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::ComputerItemWatcher</name>
    <message>
        <source>My Directories</source>
        <translation>Meine Ordner</translation>
    </message>
    <message>
        <source>Disks</source>
        <translation>Laufwerke</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::ComputerPlugin</name>
    <message>
        <source>Computer</source>
        <translation>Computer</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::EntryTile</name>
    <message>
        <source>%1 / %2</source>
        <translation>%1 / %2</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::LocalDiskEntity</name>
    <message>
        <source>System Disk</source>
        <translation>Systemlaufwerk</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::UserDirEntity</name>
    <message>
        <source>Home</source>
        <translation>Persönlicher Ordner</translation>
    </message>
</context>
<context>
    <name>hfmplugin_menu::ComputerMenuScene</name>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>In neuem Fenster öffnen</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>In neuem Tab öffnen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_menu::WorkspaceMenuScene</name>
    <message>
        <source>New folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>New document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>In neuem Fenster öffnen</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>In neuem Tab öffnen</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete permanently?</source>
        <translation>Endgültig löschen?</translation>
    </message>
    <message>
        <source>&quot;%1&quot; will be deleted and cannot be restored.</source>
        <translation>„%1“ wird gelöscht und kann nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>%1 items will be deleted and cannot be restored.</source>
        <translation>%1 Objekte werden gelöscht und können nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarPlugin</name>
    <message>
        <source>Home</source>
        <translation>Persönlicher Ordner</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>Computer</translation>
    </message>
    <message>
        <source>System Disk</source>
        <translation>Systemlaufwerk</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarStore</name>
    <message>
        <source>Places</source>
        <translation>Orte</translation>
    </message>
    <message>
        <source>Devices</source>
        <translation>Geräte</translation>
    </message>
    <message>
        <source>Network</source>
        <translation>Netzwerk</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Markierungen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarWidget</name>
    <message>
        <source>Open in new window</source>
        <translation>In neuem Fenster öffnen</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>In neuem Tab öffnen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_titlebar::TitleBarWidget</name>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Vor</translation>
    </message>
    <message>
        <source>Icon view</source>
        <translation>Symbolansicht</translation>
    </message>
    <message>
        <source>List view</source>
        <translation>Listenansicht</translation>
    </message>
    <message>
        <source>Show details</source>
        <translation>Details anzeigen</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::DetailPane</name>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>1 item</source>
        <translation>1 Objekt</translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation>%1 Objekte</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::FileModel</name>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Time modified</source>
        <translation>Änderungszeit</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::FileView</name>
    <message>
        <source>Loading...</source>
        <translation>Wird geladen …</translation>
    </message>
    <message>
        <source>Cannot show this folder: %1</source>
        <translation>Dieser Ordner kann nicht angezeigt werden: %1</translation>
    </message>
    <message>
        <source>Folder is empty</source>
        <translation>Der Ordner ist leer</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::WorkspaceWidget</name>
    <message>
        <source>1 item</source>
        <translation>1 Objekt</translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation>%1 Objekte</translation>
    </message>
    <message>
        <source>%1, %2 selected</source>
        <translation>%1, %2 ausgewählt</translation>
    </message>
    <message>
        <source>%1 (loading)</source>
        <translation>%1 (wird geladen)</translation>
    </message>
</context>
</TS>
