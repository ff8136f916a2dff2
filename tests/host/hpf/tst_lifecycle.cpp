// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>
#include <hpf/plugin.h>

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

    void dependenciesAreObjectsOrNames()
    {
        // The version a dependency asks for is checked at loading ("test-tooold").
        for (const char *nameAndDepends : {"test-dependent,test-core@1.1.0", "test-leaf,test-dependent@"}) {
            const QStringList expected = list(nameAndDepends);
            QStringList depends;
            for (const PluginMetaObject::Depend &dep : hpf::LifeCycle::pluginMetaObj(expected.first())->depends())
                depends.append(dep.name + QLatin1Char('@') + dep.version);
            QCOMPARE(depends, expected.mid(1));
        }
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
        // Name and reason (a pattern) of each plug-in refused at loading.
        const QList<QPair<const char *, const char *>> refused {{"test-missingdep", "missing dependency test-absent"},
            {"test-tooold", "dependency test-core has version 1\\.2\\.0, 2\\.0\\.0 is needed"},
            {"test-cycle-a", "circular dependency"}, {"test-cycle-b", "circular dependency"},
            {"test-oncycle", "circular dependency"}, {"test-unresolved", ".*hpftest_symbol_nobody_defines.*"},
            {"test-needsunresolved", "dependency test-unresolved could not be loaded"}};
        for (const auto &plugin : refused)
            expectWarning(QStringLiteral("^LifeCycle::loadPlugins: refused %1 - %2$")
                              .arg(QLatin1String(plugin.first), QLatin1String(plugin.second)));
        expectWarning(QStringLiteral("^LifeCycle::loadPlugins: plug-in test-nostart failed to start$"));

        QSignalSpy started(hpf::Listener::instance(), &hpf::Listener::pluginStarted);
        QSignalSpy allStarted(hpf::Listener::instance(), &hpf::Listener::pluginsStarted);
        QVERIFY(!hpf::LifeCycle::loadPlugins());

        // Every plug-in is initialised before any starts.
        const QString records = m_records.join(QLatin1Char(' '));
        QVERIFY2(records.lastIndexOf(QLatin1String("init:")) < records.indexOf(QLatin1String("start:")),
            qPrintable(records));
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

        // The meta objects follow the load order and tell what became of each.
        QStringList listed;
        for (const hpf::PluginMetaObjectPointer &meta : hpf::LifeCycle::pluginMetaObjs()) {
            if (meta->pluginState() >= PluginMetaObject::kInitialized)
                listed.append(meta->name());
            QCOMPARE(meta->plugin() != nullptr, meta->pluginState() >= PluginMetaObject::kLoaded);
        }
        QCOMPARE(listed, order);
        QCOMPARE(hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-core"))->pluginState(), PluginMetaObject::kStarted);
        const auto noStart = hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-nostart"));
        QCOMPARE(noStart->pluginState(), PluginMetaObject::kInitialized);
        QCOMPARE(noStart->errorString(), QStringLiteral("start() returned false"));
        for (const auto &plugin : refused) {
            const auto meta = hpf::LifeCycle::pluginMetaObj(QLatin1String(plugin.first));
            QCOMPARE(meta->pluginState(), PluginMetaObject::kInvalid);
            const QRegularExpression reason(QStringLiteral("^%1$").arg(QLatin1String(plugin.second)));
            QVERIFY2(reason.match(meta->errorString()).hasMatch(), qPrintable(meta->errorString()));
        }
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
