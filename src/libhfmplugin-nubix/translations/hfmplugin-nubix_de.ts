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
    <name>hfmplugin_nubix::NubixPlugin</name>
    <message>
        <source>Kelo Drive</source>
        <translation>Kelo Drive</translation>
    </message>
</context>
</TS>
