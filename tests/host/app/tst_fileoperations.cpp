// SPDX-License-Identifier: GPL-3.0-or-later
// The host's file operations on temporary trees: as listeners of their events
// (result events, callbacks, redirected URLs of a plug-in scheme, failures
// told in dialogs), and the file-system work behind them (free names, whole
// trees, links, special files, read-only folders, the trash), never losing or
// overwriting a file.
#include "core/filejobs.h"
#include "core/fileoperations.h"
#include "core/operationlog.h"
#include "filetestutils.h"

#include <hfmbase/abstractjobhandler.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/hostmetatypes.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cstring>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace filetest;
using hdeapp::TransferResult;
using hfmbase::AbstractJobHandler;
using Key = hfmbase::AbstractJobHandler::JobCallbackKey;

namespace {

QString gRoot;

// "redir:///x" stands for <root>/x and may be redirected; "sealed:///x"
// stands for nothing local.
class RedirInfo : public hfmbase::ProxyFileInfo
{
public:
    explicit RedirInfo(const QUrl &url) : ProxyFileInfo(url)
    {
        setProxy(
            hfmbase::InfoFactory::create<hfmbase::FileInfo>(local(), hfmbase::InfoFactory::CreateType::kCreateNoCache));
    }
    QUrl local() const { return QUrl::fromLocalFile(gRoot + url.path()); }
    QUrl urlOf(FileUrlInfoType type) const override
    {
        return type == FileUrlInfoType::kRedirectedFileUrl ? local() : ProxyFileInfo::urlOf(type);
    }
    bool canAttributes(FileCanType type) const override
    {
        return type == FileCanType::kCanRedirectionFileUrl || ProxyFileInfo::canAttributes(type);
    }
};

class SealedInfo : public hfmbase::FileInfo
{
public:
    using FileInfo::FileInfo;
    bool exists() const override { return true; }
    QString fileName() const override { return url.fileName(); }
    qint64 size() const override { return 0; }
};

const auto kNoFlags = AbstractJobHandler::JobFlags(AbstractJobHandler::JobFlag::kNoHint);

QList<QUrl> urlsOf(const QVariant &value)
{
    return value.value<QList<QUrl>>();
}

// Drops from the calling thread's effective capabilities those that let
// root ignore mode bits, and puts them back when it goes out of scope; for
// other users it changes nothing.
class ModeBitsApply
{
public:
    ModeBitsApply()
    {
        header.version = _LINUX_CAPABILITY_VERSION_3;
        header.pid = 0;
        if (::syscall(SYS_capget, &header, saved) != 0)
            return;
        __user_cap_data_struct lowered[2];
        std::memcpy(lowered, saved, sizeof saved);
        for (int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            lowered[CAP_TO_INDEX(cap)].effective &= ~CAP_TO_MASK(cap);
        dropped = ::syscall(SYS_capset, &header, lowered) == 0;
    }
    ~ModeBitsApply()
    {
        if (dropped)
            ::syscall(SYS_capset, &header, saved);
    }
    bool ok() const { return dropped; }

private:
    __user_cap_header_struct header {};
    __user_cap_data_struct saved[2] {};
    bool dropped = false;
};

// A folder on another file system than the temporary one, or null.
std::unique_ptr<QTemporaryDir> folderElsewhere()
{
    struct stat there;
    struct stat here;
    if (::stat("/dev/shm", &there) != 0 || ::stat(QFile::encodeName(QDir::tempPath()).constData(), &here) != 0
        || here.st_dev == there.st_dev)
        return nullptr;
    auto dir = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/filejobs-XXXXXX"));
    return dir->isValid() ? std::move(dir) : nullptr;
}

int modeOf(const QString &path)
{
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

// Sets an environment variable, or unsets it for a null value.
void setEnv(const char *name, const QString &value)
{
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, value.toUtf8());
}

}   // namespace

class FileOperationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        hdehost::registerHostMetaTypes();
        htk::MessageDialog::setAutomationMode(true);
        hfmbase::InfoFactory::regClass<RedirInfo>(QStringLiteral("redir"), hfmbase::InfoFactory::RegOption::kNoCache);
        hfmbase::InfoFactory::regClass<SealedInfo>(QStringLiteral("sealed"), hfmbase::InfoFactory::RegOption::kNoCache);
        log.attach();
        operations = new hdeapp::FileOperations(&log, this);
        operations->attach();
        operations->setRecordOnly(true);
        for (int event : {hfmbase::kRenameFileResult, hfmbase::kCopyResult, hfmbase::kCutFileResult,
                 hfmbase::kMkdirResult, hfmbase::kTouchFileResult, hfmbase::kDeleteFilesResult,
                 hfmbase::kMoveToTrashResult, hfmbase::kOpenFilesResult}) {
            hpf::dispatcher()->subscribeInvoker(event, this, [this, event](const QVariantList &args) {
                published.insert(event, args);
                return QVariant();
            });
        }
    }

    void init()
    {
        tmp.reset(new QTemporaryDir);
        QVERIFY(tmp->isValid());
        gRoot = tmp->path();
        // The trash must be the one of a home on the same file system.
        qputenv("HOME", path("home").toUtf8());
        qputenv("XDG_DATA_HOME", path("home/.local/share").toUtf8());
        published.clear();
        log.clear();
        htk::MessageDialog::clearRecordedDialogs();
    }

    void cleanup() { QTRY_COMPARE(operations->runningJobs(), 0); }

    void createAndRename_data()
    {
        QTest::addColumn<QString>(
            "operation");   // mkdir <to>, touch <to> <from: suffix or template>, rename <from> <to>
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("errorPart");   // empty: it succeeds
        QTest::addColumn<QString>("made");   // what arrived: "name/" a folder, "name=content" a file

        // clang-format off
        QTest::newRow("new folder") << "mkdir" << "" << "made" << "" << "made/";
        QTest::newRow("folder name taken by a file") << "mkdir" << "" << "exists.txt" << "already exists" << "";
        QTest::newRow("folder in a missing parent") << "mkdir" << "" << "no/such/parent" << "cannot create" << "";
        QTest::newRow("folder of a scheme without local files") << "mkdir" << "" << "sealed:///x" << "sealed" << "";
        QTest::newRow("document on a taken name") << "touch" << "txt" << "" << "" << "New Document (1).txt=";
        QTest::newRow("document from a template") << "touch" << "templates/report.odt" << "" << "" << "report.odt=template body";
        QTest::newRow("rename to a free name") << "rename" << "a.txt" << "b.txt" << "" << "b.txt=a";
        QTest::newRow("rename to a taken name") << "rename" << "a.txt" << "exists.txt" << "already exists" << "";
        QTest::newRow("rename to the same name") << "rename" << "a.txt" << "a.txt" << "unchanged" << "";
        QTest::newRow("rename a missing file") << "rename" << "missing.txt" << "b.txt" << "does not exist" << "";
        // clang-format on
    }

    void createAndRename()
    {
        QFETCH(QString, operation);
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, errorPart);
        QFETCH(QString, made);
        const QStringList kept {QStringLiteral("exists.txt"), QStringLiteral("New Document.txt")};
        for (const QString &name : kept)
            writeFile(path(name), "keep");
        writeFile(path("a.txt"), "a");
        writeFile(path("templates/report.odt"), "template body");
        QDir().mkpath(path("sub"));
        hfmbase::CallbackArgus callbackArgs;
        const hfmbase::OperatorCallback done = [&callbackArgs](hfmbase::CallbackArgus args) { callbackArgs = args; };
        const bool ok = errorPart.isEmpty();
        const QString madeName = QDir::cleanPath(made.section(QLatin1Char('='), 0, 0));
        const QList<QUrl> arrived = ok ? QList<QUrl> {url(madeName)} : QList<QUrl>();

        QVariantList result;
        if (operation == QLatin1String("rename")) {
            hpf::dispatcher()->publish(hfmbase::kRenameFile, quint64(7), url(from), url(to));
            result = lastResult(hfmbase::kRenameFileResult);
            const auto renamed = result.value(1).value<QMap<QUrl, QUrl>>();
            QCOMPARE(renamed.keys(), QList<QUrl> {url(from)});
            if (ok)
                QCOMPARE(renamed.first(), arrived.first());
            QCOMPARE(readFile(path("a.txt")), ok ? QByteArray("<missing>") : QByteArray("a"));
        } else {
            if (operation == QLatin1String("mkdir")) {
                hpf::dispatcher()->publish(
                    hfmbase::kMkdir, quint64(7), url(to), QVariant(QStringLiteral("mine")), done);
                result = lastResult(hfmbase::kMkdirResult);
            } else {
                const QVariant kind = from.contains(QLatin1Char('/')) ? QVariant(url(from)) : QVariant(0u);
                const QString suffix = from.contains(QLatin1Char('/')) ? QString() : from;
                hpf::dispatcher()->publishList(hfmbase::kTouchFile,
                    {QVariant::fromValue(quint64(7)), url(to), kind, suffix, QStringLiteral("mine"),
                        QVariant::fromValue(done)});
                result = lastResult(hfmbase::kTouchFileResult);
            }
            QCOMPARE(urlsOf(result.value(1)), arrived);
            QVERIFY(callbackArgs);
            QCOMPARE(urlsOf(callbackArgs->value(Key::kSourceUrlsKey)), QList<QUrl> {url(to)});
            QCOMPARE(urlsOf(callbackArgs->value(Key::kTargetUrlsKey)), arrived);
            QCOMPARE(callbackArgs->value(Key::kSuccessKey).toBool(), ok);
            QCOMPARE(callbackArgs->value(Key::kCustomParamKey).toString(), QStringLiteral("mine"));
        }
        QCOMPARE(result.value(0).toULongLong(), quint64(7));
        QCOMPARE(result.value(2).toBool(), ok);
        const QString error = result.value(3).toString();
        QVERIFY2(ok ? error.isEmpty() : error.contains(errorPart), qPrintable(error));
        QCOMPARE(htk::MessageDialog::recordedDialogs().size(), ok ? 0 : 1);
        if (made.endsWith(QLatin1Char('/')))
            QVERIFY(QFileInfo(path(made)).isDir());
        else if (!made.isEmpty())
            QCOMPARE(readFile(path(madeName)), made.section(QLatin1Char('='), 1).toUtf8());
        for (const QString &name : kept)
            QCOMPARE(readFile(path(name)), QByteArray("keep"));
    }

    void jobs_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("sources");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("done");   // the handler's targets: what arrived, or what was deleted
        QTest::addColumn<bool>("ok");

        // clang-format off
        QTest::newRow("copy") << "copy" << words("src/a.txt|src/folder") << "dst" << words("dst/a (1).txt|dst/folder") << true;
        QTest::newRow("cut") << "cut" << words("src/a.txt|src/folder") << "dst" << words("dst/a (1).txt|dst/folder") << true;
        QTest::newRow("a source that is not local still lets the others go") << "copy" << words("sealed:///x|src/a.txt") << "dst" << words("dst/a (1).txt") << false;
        QTest::newRow("missing source") << "cut" << words("src/missing.txt") << "dst" << words("") << false;
        QTest::newRow("target is not local") << "copy" << words("src/a.txt") << "sealed:///dst" << words("") << false;
        QTest::newRow("delete a file and a folder") << "delete" << words("src/a.txt|src/folder") << "" << words("src/a.txt|src/folder") << true;
        QTest::newRow("delete a missing file and another") << "delete" << words("src/missing.txt|src/a.txt") << "" << words("src/a.txt") << false;
        QTest::newRow("trash through a redirected scheme") << "trash" << words("redir:///src/folder") << "" << words("home/.local/share/Trash/files/folder") << true;
        QTest::newRow("trash a missing file") << "trash" << words("src/missing.txt") << "" << words("") << false;
        // clang-format on
    }

    void jobs()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, sources);
        QFETCH(QString, target);
        QFETCH(QStringList, done);
        QFETCH(bool, ok);
        writeFile(path("src/a.txt"), "source a");
        writeFile(path("src/folder/inner.txt"), "inner");
        writeFile(path("dst/a.txt"), "already in dst");
        const QList<QUrl> sourceUrls = urls(sources);
        hfmbase::JobHandlePointer handler;
        const hfmbase::OperatorHandleCallback handle = [&handler](hfmbase::JobHandlePointer h) { handler = h; };
        const struct
        {
            const char *name;
            int event;
            int result;
        } kinds[]
            = {{"copy", hfmbase::kCopy, hfmbase::kCopyResult}, {"cut", hfmbase::kCutFile, hfmbase::kCutFileResult},
                {"delete", hfmbase::kDeleteFiles, hfmbase::kDeleteFilesResult},
                {"trash", hfmbase::kMoveToTrash, hfmbase::kMoveToTrashResult}};
        const auto kind = *std::find_if(std::begin(kinds), std::end(kinds),
            [&operation](const auto &k) { return operation == QLatin1String(k.name); });

        if (target.isEmpty())
            hpf::dispatcher()->publish(kind.event, quint64(1), sourceUrls, kNoFlags, handle);
        else
            hpf::dispatcher()->publish(kind.event, quint64(1), sourceUrls, url(target), kNoFlags, handle);
        QVERIFY(handler);
        QTRY_VERIFY(handler->isFinished());

        QCOMPARE(results(kind.result).size(), 1);
        const QVariantList result = lastResult(kind.result);
        // Delete names what it was asked for; the others what arrived.
        QCOMPARE(urlsOf(result.value(1)), operation == QLatin1String("delete") ? sourceUrls : urls(done));
        QCOMPARE(handler->targetUrls(), urls(done));
        QCOMPARE(result.value(2).toBool(), ok);
        QCOMPARE(handler->isSuccess(), ok);
        QCOMPARE(result.value(3).toString().isEmpty(), ok);
        QCOMPARE(htk::MessageDialog::recordedDialogs().size(), ok ? 0 : 1);
        // Nothing was overwritten, what arrived is whole, and only what went
        // away is gone.
        QCOMPARE(readFile(path("dst/a.txt")), QByteArray("already in dst"));
        for (const QString &name : done) {
            if (operation == QLatin1String("delete"))
                QVERIFY2(!QFileInfo::exists(path(name)), qPrintable(name));
            else
                QCOMPARE(
                    readFile(path(name.endsWith(QLatin1String("folder")) ? name + QStringLiteral("/inner.txt") : name)),
                    name.endsWith(QLatin1String("folder")) ? QByteArray("inner") : QByteArray("source a"));
        }
        const bool moves = operation != QLatin1String("copy");
        const bool aWent = moves && sources.join(QLatin1Char('|')).contains(QLatin1String("src/a.txt"));
        QCOMPARE(readFile(path("src/a.txt")), aWent ? QByteArray("<missing>") : QByteArray("source a"));
    }

    void linksAndHiding()
    {
        writeFile(path("a.txt"), "a");
        writeFile(path("b.txt"), "b");
        writeFile(path("occupied"), "do not replace");
        auto *d = hpf::dispatcher();

        d->publish(hfmbase::kCreateSymlink, quint64(1), url("a.txt"), url("link"), false, false);
        QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("a.txt"));
        // An existing link is replaced only when forced; a file never.
        d->publish(hfmbase::kCreateSymlink, quint64(1), url("b.txt"), url("link"), false, true);
        QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("a.txt"));
        d->publish(hfmbase::kCreateSymlink, quint64(1), url("b.txt"), url("link"), true, true);
        QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("b.txt"));
        d->publish(hfmbase::kCreateSymlink, quint64(1), url("b.txt"), url("occupied"), true, false);
        QCOMPARE(readFile(path("occupied")), QByteArray("do not replace"));
        QCOMPARE(htk::MessageDialog::recordedDialogs().size(), 1);

        // A name hidden twice is listed once.
        d->publish(hfmbase::kHideFiles, quint64(1), QList<QUrl> {url("a.txt")});
        d->publish(hfmbase::kHideFiles, quint64(1), QList<QUrl> {url("b.txt"), url("redir:///a.txt")});
        QCOMPARE(readFile(path(".hidden")), QByteArray("a.txt\nb.txt\n"));
    }

    void clipboardAndPaste()
    {
        writeFile(path("src/a.txt"), "a");
        QDir().mkpath(path("dst"));
        auto *d = hpf::dispatcher();
        const QList<QUrl> sources {url("src/a.txt")};

        d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(hfmbase::ClipBoard::kCopyAction), sources);
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->urls(), sources);
        d->publish(hfmbase::kPasteFiles, quint64(1), url("src"));
        QTRY_COMPARE(results(hfmbase::kCopyResult).size(), 1);
        QCOMPARE(readFile(path("src/a (1).txt")), QByteArray("a"));

        d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(hfmbase::ClipBoard::kCutAction), sources);
        d->publish(hfmbase::kPasteFiles, quint64(1), url("dst"));
        QTRY_COMPARE(results(hfmbase::kCutFileResult).size(), 1);
        QCOMPARE(readFile(path("dst/a.txt")), QByteArray("a"));
        QVERIFY(!QFileInfo::exists(path("src/a.txt")));
        // What was cut is pasted once.
        d->publish(hfmbase::kPasteFiles, quint64(1), url("src"));
        QTRY_COMPARE(operations->runningJobs(), 0);
        QCOMPARE(results(hfmbase::kCutFileResult).size() + results(hfmbase::kCopyResult).size(), 2);

        // An unknown clipboard action changes nothing.
        d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(9), QList<QUrl> {url("dst")});
        QVERIFY(!QGuiApplication::clipboard()->mimeData() || !QGuiApplication::clipboard()->mimeData()->hasUrls());
    }

    void openAndTerminalAreRecorded()
    {
        writeFile(path("doc.txt"), "doc");
        auto *d = hpf::dispatcher();
        d->publish(hfmbase::kOpenFiles, quint64(5), QList<QUrl> {url("doc.txt"), url("redir:///doc.txt")});
        // A redirected URL opens its local file, and the record names both.
        const QVariantList opened = log.opened();
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened.at(1).toMap().value(QStringLiteral("url")).toString(), url("doc.txt").toString());
        QCOMPARE(
            opened.at(1).toMap().value(QStringLiteral("requested")).toString(), QStringLiteral("redir:///doc.txt"));
        QCOMPARE(lastResult(hfmbase::kOpenFilesResult).value(2).toBool(), true);

        d->publish(hfmbase::kOpenFiles, quint64(5), QList<QUrl> {url("sealed:///doc.txt")});
        QCOMPARE(lastResult(hfmbase::kOpenFilesResult).value(2).toBool(), false);
        QCOMPARE(log.opened().size(), 2);

        d->publish(
            hfmbase::kOpenFilesByApp, quint64(5), QList<QUrl> {url("doc.txt")}, QStringList {QStringLiteral("editor")});
        QCOMPARE(log.opened().last().toMap().value(QStringLiteral("app")).toString(), QStringLiteral("editor"));

        d->publish(hfmbase::kOpenInTerminal, quint64(5), QList<QUrl> {url("doc.txt")});
        QCOMPARE(log.terminals(), QVariantList {url(QString()).adjusted(QUrl::StripTrailingSlash).toString()});

        // The result events reached the log too.
        QCOMPARE(log.results().size(), results(hfmbase::kOpenFilesResult).size());
    }

    void freeName_data()
    {
        QTest::addColumn<QStringList>("taken");   // "name/" a folder, "name@" a dangling link, else a file
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("folder");
        QTest::addColumn<QString>("expected");

        QTest::newRow("free name stays") << QStringList() << "a.txt" << false << "a.txt";
        QTest::newRow("first clash") << words("a.txt") << "a.txt" << false << "a (1).txt";
        QTest::newRow("second clash") << words("a.txt|a (1).txt") << "a.txt" << false << "a (2).txt";
        QTest::newRow("taken by a dangling link") << words("a.txt@") << "a.txt" << false << "a (1).txt";
        QTest::newRow("no suffix") << words("notes") << "notes" << false << "notes (1)";
        QTest::newRow("double tar suffix") << words("a.tar.gz") << "a.tar.gz" << false << "a (1).tar.gz";
        QTest::newRow("dot file") << words(".profile") << ".profile" << false << ".profile (1)";
        QTest::newRow("trailing dot") << words("odd.") << "odd." << false << "odd. (1)";
        QTest::newRow("percent signs are text") << words("%1 %2.txt") << "%1 %2.txt" << false << "%1 %2 (1).txt";
        QTest::newRow("folder keeps its dots") << words("v1.2") << "v1.2" << true << "v1.2 (1)";
        QTest::newRow("file with the same name") << words("v1.2") << "v1.2" << false << "v1 (1).2";
    }

    void freeName()
    {
        QFETCH(QStringList, taken);
        QFETCH(QString, name);
        QFETCH(bool, folder);
        QFETCH(QString, expected);
        QStringList names;
        for (const QString &entry : taken) {
            names.append(
                entry.endsWith(QLatin1Char('/')) || entry.endsWith(QLatin1Char('@')) ? entry.chopped(1) : entry);
            if (entry.endsWith(QLatin1Char('/')))
                QVERIFY(QDir().mkpath(path(names.last())));
            else if (entry.endsWith(QLatin1Char('@')))
                QVERIFY(QFile::link(path("nowhere"), path(names.last())));
            else
                writeFile(path(entry));
        }
        QCOMPARE(hdeapp::freeTargetPath(tmp->path(), name, folder), path(expected));
        QCOMPARE(hdehost::freeFileName(
                     name, [&names](const QString &n) { return names.contains(n); }, folder),
            expected);
    }

    void copiesTreesWithLinks()
    {
        writeFile(path("src/tree/top.txt"), "top");
        writeFile(path("src/tree/deep/er/leaf.txt"), "leaf");
        writeFile(path("src/tree/.hidden-file"), "h");
        QVERIFY(QFile::link(QStringLiteral("top.txt"), path("src/tree/relative-link")));
        QDir().mkpath(path("dst"));

        const TransferResult result = transfer(words("src/tree"), "dst", false);
        QVERIFY2(result.ok(), qPrintable(result.error));
        QCOMPARE(tree(path("dst/tree")), tree(path("src/tree")));
        QCOMPARE(readFile(path("dst/tree/deep/er/leaf.txt")), QByteArray("leaf"));
        // The link still points at its sibling, not back into the source tree.
        QCOMPARE(QFileInfo(path("dst/tree/relative-link")).symLinkTarget(), path("dst/tree/top.txt"));

        // Copying the folder next to itself gives it a free name.
        const TransferResult again = transfer(words("src/tree"), "src", false);
        QVERIFY2(again.ok(), qPrintable(again.error));
        QCOMPARE(again.targets, QStringList {path("src/tree (1)")});
        QCOMPARE(tree(path("src/tree (1)")), tree(path("src/tree")));

        // Moving into the folder it is in changes nothing.
        const TransferResult stay = transfer(words("src/tree"), "src", true);
        QVERIFY(stay.ok());
        QCOMPARE(stay.targets, QStringList {path("src/tree")});
        QCOMPARE(tree(path("src/tree")), tree(path("dst/tree")));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("move");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("errorPart");

        // clang-format off
        QTest::newRow("folder into itself") << "tree" << false << "tree/sub" << "into itself";
        QTest::newRow("folder moved into itself") << "tree" << true << "tree" << "into itself";
        QTest::newRow("missing source") << "nothing-here" << false << "out" << "does not exist";
        QTest::newRow("target is a file") << "tree/file.txt" << false << "tree/file.txt" << "not a folder";
        QTest::newRow("target missing") << "tree/file.txt" << true << "no-such-folder" << "not a folder";
        // clang-format on
    }

    void refusals()
    {
        QFETCH(QString, source);
        QFETCH(bool, move);
        QFETCH(QString, target);
        QFETCH(QString, errorPart);
        writeFile(path("tree/file.txt"), "keep");
        QDir().mkpath(path("tree/sub"));
        QDir().mkpath(path("out"));
        const QStringList before = tree(tmp->path());

        const TransferResult result = hdeapp::transfer({path(source)}, path(target), move);
        QVERIFY(!result.ok());
        QVERIFY2(result.error.contains(errorPart), qPrintable(result.error));
        QVERIFY(result.targets.isEmpty());
        QCOMPARE(tree(tmp->path()), before);
    }

    void removeNeverFollowsLinks()
    {
        writeFile(path("kept/precious.txt"), "precious");
        writeFile(path("doomed/file.txt"), "x");
        QVERIFY(QFile::link(path("kept"), path("doomed/link-to-kept")));
        QVERIFY(QFile::link(path("kept"), path("top-link")));

        QString error;
        QVERIFY(hdeapp::removePath(path("doomed"), &error));
        QVERIFY(hdeapp::removePath(path("top-link"), &error));
        QCOMPARE(tree(tmp->path()), words("kept/|kept/precious.txt"));
        QVERIFY(!hdeapp::removePath(path("doomed"), &error));
        QVERIFY(error.contains(QLatin1String("does not exist")));
    }

    void trashFollowsTheHomeTrashLayout_data()
    {
        QTest::addColumn<QString>("xdgDataHome");   // in the test folder; "@x" is "x" as given
        QTest::addColumn<bool>("hasHome");
        QTest::addColumn<QStringList>("existing");   // made before with mode 0755; folders unless *.txt
        QTest::addColumn<QString>("trash");   // expected trash folder, empty: trashing fails
        QTest::addColumn<QString>("name");   // expected name in files/
        QTest::addColumn<QStringList>("privateFolders");   // folders that must have been created with 0700

        const QString home = QStringLiteral("home/.local/share/Trash");
        const char *homeFolders = "home/.local|home/.local/share|home/.local/share/Trash|"
                                  "home/.local/share/Trash/files|home/.local/share/Trash/info";
        // clang-format off
        QTest::newRow("no data folder yet") << "" << true << words("") << home << "a.txt" << words(homeFolders);
        QTest::newRow("XDG_DATA_HOME not there yet") << "data" << true << words("") << "data/Trash" << "a.txt" << words("data|data/Trash|data/Trash/files");
        QTest::newRow("relative XDG_DATA_HOME ignored") << "@relative/data" << true << words("") << home << "a.txt" << words("home/.local/share/Trash");
        QTest::newRow("existing trash keeps its mode") << "" << true << words("home/.local/share/Trash") << home << "a.txt" << words("home/.local/share/Trash/info");
        QTest::newRow("name taken in the trash") << "" << true << words("home/.local/share/Trash/files/a.txt") << home << "a (1).txt" << words("");
        QTest::newRow("no home at all") << "" << false << words("") << "" << "" << words("");
        // clang-format on
    }

    void trashFollowsTheHomeTrashLayout()
    {
        QFETCH(QString, xdgDataHome);
        QFETCH(bool, hasHome);
        QFETCH(QStringList, existing);
        QFETCH(QString, trash);
        QFETCH(QString, name);
        QFETCH(QStringList, privateFolders);

        QDir().mkpath(path("home"));
        QDir().mkpath(path("cwd"));
        for (const QString &entry : existing) {
            if (entry.endsWith(QLatin1String(".txt")))
                writeFile(path(entry), "older");
            else
                QVERIFY(QDir().mkpath(path(entry)));
            QFile::setPermissions(path(entry), QFileDevice::Permissions(0x7755));
        }
        writeFile(path("docs/a.txt"), "a");
        const QString xdg = xdgDataHome.isEmpty()      ? QString()
            : xdgDataHome.startsWith(QLatin1Char('@')) ? xdgDataHome.mid(1)
                                                       : path(xdgDataHome);
        setEnv("HOME", hasHome ? path("home") : QString());
        setEnv("XDG_DATA_HOME", xdg);
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(path("cwd"));

        QString inTrash;
        QString error;
        const bool ok = hdeapp::moveToTrash(path("docs/a.txt"), &inTrash, &error);
        QDir::setCurrent(cwd);

        // Nothing ever lands in the working folder.
        QCOMPARE(tree(path("cwd")), QStringList());
        if (trash.isEmpty()) {
            QVERIFY(!ok);
            QVERIFY2(error.contains(QLatin1String("no home folder")), qPrintable(error));
            QCOMPARE(readFile(path("docs/a.txt")), QByteArray("a"));
            return;
        }
        QVERIFY2(ok, qPrintable(error));
        QCOMPARE(inTrash, path(trash + QStringLiteral("/files/") + name));
        QCOMPARE(readFile(inTrash), QByteArray("a"));
        QVERIFY(!QFileInfo::exists(path("docs/a.txt")));
        const QByteArray info = readFile(path(trash + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo")));
        QVERIFY2(info.startsWith(
                     "[Trash Info]\nPath=" + QUrl::toPercentEncoding(path("docs/a.txt"), "/") + "\nDeletionDate="),
            info.constData());
        for (const QString &folder : privateFolders)
            QCOMPARE(QString::number(modeOf(path(folder)), 8), QStringLiteral("700"));
        for (const QString &entry : existing) {
            if (!entry.endsWith(QLatin1String(".txt")))
                QCOMPARE(QString::number(modeOf(path(entry)), 8), QStringLiteral("755"));
        }
    }

    void specialFilesNeverBlock_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("source");   // "folder" holds a.txt and the FIFO "pipe"
        QTest::addColumn<QStringList>("expectedTree");   // of "dst" afterwards
        QTest::addColumn<bool>("sourceStays");
        QTest::addColumn<QStringList>("problemParts");   // one entry per expected problem line

        // clang-format off
        QTest::newRow("copy a folder holding a FIFO") << "copy" << "folder" << words("folder/|folder/a.txt") << true << words("skipped|pipe|a FIFO");
        QTest::newRow("copy a FIFO alone") << "copy" << "folder/pipe" << words("") << true << words("a FIFO");
        QTest::newRow("move a folder holding a FIFO") << "move" << "folder" << words("folder/|folder/a.txt|folder/pipe") << false << words("");
        QTest::newRow("move across file systems keeps the source whole") << "move-other-fs" << "folder" << words("") << true << words("a FIFO|was not moved");
        QTest::newRow("trash a folder holding a FIFO") << "trash" << "folder" << words("") << false << words("");
        QTest::newRow("delete a folder holding a FIFO") << "delete" << "folder" << words("") << false << words("");
        // clang-format on
    }

    void specialFilesNeverBlock()
    {
        QFETCH(QString, operation);
        QFETCH(QString, source);
        QFETCH(QStringList, problemParts);

        writeFile(path("folder/a.txt"), "a");
        QVERIFY(::mkfifo(QFile::encodeName(path("folder/pipe")).constData(), 0644) == 0);
        QDir().mkpath(path("dst"));
        QString dst = path("dst");
        std::unique_ptr<QTemporaryDir> elsewhere;
        if (operation == QLatin1String("move-other-fs")) {
            // Another file system forces the copy-then-remove way.
            if (!(elsewhere = folderElsewhere()))
                QSKIP("no second file system at /dev/shm");
            dst = elsewhere->path();
        }
        QStringList problems;
        if (operation.startsWith(QLatin1String("copy")) || operation.startsWith(QLatin1String("move"))) {
            const TransferResult result = hdeapp::transfer({path(source)}, dst, operation != QLatin1String("copy"));
            problems = result.problems;
        } else if (operation == QLatin1String("trash")) {
            setEnv("XDG_DATA_HOME", path("data"));
            QString inTrash;
            QString error;
            QVERIFY2(hdeapp::moveToTrash(path(source), &inTrash, &error), qPrintable(error));
            QCOMPARE(tree(path("data/Trash/files")), words("folder/|folder/a.txt|folder/pipe"));
        } else {
            QString error;
            QVERIFY2(hdeapp::removePath(path(source), &error), qPrintable(error));
        }

        QTEST(tree(dst), "expectedTree");
        QTEST(QFileInfo::exists(path(source)), "sourceStays");
        if (QFileInfo::exists(path("folder")))
            QCOMPARE(readFile(path("folder/a.txt")), QByteArray("a"));
        // Every problem is named by one line; none when all was done.
        QCOMPARE(problems.size(), problemParts.isEmpty() ? 0 : 1);
        for (const QString &part : problemParts)
            QVERIFY2(problems.value(0).contains(part), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    void cutOutOfReadOnlyFolder_data()
    {
        QTest::addColumn<bool>("otherFileSystem");
        QTest::addColumn<QStringList>("arrived");   // tree of the target folder afterwards
        QTest::addColumn<QStringList>("stayed");   // tree of the read-only folder afterwards
        QTest::addColumn<QStringList>("problemParts");   // all in the one problem line, if any

        // A rename is refused: nothing is copied, the folder keeps its content.
        QTest::newRow("same file system: nothing moved")
            << false << QStringList() << words("folder/|folder/a.txt|folder/sub/|folder/sub/b.txt")
            << words("nothing was moved");
        // Copied, then removed as far as the read-only parent allows: the
        // files moved, the emptied folder stayed, and the line says just that.
        QTest::newRow("other file system: files moved, empty folder stayed")
            << true << words("folder/|folder/a.txt|folder/sub/|folder/sub/b.txt") << words("folder/")
            << words(
                   "was copied to|the old place still holds|locked/folder\" (Permission denied)|the rest was removed");
    }

    void cutOutOfReadOnlyFolder()
    {
        QFETCH(bool, otherFileSystem);
        QFETCH(QStringList, arrived);

        writeFile(path("locked/folder/a.txt"), "a");
        writeFile(path("locked/folder/sub/b.txt"), "b");
        QString dst = path("dst");
        QDir().mkpath(dst);
        std::unique_ptr<QTemporaryDir> elsewhere;
        if (otherFileSystem) {
            if (!(elsewhere = folderElsewhere()))
                QSKIP("no second file system at /dev/shm");
            dst = elsewhere->path();
        }
        QVERIFY(QFile::setPermissions(path("locked"), QFileDevice::ReadOwner | QFileDevice::ExeOwner));

        TransferResult result;
        {
            // Root too is held to the mode bits while this lives.
            ModeBitsApply modeBits;
            QVERIFY(modeBits.ok());
            result = hdeapp::transfer({path("locked/folder")}, dst, true);
        }
        QFile::setPermissions(path("locked"), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

        // Per item, the report matches the disk.
        QCOMPARE(tree(dst), arrived);
        QTEST(tree(path("locked")), "stayed");
        QCOMPARE(result.targets.size(), arrived.isEmpty() ? 0 : 1);
        QVERIFY(!result.ok());
        QCOMPARE(result.problems.size(), 1);
        QFETCH(QStringList, problemParts);
        for (const QString &part : qAsConst(problemParts))
            QVERIFY2(result.problems.first().contains(part), qPrintable(result.problems.first()));
        if (!arrived.isEmpty()) {
            QCOMPARE(readFile(dst + QStringLiteral("/folder/a.txt")), QByteArray("a"));
            QCOMPARE(readFile(dst + QStringLiteral("/folder/sub/b.txt")), QByteArray("b"));
        }
    }

private:
    TransferResult transfer(const QStringList &sources, const char *target, bool move) const
    {
        QStringList paths;
        for (const QString &source : sources)
            paths.append(path(source));
        return hdeapp::transfer(paths, path(target), move);
    }
    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString path(const char *relative) const { return path(QString::fromUtf8(relative)); }
    // A URL as given, or the local file of a relative path.
    QUrl url(const QString &text) const
    {
        return text.contains(QLatin1String(":/")) ? QUrl(text) : QUrl::fromLocalFile(path(text));
    }
    QUrl url(const char *text) const { return url(QString::fromUtf8(text)); }
    QList<QUrl> urls(const QStringList &texts) const
    {
        QList<QUrl> list;
        for (const QString &text : texts)
            list.append(url(text));
        return list;
    }
    // The argument lists of the result events published since init().
    QList<QVariantList> results(int event) const { return published.values(event); }
    QVariantList lastResult(int event) const { return results(event).value(0); }

    std::unique_ptr<QTemporaryDir> tmp;
    hdeapp::OperationLog log;
    hdeapp::FileOperations *operations = nullptr;
    QMultiMap<int, QVariantList> published;
};

QTEST_MAIN(FileOperationsTest)
#include "tst_fileoperations.moc"
