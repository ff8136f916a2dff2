// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/fileinfo.h>

#include <QFlags>

#include <functional>

namespace hfmbase {

// Creates file infos by URL scheme. The host's own info serves "file".
// Thread-safe: infos may be created on any thread.
class HFMBASE_EXPORT InfoFactory
{
public:
    enum class RegOption {
        kNoOption = 0x0,
        kNoCache = 0x1,   // never keep instances of this scheme in the info cache
    };
    Q_DECLARE_FLAGS(RegOptions, RegOption)

    enum class CreateType {
        kCreateDefault = 0,
        kCreateNoCache = 1,
    };

    using Creator = std::function<FileInfoPointer(const QUrl &url)>;

    template <class T>
    static bool regClass(
        const QString &scheme, RegOptions options = RegOption::kNoOption, QString *errorString = nullptr)
    {
        return regCreator(
            scheme, [](const QUrl &url) { return FileInfoPointer(new T(url)); }, options, errorString);
    }
    template <class T = FileInfo>
    static QSharedPointer<T> create(
        const QUrl &url, CreateType type = CreateType::kCreateDefault, QString *errorString = nullptr)
    {
        return qSharedPointerDynamicCast<T>(createInfo(url, type, errorString));
    }

    // Refuses a second creator for the same scheme with a warning.
    static bool regCreator(const QString &scheme, Creator creator, RegOptions options, QString *errorString);
    // Null, with errorString, for an unknown scheme.
    static FileInfoPointer createInfo(const QUrl &url, CreateType type, QString *errorString);
    static bool isRegistered(const QString &scheme);
};

// Keeps created infos per URL unless caching is off for the scheme.
class HFMBASE_EXPORT InfoCache
{
public:
    static InfoCache &instance();

    void setCacheDisbale(const QString &scheme, bool disable = true);
    bool cacheDisable(const QString &scheme) const;
    FileInfoPointer getCacheInfo(const QUrl &url) const;
    void cacheInfo(const QUrl &url, const FileInfoPointer &info);
    // Replaces the kept info of `url` with a fresher one; false (and nothing
    // kept) when the cache held none.
    bool updateCacheInfo(const QUrl &url, const FileInfoPointer &info);
    void removeCacheInfo(const QUrl &url);
    void clear();

private:
    InfoCache();
    ~InfoCache();
    struct Private;
    Private *d;
};

}   // namespace hfmbase

Q_DECLARE_OPERATORS_FOR_FLAGS(hfmbase::InfoFactory::RegOptions)
