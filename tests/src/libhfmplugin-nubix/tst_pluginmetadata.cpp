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
#include <QJsonArray>
#include <QJsonDocument>
#include <QPluginLoader>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString kName = QStringLiteral("hfmplugin-nubix");

QJsonObject expectedCustom()
{
    const QJsonObject sidebarInfo {
        {QStringLiteral("Group"), QStringLiteral("Group_Common")},
        {QStringLiteral("Icon"), QStringLiteral("drive-harddisk-symbolic")},
        {QStringLiteral("Name"), QStringLiteral("Nubix")},
        {QStringLiteral("ReportName"), QStringLiteral("Nubix")},
        {QStringLiteral("VisiableControl"), QStringLiteral("nubix")},
    };
    const QJsonObject quickAccess {
        {QStringLiteral("Url"), QStringLiteral("nubix-login:///")},
        {QStringLiteral("DefaultIndex"), 7},
        {QStringLiteral("MarkName"), QStringLiteral("Nubix")},
        {QStringLiteral("SidebarInfo"), sidebarInfo},
    };
    return QJsonObject {
        {QStringLiteral("PluginSchemes"), QJsonArray {QStringLiteral("nubix"), QStringLiteral("nubix-login")}},
        {QStringLiteral("QuickAccessDisplay"), QJsonArray {quickAccess}},
    };
}
}   // namespace

class TestPluginMetadata : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void declaresEntryPoints();
    void lifeCycleReadsMetadata();
    void hostLoadsAndStartsIt();

private:
    QTemporaryDir pluginDir;
    const FakeHost host {"hde-file-manager 6.0.49.25\n"};
    QString pluginFile;
};

void TestPluginMetadata::initTestCase()
{
    // Only this module in the plug-in path, and a host new enough on PATH.
    pluginFile = pluginDir.filePath(QFileInfo(QStringLiteral(NUBIX_PLUGIN_FILE)).fileName());
    QVERIFY(QFile::copy(QStringLiteral(NUBIX_PLUGIN_FILE), pluginFile));

    qputenv("PATH", host.path());
}

void TestPluginMetadata::declaresEntryPoints()
{
    const QJsonObject whole = QPluginLoader(pluginFile).metaData();
    QCOMPARE(whole.value(QStringLiteral("IID")).toString(), QStringLiteral("org.sablo.plugin.filemanager"));
    QCOMPARE(whole.value(QStringLiteral("className")).toString(), QStringLiteral("NubixPlugin"));
}

void TestPluginMetadata::lifeCycleReadsMetadata()
{
    hpf::LifeCycle::setPluginPaths({pluginDir.path()});
    QVERIFY(hpf::LifeCycle::readPlugins());
    const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(kName);
    QVERIFY(meta);
    QCOMPARE(meta->iid(), QStringLiteral("org.sablo.plugin.filemanager"));
    QCOMPARE(meta->name(), kName);
    QCOMPARE(meta->version(), QStringLiteral("1.0.0"));
    QCOMPARE(meta->compatVersion(), QStringLiteral("1.0.0"));
    QCOMPARE(meta->category(), QString());
    QCOMPARE(meta->description(), QStringLiteral("The nubix plugin for the hde-file-manager."));
    QVERIFY(meta->depends().isEmpty());
    QVERIFY(meta->license().isEmpty());
    QVERIFY(meta->metaData().value(QStringLiteral("Depends")).isArray());
    QVERIFY(meta->metaData().value(QStringLiteral("License")).isArray());
    QCOMPARE(meta->customData(), expectedCustom());
    QVERIFY(!meta->plugin());
    QVERIFY(!hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix")));
}

void TestPluginMetadata::hostLoadsAndStartsIt()
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

QTEST_MAIN(TestPluginMetadata)
#include "tst_pluginmetadata.moc"
