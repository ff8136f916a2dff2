// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDevice>
#include <QMetaType>

namespace hfmbase {

// Numbers of the host's global events (hpf::EventDispatcherManager). The
// comment gives each event's argument list.
enum GlobalEventType {
    kUnknownEvent = 0,
    kChangeCurrentUrl = 1,   // quint64 windowId, QUrl
    kOpenNewWindow = 2,   // QUrl  |  QUrl, bool isNewWindow
    kOpenNewTab = 3,   // quint64 windowId, QUrl
    kOpenAsAdmin = 7,   // QUrl
    kOpenFiles = 200,   // quint64 windowId, QList<QUrl>
    kOpenFilesByApp = 201,   // quint64 windowId, QList<QUrl>, QStringList apps
    kMkdir = 204,   // quint64 windowId, QUrl, QVariant custom, OperatorCallback
    kTouchFile = 205,   // quint64 windowId, QUrl dir, uint fileType | QUrl template, QString suffix, QVariant custom,
                        // OperatorCallback
    kCreateSymlink = 206,   // quint64 windowId, QUrl source, QUrl link, bool force, bool silence
    kSetPermission = 207,   // quint64 windowId, QUrl, QFileDevice::Permissions
    kCopy = 208,   // quint64 windowId, QList<QUrl>, QUrl target, JobFlags, OperatorHandleCallback
    kRenameFile = 209,   // quint64 windowId, QUrl from, QUrl to
    kDeleteFiles = 210,   // quint64 windowId, QList<QUrl>, JobFlags, OperatorHandleCallback
    kMoveToTrash = 211,   // quint64 windowId, QList<QUrl>, JobFlags, OperatorHandleCallback
    kWriteUrlsToClipboard = 213,   // quint64 windowId, ClipBoard::Action (uchar), QList<QUrl>
    kCutFile = 214,   // quint64 windowId, QList<QUrl>, QUrl target, JobFlags, OperatorHandleCallback
    kOpenInTerminal = 215,   // quint64 windowId, QList<QUrl>
    kPasteFiles = 216,   // quint64 windowId, QUrl target
    kHideFiles = 218,   // quint64 windowId, QList<QUrl>
    kRenameFileResult = 1002,   // quint64 windowId, QMap<QUrl, QUrl>, bool ok, QString error
    kCopyResult = 1007,   // QList<QUrl> sources, QList<QUrl> targets, bool ok, QString error
    kCutFileResult = 1011,   // QList<QUrl> sources, QList<QUrl> targets, bool ok, QString error
    kMkdirResult = 1012,   // quint64 windowId, QList<QUrl>, bool ok, QString error
    kTouchFileResult = 1013,   // quint64 windowId, QList<QUrl>, bool ok, QString error
    kDeleteFilesResult = 1014,   // quint64 windowId, QList<QUrl>, bool ok, QString error
    kMoveToTrashResult = 1015,   // quint64 windowId, QList<QUrl>, bool ok, QString error
    kOpenFilesResult = 1016,   // quint64 windowId, QList<QUrl>, bool ok
};

namespace ClipBoard {
enum Action : unsigned char { kCopyAction = 0, kCutAction = 1, kRemoteAction = 2, kUnknownAction = 255 };
}

}   // namespace hfmbase

// The permission flags of event 207 travel in QVariants under this one name.
Q_DECLARE_METATYPE(QFileDevice::Permissions)
