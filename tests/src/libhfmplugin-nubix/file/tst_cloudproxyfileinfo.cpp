// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudproxyfileinfo.h"

#include "cloudenvironment.h"

#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTest>

using namespace hfmplugin_nubix;
using UrlType = hfmbase::FileInfo::FileUrlInfoType;
using CanType = hfmbase::FileInfo::FileCanType;
using ViewType = hfmbase::FileInfo::ViewType;

Q_DECLARE_METATYPE(UrlType)
Q_DECLARE_METATYPE(CanType)
Q_DECLARE_METATYPE(ViewType)

namespace {

const QString kWelcomeTip = QStringLiteral("Welcome to upload frequently used files");
const QString kDropTip = QStringLiteral("Drag and drop or copy the files you want to synchronize here.\n"
                                        "Your files will be synchronized across multiple devices.");

int g_minute = 0;
QTime clockAtMinute()
{
    return QTime(10, g_minute, 30);
}

hfmbase::FileInfoPointer cloudInfo(const QString &relative)
{
    return hfmbase::InfoFactory::create<hfmbase::FileInfo>(CloudEnvironment::cloud(relative));
}

// "nubix://" with no path: what the root itself maps to.
QUrl cloudWithoutPath()
{
    QUrl url;
    url.setScheme(QStringLiteral("nubix"));
    url.setHost(QStringLiteral(""));
    return url;
}

}   // namespace

class TestCloudProxyFileInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(env.setUp());
        QVERIFY(outside.isValid());
        QVERIFY(env.makeFile(QStringLiteral("top.txt"), "top"));
        QVERIFY(env.makeFile(QStringLiteral("dir/doc.txt"), "hello"));
        QVERIFY(QFile::link(QStringLiteral("doc.txt"), env.localPath(QStringLiteral("dir/link"))));
        QVERIFY(QFile::link(outside.path(), env.localPath(QStringLiteral("outlink"))));
    }
    void init() { CloudEnvironment::useRoot(env.root()); }
    void cleanup() { CloudProxyFileInfo::setClock(nullptr); }

    void madeByTheHostsFactoryAndNeverCached()
    {
        QVERIFY(hfmbase::InfoCache::instance().cacheDisable(QStringLiteral("nubix")));
        const hfmbase::FileInfoPointer first = cloudInfo(QStringLiteral("dir/doc.txt"));
        const hfmbase::FileInfoPointer second = cloudInfo(QStringLiteral("dir/doc.txt"));
        QVERIFY(dynamic_cast<CloudProxyFileInfo *>(first.data()));
        QVERIFY(dynamic_cast<CloudProxyFileInfo *>(second.data()));
        QVERIFY(first != second);
        QCOMPARE(first->fileUrl(), CloudEnvironment::cloud(QStringLiteral("dir/doc.txt")));
    }

    void urlOf_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<UrlType>("type");
        QTest::addColumn<QUrl>("expected");

        const QUrl doc = CloudEnvironment::cloud(QStringLiteral("dir/doc.txt"));
        QTest::newRow("url") << QStringLiteral("dir/doc.txt") << UrlType::kUrl << doc;
        QTest::newRow("parent") << QStringLiteral("dir/doc.txt") << UrlType::kParentUrl
                                << CloudEnvironment::cloud(QStringLiteral("dir"));
        QTest::newRow("parent of a top-level file is the root itself")
            << QStringLiteral("top.txt") << UrlType::kParentUrl << cloudWithoutPath();
        QTest::newRow("redirection is the local file")
            << QStringLiteral("dir/doc.txt") << UrlType::kRedirectedFileUrl
            << QUrl::fromLocalFile(env.localPath(QStringLiteral("dir/doc.txt")));
        QTest::newRow("redirection of the cloud root")
            << QString() << UrlType::kRedirectedFileUrl << QUrl::fromLocalFile(env.root() + QLatin1Char('/'));
        QTest::newRow("redirection of a missing file")
            << QStringLiteral("missing.txt") << UrlType::kRedirectedFileUrl
            << QUrl::fromLocalFile(env.localPath(QStringLiteral("missing.txt")));
        QTest::newRow("link target inside the root") << QStringLiteral("dir/link") << UrlType::kSymLinkTargetUrl << doc;
        QTest::newRow("link target outside the root")
            << QStringLiteral("outlink") << UrlType::kSymLinkTargetUrl << QUrl();
        QTest::newRow("no link target") << QStringLiteral("dir/doc.txt") << UrlType::kSymLinkTargetUrl << QUrl();
    }
    void urlOf()
    {
        QFETCH(QString, path);
        QFETCH(UrlType, type);
        QFETCH(QUrl, expected);

        const hfmbase::FileInfoPointer info = cloudInfo(path);
        QVERIFY(info);
        const QUrl url = info->urlOf(type);
        QCOMPARE(url, expected);
        QCOMPARE(url.isEmpty(), expected.isEmpty());
    }

    // Redirection is always allowed; everything else is the local file's answer.
    void canAttributes_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<CanType>("type");
        QTest::addColumn<bool>("asLocal");

        QTest::newRow("redirect a file") << QStringLiteral("dir/doc.txt") << CanType::kCanRedirectionFileUrl << false;
        QTest::newRow("redirect the cloud root") << QString() << CanType::kCanRedirectionFileUrl << false;
        QTest::newRow("rename") << QStringLiteral("dir/doc.txt") << CanType::kCanRename << true;
        QTest::newRow("drag a missing file") << QStringLiteral("missing.txt") << CanType::kCanDrag << true;
    }
    void canAttributes()
    {
        QFETCH(QString, path);
        QFETCH(CanType, type);
        QFETCH(bool, asLocal);

        const hfmbase::FileInfoPointer info = cloudInfo(path);
        QVERIFY(info);
        if (!asLocal) {
            QVERIFY(info->canAttributes(type));
            return;
        }
        const auto local = hfmbase::InfoFactory::create<hfmbase::FileInfo>(
            QUrl::fromLocalFile(env.localPath(path)), hfmbase::InfoFactory::CreateType::kCreateNoCache);
        QVERIFY(local);
        QCOMPARE(info->canAttributes(type), local->canAttributes(type));
    }

    void viewOfTip_data()
    {
        QTest::addColumn<int>("minute");
        QTest::addColumn<ViewType>("type");
        QTest::addColumn<QString>("tip");

        QTest::newRow("odd minute") << 13 << ViewType::kEmptyDir << kWelcomeTip;
        QTest::newRow("even minute") << 14 << ViewType::kEmptyDir << kDropTip;
        // Any other tip is the local folder's, whatever the time.
        QTest::newRow("loading, odd minute") << 13 << ViewType::kLoading << QString();
    }
    void viewOfTip()
    {
        QFETCH(int, minute);
        QFETCH(ViewType, type);
        QFETCH(QString, tip);

        g_minute = minute;
        CloudProxyFileInfo::setClock(&clockAtMinute);
        const hfmbase::FileInfoPointer info = cloudInfo(QStringLiteral("dir"));
        QVERIFY(info);
        if (tip.isEmpty()) {
            const auto local = hfmbase::InfoFactory::create<hfmbase::FileInfo>(
                QUrl::fromLocalFile(env.localPath(QStringLiteral("dir"))));
            tip = local->viewOfTip(type);
            QVERIFY(!tip.isEmpty());
        }
        QCOMPARE(info->viewOfTip(type), tip);
        // No state between calls: the same info follows the clock.
        g_minute = (minute + 1) % 60;
        if (type == ViewType::kEmptyDir)
            QCOMPARE(info->viewOfTip(type), tip == kWelcomeTip ? kDropTip : kWelcomeTip);
    }

    // Not a cloud URL: nothing to describe, and nothing breaks.
    void otherSchemeDescribesNothing_data()
    {
        QTest::addColumn<QUrl>("url");

        QTest::newRow("local") << QUrl::fromLocalFile(QStringLiteral("/tmp"));
        QTest::newRow("empty") << QUrl();
    }
    void otherSchemeDescribesNothing()
    {
        QFETCH(QUrl, url);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^InfoFactory::createInfo: ")));
        const CloudProxyFileInfo info(url);
        QVERIFY(!info.proxyInfo());
        QCOMPARE(info.fileUrl(), url);
        QVERIFY(!info.exists());
        QVERIFY(info.fileName().isEmpty());
        QVERIFY(info.urlOf(UrlType::kUrl).isEmpty());
        QVERIFY(info.urlOf(UrlType::kParentUrl).isEmpty());
        QVERIFY(info.urlOf(UrlType::kRedirectedFileUrl).isEmpty());
        QVERIFY(info.canAttributes(CanType::kCanRedirectionFileUrl));
        QVERIFY(!info.canAttributes(CanType::kCanDelete));
        QVERIFY(info.viewOfTip(ViewType::kLoading).isEmpty());
    }

private:
    CloudEnvironment env;
    QTemporaryDir outside;
};

QTEST_GUILESS_MAIN(TestCloudProxyFileInfo)
#include "tst_cloudproxyfileinfo.moc"
