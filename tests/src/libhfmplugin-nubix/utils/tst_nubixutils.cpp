// SPDX-License-Identifier: GPL-3.0-or-later
#include "utils/nubixutils.h"

#include "caches/nubixcaches.h"

#include <QApplication>
#include <QTest>

using namespace hfmplugin_nubix;

namespace {
const QString kRoot = QStringLiteral("/home/a/Drive");

QUrl url(const char *text)
{
    return QUrl(QString::fromUtf8(text));
}

void setRoot(const QString &root)
{
    NubixCaches::instance()->setSyncInfo(SyncInfo {root, {}, {}, {}});
}
}   // namespace

class TestNubixUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setRoot(kRoot); }

    void localToCloud_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QUrl>("local");
        QTest::addColumn<bool>("mapped");
        QTest::addColumn<QString>("path");
        // The printed form, where the URL is a complete one; empty to skip.
        QTest::addColumn<QString>("text");

        const char *root = "/home/a/Drive";
        const QString none;
        QTest::newRow("file below the root") << root << url("file:///home/a/Drive/doc/x.txt") << true << "/doc/x.txt"
                                             << "nubix:///doc/x.txt";
        QTest::newRow("the root itself") << root << url("file:///home/a/Drive") << true << none << none;
        QTest::newRow("the root with a trailing slash") << root << url("file:///home/a/Drive/") << true << "/"
                                                        << "nubix:///";
        QTest::newRow("path repeating the root")
            << root << url("file:///home/a/Drive/sub/home/a/Drive/y") << true << "/sub/y"
            << "nubix:///sub/y";
        QTest::newRow("outside the root") << root << url("file:///tmp/x") << false << none << none;
        QTest::newRow("root in other case") << root << url("file:///home/a/drive/x") << false << none << none;
        QTest::newRow("already a cloud url") << root << url("nubix:///home/a/Drive/x") << false << none << none;
        QTest::newRow("percent-encoded name")
            << root << url("file:///home/a/Drive/my%20doc/%C3%A9t%C3%A9%25.txt") << true << "/my doc/\u00e9t\u00e9%.txt"
            << "nubix:///my doc/\u00e9t\u00e9%25.txt";
        QTest::newRow("root given with a trailing slash")
            << "/home/a/Drive/" << url("file:///home/a/Drive/doc/x") << true << "doc/x" << none;
    }
    void localToCloud()
    {
        QFETCH(QString, root);
        QFETCH(QUrl, local);
        QFETCH(bool, mapped);
        QFETCH(QString, path);
        QFETCH(QString, text);

        setRoot(root);
        const QUrl cloud = NubixUtils::localToCloud(local);
        if (!mapped) {
            QVERIFY2(cloud.isEmpty(), qPrintable(cloud.toString()));
            return;
        }
        QCOMPARE(cloud.scheme(), QStringLiteral("nubix"));
        QCOMPARE(cloud.path(QUrl::FullyDecoded), path);
        QCOMPARE(cloud.host(), QString());
        if (!text.isEmpty())
            QCOMPARE(cloud.toString(), text);
    }

    void cloudToLocal_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QUrl>("cloud");
        // Local path expected; empty when the URL is not ours.
        QTest::addColumn<QString>("localPath");

        const char *root = "/home/a/Drive";
        const QString none;
        QTest::newRow("file below the root") << root << url("nubix:///doc/x.txt") << "/home/a/Drive/doc/x.txt";
        QTest::newRow("cloud root") << root << NubixUtils::nubixRoot() << "/home/a/Drive/";
        QTest::newRow("no path at all") << root << url("nubix:") << root;
        QTest::newRow("relative path is glued on") << root << url("nubix:x") << "/home/a/Drivex";
        QTest::newRow("local url") << root << url("file:///x") << none;
        QTest::newRow("welcome page") << root << NubixUtils::loginRoot() << none;
        QTest::newRow("empty root") << none << url("nubix:///tmp/x") << "/tmp/x";
        // "//[x" is a network host to Qt, and not a valid one.
        QTest::newRow("empty root, path Qt cannot hold") << none << url("nubix:////[x") << none;
        QTest::newRow("root given with a trailing slash")
            << "/home/a/Drive/" << url("nubix:///x") << "/home/a/Drive//x";
    }
    void cloudToLocal()
    {
        QFETCH(QString, root);
        QFETCH(QUrl, cloud);
        QFETCH(QString, localPath);

        setRoot(root);
        const QUrl local = NubixUtils::cloudToLocal(cloud);
        if (localPath.isEmpty()) {
            QVERIFY2(local.isEmpty(), qPrintable(local.toString()));
            return;
        }
        QVERIFY(local.isLocalFile());
        QCOMPARE(local.toLocalFile(), localPath);
    }
};

QTEST_MAIN(TestNubixUtils)
#include "tst_nubixutils.moc"
