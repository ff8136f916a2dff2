// SPDX-License-Identifier: GPL-3.0-or-later
// No-data-loss soak: a seeded random walk of file operations through the file
// manager's automation, between a plain folder, the synchronised tree and the
// trash, while the client simulator floods the plug-in with status messages
// and restarts. After every step the whole file set must equal a model kept
// here (names and content hashes), and each reported result must match disk.
//
// NUBIX_SOAK_STEPS (default 200) and NUBIX_SOAK_SEED (default: from the clock)
// choose the walk; the seed is printed first so a failure replays exactly.
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

// `files` with every key below `from` (and `from` itself) moved below `to`.
Files moved(const Files &files, const QString &from, const QString &to, bool keepSource)
{
    Files result;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        const QString &key = it.key();
        const bool inside = key == from || key.startsWith(from + QLatin1Char('/'));
        if (!inside || keepSource)
            result.insert(key, it.value());
        if (inside)
            result.insert(to + key.mid(from.size()), it.value());
    }
    return result;
}

Files removed(const Files &files, const QString &path)
{
    Files result;
    for (auto it = files.cbegin(); it != files.cend(); ++it)
        if (it.key() != path && !it.key().startsWith(path + QLatin1Char('/')))
            result.insert(it.key(), it.value());
    return result;
}

}   // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void randomWalkLosesNothing();
    void cleanupTestCase();

private:
    // Model keys are "local/...", "tree/..." and "trash/..." (the trash's files).
    QString diskPath(const QString &key) const;
    QUrl url(const QString &key) const { return QUrl::fromLocalFile(diskPath(key)); }
    QString keyOf(const QUrl &url) const;
    Files disk() const;
    QStringList keys(bool dirs, bool files, bool inTrash = false) const;
    // A tree entry is named by its own scheme now and then, so that the
    // plug-in's redirection to the local file is part of the walk.
    QString quotedUrl(const QString &key);
    QString pick(const QStringList &list) { return list.at(int(rng.bounded(quint32(list.size())))); }
    QString fresh(const char *stem, const char *suffix = "")
    {
        return QString::fromLatin1(stem) + QString::number(++counter) + QString::fromLatin1(suffix);
    }
    QJsonObject runOperation(const QString &command);
    bool step(int index);
    bool compare(int index, const QString &what);

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

QString SoakTest::diskPath(const QString &key) const
{
    const int slash = key.indexOf(QLatin1Char('/'));
    const QString area = slash < 0 ? key : key.left(slash);
    const QString rest = slash < 0 ? QString() : key.mid(slash);
    if (area == QLatin1String("trash"))
        return tmp->path() + QStringLiteral("/home/.local/share/Trash/files") + rest;
    return tmp->path() + QLatin1Char('/') + area + rest;
}

QString SoakTest::quotedUrl(const QString &key)
{
    QUrl target = url(key);
    const bool inTree = key == QLatin1String("tree") || key.startsWith(QStringLiteral("tree/"));
    if (inTree && rng.bounded(2u) == 0) {
        const QString path = key.size() > 4 ? key.mid(4) : QStringLiteral("/");
        target = QUrl(QStringLiteral("nubix://") + QString::fromLatin1(QUrl::toPercentEncoding(path, "/")));
    }
    return QLatin1Char('"') + target.toString(QUrl::FullyEncoded) + QLatin1Char('"');
}

QString SoakTest::keyOf(const QUrl &url) const
{
    if (url.scheme() == QLatin1String("nubix"))
        return QStringLiteral("tree") + url.path();
    const QString path = url.toLocalFile();
    const QString trash = tmp->path() + QStringLiteral("/home/.local/share/Trash/files");
    if (path.startsWith(trash + QLatin1Char('/')))
        return QStringLiteral("trash") + path.mid(trash.size());
    return path.mid(tmp->path().size() + 1);
}

Files SoakTest::disk() const
{
    Files all;
    for (const char *area : {"local", "tree", "trash"}) {
        const QString name = QString::fromLatin1(area);
        const Files part = snapshot(diskPath(name));
        for (auto it = part.cbegin(); it != part.cend(); ++it)
            all.insert(name + QLatin1Char('/') + it.key(), it.value());
    }
    return all;
}

QStringList SoakTest::keys(bool dirs, bool files, bool inTrash) const
{
    QStringList list;
    for (auto it = model.cbegin(); it != model.cend(); ++it) {
        if (it.key().startsWith(QStringLiteral("trash/")) != inTrash)
            continue;
        const bool isDir = it.value() == kDir;
        if ((isDir && dirs) || (!isDir && files))
            list.append(it.key());
    }
    return list;
}

