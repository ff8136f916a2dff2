// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchtree.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

namespace nubixbench {

bool writeFiles(const QString &dir, int count)
{
    for (int i = 0; i < count; ++i) {
        QFile file(dir + QStringLiteral("/file-%1.txt").arg(i, 5, 10, QLatin1Char('0')));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(QByteArray(i % 97, 'x'));
    }
    return true;
}

const QString &sharedTree()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        if (dir.isValid() && writeFiles(dir.path(), kTreeFiles))
            return dir.path();
        std::fprintf(stderr, "cannot create the test tree\n");
        return QString();
    }();
    return path;
}

}   // namespace nubixbench
