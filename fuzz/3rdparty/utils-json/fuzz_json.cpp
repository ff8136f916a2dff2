// SPDX-License-Identifier: GPL-3.0-or-later
// The JSON document helper: the first line of the input is the document, each
// further line one operation on a dotted path: "g<path>" reads it with every
// getter, "S<path>" reads a string list, "s<path>\t<json>" sets it to the
// value (or to a string list for "l"), "r<path>" removes it. After a set the
// path reads back the value; after a remove it reads nothing; the document's
// text parses back to the same document.
#include "fuzzsupport.h"
#include "json.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdlib>

namespace {
bool hasHugeInteger(const QByteArray &text)
{
    int run = 0;
    for (const char c : text) {
        run = (c >= '0' && c <= '9') ? run + 1 : 0;
        if (run >= 16)
            return true;
    }
    return false;
}
}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> lines
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size)).split('\n');
    Json json(QString::fromUtf8(lines.first()));
    (void)json.isValid();
    (void)json.errorString();

    for (int i = 1; i < lines.size() && i < 64; ++i) {
        const QByteArray &line = lines.at(i);
        if (line.isEmpty())
            continue;
        const int tab = line.indexOf('\t');
        const QString path = QString::fromUtf8(line.mid(1, tab < 0 ? -1 : tab - 1));
        const QByteArray argument = tab < 0 ? QByteArray() : line.mid(tab + 1);
        switch (line.at(0)) {
        case 'g':
            (void)json.getInt(path, 7);
            (void)json.getBool(path, true);
            (void)json.getDouble(path, 1.5);
            (void)json.getString(path, QStringLiteral("d"));
            (void)json.getJsonObject(path);
            (void)json.getJsonArray(path);
            break;
        case 'S':
            (void)json.getStringList(path);
            break;
        case 's': {
            // A scalar or container, as the text of an array's only element.
            const QJsonArray holder = QJsonDocument::fromJson("[" + argument + "]").array();
            const QJsonValue value = holder.isEmpty() ? QJsonValue(QString::fromUtf8(argument)) : holder.first();
            json.set(path, value);
            // Integers beyond 2^53 are not kept exactly by Qt's JSON values.
            if (!hasHugeInteger(argument) && json.getJsonValue(path) != value)
                std::abort();
            break;
        }
        case 'l': {
            const QStringList list = QString::fromUtf8(argument).split(QLatin1Char(','));
            json.set(path, list);
            // An empty path or "." reads a top-level array instead.
            const bool topLevel = path.isEmpty() || path == QLatin1String(".");
            if (!topLevel && json.getStringList(path) != list)
                std::abort();
            break;
        }
        case 'r':
            json.remove(path);
            if (!json.getJsonValue(path).isUndefined())
                std::abort();
            break;
        default:
            break;
        }
    }

    const QString text = json.toString(false);
    if (Json(text).toString(false) != text)
        std::abort();
    return 0;
}
