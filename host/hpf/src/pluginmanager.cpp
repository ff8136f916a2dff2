// SPDX-License-Identifier: GPL-3.0-or-later
#include "pluginmanager.h"

#include "hpflog.h"
#include "pluginmetaobject_p.h"

#include <hpf/listener.h>
#include <hpf/plugin.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QLibrary>
#include <QSet>
#include <QVersionNumber>

#include <algorithm>

namespace hpf {

namespace {

const QLatin1String kIid("IID");
const QLatin1String kMetaData("MetaData");
const QLatin1String kName("Name");
const QLatin1String kVersion("Version");
const QLatin1String kCompatVersion("CompatVersion");
const QLatin1String kCategory("Category");
const QLatin1String kDescription("Description");
const QLatin1String kDepends("Depends");
const QLatin1String kLicense("License");
const QLatin1String kCustom("Custom");

// Optional string field: absent is fine, any other type is broken metadata.
bool readString(const QJsonObject &obj, QLatin1String key, QString *out, QString *error)
{
    const QJsonValue v = obj.value(key);
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isString()) {
        *error = QStringLiteral("\"%1\" is not a string").arg(key);
        return false;
    }
    *out = v.toString();
    return true;
}

bool readLicense(const QJsonObject &obj, QStringList *out, QString *error)
{
    const QJsonValue v = obj.value(kLicense);
    if (v.isUndefined() || v.isNull())
        return true;
    if (v.isString()) {
        *out = QStringList {v.toString()};
        return true;
    }
    if (!v.isArray()) {
        *error = QStringLiteral("\"License\" is neither a string nor a list");
        return false;
    }
    const QJsonArray list = v.toArray();
    for (const QJsonValue &item : list) {
        if (!item.isString()) {
            *error = QStringLiteral("\"License\" holds a value that is not a string");
            return false;
        }
        out->append(item.toString());
    }
    return true;
}

// Depends entries are {"Name", "Version"} objects or plain names.
bool readDepends(const QJsonObject &obj, QList<PluginMetaObject::Depend> *out, QString *error)
{
    const QJsonValue v = obj.value(kDepends);
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isArray()) {
        *error = QStringLiteral("\"Depends\" is not a list");
        return false;
    }
    const QJsonArray list = v.toArray();
    for (const QJsonValue &item : list) {
        PluginMetaObject::Depend dep;
        if (item.isString()) {
            dep.name = item.toString();
        } else if (item.isObject()) {
            const QJsonObject o = item.toObject();
            dep.name = o.value(kName).toString();
            dep.version = o.value(kVersion).toString();
        }
        if (dep.name.isEmpty()) {
            *error = QStringLiteral("\"Depends\" holds an entry without a name");
            return false;
        }
        out->append(dep);
    }
    return true;
}

int compareVersions(const QString &a, const QString &b)
{
    return QVersionNumber::compare(QVersionNumber::fromString(a), QVersionNumber::fromString(b));
}

// A required version is met when it lies between the provider's compatible
// version and its version.
bool versionSatisfies(const PluginMetaObject &provider, const QString &required)
{
    if (required.isEmpty())
        return true;
    if (compareVersions(required, provider.version()) > 0)
        return false;
    return provider.compatVersion().isEmpty() || compareVersions(provider.compatVersion(), required) <= 0;
}

bool isUsable(PluginMetaObject::State state)
{
    return state >= PluginMetaObject::kLoaded && state <= PluginMetaObject::kStarted;
}

}   // namespace

bool PluginManager::parseMetaData(PluginMetaObject &object, const QJsonObject &whole, QString *error)
{
    PluginMetaObject::Private *d = object.d.get();
    d->iid = whole.value(kIid).toString();
    if (d->iid != QLatin1String(HPF_PLUGIN_IID)) {
        *error = QStringLiteral("interface id \"%1\" is not \"%2\"").arg(d->iid, QLatin1String(HPF_PLUGIN_IID));
        return false;
    }
    const QJsonValue metaValue = whole.value(kMetaData);
    if (!metaValue.isObject()) {
        *error = QStringLiteral("no metadata object");
        return false;
    }
    const QJsonObject meta = metaValue.toObject();
    d->metaData = meta;
    const QJsonValue name = meta.value(kName);
    if (!name.isString() || name.toString().trimmed().isEmpty()) {
        *error = QStringLiteral("the metadata has no \"Name\"");
        return false;
    }
    d->name = name.toString();
    if (!readString(meta, kVersion, &d->version, error) || !readString(meta, kCompatVersion, &d->compatVersion, error)
        || !readString(meta, kCategory, &d->category, error) || !readString(meta, kDescription, &d->description, error)
        || !readLicense(meta, &d->license, error) || !readDepends(meta, &d->depends, error))
        return false;
    const QJsonValue custom = meta.value(kCustom);
    if (custom.isObject()) {
        d->customData = custom.toObject();
    } else if (!custom.isUndefined() && !custom.isNull()) {
        *error = QStringLiteral("\"Custom\" is not an object");
        return false;
    }
    return true;
}

