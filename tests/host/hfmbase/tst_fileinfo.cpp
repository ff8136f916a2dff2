// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/infofactory.h>

#include <QtTest>

#include <functional>

using hfmbase::FileInfo;
using hfmbase::FileInfoPointer;
using hfmbase::InfoCache;
using hfmbase::InfoFactory;
using hfmbase::ProxyFileInfo;

// Declared under the alias: Qt's normalisation of a function type's name is not
// stable (normalising it twice differs), which a debug build asserts on.
using Query = std::function<QVariant(const FileInfo &)>;
Q_DECLARE_METATYPE(Query)

namespace {

// An info whose answers are distinctive, to see what a proxy forwards.
class MarkedInfo : public FileInfo
{
public:
    explicit MarkedInfo(const QUrl &url) : FileInfo(url) { }
    QUrl urlOf(FileUrlInfoType type) const override { return QUrl(QStringLiteral("marked:///kind/%1").arg(int(type))); }
    bool exists() const override { return true; }
    QString fileName() const override { return QStringLiteral("marked.name"); }
    qint64 size() const override { return 4242; }
    QDateTime lastModified() const override { return QDateTime::fromSecsSinceEpoch(1000); }
    bool isDir() const override { return true; }
    QFileDevice::Permissions permissions() const override { return QFileDevice::ReadOwner | QFileDevice::ExeOther; }
    QString mimeTypeName() const override { return QStringLiteral("x-test/marked"); }
    int countChildFile() const override { return 17; }
    bool canAttributes(FileCanType type) const override { return type == FileCanType::kCanRedirectionFileUrl; }
    QString viewOfTip(ViewType) const override { return QStringLiteral("marked tip"); }
    void refresh() override { ++refreshed; }
    int refreshed = 0;
};

void writeFile(const QString &path, const QByteArray &data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(data);
}

FileInfoPointer localInfo(const QString &path, InfoFactory::CreateType type = InfoFactory::CreateType::kCreateDefault)
{
    return InfoFactory::create<FileInfo>(QUrl::fromLocalFile(path), type);
}

}   // namespace

