<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>hdeapp::FileOperations</name>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>&quot;%1&quot; already exists</source>
        <translation>“%1”已存在</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;</source>
        <translation>无法创建文件夹“%1”</translation>
    </message>
    <message>
        <source>Cannot create the folder</source>
        <translation>无法创建文件夹</translation>
    </message>
    <message>
        <source>New Document</source>
        <translation>新建文档</translation>
    </message>
    <message>
        <source>cannot create &quot;%1&quot;: %2</source>
        <translation>无法创建“%1”：%2</translation>
    </message>
    <message>
        <source>Cannot create the file</source>
        <translation>无法创建文件</translation>
    </message>
    <message>
        <source>cannot create the link &quot;%1&quot;</source>
        <translation>无法创建链接“%1”</translation>
    </message>
    <message>
        <source>Cannot create the link</source>
        <translation>无法创建链接</translation>
    </message>
    <message>
        <source>Cannot change the permissions</source>
        <translation>无法修改权限</translation>
    </message>
    <message>
        <source>Cannot move the files</source>
        <translation>无法移动文件</translation>
    </message>
    <message>
        <source>Cannot copy the files</source>
        <translation>无法复制文件</translation>
    </message>
    <message>
        <source>no target folder</source>
        <translation>没有目标文件夹</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not exist</source>
        <translation>“%1”不存在</translation>
    </message>
    <message>
        <source>the name is unchanged</source>
        <translation>名称未更改</translation>
    </message>
    <message>
        <source>cannot rename &quot;%1&quot;: %2</source>
        <translation>无法重命名“%1”：%2</translation>
    </message>
    <message>
        <source>Cannot rename</source>
        <translation>无法重命名</translation>
    </message>
    <message>
        <source>Cannot move to the trash</source>
        <translation>无法移到回收站</translation>
    </message>
    <message>
        <source>Cannot delete</source>
        <translation>无法删除</translation>
    </message>
    <message>
        <source>nothing to remove</source>
        <translation>没有可删除的内容</translation>
    </message>
    <message>
        <source>Cannot restore</source>
        <translation>无法还原</translation>
    </message>
    <message>
        <source>nothing to restore</source>
        <translation>没有可还原的项目</translation>
    </message>
    <message>
        <source>Cannot hide the files</source>
        <translation>无法隐藏文件</translation>
    </message>
</context>
<context>
    <name>hfmbase::FileInfo</name>
    <message>
        <source>Folder is empty</source>
        <translation>文件夹为空</translation>
    </message>
    <message>
        <source>Loading...</source>
        <translation>正在加载…</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::ComputerItemWatcher</name>
    <message>
        <source>My Directories</source>
        <translation>我的目录</translation>
    </message>
    <message>
        <source>Disks</source>
        <translation>磁盘</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::ComputerPlugin</name>
    <message>
        <source>Computer</source>
        <translation>计算机</translation>
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
        <translation>系统盘</translation>
    </message>
</context>
<context>
    <name>hfmplugin_computer::UserDirEntity</name>
    <message>
        <source>Home</source>
        <translation>主目录</translation>
    </message>
</context>
<context>
    <name>hfmplugin_menu::ComputerMenuScene</name>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>在新窗口打开</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>在新标签页打开</translation>
    </message>
</context>
<context>
    <name>hfmplugin_menu::WorkspaceMenuScene</name>
    <message>
        <source>New folder</source>
        <translation>新建文件夹</translation>
    </message>
    <message>
        <source>New document</source>
        <translation>新建文档</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>粘贴</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Open in new window</source>
        <translation>在新窗口打开</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>在新标签页打开</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>复制</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>剪切</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>重命名</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>移到回收站</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Delete permanently?</source>
        <translation>永久删除？</translation>
    </message>
    <message>
        <source>&quot;%1&quot; will be deleted and cannot be restored.</source>
        <translation>“%1”将被删除，且无法恢复。</translation>
    </message>
    <message>
        <source>%1 items will be deleted and cannot be restored.</source>
        <translation>%1 个项目将被删除，且无法恢复。</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>新建文件夹</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarPlugin</name>
    <message>
        <source>Home</source>
        <translation>主目录</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>计算机</translation>
    </message>
    <message>
        <source>System Disk</source>
        <translation>系统盘</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarStore</name>
    <message>
        <source>Places</source>
        <translation>位置</translation>
    </message>
    <message>
        <source>Devices</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>Network</source>
        <translation>网络</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>标记</translation>
    </message>
</context>
<context>
    <name>hfmplugin_sidebar::SidebarWidget</name>
    <message>
        <source>Open in new window</source>
        <translation>在新窗口打开</translation>
    </message>
    <message>
        <source>Open in new tab</source>
        <translation>在新标签页打开</translation>
    </message>
</context>
<context>
    <name>hfmplugin_titlebar::TitleBarWidget</name>
    <message>
        <source>Back</source>
        <translation>后退</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>前进</translation>
    </message>
    <message>
        <source>Icon view</source>
        <translation>图标视图</translation>
    </message>
    <message>
        <source>List view</source>
        <translation>列表视图</translation>
    </message>
    <message>
        <source>Show details</source>
        <translation>显示详细信息</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::DetailPane</name>
    <message>
        <source>Type</source>
        <translation>类型</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>修改时间</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>位置</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>1 item</source>
        <translation>1 项</translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation>%1 项</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::FileModel</name>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Time modified</source>
        <translation>修改时间</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>类型</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::FileView</name>
    <message>
        <source>Loading...</source>
        <translation>正在加载…</translation>
    </message>
    <message>
        <source>Cannot show this folder: %1</source>
        <translation>无法显示此文件夹：%1</translation>
    </message>
    <message>
        <source>Folder is empty</source>
        <translation>文件夹为空</translation>
    </message>
</context>
<context>
    <name>hfmplugin_workspace::WorkspaceWidget</name>
    <message>
        <source>1 item</source>
        <translation>1 项</translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation>%1 项</translation>
    </message>
    <message>
        <source>%1, %2 selected</source>
        <translation>%1，已选择 %2 项</translation>
    </message>
    <message>
        <source>%1 (loading)</source>
        <translation>%1（正在加载）</translation>
    </message>
</context>
</TS>