void SoakTest::initTestCase()
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
    for (const char *area : {"local", "tree"}) {
        QVERIFY(QDir().mkpath(diskPath(QLatin1String(area) + QStringLiteral("/start"))));
        model.insert(QLatin1String(area) + QStringLiteral("/start"), kDir);
        for (int i = 0; i < 3; ++i) {
            const QString key
                = QLatin1String(area) + (i ? QStringLiteral("/start/") : QStringLiteral("/")) + fresh("f", ".txt");
            const QByteArray content = QByteArray::number(rng.generate64()).repeated(1 + i * 50);
            QFile file(diskPath(key));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
            model.insert(key, hashOf(content));
        }
    }
    QCOMPARE(disk(), model);

    const QString home = tmp->path() + QStringLiteral("/home");
    const QString path
        = QFileInfo(QStringLiteral(HDE_FM_BINARY)).absolutePath() + QLatin1Char(':') + qEnvironmentVariable("PATH");
    QVERIFY(sim.start(environment(home, path), QStringLiteral(KELODRIVE_SIM_EXE),
        {QStringLiteral("--root"), diskPath(QStringLiteral("tree")), QStringLiteral("--pace-ms"), QStringLiteral("5"),
            QStringLiteral("--rescan-ms"), QStringLiteral("300")}));
    QVERIFY(host.start(environment(home, path), QStringLiteral(HDE_FM_BINARY)));
    host.send(QStringLiteral("open nubix:///"));
    QVERIFY(host.ping(30000) >= 0);
}

void SoakTest::cleanupTestCase()
{
    host.send(QStringLiteral("quit"));
    host.process.waitForFinished(10000);
    sim.send(QStringLiteral("quit"));
    sim.process.waitForFinished(10000);
}

// Runs one file operation and returns the result it reported (empty when none).
QJsonObject SoakTest::runOperation(const QString &command)
{
    host.send(QStringLiteral("clear-records"));
    host.send(command);
    host.send(QStringLiteral("wait-for idle 20000"));
    const QJsonValue results = host.state(QStringLiteral("results"));
    const QJsonArray list = results.toArray();
    return list.isEmpty() ? QJsonObject() : list.last().toObject();
}

bool SoakTest::compare(int index, const QString &what)
{
    const Files now = disk();
    if (now == model) {
        ++tally[what.section(QLatin1Char(' '), 0, 0)];
        return true;
    }
    QStringList diff;
    for (auto it = model.cbegin(); it != model.cend(); ++it)
        if (now.value(it.key()) != it.value())
            diff.append(QStringLiteral("  expected %1 %2, found %3")
                            .arg(it.key(), QString::fromLatin1(it.value()),
                                QString::fromLatin1(now.value(it.key(), "<missing>"))));
    for (auto it = now.cbegin(); it != now.cend(); ++it)
        if (!model.contains(it.key()))
            diff.append(QStringLiteral("  unexpected %1").arg(it.key()));
    qWarning().noquote() << QStringLiteral("soak seed %1 step %2 (%3): the files differ from the model:\n%4")
                                .arg(seed)
                                .arg(index)
                                .arg(what, diff.join(QLatin1Char('\n')));
    return false;
}

