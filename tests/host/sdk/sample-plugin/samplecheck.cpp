// SPDX-License-Identifier: GPL-3.0-or-later
// Usage: sample-check <plug-in folder>. Exits 0 when the sample plug-in was
// read, started and answers on its slot.
#include <hfmbase/urlroute.h>
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QTextStream>

static int fail(const QString &why)
{
    QTextStream(stderr) << "sample-check: " << why << '\n';
    return 1;
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc < 2)
        return fail(QStringLiteral("no plug-in folder given"));
    htk::MessageDialog::setAutomationMode(true);

    hpf::LifeCycle::setPluginPaths({QString::fromLocal8Bit(argv[1])});
    if (!hpf::LifeCycle::readPlugins())
        return fail(QStringLiteral("nothing read"));
    const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(QStringLiteral("hde-sample-plugin"));
    if (!meta)
        return fail(QStringLiteral("the sample's metadata was not read"));
    if (!hpf::LifeCycle::loadPlugins() || meta->pluginState() != hpf::PluginMetaObject::kStarted)
        return fail(QStringLiteral("the sample did not start: ") + meta->errorString());

    const QVariant answer
        = hpf::channel()->push(QStringLiteral("hfmplugin_sample"), QStringLiteral("slot_Greet"), QStringLiteral("SDK"));
    if (answer.toString() != QLatin1String("Hello, SDK"))
        return fail(QStringLiteral("unexpected answer: ") + answer.toString());
    const QList<htk::MessageDialog::Record> dialogs = htk::MessageDialog::recordedDialogs();
    if (dialogs.size() != 1 || dialogs.at(0).title != QLatin1String("Sample started"))
        return fail(QStringLiteral("the start dialog was not recorded"));
    if (!hfmbase::UrlRoute::hasScheme(QStringLiteral("sample")))
        return fail(QStringLiteral("the scheme was not registered"));
    hpf::LifeCycle::shutdownPlugins();
    return 0;
}
