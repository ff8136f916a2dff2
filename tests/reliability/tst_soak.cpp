// SPDX-License-Identifier: GPL-3.0-or-later
// No-data-loss soak: a seeded random walk of file operations through the file manager's
// automation, between a plain folder, the synchronised tree and the trash, while the client
// simulator floods the plug-in with status messages and restarts. After every step the whole
// file set must equal a model kept here (names, content hashes, link targets), and each
// reported result must match it. NUBIX_SOAK_STEPS (default 200) and NUBIX_SOAK_SEED (default:
// the clock) choose the walk; the seed is printed first so that a failure replays exactly.
#include "e2eprocess.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace e2e;

namespace {

using Files = QMap<QString, QByteArray>;

const QByteArray kDir = "/";

QByteArray hashOf(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex();
}

QString nameOf(const QString &key)
{
    return key.mid(key.lastIndexOf(QLatin1Char('/')) + 1);
}

QString parentOf(const QString &key)
{
    return key.left(key.lastIndexOf(QLatin1Char('/')));
}

// Whether `key` is `folder` or below it.
bool inside(const QString &key, const QString &folder)
{
    return key == folder || key.startsWith(folder + QLatin1Char('/'));
}

// `files` with every key below `from` (and `from` itself) moved below `to`, or removed when `to` is null.
Files moved(const Files &files, const QString &from, const QString &to, bool keepSource)
{
    Files result;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        const bool below = inside(it.key(), from);
        if (!below || keepSource)
            result.insert(it.key(), it.value());
        if (below && !to.isNull())
            result.insert(to + it.key().mid(from.size()), it.value());
    }
    return result;
}

}   // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        seed = qEnvironmentVariableIsSet("NUBIX_SOAK_SEED") ? qgetenv("NUBIX_SOAK_SEED").toUInt()
                                                            : quint32(QDateTime::currentMSecsSinceEpoch());
        rng.seed(seed);
        qInfo("soak seed %u (replay with NUBIX_SOAK_SEED=%u)", seed, seed);

        tmp.reset(new QTemporaryDir);
        QVERIFY(tmp->isValid());
        for (const char *dir : {"local", "tree", "home/.local/share/Trash/files", "home/.config/kelodrive/App Data"})
            QVERIFY(QDir().mkpath(tmp->path() + QLatin1Char('/') + QLatin1String(dir)));
        // A few files with distinct content in both folders to start from.
        for (const QString &area : {u"local"_s, u"tree"_s}) {
            QVERIFY(QDir().mkpath(diskPath(area + u"/start"_s)));
            model.insert(area + u"/start"_s, kDir);
            for (int i = 0; i < 3; ++i) {
                const QString key = area + (i ? u"/start/"_s : u"/"_s) + fresh("f", ".txt");
                const QByteArray content = QByteArray::number(rng.generate64()).repeated(1 + i * 50);
                QVERIFY(writeFile(diskPath(key), content));
                model.insert(key, hashOf(content));
            }
        }
        QCOMPARE(disk(), model);

        const QProcessEnvironment env = environment(tmp->path() + u"/home"_s, searchPath());
        QVERIFY(sim.start(env, {u"--root"_s, diskPath(u"tree"_s), u"--pace-ms"_s, u"5"_s, u"--rescan-ms"_s, u"300"_s}));
        QVERIFY(host.start(env));
        host.send(u"open nubix:///"_s);
        QVERIFY(host.ping(30000) >= 0);
    }

    void randomWalkLosesNothing()
    {
        const int steps
            = qEnvironmentVariableIsSet("NUBIX_SOAK_STEPS") ? qEnvironmentVariableIntValue("NUBIX_SOAK_STEPS") : 200;
        for (int i = 1; i <= steps; ++i) {
            if (!step(i)) {
                qInfo().noquote() << "file manager's output:\n"
                                  << host.out.mid(qMax(0, host.out.size() - 20)).join(QLatin1Char('\n'))
                                  << "\nits log:\n"
                                  << host.err.mid(qMax(0, host.err.size() - 40)).join(QLatin1Char('\n'));
                QFAIL(qPrintable(u"soak seed %1 failed at step %2 of %3"_s.arg(seed).arg(i).arg(steps)));
            }
            QVERIFY2(host.running(), "the file manager ended");
        }
        QStringList counts;
        for (auto it = tally.cbegin(); it != tally.cend(); ++it)
            counts.append(u"%1 %2"_s.arg(it.key()).arg(it.value()));
        qInfo("soak seed %u: %d steps, no file lost, duplicated or misplaced (%s)", seed, steps,
            qPrintable(counts.join(u", "_s)));
    }

    void cleanupTestCase()
    {
        host.send(u"quit"_s);
        host.process.waitForFinished(10000);
        sim.send(u"quit"_s);
        sim.process.waitForFinished(10000);
    }