PluginManager *PluginManager::instance()
{
    static PluginManager manager;
    return &manager;
}

void PluginManager::setPluginPaths(const QStringList &paths)
{
    m_paths = paths;
}

QStringList PluginManager::pluginPaths() const
{
    return m_paths;
}

void PluginManager::setBlackList(const QStringList &names)
{
    m_blackList = names;
}

bool PluginManager::readPlugins()
{
    for (const QString &path : qAsConst(m_paths)) {
        const QDir dir(path);
        if (!dir.exists()) {
            qCDebug(logHpf).noquote() << "LifeCycle::readPlugins: no plug-in folder" << path;
            continue;
        }
        const QFileInfoList files = dir.entryInfoList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo &file : files) {
            const QString filePath = file.canonicalFilePath();
            // Each library is judged once, so a second read neither
            // duplicates plug-ins nor repeats refusals.
            if (filePath.isEmpty() || m_seen.contains(filePath) || !QLibrary::isLibrary(filePath))
                continue;
            m_seen.insert(filePath);
            PluginMetaObjectPointer meta = readOne(filePath);
            if (meta)
                m_plugins.append(meta);
        }
    }

    for (const PluginMetaObjectPointer &meta : qAsConst(m_plugins)) {
        if (meta->pluginState() != PluginMetaObject::kInvalid)
            return true;
    }
    return false;
}

PluginMetaObjectPointer PluginManager::readOne(const QString &filePath)
{
    PluginMetaObjectPointer meta(new PluginMetaObject);
    PluginMetaObject::Private *d = meta->d.get();
    d->fileName = filePath;
    d->state = PluginMetaObject::kReading;

    const QJsonObject whole = QPluginLoader(filePath).metaData();
    if (whole.isEmpty()) {
        qCWarning(logHpf).noquote() << "LifeCycle::readPlugins: refused" << filePath << "- no plug-in metadata";
        return {};
    }
    QString error;
    if (!parseMetaData(*meta, whole, &error)) {
        qCWarning(logHpf).noquote() << "LifeCycle::readPlugins: refused" << filePath << "-" << error;
        return {};
    }
    if (m_blackList.contains(d->name)) {
        qCInfo(logHpf).noquote() << "LifeCycle::readPlugins: skipped black-listed plug-in" << d->name;
        return {};
    }
    for (const PluginMetaObjectPointer &other : qAsConst(m_plugins)) {
        if (other->name() == d->name) {
            qCWarning(logHpf).noquote() << "LifeCycle::readPlugins: refused" << filePath << "- the name" << d->name
                                        << "is already taken by" << other->fileName();
            return {};
        }
    }
    d->state = PluginMetaObject::kRead;
    return meta;
}

void PluginManager::refuse(const PluginMetaObjectPointer &meta, const QString &reason)
{
    meta->d->state = PluginMetaObject::kInvalid;
    meta->d->errorString = reason;
    qCWarning(logHpf).noquote() << "LifeCycle::loadPlugins: refused" << meta->name() << "-" << reason;
}

// Plug-ins still to load, dependencies first, in read order where free.
// Missing, unsuitable or circular dependencies refuse the dependent.
QList<PluginMetaObjectPointer> PluginManager::dependencyOrder()
{
    QList<PluginMetaObjectPointer> pending;
    for (const PluginMetaObjectPointer &meta : qAsConst(m_plugins)) {
        if (meta->pluginState() == PluginMetaObject::kRead)
            pending.append(meta);
    }

    auto provider = [this](const QString &name) -> PluginMetaObjectPointer {
        for (const PluginMetaObjectPointer &meta : qAsConst(m_plugins)) {
            if (meta->name() == name)
                return meta;
        }
        return {};
    };

    for (const PluginMetaObjectPointer &meta : qAsConst(pending)) {
        for (const PluginMetaObject::Depend &dep : meta->d->depends) {
            const PluginMetaObjectPointer other = provider(dep.name);
            if (!other) {
                refuse(meta, QStringLiteral("missing dependency %1").arg(dep.name));
                break;
            }
            if (!versionSatisfies(*other, dep.version)) {
                refuse(meta,
                    QStringLiteral("dependency %1 has version %2, %3 is needed")
                        .arg(dep.name, other->version(), dep.version));
                break;
            }
        }
    }

    QList<PluginMetaObjectPointer> order;
    QSet<const PluginMetaObject *> placed;
    bool progress = true;
    while (progress) {
        progress = false;
        for (const PluginMetaObjectPointer &meta : qAsConst(pending)) {
            if (meta->pluginState() != PluginMetaObject::kRead || placed.contains(meta.data()))
                continue;
            bool ready = true;
            for (const PluginMetaObject::Depend &dep : meta->d->depends) {
                const PluginMetaObjectPointer other = provider(dep.name);
                const PluginMetaObject::State state = other->pluginState();
                if (state == PluginMetaObject::kInvalid) {
                    refuse(meta, QStringLiteral("dependency %1 was refused").arg(dep.name));
                    ready = false;
                    progress = true;
                    break;
                }
                if (!placed.contains(other.data()) && !isUsable(state)) {
                    ready = false;
                    break;
                }
            }
            if (ready && meta->pluginState() == PluginMetaObject::kRead) {
                order.append(meta);
                placed.insert(meta.data());
                progress = true;
            }
        }
    }

    for (const PluginMetaObjectPointer &meta : qAsConst(pending)) {
        if (meta->pluginState() == PluginMetaObject::kRead && !placed.contains(meta.data()))
            refuse(meta, QStringLiteral("circular dependency"));
    }
    return order;
}

