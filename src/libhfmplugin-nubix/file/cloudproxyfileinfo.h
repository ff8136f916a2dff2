// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/fileinfo.h>

#include <QTime>

namespace hfmplugin_nubix {

// The host's info for a "nubix" URL: wraps the host's info of the local file
// behind it and answers with cloud URLs, offers the local file as the
// redirection target and has its own empty-folder tip. Made by the host's
// info factory on any thread; used by one thread at a time; never blocks
// beyond the local file system.
class CloudProxyFileInfo : public hfmbase::ProxyFileInfo
{
public:
    explicit CloudProxyFileInfo(const QUrl &url);
    ~CloudProxyFileInfo() override;

    QUrl fileUrl() const override;
    QUrl urlOf(FileUrlInfoType type) const override;
    bool canAttributes(FileCanType type) const override;
    QString viewOfTip(ViewType type) const override;

    // Where the empty-folder tip reads the time; nullptr restores the wall
    // clock. Meant for tests; safe to call while infos are in use.
    using Clock = QTime (*)();
    static void setClock(Clock clock);
};

}   // namespace hfmplugin_nubix
