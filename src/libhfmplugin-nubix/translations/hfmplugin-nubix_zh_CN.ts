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
    <name>hfmplugin_computer::ComputerItemWatcher</name>
    <message>
        <source>Disks</source>
        <translation>磁盘</translation>
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
        <translation>打开失败</translation>
    </message>
    <message>
        <source>The file has not finished synchronization, please keep the Kelo Drive running normally and open it after the synchronization is completed.</source>
        <translation>文件尚未完成同步，请保持 Kelo Drive 正常运行，待同步完成后再打开。</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>确定</translation>
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
        <translation>已用空间 %1</translation>
    </message>
</context>
<context>
    <name>hfmplugin_nubix::NubixEntryMenuScene</name>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>在新窗口打开</translation>
    </message>
    <message>
        <source>Open main panel</source>
        <translation>打开主面板</translation>
    </message>
    <message>
        <source>Sync detail</source>
        <translation>同步详情</translation>
    </message>
    <message>
        <source>Cloud recycle bin</source>
        <translation>云端回收站</translation>
    </message>
    <message>
        <source>Resume sync</source>
        <translation>继续同步</translation>
    </message>
    <message>
        <source>Pause sync</source>
        <translation>暂停同步</translation>
    </message>
    <message>
        <source>Upgrade enterprise</source>
        <translation>升级企业版</translation>
    </message>
    <message>
        <source>Kelo Drive Settings</source>
        <translation>Kelo Drive 设置</translation>
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
        <translation>自动同步</translation>
    </message>
    <message>
        <source>Automatic detection of cloud updates
Bi-directional local cloud synchronization</source>
        <translation>自动检测云端更新
本地与云端双向同步</translation>
    </message>
    <message>
        <source>Cross-platform Collaboration</source>
        <translation>跨平台协作</translation>
    </message>
    <message>
        <source>Kelo ID Unified Login
Multi-Device Collaboration</source>
        <translation>Kelo ID 统一登录
多设备协同办公</translation>
    </message>
    <message>
        <source>Secure Backup</source>
        <translation>安全备份</translation>
    </message>
    <message>
        <source>Easy to retrieve accidentally deleted documents
Always protect the security of documents</source>
        <translation>误删文档轻松找回
时刻守护文档安全</translation>
    </message>
    <message>
        <source>Open Kelo Drive</source>
        <translation>打开 Kelo Drive</translation>
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
        <translation>当前同步已暂停，点击&lt;a href=&quot;%1&quot;&gt;继续同步&lt;/a&gt;以保持同步状态</translation>
    </message>
    <message>
        <source>Insufficient local disk space, some files cannot be synchronized</source>
        <translation>本地磁盘空间不足，部分文件无法同步</translation>
    </message>
    <message>
        <source>Insufficient cloud disk space</source>
        <translation>云盘空间不足</translation>
    </message>
    <message>
        <source>Currently the network is not available, please check the network connection</source>
        <translation>当前网络不可用，请检查网络连接</translation>
    </message>
    <message>
        <source>The flow rate has been exhausted</source>
        <translation>流量已用尽</translation>
    </message>
    <message>
        <source>File synchronization has been suspended, please &lt;a href=&quot;%1&quot;&gt;start the Kelo Drive client &lt;/a&gt;first</source>
        <translation>文件同步已暂停，请先&lt;a href=&quot;%1&quot;&gt;启动 Kelo Drive 客户端&lt;/a&gt;</translation>
    </message>
    <message>
        <source>%1 completed, %2 remaining, %3 anomalies. &lt;a href=&quot;%4&quot;&gt;View synchronization details&lt;/a&gt;</source>
        <translation>已完成 %1 个，剩余 %2 个，异常 %3 个。&lt;a href=&quot;%4&quot;&gt;查看同步详情&lt;/a&gt;</translation>
    </message>
    <message>
        <source>%1 completed, %2 remaining. &lt;a href=&quot;%3&quot;&gt;View synchronization details&lt;/a&gt;</source>
        <translation>已完成 %1 个，剩余 %2 个。&lt;a href=&quot;%3&quot;&gt;查看同步详情&lt;/a&gt;</translation>
    </message>
    <message>
        <source>Kelo Drive Synchronization %1 Exception, &lt;a href=&quot;%2&quot;&gt;view&lt;/a&gt;</source>
        <translation>Kelo Drive 同步异常 %1 个，&lt;a href=&quot;%2&quot;&gt;查看&lt;/a&gt;</translation>
    </message>
    <message>
        <source>Files have been synchronized</source>
        <translation>文件已全部同步</translation>
    </message>
    <message>
        <source>Checking for updated synchronization files</source>
        <translation>正在检查待同步的文件</translation>
    </message>
</context>
</TS>
