// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractbaseview.h>
#include <hfmbase/abstractentryfileentity.h>

#include <QLabel>
#include <QtTest>

using hfmbase::AbstractEntryFileEntity;
using hfmbase::EntryEntityFactory;

namespace {

class Entry : public AbstractEntryFileEntity
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
        QFETCH(QString, suffix);
        QCOMPARE(EntryEntityFactory::suffixOf(url), suffix);
    }

    void entryFactory()
    {
        QVERIFY(EntryEntityFactory::regClass<Entry>(QStringLiteral("nubix")));
        QString error;
        QTest::ignoreMessage(
            QtWarningMsg, "EntryEntityFactory::regCreator: the suffix \"nubix\" is already registered");
        QVERIFY(!EntryEntityFactory::regClass<Entry>(QStringLiteral("nubix"), &error));
        QVERIFY(!error.isEmpty());

        const QUrl url(QStringLiteral("entry:///nubix.nubix"));
        auto entity = EntryEntityFactory::create(url);
        QVERIFY(entity);
        QCOMPARE(entity->entryUrl(), url);
        QCOMPARE(entity->order(), 3);
        QVERIFY(entity->extraProperties().isEmpty());
        entity->setExtraProperty(QStringLiteral("k"), 5);
        entity->setExtraProperty(QStringLiteral("k"), 6);
        QCOMPARE(entity->extraProperties(), (QVariantHash {{QStringLiteral("k"), 6}}));

        error.clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^EntryEntityFactory::create: ")));
        QVERIFY(!EntryEntityFactory::create(QUrl(QStringLiteral("entry:///other.unknown")), &error));
        QVERIFY(!error.isEmpty());
    }

    void viewFactory()
    {
        QVERIFY(hfmbase::ViewFactory::regClass<View>(QStringLiteral("page")));
        QVERIFY(hfmbase::ViewFactory::isRegistered(QStringLiteral("page")));
        QTest::ignoreMessage(QtWarningMsg, "ViewFactory::regCreator: the scheme \"page\" is already registered");
        QVERIFY(!hfmbase::ViewFactory::regClass<View>(QStringLiteral("page")));

        QWidget parent;
        const QUrl url(QStringLiteral("page:///"));
        std::unique_ptr<hfmbase::AbstractBaseView> view(hfmbase::ViewFactory::create(url, &parent));
        QVERIFY(view);
        QCOMPARE(view->rootUrl(), url);
        QCOMPARE(view->widget()->parent(), &parent);

        QString error;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^ViewFactory::create: ")));
        QVERIFY(!hfmbase::ViewFactory::create(QUrl(QStringLiteral("nowhere:///")), &parent, &error));
        QVERIFY(!error.isEmpty());
    }
};

QTEST_MAIN(TestRegistries)
#include "tst_registries.moc"
