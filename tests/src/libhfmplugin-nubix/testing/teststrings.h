// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <initializer_list>

// Test tables are easier to read with plain literals; they are UTF-8.
inline QStringList utf8List(std::initializer_list<const char *> items)
{
    QStringList list;
    for (const char *item : items)
        list.append(QString::fromUtf8(item));
    return list;
}