bool SoakTest::step(int index)
{
    const QStringList areas {QStringLiteral("local"), QStringLiteral("tree")};
    QStringList folders = keys(true, false) + areas;
    const QStringList entries = keys(true, true);
    const QString folder = pick(folders);
    const quint32 op = rng.bounded(100u);
    QString what;
    QJsonObject result;

    // The simulator misbehaves now and then, in the middle of the walk.
    const quint32 noise = rng.bounded(100u);
    if (noise < 15) {
        sim.send(QStringLiteral("burst %1").arg(100 + rng.bounded(900u)));
        ++tally[QStringLiteral("(status burst)")];
    } else if (noise < 20) {
        sim.send(QStringLiteral("restart"));
        ++tally[QStringLiteral("(client restart)")];
    } else if (noise < 25) {
        host.send(QStringLiteral("cd last nubix:///"));   // reconnects after a restart
    }

    auto expectOk = [&](const QString &op) {
        if (!result.value(QStringLiteral("ok")).toBool()) {
            qWarning().noquote() << QStringLiteral("soak seed %1 step %2 (%3) failed:").arg(seed).arg(index).arg(op)
                                 << QJsonDocument(result).toJson(QJsonDocument::Compact);
            return false;
        }
        return true;
    };
    auto targets = [&] {
        QStringList list;
        const QJsonArray array = result.value(QStringLiteral("targets")).toArray();
        for (const QJsonValue &value : array)
            list.append(keyOf(QUrl(value.toString())));
        return list;
    };
    // A reported target must be new, in the right folder, and named after its source.
    auto plausible = [&](const QString &target, const QString &inFolder, const QString &sourceName) {
        const QString name = target.mid(target.lastIndexOf(QLatin1Char('/')) + 1);
        const int dot = sourceName.lastIndexOf(QLatin1Char('.'));
        const QString stem = dot > 0 ? sourceName.left(dot) : sourceName;
        const QString ext = dot > 0 ? sourceName.mid(dot) : QString();
        return !model.contains(target) && target.left(target.lastIndexOf(QLatin1Char('/'))) == inFolder
            && name.startsWith(stem) && name.endsWith(ext);
    };

    if (op < 12) {
        const QString key = folder + QLatin1Char('/') + fresh("d");
        what = QStringLiteral("mkdir ") + key;
        result = runOperation(QStringLiteral("mkdir 0 ") + quotedUrl(key));
        if (!expectOk(what) || targets() != QStringList {key})
            return false;
        model.insert(key, kDir);
    } else if (op < 22) {
        const bool suffix = rng.bounded(2u);
        what = QStringLiteral("new file in ") + folder;
        result = runOperation(
            QStringLiteral("touch 0 ") + quotedUrl(folder) + (suffix ? QStringLiteral(" txt") : QString()));
        const QStringList made = targets();
        if (!expectOk(what) || made.size() != 1
            || !plausible(
                made.at(0), folder, suffix ? QStringLiteral("New Document.txt") : QStringLiteral("New Document")))
            return false;
        model.insert(made.at(0), hashOf(QByteArray()));
    } else if (op < 30) {
        // Another program writes a file: the walk needs content to move around.
        const QString key = folder + QLatin1Char('/') + fresh("w", ".bin");
        what = QStringLiteral("write ") + key;
        const QByteArray content = QByteArray::number(rng.generate64()).repeated(1 + int(rng.bounded(2000u)));
        QFile file(diskPath(key));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(content);
        file.close();
        model.insert(key, hashOf(content));
    } else if (entries.isEmpty()) {
        return compare(index, QStringLiteral("nothing to do"));
    } else if (op < 70) {
        // Copy or move one or two entries into a folder outside them.
        const bool move = op >= 50;
        // What a copy does with a symbolic link is the job's business, not this
        // model's: copies leave links (and folders holding one) alone.
        QStringList movable;
        for (const QString &entry : entries) {
            bool hasLink = false;
            for (auto it = model.lowerBound(entry);
                 it != model.cend() && (it.key() == entry || it.key().startsWith(entry + QLatin1Char('/'))); ++it)
                hasLink = hasLink || it.value().startsWith('@');
            if (move || !hasLink)
                movable.append(entry);
        }
        if (movable.isEmpty())
            return compare(index, QStringLiteral("nothing to copy"));
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
                ok = ok && candidate != source && !candidate.startsWith(source + QLatin1Char('/'))
                    && !(move && candidate == source.left(source.lastIndexOf(QLatin1Char('/'))));
            if (ok)
                targetsOk.append(candidate);
        }
        if (targetsOk.isEmpty())
            return compare(index, QStringLiteral("no target"));
        const QString target = pick(targetsOk);
        what = (move ? QStringLiteral("cut ") : QStringLiteral("copy ")) + sources.join(QLatin1Char(' '))
            + QStringLiteral(" to ") + target;
        QString command = (move ? QStringLiteral("cut 0 ") : QStringLiteral("copy 0 ")) + quotedUrl(target);
        for (const QString &source : sources)
            command += QLatin1Char(' ') + quotedUrl(source);
        result = runOperation(command);
        const QStringList made = targets();
        if (!expectOk(what) || made.size() != sources.size())
            return false;
        for (int i = 0; i < sources.size(); ++i) {
            const QString name = sources.at(i).mid(sources.at(i).lastIndexOf(QLatin1Char('/')) + 1);
            if (!plausible(made.at(i), target, name)) {
                qWarning().noquote() << what << "reported" << made;
                return false;
            }
            model = moved(model, sources.at(i), made.at(i), !move);
        }
    } else if (op < 78) {
        const QString source = pick(entries);
        const bool file = model.value(source) != kDir;
        const QString name = fresh("r", file ? ".txt" : "");
        const QString key = source.left(source.lastIndexOf(QLatin1Char('/')) + 1) + name;
        what = QStringLiteral("rename ") + source + QStringLiteral(" to ") + name;
        result = runOperation(QStringLiteral("rename 0 ") + quotedUrl(source) + QLatin1Char(' ') + quotedUrl(key));
        if (!expectOk(what) || targets() != QStringList {key})
            return false;
        model = moved(model, source, key, false);
    } else if (op < 84) {
        const QString source = pick(entries);
        what = QStringLiteral("delete ") + source;
        result = runOperation(QStringLiteral("delete 0 ") + quotedUrl(source));
        if (!expectOk(what))
            return false;
        model = removed(model, source);
    } else if (op < 91) {
        const QString source = pick(entries);
        what = QStringLiteral("trash ") + source;
        result = runOperation(QStringLiteral("trash 0 ") + quotedUrl(source));
        const QStringList made = targets();
        const QString name = source.mid(source.lastIndexOf(QLatin1Char('/')) + 1);
        if (!expectOk(what) || made.size() != 1 || !plausible(made.at(0), QStringLiteral("trash"), name)) {
            qWarning().noquote() << what << "reported" << made;
            return false;
        }
        model = moved(model, source, made.at(0), false);
        trashedFrom.insert(made.at(0), source);
    } else if (op < 96) {
        const QStringList trashed = trashedFrom.keys();
        if (trashed.isEmpty())
            return compare(index, QStringLiteral("nothing to restore"));
        const QString source = pick(trashed);
        const QString original = trashedFrom.take(source);
        const QString folder = original.left(original.lastIndexOf(QLatin1Char('/')));
        what = QStringLiteral("restore ") + source + QStringLiteral(" to ") + original;
        result = runOperation(QStringLiteral("restore 0 ") + quotedUrl(source));
        const QStringList made = targets();
        const QString name = original.mid(original.lastIndexOf(QLatin1Char('/')) + 1);
        if (!expectOk(what) || made.size() != 1 || !(made.at(0) == original || plausible(made.at(0), folder, name))) {
            qWarning().noquote() << what << "reported" << made;
            return false;
        }
        // Folders that went away in the meantime come back.
        for (QString up = folder; up.contains(QLatin1Char('/')); up = up.left(up.lastIndexOf(QLatin1Char('/'))))
            model.insert(up, kDir);
        model = moved(model, source, made.at(0), false);
    } else {
        const QStringList files = keys(false, true);
        if (files.isEmpty())
            return compare(index, QStringLiteral("nothing to link"));
        const QString source = pick(files);
        const QString key = folder + QLatin1Char('/') + fresh("l");
        what = QStringLiteral("link ") + key + QStringLiteral(" to ") + source;
        runOperation(QStringLiteral("link 0 ") + quotedUrl(source) + QLatin1Char(' ') + quotedUrl(key));
        model.insert(key, "@" + diskPath(source).toUtf8());
    }
    return compare(index, what);
}

