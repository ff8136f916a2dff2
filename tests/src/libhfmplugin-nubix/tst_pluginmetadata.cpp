// SPDX-License-Identifier: GPL-3.0-or-later
// The built module as the host sees it: metadata read by the SDK's life
// cycle before any object exists, then loaded and started by it.
#include "fakehost.h"

#include <hfmbase/urlroute.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>
#include <hpf/plugin.h>

#include <QApplication>
#include <QFile>
#include <QPluginLoader>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString kName = QStringLiteral("hfmplugin-nubix");
}   // namespace

class TestPluginMetadata : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Only this module in the plug-in path, and a host new enough on PATH.
        pluginFile = pluginDir.filePath(QFileInfo(QStringLiteral(NUBIX_PLUGIN_FILE)).fileName());
        QVERIFY(QFile::copy(QStringLiteral(NUBIX_PLUGIN_FILE), pluginFile));

        qputenv("PATH", host.path());
    }

    void lifeCycleReadsMetadata()
    {
        hpf::LifeCycle::setPluginPaths({pluginDir.path()});
        QVERIFY(hpf::LifeCycle::readPlugins());
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(kName);
        QVERIFY(meta);
        QCOMPARE(meta->iid(), QStringLiteral("org.sablo.plugin.filemanager"));
        QCOMPARE(meta->name(), kName);
        QVERIFY(!meta->plugin());
        QVERIFY(!hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix")));
    }

    void hostLoadsAndStartsIt()
    {
        QSignalSpy started(hpf::Listener::instance(), &hpf::Listener::pluginStarted);
        QVERIFY(hpf::LifeCycle::loadPlugins());

        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(kName);
        QCOMPARE(meta->pluginState(), hpf::PluginMetaObject::kStarted);
        QVERIFY(meta->plugin());
        QCOMPARE(meta->plugin()->metaObject()->className(), "hfmplugin_nubix::NubixPlugin");
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.at(0).at(1).toString(), kName);
        QVERIFY(hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix")));
        QVERIFY(hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix-login")));

        // The library hands out one object.
        QPluginLoader loader(pluginFile);
        QCOMPARE(loader.instance(), static_cast<QObject *>(meta->plugin()));
    }

private:
    QTemporaryDir pluginDir;
    const FakeHost host {"hde-file-manager 6.0.49.25\n"};
    QString pluginFile;
};

QTEST_MAIN(TestPluginMetadata)
#include "tst_pluginmetadata.moc"
