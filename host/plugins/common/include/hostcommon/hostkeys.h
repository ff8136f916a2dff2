// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Names the host's plug-ins and the application agree on: event spaces,
// topics, property keys and the object names of the inspection interface.
namespace hdehost {

namespace Space {
inline const QString kWorkspace = QStringLiteral("hfmplugin_workspace");
inline const QString kComputer = QStringLiteral("hfmplugin_computer");
inline const QString kSidebar = QStringLiteral("hfmplugin_sidebar");
inline const QString kEmblem = QStringLiteral("hfmplugin_emblem");
inline const QString kTitlebar = QStringLiteral("hfmplugin_titlebar");
inline const QString kMenu = QStringLiteral("hfmplugin_menu");
}   // namespace Space

namespace Topic {
// Published for other plug-ins.
inline const QString kRegisterFileView = QStringLiteral("slot_RegisterFileView");
inline const QString kRegisterCustomTopWidget = QStringLiteral("slot_RegisterCustomTopWidget");
inline const QString kRegisterMenuScene = QStringLiteral("slot_RegisterMenuScene");
inline const QString kModelFileUpdate = QStringLiteral("slot_Model_FileUpdate");
inline const QString kRefreshDir = QStringLiteral("slot_RefreshDir");
inline const QString kTabSetTabName = QStringLiteral("hook_Tab_SetTabName");
inline const QString kComputerItemAdd = QStringLiteral("slot_Item_Add");
inline const QString kSidebarItemUpdate = QStringLiteral("slot_Item_Update");
inline const QString kSidebarItemRemove = QStringLiteral("slot_Item_Remove");
inline const QString kCustomEmblemsFetch = QStringLiteral("hook_CustomEmblems_Fetch");
inline const QString kTitlebarCustomRegister = QStringLiteral("slot_Custom_Register");
inline const QString kMenuRegisterScene = QStringLiteral("slot_MenuScene_RegisterScene");
inline const QString kMenuBind = QStringLiteral("slot_MenuScene_Bind");
inline const QString kMenuCreateScene = QStringLiteral("slot_MenuScene_CreateScene");

// Used only between the host's own plug-ins.
inline const QString kViewSetMode = QStringLiteral("slot_View_SetMode");   // quint64 windowId, int ViewMode
inline const QString kViewRenameItem = QStringLiteral("slot_View_RenameItem");   // quint64 windowId, QUrl
inline const QString kDetailSpaceShow = QStringLiteral("slot_DetailSpace_Show");   // quint64 windowId, bool
inline const QString kNavigateBack = QStringLiteral("slot_Navigate_Back");   // quint64 windowId
inline const QString kNavigateForward = QStringLiteral("slot_Navigate_Forward");   // quint64 windowId
inline const QString kEmblemPaint = QStringLiteral("slot_Emblem_Paint");   // QPainter *, QRect icon, QUrl
inline const QString kEmblemNames = QStringLiteral("slot_Emblem_Names");   // QUrl -> QStringList
}   // namespace Topic

namespace PropertyKey {
inline const QString kScheme = QStringLiteral("Property_Key_Scheme");
inline const QString kKeepShow = QStringLiteral("Property_Key_KeepShow");
inline const QString kCreateTopWidgetCallback = QStringLiteral("Property_Key_CreateTopWidgetCallback");
inline const QString kShowTopWidgetCallback = QStringLiteral("Property_Key_ShowTopWidgetCallback");
inline const QString kQtItemFlags = QStringLiteral("Property_Key_QtItemFlags");
inline const QString kDisplayName = QStringLiteral("Property_Key_DisplayName");
inline const QString kIcon = QStringLiteral("Property_Key_Icon");
inline const QString kCallbackContextMenu = QStringLiteral("Property_Key_CallbackContextMenu");
inline const QString kCallbackFindMe = QStringLiteral("Property_Key_CallbackFindMe");
inline const QString kHideIconViewBtn = QStringLiteral("Property_Key_HideIconViewBtn");
inline const QString kHideListViewBtn = QStringLiteral("Property_Key_HideListViewBtn");
inline const QString kHideTreeViewBtn = QStringLiteral("Property_Key_HideTreeViewBtn");
inline const QString kHideDetailSpaceBtn = QStringLiteral("Property_Key_HideDetailSpaceBtn");
}   // namespace PropertyKey

// Parameters of the host's menu scenes.
namespace MenuParam {
inline const QString kWindowId = QStringLiteral("windowId");
inline const QString kSelectFiles = QStringLiteral("selectFiles");
inline const QString kCurrentDir = QStringLiteral("currentDir");
}   // namespace MenuParam

namespace Scene {
inline const QString kComputerMenu = QStringLiteral("ComputerMenu");
inline const QString kWorkspaceMenu = QStringLiteral("WorkspaceMenu");
}   // namespace Scene

namespace ActionId {
inline const QString kOpen = QStringLiteral("open");
inline const QString kOpenInNewWindow = QStringLiteral("open-in-new-window");
inline const QString kOpenInNewTab = QStringLiteral("open-in-new-tab");
inline const QString kCopy = QStringLiteral("copy");
inline const QString kCut = QStringLiteral("cut");
inline const QString kPaste = QStringLiteral("paste");
inline const QString kRename = QStringLiteral("rename");
inline const QString kDelete = QStringLiteral("delete");
inline const QString kMoveToTrash = QStringLiteral("move-to-trash");
inline const QString kNewFolder = QStringLiteral("new-folder");
inline const QString kNewDocument = QStringLiteral("new-document");
}   // namespace ActionId

enum class ViewMode { kIcon = 1, kList = 2 };

// The inspection interface: every host plug-in parents one QObject with
// these names to the application object. Its Q_INVOKABLE methods report the
// plug-in's state and act as a user would; the automation mode uses them.
namespace Inspector {
inline const QString kWorkspace = QStringLiteral("hde.inspect.workspace");
inline const QString kSidebar = QStringLiteral("hde.inspect.sidebar");
inline const QString kComputer = QStringLiteral("hde.inspect.computer");
inline const QString kTitlebar = QStringLiteral("hde.inspect.titlebar");
inline const QString kMenu = QStringLiteral("hde.inspect.menu");
}   // namespace Inspector

}   // namespace hdehost