void SoakTest::randomWalkLosesNothing()
{
    const int steps
        = qEnvironmentVariableIsSet("NUBIX_SOAK_STEPS") ? qEnvironmentVariableIntValue("NUBIX_SOAK_STEPS") : 200;
    for (int i = 1; i <= steps; ++i) {
        if (!step(i)) {
            qInfo().noquote() << "file manager's output:\n"
                              << host.out.mid(qMax(0, host.out.size() - 20)).join(QLatin1Char('\n')) << "\nits log:\n"
                              << host.err.mid(qMax(0, host.err.size() - 40)).join(QLatin1Char('\n'));
            QFAIL(qPrintable(QStringLiteral("soak seed %1 failed at step %2 of %3").arg(seed).arg(i).arg(steps)));
        }
        QVERIFY2(host.running(), "the file manager ended");
    }
    QStringList counts;
    for (auto it = tally.cbegin(); it != tally.cend(); ++it)
        counts.append(QStringLiteral("%1 %2").arg(it.key()).arg(it.value()));
    qInfo("soak seed %u: %d steps, no file lost, duplicated or misplaced (%s)", seed, steps,
        qPrintable(counts.join(QStringLiteral(", "))));
}

QTEST_GUILESS_MAIN(SoakTest)
#include "tst_soak.moc"
