<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>QObject</name>
    <message>
        <source>Welcome to upload frequently used files</source>
        <translation>欢迎上传常用文件</translation>
    </message>
    <message>
        <source>Drag and drop or copy the files you want to synchronize here.
Your files will be synchronized across multiple devices.</source>
        <translation>将需要同步的文件拖放或复制到此处。
您的文件将在多台设备间保持同步。</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>确定</translation>
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
