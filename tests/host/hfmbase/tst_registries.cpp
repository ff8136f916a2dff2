// SPDX-License-Identifier: GPL-3.0-or-later
// The tables plug-ins register into: URL routes, computer entries, views.
#include <hfmbase/abstractbaseview.h>
#include <hfmbase/abstractentryfileentity.h>
#include <hfmbase/urlroute.h>

#include <QLabel>
#include <QtTest>

using hfmbase::EntryEntityFactory;
using hfmbase::UrlRoute;

namespace {

class Entry : public hfmbase::AbstractEntryFileEntity
{
public:
    explicit Entry(const QUrl &url) : AbstractEntryFileEntity(url) { }
    QString displayName() const override { return QStringLiteral("Entry"); }
    QIcon icon() const override { return QIcon(); }
    bool exists() const override { return true; }
    bool showProgress() const override { return false; }
    bool showTotalSize() const override { return false; }
    bool showUsageSize() const override { return false; }
    int order() const override { return 3; }
};

class View : public hfmbase::AbstractBaseView
{
public:
    View(const QUrl &url, QWidget *parent) : label(new QLabel(parent)), root(url) { }
    QWidget *widget() const override { return label; }
    QUrl rootUrl() const override { return root; }
    bool setRootUrl(const QUrl &url) override
    {
        root = url;
        return true;
    }
    QLabel *label;
    QUrl root;
};

}   // namespace

class TestRegistries : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(
            UrlRoute::regScheme(QStringLiteral("cloud"), QStringLiteral("/"), QIcon(), true, QStringLiteral("Cloud")));
        QVERIFY(UrlRoute::regScheme(QStringLiteral("deep"), QStringLiteral("/base/dir")));
    }

    void rootUrlHasAnEmptyHost_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("expected");
        QTest::newRow("virtual scheme") << QStringLiteral("cloud") << QStringLiteral("cloud:///");
        QTest::newRow("root below slash") << QStringLiteral("deep") << QStringLiteral("deep:///base/dir");
        QTest::newRow("file, registered by nobody") << QStringLiteral("file") << QStringLiteral("file:///");
        QTest::newRow("unknown scheme") << QStringLiteral("nowhere") << QString();
    }
    void rootUrlHasAnEmptyHost()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, expected);
        const QUrl root = UrlRoute::rootUrl(scheme);
        QCOMPARE(root.toString(), expected);
        QCOMPARE(UrlRoute::isRootUrl(root), !expected.isEmpty());
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
        QTest::newRow("below deep root") << QUrl(QStringLiteral("deep:///base/dir/x"))
                                         << QUrl(QStringLiteral("deep:///base/dir"));
        QTest::newRow("outside deep root") << QUrl(QStringLiteral("deep:///else/x")) << QUrl();
        QTest::newRow("empty") << QUrl() << QUrl();
        QTest::newRow("query dropped") << QUrl(QStringLiteral("file:///a/b?x=1")) << QUrl(QStringLiteral("file:///a"));
    }
    void urlParent()
    {
        QFETCH(QUrl, url);
        QTEST(UrlRoute::urlParent(url), "parent");
    }

    void entrySuffix_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("plug-in entry") << QUrl(QStringLiteral("entry:///nubix.nubix")) << "nubix";
        QTest::newRow("last dot wins") << QUrl(QStringLiteral("entry:///a.b.block")) << "block";
        QTest::newRow("no dot") << QUrl(QStringLiteral("entry:///plain")) << "";
        QTest::newRow("dot in a folder only") << QUrl(QStringLiteral("entry:///dir.x/plain")) << "";
        QTest::newRow("encoded characters")
            << QUrl(QStringLiteral("entry:///my%20disk.u%C3%A9")) << QString::fromUtf8("u\xC3\xA9");
        QTest::newRow("empty url") << QUrl() << "";
    }
    void entrySuffix()
    {
        QFETCH(QUrl, url);
        QTEST(EntryEntityFactory::suffixOf(url), "suffix");
    }

    void factoriesMakeByKey()
    {
        QVERIFY(EntryEntityFactory::regClass<Entry>(QStringLiteral("nubix")));
        const QUrl url(QStringLiteral("entry:///nubix.nubix"));
        auto entity = EntryEntityFactory::create(url);
        QVERIFY(entity);
        QCOMPARE(entity->entryUrl(), url);
        QString error;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^EntryEntityFactory::create: ")));
        QVERIFY(!EntryEntityFactory::create(QUrl(QStringLiteral("entry:///other.unknown")), &error));
        QVERIFY(!error.isEmpty());

        QVERIFY(hfmbase::ViewFactory::regClass<View>(QStringLiteral("page")));
        QWidget parent;
        std::unique_ptr<hfmbase::AbstractBaseView> view(
            hfmbase::ViewFactory::create(QUrl(QStringLiteral("page:///")), &parent));
        QVERIFY(view);
        QCOMPARE(view->rootUrl(), QUrl(QStringLiteral("page:///")));
        QCOMPARE(view->widget()->parent(), &parent);
        error.clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^ViewFactory::create: ")));
        QVERIFY(!hfmbase::ViewFactory::create(QUrl(QStringLiteral("nowhere:///")), &parent, &error));
        QVERIFY(!error.isEmpty());
    }
};

QTEST_MAIN(TestRegistries)
#include "tst_registries.moc"
