// SPDX-License-Identifier: GPL-3.0-or-later
// The JSON document helper: the first line of the input is the document, each
// further line, up to 16, one operation on a dotted path: "g<path>" reads it
// with every getter, "S<path>" reads a string list, "s<path>\t<json>" sets it
// to the value (or to a string list for "l"), "r<path>" removes it. After a
// set the path reads back the value; after a remove it reads nothing; the
// document's text parses back to the same document.
#include "fuzzsupport.h"
#include "json.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {
// Enough for sets, reads and removes mixed on a few paths; the 63 allowed
// before made long inputs a third slower and reached no further code.
constexpr int kMaxOperations = 16;

bool hasHugeInteger(const char *text, int size)
{
    int run = 0;
    for (const char c : std::string_view(text, size_t(size))) {
        run = (c >= '0' && c <= '9') ? run + 1 : 0;
        if (run >= 16)
            return true;
    }
    return false;
}

// Qt orders the keys of an object it builds by their UTF-16 code units and
// those of an object it parses by their UTF-8 bytes; the two disagree once
// the keys hold characters beyond U+FFFF and from U+E000 to U+FFFF (U+FFFD,
// which every invalid byte becomes, among them). A parsed object then misses
// some of its own keys in lookups, and one text with its keys in two orders
// parses to objects that compare unequal. Such inputs (keys or values, spelt
// out or escaped) run for the sanitizers only: the helper cannot do better.
bool keyOrderAmbiguous(const char *input, int size)
{
    const QString text = QString::fromUtf8(input, size);
    bool beyond = false;
    bool high = false;
    for (int i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c == u'\\' && i + 2 < text.size() && text.at(i + 1) == QLatin1Char('u')) {
            const char16_t digit = text.at(i + 2).toLower().unicode();
            beyond = beyond || digit == u'd';
            high = high || digit == u'e' || digit == u'f';
        }
        beyond = beyond || (c >= 0xd800 && c < 0xe000);
        high = high || c >= 0xe000;
    }
    return beyond && high;
}
}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Lines are plain views into the input (even a raw-data QByteArray costs
    // an allocation): the harness allocates as little as it can, so that the
    // fuzzer's time goes to the helper.
    const char *const begin = reinterpret_cast<const char *>(data);
    const char *const end = begin + size;
    const char *next = begin;
    const auto nextLine = [&next, end] {
        const char *const start = next;
        const char *const stop = static_cast<const char *>(std::memchr(start, '\n', size_t(end - start)));
        next = stop ? stop + 1 : end;
        return QLatin1String(start, int((stop ? stop : end) - start));
    };
    const QLatin1String first = nextLine();
    Json json(QString::fromUtf8(first.data(), first.size()));
    (void)json.isValid();
    (void)json.errorString();
    const bool check = !keyOrderAmbiguous(begin, int(size));

    for (int i = 0; next < end && i < kMaxOperations; ++i) {
        const QLatin1String line = nextLine();
        if (line.isEmpty())
            continue;
        const char *const tabAt = static_cast<const char *>(std::memchr(line.data(), '\t', size_t(line.size())));
        const int tab = tabAt ? int(tabAt - line.data()) : -1;
        const QString path = QString::fromUtf8(line.data() + 1, tab <= 0 ? line.size() - 1 : tab - 1);
        const char *const argument = tab < 0 ? nullptr : line.data() + tab + 1;
        const int argumentSize = tab < 0 ? 0 : line.size() - tab - 1;
        // A path of too many keys is refused and must leave the document alone.
        const char operation = line.data()[0];
        const bool refused = operation != 'g' && operation != 'S' && path.count(QLatin1Char('.')) >= Json::kMaxPathKeys;
        const QString before = refused ? json.toString(false) : QString();
        switch (operation) {
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
            QByteArray text;
            text.reserve(argumentSize + 2);
            text.append('[').append(argument, argumentSize).append(']');
            const QJsonArray holder = QJsonDocument::fromJson(text).array();
            const QJsonValue value
                = holder.isEmpty() ? QJsonValue(QString::fromUtf8(argument, argumentSize)) : holder.first();
            json.set(path, value);
            // Integers beyond 2^53 are not kept exactly by Qt's JSON values.
            if (check && !refused && !hasHugeInteger(argument, argumentSize) && json.getJsonValue(path) != value)
                std::abort();
            break;
        }
        case 'l': {
            const QStringList list = QString::fromUtf8(argument, argumentSize).split(QLatin1Char(','));
            json.set(path, list);
            // An empty path or "." reads a top-level array instead.
            const bool topLevel = path.isEmpty() || path == QLatin1String(".");
            if (check && !refused && !topLevel && json.getStringList(path) != list)
                std::abort();
            break;
        }
        case 'r':
            json.remove(path);
            if (check && !refused && !json.getJsonValue(path).isUndefined())
                std::abort();
            break;
        default:
            break;
        }
        if (refused && json.toString(false) != before)
            std::abort();
    }

    // Saved and read back, the document keeps every key and value (as text,
    // or else as parsed documents, for the key order above). A value set
    // deep enough can take the document past the 1024 levels Qt reads back:
    // then that must be the only reason it is not read.
    const QString text = json.toString(false);
    const Json reread(text);
    if (!reread.isValid()) {
        QJsonParseError error;
        (void)QJsonDocument::fromJson(text.toUtf8(), &error);
        if (error.error != QJsonParseError::DeepNesting)
            std::abort();
        return 0;
    }
    const QString again = reread.toString(false);
    if (check && again != text && QJsonDocument::fromJson(again.toUtf8()) != QJsonDocument::fromJson(text.toUtf8()))
        std::abort();
    return 0;
}
