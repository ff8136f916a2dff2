// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/urlroute.h>

#include <QtTest>

using hfmbase::UrlRoute;

class TestUrlRoute : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(
            UrlRoute::regScheme(QStringLiteral("cloud"), QStringLiteral("/"), QIcon(), true, QStringLiteral("Cloud")));
        QVERIFY(UrlRoute::regScheme(QStringLiteral("deep"), QStringLiteral("/base/dir")));
    }

    void registrationIsReadBackAndKept()
    {
        QVERIFY(UrlRoute::schemes().contains(QStringLiteral("cloud")));
        QVERIFY(!UrlRoute::hasScheme(QStringLiteral("nowhere")));
        QVERIFY(UrlRoute::rootUrl(QStringLiteral("nowhere")).isEmpty());
        // The host's own scheme needs no registration.
        QVERIFY(UrlRoute::hasScheme(QStringLiteral("file")));

        QString error;
        QTest::ignoreMessage(QtWarningMsg, "UrlRoute::regScheme: the scheme \"cloud\" is already registered");
        QVERIFY(!UrlRoute::regScheme(
            QStringLiteral("cloud"), QStringLiteral("/other"), QIcon(), false, QStringLiteral("Other"), &error));
        QVERIFY(error.contains(QStringLiteral("cloud")));
        // The first registration stays.
        QCOMPARE(UrlRoute::displayName(QStringLiteral("cloud")), QStringLiteral("Cloud"));
        QVERIFY(UrlRoute::isVirtual(QStringLiteral("cloud")));
        QVERIFY(!UrlRoute::isVirtual(QStringLiteral("deep")));
        QCOMPARE(UrlRoute::rootPath(QStringLiteral("deep")), QStringLiteral("/base/dir"));
    }

    void rootUrlHasAnEmptyHost_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("expected");
        QTest::newRow("virtual scheme") << QStringLiteral("cloud") << QStringLiteral("cloud:///");
        QTest::newRow("root below slash") << QStringLiteral("deep") << QStringLiteral("deep:///base/dir");
        QTest::newRow("file") << QStringLiteral("file") << QStringLiteral("file:///");
    }
    void rootUrlHasAnEmptyHost()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, expected);
        const QUrl root = UrlRoute::rootUrl(scheme);
        QCOMPARE(root.toString(), expected);
        QVERIFY(UrlRoute::isRootUrl(root));
        QVERIFY(UrlRoute::urlParent(root).isEmpty());
    }

    void urlParent_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QUrl>("parent");
        QTest::newRow("file below root") << QUrl(QStringLiteral("file:///home/a"))
                                         << QUrl(QStringLiteral("file:///home"));
        QTest::newRow("trailing slash") << QUrl(QStringLiteral("file:///home/a/"))
                                        << QUrl(QStringLiteral("file:///home"));
        QTest::newRow("virtual scheme") << QUrl(QStringLiteral("cloud:///a/b c")) << QUrl(QStringLiteral("cloud:///a"));
        QTest::newRow("virtual root") << QUrl(QStringLiteral("cloud:///")) << QUrl();
        QTest::newRow("deep root") << QUrl(QStringLiteral("deep:///base/dir")) << QUrl();
        QTest::newRow("below deep root") << QUrl(QStringLiteral("deep:///base/dir/x"))
                                         << QUrl(QStringLiteral("deep:///base/dir"));
        QTest::newRow("outside deep root") << QUrl(QStringLiteral("deep:///else/x")) << QUrl();
        QTest::newRow("empty") << QUrl() << QUrl();
        QTest::newRow("query dropped") << QUrl(QStringLiteral("file:///a/b?x=1")) << QUrl(QStringLiteral("file:///a"));
    }
    void urlParent()
    {
        QFETCH(QUrl, url);
        QFETCH(QUrl, parent);
        QCOMPARE(UrlRoute::urlParent(url), parent);
    }

    void concurrentReadersAndWriters()
    {
        // Registration from many threads while others read must neither
        // crash nor lose a scheme.
        QVector<QThread *> threads;
        for (int t = 0; t < 4; ++t) {
            threads.append(QThread::create([t] {
                for (int i = 0; i < 200; ++i) {
                    UrlRoute::regScheme(QStringLiteral("s%1-%2").arg(t).arg(i), QStringLiteral("/"));
                    UrlRoute::rootUrl(QStringLiteral("cloud"));
                    UrlRoute::schemes();
                }
            }));
            threads.last()->start();
        }
        for (QThread *thread : threads) {
            QVERIFY(thread->wait(10000));
            delete thread;
        }
        for (int t = 0; t < 4; ++t)
            QVERIFY(UrlRoute::hasScheme(QStringLiteral("s%1-199").arg(t)));
    }
};

QTEST_GUILESS_MAIN(TestUrlRoute)
#include "tst_urlroute.moc"
