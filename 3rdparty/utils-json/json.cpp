// SPDX-License-Identifier: GPL-3.0-or-later
#include "json.h"
#include "json_p.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonParseError>
#include <QLoggingCategory>
#include <QSet>
#include <QTextStream>

#include <cstring>
#include <utility>
#include <vector>

namespace {
Q_LOGGING_CATEGORY(logJson, "org.sablo.hde.filemanager.plugin.hfmplugin_nubix")

const QLatin1Char kSeparator('.');
}   // namespace

QJsonValue JsonPrivate::getValue(const QJsonObject &from, const QString &path)
{
    // Walks the keys in place: getters run often, and splitting the path
    // cost an allocation per key.
    const QStringView keys(path);
    QJsonObject current = from;
    int start = 0;
    for (int dot = path.indexOf(kSeparator); dot >= 0; dot = path.indexOf(kSeparator, start)) {
        current = current.value(keys.mid(start, dot - start)).toObject();
        start = dot + 1;
    }
    return current.value(keys.mid(start));
}

// Walks the path by views into it, without recursion: the objects on the
// way are read top down, the last one changed, and all stored back bottom
// up. A missing or non-object step becomes an empty object.
template <typename Change> void JsonPrivate::change(QJsonObject &root, QStringView path, Change change)
{
    std::vector<QJsonObject> way;
    std::vector<QStringView> keys;
    way.push_back(std::move(root));
    int start = 0;
    for (int dot = int(path.indexOf(kSeparator)); dot >= 0; dot = int(path.indexOf(kSeparator, start))) {
        keys.push_back(path.mid(start, dot - start));
        way.push_back(way.back().value(keys.back()).toObject());
        start = dot + 1;
    }
    change(way.back(), path.mid(start));
    for (size_t i = keys.size(); i > 0; --i)
        way[i - 1].insert(keys[i - 1], way[i]);
    root = std::move(way.front());
}

void JsonPrivate::setValue(QJsonObject &object, QStringView path, const QJsonValue &value)
{
    change(object, path, [&value](QJsonObject &last, QStringView key) { last.insert(key, value); });
}

void JsonPrivate::remove(QJsonObject &object, QStringView path)
{
    // The same walk as setValue(): objects made or replaced on the way are kept.
    change(object, path, [](QJsonObject &last, QStringView key) { last.remove(key); });
}

bool JsonPrivate::refused(const QString &path, const char *operation)
{
    if (path.count(kSeparator) < Json::kMaxPathKeys)
        return false;
    qCWarning(logJson) << "Json: refused to" << operation << "a path of more than" << Json::kMaxPathKeys << "keys";
    return true;
}

namespace {
// A key as the parser would store it: escaped keys decoded, others as they are.
QByteArray canonicalKey(const char *begin, int length)
{
    const QByteArray raw = QByteArray::fromRawData(begin, length);
    if (!raw.contains('\\'))
        return raw;
    // An array of one string never meets the repeated-key fault.
    const QJsonArray holder = QJsonDocument::fromJson("[\"" + raw + "\"]").array();
    return holder.isEmpty() ? raw : holder.first().toString().toUtf8();
}

struct ObjectScan
{
    bool isObject = false;
    bool expectKey = true;
    const char *key = nullptr;
    int keyLength = 0;
    QSet<QByteArray> containerKeys;
};
}   // namespace

