// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchapp.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

namespace nubixbench::detail {

void prepareProcess()
{
    // Code under measurement may keep files under HOME. A function-local
    // static made before any singleton of that code outlives its last save.
    static QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

int runInApplication(int &argc, char **argv, const RunOptions &options)
{
    if (!options.quietCategory.isEmpty()) {
        QLoggingCategory::setFilterRules(QStringLiteral("%1.debug=false\n%1.info=false").arg(options.quietCategory));
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    if (options.setUp && !options.setUp())
        return 1;
    benchmark::RunSpecifiedBenchmarks(options.reporter);
    benchmark::Shutdown();
    return 0;
}

}   // namespace nubixbench::detail