private:
    // Model keys are "local/...", "tree/..." and "trash/..." (the trash's files).
    QString diskPath(const QString &key) const
    {
        const int slash = key.indexOf(QLatin1Char('/'));
        const QString area = slash < 0 ? key : key.left(slash);
        const QString rest = slash < 0 ? QString() : key.mid(slash);
        if (area == QLatin1String("trash"))
            return tmp->path() + u"/home/.local/share/Trash/files"_s + rest;
        return tmp->path() + QLatin1Char('/') + area + rest;
    }

    QString keyOf(const QUrl &url) const
    {
        if (url.scheme() == QLatin1String("nubix"))
            return u"tree"_s + url.path();
        const QString path = url.toLocalFile();
        const QString trash = tmp->path() + u"/home/.local/share/Trash/files"_s;
        if (path.startsWith(trash + QLatin1Char('/')))
            return u"trash"_s + path.mid(trash.size());
        return path.mid(tmp->path().size() + 1);
    }

    Files disk() const
    {
        Files all;
        for (const QString &area : {u"local"_s, u"tree"_s, u"trash"_s}) {
            const Files part = snapshot(diskPath(area));
            for (auto it = part.cbegin(); it != part.cend(); ++it)
                all.insert(area + QLatin1Char('/') + it.key(), it.value());
        }
        return all;
    }

    // Folders and/or files of the model outside the trash.
    QStringList keys(bool dirs, bool files) const
    {
        QStringList list;
        for (auto it = model.cbegin(); it != model.cend(); ++it)
            if (!it.key().startsWith(u"trash/"_s) && (it.value() == kDir ? dirs : files))
                list.append(it.key());
        return list;
    }

    // A tree entry is named by its own scheme now and then: the plug-in's redirection is walked too.
    QString quotedUrl(const QString &key)
    {
        QUrl target = QUrl::fromLocalFile(diskPath(key));
        const bool inTree = key == QLatin1String("tree") || key.startsWith(u"tree/"_s);
        if (inTree && rng.bounded(2u) == 0) {
            const QString path = key.size() > 4 ? key.mid(4) : u"/"_s;
            target = QUrl(u"nubix://"_s + QString::fromLatin1(QUrl::toPercentEncoding(path, "/")));
        }
        return QLatin1Char('"') + target.toString(QUrl::FullyEncoded) + QLatin1Char('"');
    }

    QString pick(const QStringList &list) { return list.at(int(rng.bounded(quint32(list.size())))); }
    QString fresh(const char *stem, const char *suffix = "")
    {
        return QString::fromLatin1(stem) + QString::number(++counter) + QString::fromLatin1(suffix);
    }

    bool step(int index)
    {
        const QStringList folders = keys(true, false) + QStringList {u"local"_s, u"tree"_s};
        const QStringList entries = keys(true, true);
        const QString folder = pick(folders);
        const quint32 op = rng.bounded(100u);

        // The simulator misbehaves now and then, in the middle of the walk.
        const quint32 noise = rng.bounded(100u);
        if (noise < 15) {
            sim.send(u"burst %1"_s.arg(100 + rng.bounded(900u)));
            ++tally[u"(status burst)"_s];
        } else if (noise < 20) {
            sim.send(u"restart"_s);
            ++tally[u"(client restart)"_s];
        } else if (noise < 25) {
            host.send(u"cd last nubix:///"_s);   // reconnects after a restart
        }

        QString what;
        QJsonObject result;
        QStringList made;   // the targets it reported
        const auto run = [&](const QString &command) {
            host.send(u"clear-records"_s);
            host.send(command);
            host.send(u"wait-for idle 20000"_s);
            const QJsonArray results = host.state(u"results"_s).toArray();
            result = results.isEmpty() ? QJsonObject() : results.last().toObject();
            made.clear();
            for (const QJsonValue &target : result.value(u"targets"_s).toArray())
                made.append(keyOf(QUrl(target.toString())));
        };
        // The operation must have succeeded and its targets must fit.
        const auto succeeded = [&](bool fits) {
            if (result.value(u"ok"_s).toBool() && fits)
                return true;
            qWarning().noquote()
                << u"soak seed %1 step %2 (%3) failed or reported other targets:"_s.arg(seed).arg(index).arg(what)
                << QJsonDocument(result).toJson(QJsonDocument::Compact);
            return false;
        };
        // A reported target must be new, in the right folder, and named after its source.
        const auto plausible = [&](const QString &target, const QString &inFolder, const QString &sourceName) {
            const int dot = sourceName.lastIndexOf(QLatin1Char('.'));
            const QString stem = dot > 0 ? sourceName.left(dot) : sourceName;
            const QString ext = dot > 0 ? sourceName.mid(dot) : QString();
            return !model.contains(target) && parentOf(target) == inFolder && nameOf(target).startsWith(stem)
                && nameOf(target).endsWith(ext);
        };

        if (op < 12) {
            const QString key = folder + QLatin1Char('/') + fresh("d");
            what = u"mkdir "_s + key;
            run(u"mkdir 0 "_s + quotedUrl(key));
            if (!succeeded(made == QStringList {key}))
                return false;
            model.insert(key, kDir);
        } else if (op < 22) {
            const bool suffix = rng.bounded(2u);
            what = u"new file in "_s + folder;
            run(u"touch 0 "_s + quotedUrl(folder) + (suffix ? u" txt"_s : QString()));
            if (!succeeded(made.size() == 1
                    && plausible(made.at(0), folder, suffix ? u"New Document.txt"_s : u"New Document"_s)))
                return false;
            model.insert(made.at(0), hashOf(QByteArray()));
        } else if (op < 30) {
            // Another program writes a file: the walk needs content to move around.
            const QString key = folder + QLatin1Char('/') + fresh("w", ".bin");
            what = u"write "_s + key;
            const QByteArray content = QByteArray::number(rng.generate64()).repeated(1 + int(rng.bounded(2000u)));
            if (!writeFile(diskPath(key), content))
                return false;
            model.insert(key, hashOf(content));
        } else if (entries.isEmpty()) {
            return compare(index, u"nothing to do"_s);
        } else if (op < 70) {
            // Copy or move one or two entries into a folder outside them.
            const bool move = op >= 50;
            // What a copy does with a link is the job's business: copies leave links (and folders
            // holding one) alone.
            QStringList movable;
            for (const QString &entry : entries) {
                bool hasLink = false;
                for (auto it = model.lowerBound(entry); it != model.cend() && inside(it.key(), entry); ++it)
                    hasLink = hasLink || it.value().startsWith('@');
                if (move || !hasLink)
                    movable.append(entry);
            }
            if (movable.isEmpty())
                return compare(index, u"nothing to copy"_s);
            QStringList sources {pick(movable)};
            if (rng.bounded(3u) == 0) {
                const QString second = pick(movable);
                if (!second.startsWith(sources.at(0)) && !sources.at(0).startsWith(second))
                    sources.append(second);
            }
            QStringList targetsOk;
            for (const QString &candidate : folders) {
                bool ok = true;
                for (const QString &source : sources)
                    ok = ok && !inside(candidate, source) && !(move && candidate == parentOf(source));
                if (ok)
                    targetsOk.append(candidate);
            }
            if (targetsOk.isEmpty())
                return compare(index, u"no target"_s);
            const QString target = pick(targetsOk);
            what = (move ? u"cut "_s : u"copy "_s) + sources.join(QLatin1Char(' ')) + u" to "_s + target;
            QString command = (move ? u"cut 0 "_s : u"copy 0 "_s) + quotedUrl(target);
            for (const QString &source : sources)
                command += QLatin1Char(' ') + quotedUrl(source);
            run(command);
            bool fits = made.size() == sources.size();
            for (int i = 0; fits && i < sources.size(); ++i)
                fits = plausible(made.at(i), target, nameOf(sources.at(i)));
            if (!succeeded(fits))
                return false;
            for (int i = 0; i < sources.size(); ++i)
                model = moved(model, sources.at(i), made.at(i), !move);
        } else if (op < 78) {
            const QString source = pick(entries);
            const QString name = fresh("r", model.value(source) != kDir ? ".txt" : "");
            const QString key = parentOf(source) + QLatin1Char('/') + name;
            what = u"rename "_s + source + u" to "_s + name;
            run(u"rename 0 "_s + quotedUrl(source) + QLatin1Char(' ') + quotedUrl(key));
            if (!succeeded(made == QStringList {key}))
                return false;
            model = moved(model, source, key, false);
        } else if (op < 84) {
            const QString source = pick(entries);
            what = u"delete "_s + source;
            run(u"delete 0 "_s + quotedUrl(source));
            if (!succeeded(true))
                return false;
            model = moved(model, source, QString(), false);
        } else if (op < 91) {
            const QString source = pick(entries);
            what = u"trash "_s + source;
            run(u"trash 0 "_s + quotedUrl(source));
            if (!succeeded(made.size() == 1 && plausible(made.at(0), u"trash"_s, nameOf(source))))
                return false;
            model = moved(model, source, made.at(0), false);
            trashedFrom.insert(made.at(0), source);
        } else if (op < 96) {
            const QStringList trashed = trashedFrom.keys();
            if (trashed.isEmpty())
                return compare(index, u"nothing to restore"_s);
            const QString source = pick(trashed);
            const QString original = trashedFrom.take(source);
            what = u"restore "_s + source + u" to "_s + original;
            run(u"restore 0 "_s + quotedUrl(source));
            if (!succeeded(made.size() == 1
                    && (made.at(0) == original || plausible(made.at(0), parentOf(original), nameOf(original)))))
                return false;
            // Folders that went away in the meantime come back.
            for (QString up = parentOf(original); up.contains(QLatin1Char('/')); up = parentOf(up))
                model.insert(up, kDir);
            model = moved(model, source, made.at(0), false);
        } else {
            const QStringList files = keys(false, true);
            if (files.isEmpty())
                return compare(index, u"nothing to link"_s);
            const QString source = pick(files);
            const QString key = folder + QLatin1Char('/') + fresh("l");
            what = u"link "_s + key + u" to "_s + source;
            run(u"link 0 "_s + quotedUrl(source) + QLatin1Char(' ') + quotedUrl(key));
            model.insert(key, "@" + diskPath(source).toUtf8());
        }
        return compare(index, what);
    }

    bool compare(int index, const QString &what)
    {
        const Files now = disk();
        if (now == model) {
            ++tally[what.section(QLatin1Char(' '), 0, 0)];
            return true;
        }
        QStringList diff;
        for (auto it = model.cbegin(); it != model.cend(); ++it)
            if (now.value(it.key()) != it.value())
                diff.append(u"  expected %1 %2, found %3"_s.arg(
                    it.key(), QString::fromLatin1(it.value()), QString::fromLatin1(now.value(it.key(), "<missing>"))));
        for (auto it = now.cbegin(); it != now.cend(); ++it)
            if (!model.contains(it.key()))
                diff.append(u"  unexpected %1"_s.arg(it.key()));
        qWarning().noquote()
            << u"soak seed %1 step %2 (%3): the files differ from the model:\n%4"_s.arg(seed).arg(index).arg(
                   what, diff.join(QLatin1Char('\n')));
        return false;
    }

    std::unique_ptr<QTemporaryDir> tmp;
    QRandomGenerator rng;
    quint32 seed = 0;
    int counter = 0;
    Files model;
    // Where each item of the trash came from.
    QMap<QString, QString> trashedFrom;
    // How often each operation and each disturbance happened, for the record.
    QMap<QString, int> tally;
    Host host;
    Sim sim;
};

QTEST_GUILESS_MAIN(SoakTest)
#include "tst_soak.moc"