class TestFileInfo : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // Icons are looked up in a theme the set-up script installs
        // (the headless platform knows no theme paths of its own).
        QIcon::setThemeSearchPaths({QStringLiteral("/usr/share/icons")});
        QIcon::setThemeName(QStringLiteral("Adwaita"));
        QVERIFY(tmp.isValid());
        QVERIFY(QDir(tmp.path()).mkpath(QStringLiteral("dir/sub")));
        QVERIFY(QDir(tmp.path()).mkpath(QStringLiteral("empty")));
        writeFile(tmp.filePath(QStringLiteral("dir/a.txt")), "hello");
        writeFile(tmp.filePath(QStringLiteral("dir/.hidden")), "");
        writeFile(tmp.filePath(QStringLiteral("notes.tar.gz")), "0123456789");
        QVERIFY(QFile::link(tmp.filePath(QStringLiteral("dir/a.txt")), tmp.filePath(QStringLiteral("link"))));
    }

    void localInfoDescribesTheFile_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<bool>("exists");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QString>("mime");
        QTest::addColumn<int>("children");
        QTest::addColumn<QString>("icon");
        // clang-format off
        QTest::newRow("text file") << "dir/a.txt" << true << false << qint64(5) << false << "text/plain" << -1 << "text-x-generic";
        QTest::newRow("double suffix") << "notes.tar.gz" << true << false << qint64(10) << false << "application/x-compressed-tar" << -1 << "package-x-generic";
        QTest::newRow("hidden file") << "dir/.hidden" << true << false << qint64(0) << true << "application/x-zerosize" << -1 << "application-x-generic";
        QTest::newRow("directory with hidden entries") << "dir" << true << true << qint64(-1) << false << "inode/directory" << 3 << "inode-directory";
        QTest::newRow("empty directory") << "empty" << true << true << qint64(-1) << false << "inode/directory" << 0 << "inode-directory";
        QTest::newRow("symlink to a file") << "link" << true << false << qint64(5) << false << "text/plain" << -1 << "text-x-generic";
        QTest::newRow("missing file") << "gone.txt" << false << false << qint64(0) << false << "text/plain" << -1 << "text-x-generic";
        // clang-format on
    }
    void localInfoDescribesTheFile()
    {
        QFETCH(QString, relative);
        QFETCH(bool, exists);
        QFETCH(qint64, size);

        const FileInfoPointer info = localInfo(tmp.filePath(relative), InfoFactory::CreateType::kCreateNoCache);
        QVERIFY(info);
        QCOMPARE(info->exists(), exists);
        QTEST(info->isDir(), "isDir");
        if (size >= 0)
            QCOMPARE(info->size(), size);
        QTEST(info->isHidden(), "hidden");
        QTEST(info->mimeTypeName(), "mime");
        QTEST(info->countChildFile(), "children");
        QTEST(info->fileIcon().name(), "icon");
        QCOMPARE(info->urlOf(FileInfo::FileUrlInfoType::kParentUrl),
            QUrl::fromLocalFile(QFileInfo(tmp.filePath(relative)).absolutePath()));
        QCOMPARE(info->viewOfTip(FileInfo::ViewType::kEmptyDir), QStringLiteral("Folder is empty"));
        QCOMPARE(info->canAttributes(FileInfo::FileCanType::kCanRename), exists);
    }

    void symlinkAndRoot()
    {
        const FileInfoPointer link = localInfo(tmp.filePath(QStringLiteral("link")));
        QVERIFY(link->isSymLink());
        QCOMPARE(link->urlOf(FileInfo::FileUrlInfoType::kSymLinkTargetUrl),
            QUrl::fromLocalFile(tmp.filePath(QStringLiteral("dir/a.txt"))));
        QVERIFY(localInfo(tmp.filePath(QStringLiteral("dir/a.txt")))
                    ->urlOf(FileInfo::FileUrlInfoType::kSymLinkTargetUrl)
                    .isEmpty());
        const FileInfoPointer root = localInfo(QStringLiteral("/"));
        QVERIFY(root->urlOf(FileInfo::FileUrlInfoType::kParentUrl).isEmpty());
        QCOMPARE(root->displayName(), QStringLiteral("/"));
    }

    void refreshSeesNewContent()
    {
        const QString path = tmp.filePath(QStringLiteral("grows.txt"));
        writeFile(path, "ab");
        const FileInfoPointer info = localInfo(path, InfoFactory::CreateType::kCreateNoCache);
        QCOMPARE(info->size(), qint64(2));
        writeFile(path, "abcdef");
        info->refresh();
        QCOMPARE(info->size(), qint64(6));
    }

    void proxyForwardsEveryQuery_data()
    {
        QTest::addColumn<Query>("query");
        QTest::addColumn<QVariant>("withoutProxy");
        auto row = [](const char *name, Query q, const QVariant &empty) { QTest::newRow(name) << q << empty; };
#define QUERY(call) [](const FileInfo &i) { return QVariant(i.call); }
        row("urlOf url", QUERY(urlOf(FileInfo::FileUrlInfoType::kUrl)), QUrl());
        row("urlOf redirected", QUERY(urlOf(FileInfo::FileUrlInfoType::kRedirectedFileUrl)), QUrl());
        row("urlOf parent", QUERY(urlOf(FileInfo::FileUrlInfoType::kParentUrl)), QUrl());
        row("exists", QUERY(exists()), false);
        row("fileName", QUERY(fileName()), QString());
        row("size", QUERY(size()), qint64(0));
        row("lastModified", QUERY(lastModified()), QDateTime());
        row("isDir", QUERY(isDir()), false);
        row(
            "permissions", [](const FileInfo &i) { return QVariant(int(i.permissions())); }, 0);
        row("mimeTypeName", QUERY(mimeTypeName()), QString());
        row("countChildFile", QUERY(countChildFile()), -1);
        row("canAttributes redirection", QUERY(canAttributes(FileInfo::FileCanType::kCanRedirectionFileUrl)), false);
        row("viewOfTip empty dir", QUERY(viewOfTip(FileInfo::ViewType::kEmptyDir)), QString());
#undef QUERY
    }
    void proxyForwardsEveryQuery()
    {
        QFETCH(Query, query);
        const QUrl own(QStringLiteral("proxied:///own/url"));
        auto inner = QSharedPointer<MarkedInfo>::create(QUrl(QStringLiteral("marked:///inner")));

        ProxyFileInfo proxy(own);
        QTEST(query(proxy), "withoutProxy");   // no proxy: empty, no crash
        proxy.refresh();
        proxy.setProxy(inner);
        QCOMPARE(query(proxy), query(*inner));
        QCOMPARE(proxy.fileUrl(), own);
        proxy.refresh();
        QCOMPARE(inner->refreshed, 1);
    }

    void unknownSchemesAndSecondRegistrations()
    {
        for (const QUrl &url : {QUrl(QStringLiteral("nowhere:///a")), QUrl(), QUrl(QStringLiteral("relative/path"))}) {
            QString error;
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^InfoFactory::createInfo: ")));
            QVERIFY2(!InfoFactory::create<FileInfo>(url, InfoFactory::CreateType::kCreateDefault, &error),
                qPrintable(url.toString()));
            QVERIFY(!error.isEmpty());
        }
        // A second class for a scheme is refused; the first keeps serving it.
        QVERIFY(InfoFactory::regClass<MarkedInfo>(QStringLiteral("marked")));
        QTest::ignoreMessage(QtWarningMsg, "InfoFactory::regCreator: the scheme \"marked\" is already registered");
        QVERIFY(!InfoFactory::regClass<ProxyFileInfo>(QStringLiteral("marked")));
        QVERIFY(InfoFactory::create<MarkedInfo>(QUrl(QStringLiteral("marked:///a"))));
        QTest::ignoreMessage(QtWarningMsg, "InfoFactory::regCreator: the scheme \"file\" is already registered");
        QVERIFY(!InfoFactory::regClass<MarkedInfo>(QStringLiteral("file")));
    }

    void cacheRules_data()
    {
        QTest::addColumn<bool>("noCacheOption");
        QTest::addColumn<bool>("disabledInCache");
        QTest::addColumn<bool>("reEnabled");
        QTest::addColumn<int>("createType");
        QTest::addColumn<bool>("shared");
        QTest::newRow("default scheme is cached") << false << false << false << 0 << true;
        QTest::newRow("creation without cache") << false << false << false << 1 << false;
        QTest::newRow("scheme registered kNoCache") << true << false << false << 0 << false;
        QTest::newRow("cache disabled for scheme") << false << true << false << 0 << false;
        QTest::newRow("cache disabled then enabled") << false << true << true << 0 << true;
    }
    void cacheRules()
    {
        QFETCH(bool, noCacheOption);
        QFETCH(bool, disabledInCache);
        QFETCH(bool, reEnabled);
        QFETCH(int, createType);
        QFETCH(bool, shared);

        const QString scheme = QStringLiteral("cache%1").arg(++schemeCounter);
        QVERIFY(InfoFactory::regClass<MarkedInfo>(
            scheme, noCacheOption ? InfoFactory::RegOption::kNoCache : InfoFactory::RegOption::kNoOption));
        const QUrl url(scheme + QStringLiteral(":///some/file"));
        const auto type = InfoFactory::CreateType(createType);
        InfoFactory::create<FileInfo>(url, type);
        // Disabling drops what was kept; enabling again does not bring it back.
        if (disabledInCache)
            InfoCache::instance().setCacheDisbale(scheme);
        if (reEnabled)
            InfoCache::instance().setCacheDisbale(scheme, false);
        QCOMPARE(bool(InfoCache::instance().getCacheInfo(url)), shared && !disabledInCache);

        const FileInfoPointer first = InfoFactory::create<FileInfo>(url, type);
        QCOMPARE(InfoFactory::create<FileInfo>(url, type) == first, shared);
        QCOMPARE(InfoCache::instance().getCacheInfo(url) == first, shared);
    }

    void trailingSlashIsTheSameCachedFile()
    {
        const QString path = tmp.filePath(QStringLiteral("dir"));
        const FileInfoPointer a = localInfo(path);
        QCOMPARE(localInfo(path + QLatin1Char('/')), a);
        InfoCache::instance().removeCacheInfo(QUrl::fromLocalFile(path));
        QVERIFY(localInfo(path) != a);
    }

private:
    QTemporaryDir tmp;
    int schemeCounter = 0;
};

QTEST_MAIN(TestFileInfo)
#include "tst_fileinfo.moc"