bool PluginManager::loadOne(const PluginMetaObjectPointer &meta)
{
    PluginMetaObject::Private *d = meta->d.get();
    for (const PluginMetaObject::Depend &dep : qAsConst(d->depends)) {
        const PluginMetaObjectPointer other = find(dep.name, QString());
        if (!other || !isUsable(other->pluginState())) {
            refuse(meta, QStringLiteral("dependency %1 could not be loaded").arg(dep.name));
            return false;
        }
    }
    d->state = PluginMetaObject::kLoading;
    d->loader.reset(new QPluginLoader(d->fileName));
    QObject *instance = d->loader->instance();
    if (!instance) {
        refuse(meta, d->loader->errorString());
        return false;
    }
    Plugin *plugin = qobject_cast<Plugin *>(instance);
    if (!plugin) {
        refuse(meta, QStringLiteral("the library's object is not a plug-in"));
        return false;
    }
    d->plugin = plugin;
    d->state = PluginMetaObject::kLoaded;
    return true;
}

bool PluginManager::loadPlugins()
{
    const auto pendingCount = std::count_if(m_plugins.cbegin(), m_plugins.cend(),
        [](const PluginMetaObjectPointer &m) { return m->pluginState() == PluginMetaObject::kRead; });
    if (pendingCount == 0)
        return true;

    const QList<PluginMetaObjectPointer> order = dependencyOrder();
    bool allGood = order.size() == pendingCount;

    // Keep the list in load order: earlier loads first, then this round's,
    // then the refused ones.
    QList<PluginMetaObjectPointer> sorted;
    for (const PluginMetaObjectPointer &m : qAsConst(m_plugins)) {
        if (m->d->plugin)
            sorted.append(m);
    }
    sorted.append(order);
    for (const PluginMetaObjectPointer &m : qAsConst(m_plugins)) {
        if (!sorted.contains(m))
            sorted.append(m);
    }
    m_plugins = sorted;

    QList<PluginMetaObjectPointer> loaded;
    for (const PluginMetaObjectPointer &m : order) {
        if (loadOne(m))
            loaded.append(m);
        else
            allGood = false;
    }

    Listener *listener = Listener::instance();
    for (const PluginMetaObjectPointer &m : qAsConst(loaded)) {
        m->d->plugin->initialize();
        m->d->state = PluginMetaObject::kInitialized;
        Q_EMIT listener->pluginInitialized(m->iid(), m->name());
    }
    Q_EMIT listener->pluginsInitialized();

    for (const PluginMetaObjectPointer &m : qAsConst(loaded)) {
        if (!m->d->plugin->start()) {
            m->d->errorString = QStringLiteral("start() returned false");
            qCWarning(logHpf).noquote() << "LifeCycle::loadPlugins: plug-in" << m->name() << "failed to start";
            allGood = false;
            continue;
        }
        m->d->state = PluginMetaObject::kStarted;
        Q_EMIT listener->pluginStarted(m->iid(), m->name());
    }
    Q_EMIT listener->pluginsStarted();
    return allGood;
}

void PluginManager::shutdownPlugins()
{
    for (auto it = m_plugins.crbegin(); it != m_plugins.crend(); ++it) {
        PluginMetaObject::Private *d = (*it)->d.get();
        if (d->state == PluginMetaObject::kStarted) {
            d->plugin->stop();
            d->state = PluginMetaObject::kStopped;
        }
    }
    for (const PluginMetaObjectPointer &meta : qAsConst(m_plugins)) {
        if (meta->d->plugin && meta->d->state >= PluginMetaObject::kLoaded)
            meta->d->state = PluginMetaObject::kShutdown;
    }
}

PluginMetaObjectPointer PluginManager::find(const QString &name, const QString &version) const
{
    for (const PluginMetaObjectPointer &meta : m_plugins) {
        if (meta->name() == name && (version.isEmpty() || meta->version() == version))
            return meta;
    }
    return {};
}

QList<PluginMetaObjectPointer> PluginManager::plugins() const
{
    return m_plugins;
}

}   // namespace hpf