int Json::repeatedContainerKeyAt(const QByteArray &text)
{
    std::vector<ObjectScan> levels;
    const char *p = text.constData();
    const char *const end = p + text.size();
    while (p < end) {
        switch (*p) {
        case '"': {
            const char *const begin = ++p;
            // The closing quote is the first one not escaped by an odd run of backslashes.
            for (;;) {
                const void *quote = std::memchr(p, '"', size_t(end - p));
                if (!quote)
                    return -1;   // the parser stops at the unterminated string
                p = static_cast<const char *>(quote);
                int backslashes = 0;
                for (const char *b = p - 1; b >= begin && *b == '\\'; --b)
                    ++backslashes;
                if (backslashes % 2 == 0)
                    break;
                ++p;
            }
            if (!levels.empty() && levels.back().isObject && levels.back().expectKey) {
                ObjectScan &object = levels.back();
                object.expectKey = false;
                object.key = begin;
                object.keyLength = int(p - begin);
                if (!object.containerKeys.isEmpty()
                    && object.containerKeys.contains(canonicalKey(begin, object.keyLength)))
                    return int(begin - 1 - text.constData());
            }
            ++p;
            break;
        }
        case '{':
        case '[':
            if (!levels.empty() && levels.back().isObject && levels.back().key) {
                ObjectScan &object = levels.back();
                QByteArray key = canonicalKey(object.key, object.keyLength);
                key.detach();   // the text may go before the set does
                object.containerKeys.insert(key);
                object.key = nullptr;
            }
            levels.emplace_back();
            levels.back().isObject = *p == '{';
            ++p;
            break;
        case '}':
        case ']':
            if (!levels.empty())
                levels.pop_back();
            ++p;
            break;
        case ',':
            if (!levels.empty() && levels.back().isObject) {
                levels.back().expectKey = true;
                levels.back().key = nullptr;
            }
            ++p;
            break;
        default:
            ++p;
            break;
        }
    }
    return -1;
}

Json::Json(const QString &jsonOrFilePath, bool fromFile) : d(new JsonPrivate)
{
    QByteArray bytes("{}");
    if (fromFile) {
        QFile file(jsonOrFilePath);
        if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            bytes = file.readAll();
        } else {
            d->valid = false;
            d->error = QStringLiteral("Cannot open the file: %1").arg(jsonOrFilePath);
            qCDebug(logJson) << d->error;
        }
    } else if (!jsonOrFilePath.isEmpty()) {
        bytes = jsonOrFilePath.toUtf8();
    }

    const int repeated = repeatedContainerKeyAt(bytes);
    if (repeated >= 0) {
        // Refused before the parser, which would leak the earlier value.
        d->valid = false;
        d->error = QStringLiteral("%1\nOffset: %2").arg(QStringLiteral("repeated object key")).arg(repeated);
        return;
    }
    QJsonParseError parseError;
    d->document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        d->valid = false;
        d->error = QStringLiteral("%1\nOffset: %2").arg(parseError.errorString()).arg(parseError.offset);
    }
    d->root = d->document.object();
}

Json::~Json()
{
    delete d;
}

bool Json::isValid() const
{
    return d->valid;
}

QString Json::errorString() const
{
    return d->error;
}

QJsonValue Json::getJsonValue(const QString &path, const QJsonObject &from) const
{
    return JsonPrivate::getValue(from.isEmpty() ? d->root : from, path);
}

int Json::getInt(const QString &path, int def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toInt(def);
}

bool Json::getBool(const QString &path, bool def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toBool(def);
}

double Json::getDouble(const QString &path, double def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toDouble(def);
}

QString Json::getString(const QString &path, const QString &def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toString(def);
}

QJsonObject Json::getJsonObject(const QString &path, const QJsonObject &from) const
{
    return getJsonValue(path, from).toObject();
}

QJsonArray Json::getJsonArray(const QString &path, const QJsonObject &from) const
{
    if ((path.isEmpty() || path == QLatin1String(".")) && from.isEmpty())
        return d->document.array();
    return getJsonValue(path, from).toArray();
}

QStringList Json::getStringList(const QString &path, const QJsonObject &from) const
{
    const QJsonArray array = getJsonArray(path, from);
    QStringList list;
    list.reserve(array.size());
    for (const QJsonValue &value : array)
        list.append(value.toString());
    return list;
}

void Json::set(const QString &path, const QJsonValue &value)
{
    if (!JsonPrivate::refused(path, "set"))
        JsonPrivate::setValue(d->root, path, value);
}

void Json::set(const QString &path, const QStringList &list)
{
    set(path, QJsonArray::fromStringList(list));
}

void Json::remove(const QString &path)
{
    if (!JsonPrivate::refused(path, "remove"))
        JsonPrivate::remove(d->root, path);
}

QString Json::toString(bool pretty) const
{
    return QString::fromUtf8(QJsonDocument(d->root).toJson(pretty ? QJsonDocument::Indented : QJsonDocument::Compact));
}

bool Json::save(const QString &path, bool pretty) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return false;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << toString(pretty);
    stream.flush();
    const bool ok = stream.status() == QTextStream::Ok;
    file.close();
    return ok && file.error() == QFileDevice::NoError;
}
