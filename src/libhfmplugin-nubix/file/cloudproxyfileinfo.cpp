// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudproxyfileinfo.h"

#include "utils/nubixutils.h"

#include <hfmbase/infofactory.h>

#include <QObject>

#include <atomic>

namespace hfmplugin_nubix {

namespace {
std::atomic<CloudProxyFileInfo::Clock> g_clock {nullptr};

QTime now()
{
    const CloudProxyFileInfo::Clock clock = g_clock.load(std::memory_order_acquire);
    return clock ? clock() : QTime::currentTime();
}
}   // namespace

CloudProxyFileInfo::CloudProxyFileInfo(const QUrl &url) : ProxyFileInfo(url)
{
    setProxy(hfmbase::InfoFactory::create<hfmbase::FileInfo>(NubixUtils::cloudToLocal(url)));
}

CloudProxyFileInfo::~CloudProxyFileInfo() = default;

QUrl CloudProxyFileInfo::fileUrl() const
{
    return url;
}

QUrl CloudProxyFileInfo::urlOf(FileUrlInfoType type) const
{
    if (type == FileUrlInfoType::kRedirectedFileUrl)
        return NubixUtils::cloudToLocal(url);
    // Parent, link target and the rest: whatever the local file says, in cloud form.
    return NubixUtils::localToCloud(ProxyFileInfo::urlOf(type));
}

bool CloudProxyFileInfo::canAttributes(FileCanType type) const
{
    if (type == FileCanType::kCanRedirectionFileUrl)
        return true;
    return ProxyFileInfo::canAttributes(type);
}

QString CloudProxyFileInfo::viewOfTip(ViewType type) const
{
    if (type != ViewType::kEmptyDir)
        return ProxyFileInfo::viewOfTip(type);
    // The two texts take turns by the clock's minute; nothing is remembered.
    if (now().minute() % 2 != 0)
        return QObject::tr("Welcome to upload frequently used files");
    return QObject::tr("Drag and drop or copy the files you want to synchronize here.\n"
                       "Your files will be synchronized across multiple devices.");
}

void CloudProxyFileInfo::setClock(Clock clock)
{
    g_clock.store(clock, std::memory_order_release);
}

}   // namespace hfmplugin_nubix
