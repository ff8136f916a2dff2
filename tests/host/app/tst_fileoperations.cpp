// SPDX-License-Identifier: GPL-3.0-or-later
// Every file operation of the host as a listener of its event, on temporary
// trees: the files on disk, the result event, the completion and handle
// callbacks, redirected URLs of a plug-in scheme, and failures reported
// without losing or overwriting anything.
#include "core/fileoperations.h"
#include "core/operationlog.h"
#include "filetestutils.h"

#include <hfmbase/abstractjobhandler.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/hostmetatypes.h>
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

using namespace filetest;
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
        QDir().mkpath(path("home/.local/share"));
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
        QTest::newRow("folder through a redirected scheme") << "mkdir" << "" << "redir:///via-redir" << "" << "via-redir/";
        QTest::newRow("folder of a scheme without local files") << "mkdir" << "" << "sealed:///x" << "sealed" << "";
        QTest::newRow("document on a taken name") << "touch" << "txt" << "" << "" << "New Document (1).txt=";
        QTest::newRow("document from a template") << "touch" << "templates/report.odt" << "" << "" << "report.odt=template body";
        QTest::newRow("document in a redirected folder") << "touch" << "md" << "redir:///sub" << "" << "sub/New Document.md=";
        QTest::newRow("rename to a free name") << "rename" << "a.txt" << "b.txt" << "" << "b.txt=a";
        QTest::newRow("rename to a taken name") << "rename" << "a.txt" << "exists.txt" << "already exists" << "";
        QTest::newRow("rename to the same name") << "rename" << "a.txt" << "a.txt" << "unchanged" << "";
        QTest::newRow("rename a missing file") << "rename" << "missing.txt" << "b.txt" << "does not exist" << "";
        QTest::newRow("rename through a redirected scheme") << "rename" << "redir:///a.txt" << "redir:///b.txt" << "" << "b.txt=a";
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
        QTest::newRow("copy from a redirected scheme") << "copy" << words("redir:///src/a.txt") << "redir:///dst" << words("dst/a (1).txt") << true;
        QTest::newRow("cut from a redirected scheme") << "cut" << words("redir:///src/a.txt") << "dst" << words("dst/a (1).txt") << true;
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

private:
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
