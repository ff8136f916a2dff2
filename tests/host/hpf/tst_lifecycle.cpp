// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>
#include <hpf/plugin.h>

#include <QJsonArray>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using hpf::PluginMetaObject;

namespace {

QString pluginDir()
{
    return QStringLiteral(HPFTEST_PLUGIN_DIR);
}

void expectWarning(const QString &pattern)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(pattern));
}

// "a,b" -> {"a", "b"}
QStringList list(const char *items)
{
    return QString::fromUtf8(items).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

}   // namespace

// Drives the real life cycle over the test plug-ins built next to this test:
// good ones with dependencies, and libraries that must be refused.
class TestLifeCycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(pluginDir()).exists());
        hpf::channel()->connect(QStringLiteral("hpftest"), QStringLiteral("slot_Record"),
            [this](const QString &what) { m_records.append(what); });
        hpf::LifeCycle::setPluginPaths({pluginDir(), pluginDir() + QStringLiteral("/does-not-exist")});
        hpf::LifeCycle::setBlackList({QStringLiteral("test-blacklisted")});
        QCOMPARE(hpf::LifeCycle::pluginPaths().size(), 2);
    }

    void readRefusesBrokenLibraries()
    {
        for (const char *refusal : {"e_otheriid\\.so - interface id \"org\\.example\\.other\\.plugin\" is not "
                                    "\"org\\.sablo\\.plugin\\.filemanager\"$",
                 "f_noname\\.so - .*no \"Name\"$", "g_dependsstring\\.so - \"Depends\" is not a list$",
                 "p_plain\\.so - no plug-in metadata$",
                 "z_duplicate\\.so - the name test-core is already taken by .*hpftest_b_core\\.so$"})
            expectWarning(QStringLiteral("^LifeCycle::readPlugins: refused .*hpftest_") + QLatin1String(refusal));

        QVERIFY(hpf::LifeCycle::readPlugins());

        QStringList names;
        for (const hpf::PluginMetaObjectPointer &meta : hpf::LifeCycle::pluginMetaObjs()) {
            names.append(meta->name());
            QCOMPARE(meta->pluginState(), PluginMetaObject::kRead);
            QVERIFY(!meta->plugin());
        }
        const QStringList expected = list("test-dependent,test-core,test-leaf,test-nostart,test-missingdep,"
                                          "test-cycle-a,test-cycle-b,test-oncycle,test-tooold,test-unresolved,"
                                          "test-needsunresolved");
        QCOMPARE(names, expected);
        // No plug-in object may exist before loading.
        QVERIFY(m_records.isEmpty());

        // Reading again adds nothing and warns about nothing new.
        QVERIFY(hpf::LifeCycle::readPlugins());
        QCOMPARE(hpf::LifeCycle::pluginMetaObjs().size(), expected.size());
    }

    void readsMetadataBeforeLoading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("compatVersion");
        QTest::addColumn<QString>("category");
        QTest::addColumn<QStringList>("license");
        QTest::addColumn<QStringList>("depends");
        QTest::addColumn<QStringList>("schemes");
        QTest::addColumn<QString>("quickAccessUrl");
        QTest::addColumn<QString>("file");

        auto row = [](const char *tag, const char *name, const char *version, const char *compat, const char *category,
                       const char *license, const char *depends, const char *schemes, const char *quick,
                       const char *file) {
            QTest::newRow(tag) << QString::fromUtf8(name) << QString::fromUtf8(version) << QString::fromUtf8(compat)
                               << QString::fromUtf8(category) << list(license) << list(depends) << list(schemes)
                               << QString::fromUtf8(quick) << QString::fromUtf8(file);
        };
        row("every field", "test-core", "1.2.0", "1.0.0", "Test", "GPL-3.0-or-later", "", "tcore,tcore-extra",
            "tcore:///", "libhpftest_b_core.so");
        row("depends as objects", "test-dependent", "1.0.0", "", "", "", "test-core@1.1.0", "tdep", "",
            "libhpftest_a_dependent.so");
        row("depends as plain names", "test-leaf", "0.1", "", "", "", "test-dependent@", "", "",
            "libhpftest_c_leaf.so");
    }
    void readsMetadataBeforeLoading()
    {
        QFETCH(QString, name);
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(name);
        QVERIFY(meta);
        QTEST(meta->version(), "version");
        QTEST(meta->compatVersion(), "compatVersion");
        QTEST(meta->category(), "category");
        QTEST(meta->license(), "license");
        QCOMPARE(meta->iid(), QStringLiteral(HPF_PLUGIN_IID));
        QTEST(QFileInfo(meta->fileName()).fileName(), "file");

        QStringList depends;
        for (const PluginMetaObject::Depend &dep : meta->depends())
            depends.append(dep.name + QLatin1Char('@') + dep.version);
        QTEST(depends, "depends");

        QStringList schemes;
        for (const QJsonValue &v : meta->customData().value(QStringLiteral("PluginSchemes")).toArray())
            schemes.append(v.toString());
        QTEST(schemes, "schemes");
        const QJsonObject quick
            = meta->customData().value(QStringLiteral("QuickAccessDisplay")).toArray().at(0).toObject();
        QTEST(quick.value(QStringLiteral("Url")).toString(), "quickAccessUrl");
        QCOMPARE(meta->metaData().value(QStringLiteral("Name")).toString(), name);
    }

    void lookupByNameAndVersion_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("found");

        QTest::newRow("any version") << "test-core" << QString() << true;
        QTest::newRow("exact version") << "test-core" << QStringLiteral("1.2.0") << true;
        QTest::newRow("other version") << "test-core" << QStringLiteral("1.0.0") << false;
        QTest::newRow("unknown name") << "test-nobody" << QString() << false;
        QTest::newRow("refused at reading") << "test-otheriid" << QString() << false;
        QTest::newRow("black-listed") << "test-blacklisted" << QString() << false;
        QTest::newRow("empty name") << QString() << QString() << false;
    }
    void lookupByNameAndVersion()
    {
        QFETCH(QString, name);
        QFETCH(QString, version);
        QFETCH(bool, found);
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(name, version);
        QCOMPARE(!meta.isNull(), found);
        if (found)
            QCOMPARE(meta->name(), name);
    }

    void loadStartsDependenciesFirst()
    {
        for (const char *refusal : {"test-missingdep - missing dependency test-absent$",
                 "test-tooold - dependency test-core has version 1\\.2\\.0, 2\\.0\\.0 is needed$",
                 "test-cycle-a - circular dependency$", "test-cycle-b - circular dependency$",
                 "test-oncycle - circular dependency$", "test-unresolved - .*hpftest_symbol_nobody_defines",
                 "test-needsunresolved - dependency test-unresolved could not be loaded$"})
            expectWarning(QStringLiteral("^LifeCycle::loadPlugins: refused ") + QLatin1String(refusal));
        expectWarning(QStringLiteral("^LifeCycle::loadPlugins: plug-in test-nostart failed to start$"));

        QSignalSpy initialized(hpf::Listener::instance(), &hpf::Listener::pluginInitialized);
        QSignalSpy started(hpf::Listener::instance(), &hpf::Listener::pluginStarted);
        QSignalSpy allStarted(hpf::Listener::instance(), &hpf::Listener::pluginsStarted);

        QVERIFY(!hpf::LifeCycle::loadPlugins());

        // Every plug-in is initialised before any starts.
        int lastInit = -1;
        int firstStart = m_records.size();
        for (int i = 0; i < m_records.size(); ++i) {
            if (m_records.at(i).startsWith(QLatin1String("init:")))
                lastInit = i;
            else if (firstStart == m_records.size() && m_records.at(i).startsWith(QLatin1String("start:")))
                firstStart = i;
        }
        QVERIFY2(lastInit < firstStart, qPrintable(m_records.join(QLatin1Char(' '))));
        QCOMPARE(initialized.size(), 4);

        const QStringList order = startOrder();
        QCOMPARE(order.size(), 4);
        QVERIFY(order.contains(QStringLiteral("test-nostart")));
        QVERIFY(order.indexOf(QStringLiteral("test-core")) < order.indexOf(QStringLiteral("test-dependent")));
        QVERIFY(order.indexOf(QStringLiteral("test-dependent")) < order.indexOf(QStringLiteral("test-leaf")));

        // pluginStarted follows each successful start, in start order.
        QStringList announced;
        for (const QList<QVariant> &args : qAsConst(started)) {
            QCOMPARE(args.at(0).toString(), QStringLiteral(HPF_PLUGIN_IID));
            announced.append(args.at(1).toString());
        }
        QStringList expected = order;
        expected.removeAll(QStringLiteral("test-nostart"));
        QCOMPARE(announced, expected);
        QCOMPARE(allStarted.size(), 1);

        // The meta objects list follows the load order.
        QStringList listed;
        for (const hpf::PluginMetaObjectPointer &meta : hpf::LifeCycle::pluginMetaObjs()) {
            if (meta->pluginState() >= PluginMetaObject::kInitialized)
                listed.append(meta->name());
        }
        QCOMPARE(listed, order);
    }

    void statesAfterLoading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("error");

        QTest::newRow("started") << "test-core" << 6 << QString();
        QTest::newRow("start returned false") << "test-nostart" << 5 << "start() returned false";
        QTest::newRow("missing dependency") << "test-missingdep" << 0 << "missing dependency test-absent";
        QTest::newRow("dependency too old")
            << "test-tooold" << 0 << "dependency test-core has version 1.2.0, 2.0.0 is needed";
        QTest::newRow("cycle") << "test-cycle-a" << 0 << "circular dependency";
        QTest::newRow("dependency failed to load")
            << "test-needsunresolved" << 0 << "dependency test-unresolved could not be loaded";
    }
    void statesAfterLoading()
    {
        QFETCH(QString, name);
        QFETCH(int, state);
        QFETCH(QString, error);
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(name);
        QVERIFY(meta);
        QCOMPARE(int(meta->pluginState()), state);
        QCOMPARE(meta->errorString(), error);
        QCOMPARE(meta->plugin() != nullptr, state >= PluginMetaObject::kLoaded);
        if (meta->plugin())
            QVERIFY(meta->plugin()->inherits("hpf::Plugin"));
    }

    void secondLoadDoesNothing()
    {
        QSignalSpy started(hpf::Listener::instance(), &hpf::Listener::pluginStarted);
        const int records = m_records.size();
        QVERIFY(hpf::LifeCycle::loadPlugins());
        QCOMPARE(started.size(), 0);
        QCOMPARE(m_records.size(), records);
    }

    void shutdownStopsInReverseOrder()
    {
        QStringList expected;
        for (const QString &name : startOrder()) {
            if (name != QLatin1String("test-nostart"))
                expected.prepend(QStringLiteral("stop:") + name);
        }
        m_records.clear();
        hpf::LifeCycle::shutdownPlugins();
        QCOMPARE(m_records, expected);
        QCOMPARE(
            hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-core"))->pluginState(), PluginMetaObject::kShutdown);
        QCOMPARE(hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-missingdep"))->pluginState(),
            PluginMetaObject::kInvalid);
    }

private:
    QStringList startOrder() const
    {
        QStringList order;
        for (const QString &record : m_records) {
            if (record.startsWith(QLatin1String("start:")))
                order.append(record.mid(6));
        }
        return order;
    }

    QStringList m_records;
};

QTEST_GUILESS_MAIN(TestLifeCycle)
#include "tst_lifecycle.moc"
