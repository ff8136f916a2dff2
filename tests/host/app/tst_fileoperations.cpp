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
    void initTestCase();
    void init();
    void cleanup();
    void makeDirectory_data();
    void makeDirectory();
    void createFile_data();
    void createFile();
    void copyAndCut_data();
    void copyAndCut();
    void deleteAndTrash_data();
    void deleteAndTrash();
    void rename_data();
    void rename();
    void linksPermissionsAndHiding();
    void clipboardAndPaste();
    void openAndTerminalAreRecorded();

private:
    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString path(const char *relative) const { return path(QString::fromUtf8(relative)); }
    QUrl fileUrl(const QString &relative) const { return QUrl::fromLocalFile(path(relative)); }
    QUrl fileUrl(const char *relative) const { return fileUrl(QString::fromUtf8(relative)); }
    QUrl url(const QString &text) const { return text.contains(QLatin1String(":/")) ? QUrl(text) : fileUrl(text); }
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

void FileOperationsTest::initTestCase()
{
    hdehost::registerHostMetaTypes();
    htk::MessageDialog::setAutomationMode(true);
    hfmbase::InfoFactory::regClass<RedirInfo>(QStringLiteral("redir"), hfmbase::InfoFactory::RegOption::kNoCache);
    hfmbase::InfoFactory::regClass<SealedInfo>(QStringLiteral("sealed"), hfmbase::InfoFactory::RegOption::kNoCache);
    log.attach();
    operations = new hdeapp::FileOperations(&log, this);
    operations->attach();
    operations->setRecordOnly(true);
    for (int event : {hfmbase::kRenameFileResult, hfmbase::kCopyResult, hfmbase::kCutFileResult, hfmbase::kMkdirResult,
             hfmbase::kTouchFileResult, hfmbase::kDeleteFilesResult, hfmbase::kMoveToTrashResult,
             hfmbase::kOpenFilesResult}) {
        hpf::dispatcher()->subscribeInvoker(event, this, [this, event](const QVariantList &args) {
            published.insert(event, args);
            return QVariant();
        });
    }
}

void FileOperationsTest::init()
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

void FileOperationsTest::cleanup()
{
    QTRY_COMPARE(operations->runningJobs(), 0);
}

void FileOperationsTest::makeDirectory_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("created");

    QTest::newRow("new folder") << "made" << true << "made";
    QTest::newRow("name taken by a file") << "exists.txt" << false << "";
    QTest::newRow("missing parent") << "no/such/parent" << false << "";
    QTest::newRow("through a redirected scheme") << "redir:///via-redir" << true << "via-redir";
    QTest::newRow("scheme without local files") << "sealed:///x" << false << "";
}

void FileOperationsTest::makeDirectory()
{
    QFETCH(QString, target);
    QFETCH(bool, ok);
    QFETCH(QString, created);
    writeFile(path("exists.txt"), "keep");
    hfmbase::CallbackArgus callbackArgs;
    const hfmbase::OperatorCallback done = [&callbackArgs](hfmbase::CallbackArgus args) { callbackArgs = args; };

    hpf::dispatcher()->publish(hfmbase::kMkdir, quint64(7), url(target), QVariant(QStringLiteral("mine")), done);

    const QVariantList result = lastResult(hfmbase::kMkdirResult);
    QCOMPARE(result.value(0).toULongLong(), quint64(7));
    QCOMPARE(result.value(2).toBool(), ok);
    QCOMPARE(result.value(3).toString().isEmpty(), ok);
    QVERIFY(callbackArgs);
    QCOMPARE(urlsOf(callbackArgs->value(Key::kSourceUrlsKey)), QList<QUrl> {url(target)});
    QCOMPARE(callbackArgs->value(Key::kSuccessKey).toBool(), ok);
    QCOMPARE(callbackArgs->value(Key::kCustomParamKey).toString(), QStringLiteral("mine"));
    const QList<QUrl> expected = ok ? QList<QUrl> {fileUrl(created)} : QList<QUrl>();
    QCOMPARE(urlsOf(result.value(1)), expected);
    QCOMPARE(urlsOf(callbackArgs->value(Key::kTargetUrlsKey)), expected);
    if (ok)
        QVERIFY(QFileInfo(path(created)).isDir());
    QCOMPARE(readFile(path("exists.txt")), QByteArray("keep"));
    QCOMPARE(htk::MessageDialog::recordedDialogs().size(), ok ? 0 : 1);
}

void FileOperationsTest::createFile_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("fromTemplate");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("created");

    QTest::newRow("text document") << "" << false << "txt" << words("") << "New Document.txt";
    QTest::newRow("name taken") << "" << false << "txt" << words("New Document.txt") << "New Document (1).txt";
    QTest::newRow("from a template") << "" << true << "" << words("") << "report.odt";
    QTest::newRow("in a redirected folder") << "redir:///sub" << false << "md" << words("") << "sub/New Document.md";
}

void FileOperationsTest::createFile()
{
    QFETCH(QString, folder);
    QFETCH(bool, fromTemplate);
    QFETCH(QString, suffix);
    QFETCH(QStringList, existing);
    QFETCH(QString, created);
    QDir().mkpath(path("sub"));
    writeFile(path("templates/report.odt"), "template body");
    for (const QString &name : existing)
        writeFile(path(name), "old");
    const QVariant kind = fromTemplate ? QVariant(fileUrl("templates/report.odt")) : QVariant(0u);
    const QUrl dir = folder.isEmpty() ? fileUrl(QString()) : QUrl(folder);
    hfmbase::CallbackArgus callbackArgs;
    const hfmbase::OperatorCallback done = [&callbackArgs](hfmbase::CallbackArgus args) { callbackArgs = args; };

    hpf::dispatcher()->publishList(hfmbase::kTouchFile,
        {QVariant::fromValue(quint64(3)), dir, kind, suffix, QVariant(), QVariant::fromValue(done)});

    QCOMPARE(lastResult(hfmbase::kTouchFileResult).value(2).toBool(), true);
    QCOMPARE(urlsOf(lastResult(hfmbase::kTouchFileResult).value(1)), QList<QUrl> {fileUrl(created)});
    QVERIFY(callbackArgs);
    QCOMPARE(urlsOf(callbackArgs->value(Key::kTargetUrlsKey)), QList<QUrl> {fileUrl(created)});
    QCOMPARE(readFile(path(created)), fromTemplate ? QByteArray("template body") : QByteArray());
    for (const QString &name : existing)
        QCOMPARE(readFile(path(name)), QByteArray("old"));
}

void FileOperationsTest::copyAndCut_data()
{
    QTest::addColumn<bool>("move");
    QTest::addColumn<QStringList>("sources");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QStringList>("arrived");
    QTest::addColumn<bool>("ok");

    // clang-format off
    QTest::newRow("copy") << false << words("src/a.txt|src/folder") << "dst" << words("dst/a (1).txt|dst/folder") << true;
    QTest::newRow("cut") << true << words("src/a.txt|src/folder") << "dst" << words("dst/a (1).txt|dst/folder") << true;
    QTest::newRow("copy from a redirected scheme")
        << false << words("redir:///src/a.txt") << "redir:///dst" << words("dst/a (1).txt") << true;
    QTest::newRow("cut from a redirected scheme")
        << true << words("redir:///src/a.txt") << "dst" << words("dst/a (1).txt") << true;
    QTest::newRow("a source that is not local still lets the others go")
        << false << words("sealed:///x|src/a.txt") << "dst" << words("dst/a (1).txt") << false;
    QTest::newRow("missing source") << true << words("src/missing.txt") << "dst" << words("") << false;
    QTest::newRow("target is not local") << false << words("src/a.txt") << "sealed:///dst" << words("") << false;
    // clang-format on
}

void FileOperationsTest::copyAndCut()
{
    QFETCH(bool, move);
    QFETCH(QStringList, sources);
    QFETCH(QString, target);
    QFETCH(QStringList, arrived);
    QFETCH(bool, ok);
    writeFile(path("src/a.txt"), "source a");
    writeFile(path("src/folder/inner.txt"), "inner");
    writeFile(path("dst/a.txt"), "already in dst");
    const QList<QUrl> sourceUrls = urls(sources);
    hfmbase::JobHandlePointer handler;
    const hfmbase::OperatorHandleCallback handle = [&handler](hfmbase::JobHandlePointer h) { handler = h; };

    hpf::dispatcher()->publish(
        move ? hfmbase::kCutFile : hfmbase::kCopy, quint64(1), sourceUrls, url(target), kNoFlags, handle);
    QVERIFY(handler);
    QSignalSpy finished(handler.data(), &AbstractJobHandler::finished);
    QVERIFY(finished.wait(5000));

    const int event = move ? hfmbase::kCutFileResult : hfmbase::kCopyResult;
    QCOMPARE(results(event).size(), 1);
    const QVariantList result = lastResult(event);
    const QList<QUrl> arrivedUrls = urls(arrived);
    QCOMPARE(urlsOf(result.value(0)), sourceUrls);
    QCOMPARE(urlsOf(result.value(1)), arrivedUrls);
    QCOMPARE(result.value(2).toBool(), ok);
    QCOMPARE(result.value(3).toString().isEmpty(), ok);
    QCOMPARE(handler->isSuccess(), ok);
    QCOMPARE(handler->targetUrls(), arrivedUrls);
    // Nothing was overwritten; what a cut moved is gone from its place.
    QCOMPARE(readFile(path("dst/a.txt")), QByteArray("already in dst"));
    for (const QString &name : arrived) {
        QVERIFY(QFileInfo::exists(path(name)));
        if (name.endsWith(QLatin1String(".txt")))
            QCOMPARE(readFile(path(name)), QByteArray("source a"));
    }
    if (ok && move)
        QVERIFY(!QFileInfo::exists(path("src/a.txt")));
    else
        QCOMPARE(readFile(path("src/a.txt")), QByteArray("source a"));
    QCOMPARE(htk::MessageDialog::recordedDialogs().size(), ok ? 0 : 1);
}

void FileOperationsTest::deleteAndTrash_data()
{
    QTest::addColumn<bool>("trash");
    QTest::addColumn<QStringList>("victims");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QStringList>("gone");

    QTest::newRow("delete a file and a folder") << false << words("a.txt|folder") << true << words("a.txt|folder");
    QTest::newRow("delete a missing file") << false << words("missing.txt|a.txt") << false << words("a.txt");
    QTest::newRow("trash a file and a folder") << true << words("a.txt|folder") << true << words("a.txt|folder");
    QTest::newRow("trash through a redirected scheme") << true << words("redir:///folder") << true << words("folder");
    QTest::newRow("trash a missing file") << true << words("missing.txt") << false << QStringList();
}

void FileOperationsTest::deleteAndTrash()
{
    QFETCH(bool, trash);
    QFETCH(QStringList, victims);
    QFETCH(bool, ok);
    QFETCH(QStringList, gone);
    writeFile(path("a.txt"), "a");
    writeFile(path("folder/inner.txt"), "inner");
    writeFile(path("bystander.txt"), "stays");
    hfmbase::JobHandlePointer handler;

    hpf::dispatcher()->publish(trash ? hfmbase::kMoveToTrash : hfmbase::kDeleteFiles, quint64(2), urls(victims),
        kNoFlags, hfmbase::OperatorHandleCallback([&handler](hfmbase::JobHandlePointer h) { handler = h; }));
    QVERIFY(handler);
    QTRY_VERIFY(handler->isFinished());

    const QVariantList result = lastResult(trash ? hfmbase::kMoveToTrashResult : hfmbase::kDeleteFilesResult);
    QCOMPARE(result.value(0).toULongLong(), quint64(2));
    QCOMPARE(result.value(2).toBool(), ok);
    QCOMPARE(handler->isSuccess(), ok);
    for (const QString &name : gone)
        QVERIFY2(!QFileInfo::exists(path(name)), qPrintable(name));
    QCOMPARE(readFile(path("bystander.txt")), QByteArray("stays"));
    if (!trash)
        return;
    // Trashed items sit in the freedesktop trash of XDG_DATA_HOME, with
    // their info files, and the result names them there.
    const QString trashDir = path("home/.local/share/Trash");
    QList<QUrl> inTrash;
    for (const QString &name : gone) {
        QVERIFY(QFileInfo::exists(trashDir + QStringLiteral("/files/") + name));
        QVERIFY(QFileInfo::exists(trashDir + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo")));
        inTrash.append(QUrl::fromLocalFile(trashDir + QStringLiteral("/files/") + name));
    }
    QCOMPARE(urlsOf(result.value(1)), inTrash);
    if (gone.contains(QStringLiteral("folder")))
        QCOMPARE(readFile(trashDir + QStringLiteral("/files/folder/inner.txt")), QByteArray("inner"));
}

void FileOperationsTest::rename_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("errorPart");

    // clang-format off
    QTest::newRow("free name") << "a.txt" << "b.txt" << true << "";
    QTest::newRow("name taken") << "a.txt" << "taken.txt" << false << "already exists";
    QTest::newRow("same name") << "a.txt" << "a.txt" << false << "unchanged";
    QTest::newRow("missing source") << "missing.txt" << "b.txt" << false << "does not exist";
    QTest::newRow("through a redirected scheme") << "redir:///a.txt" << "redir:///b.txt" << true << "";
    // clang-format on
}

void FileOperationsTest::rename()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, ok);
    QFETCH(QString, errorPart);
    writeFile(path("a.txt"), "a");
    writeFile(path("taken.txt"), "taken");
    writeFile(path("folder/inner.txt"), "inner");

    hpf::dispatcher()->publish(hfmbase::kRenameFile, quint64(4), url(from), url(to));

    const QVariantList result = lastResult(hfmbase::kRenameFileResult);
    QCOMPARE(result.value(0).toULongLong(), quint64(4));
    const auto renamed = result.value(1).value<QMap<QUrl, QUrl>>();
    QCOMPARE(renamed.keys(), QList<QUrl> {url(from)});
    QCOMPARE(result.value(2).toBool(), ok);
    QVERIFY2(result.value(3).toString().contains(errorPart), qPrintable(result.value(3).toString()));
    QCOMPARE(readFile(path("taken.txt")), QByteArray("taken"));
    if (ok) {
        const QString newName = QUrl(url(to)).fileName();
        QCOMPARE(renamed.value(url(from)), fileUrl(newName));
        QVERIFY(QFileInfo::exists(path(newName)));
        QVERIFY(!QFileInfo::exists(path(QUrl(url(from)).fileName())));
    } else if (from == QLatin1String("a.txt")) {
        QCOMPARE(readFile(path("a.txt")), QByteArray("a"));
    }
}

void FileOperationsTest::linksPermissionsAndHiding()
{
    writeFile(path("a.txt"), "a");
    writeFile(path("b.txt"), "b");
    writeFile(path("occupied"), "do not replace");
    auto *d = hpf::dispatcher();

    d->publish(hfmbase::kCreateSymlink, quint64(1), fileUrl("a.txt"), fileUrl("link"), false, false);
    QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("a.txt"));
    // An existing link is replaced only when forced; a file never.
    d->publish(hfmbase::kCreateSymlink, quint64(1), fileUrl("b.txt"), fileUrl("link"), false, true);
    QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("a.txt"));
    d->publish(hfmbase::kCreateSymlink, quint64(1), fileUrl("b.txt"), fileUrl("link"), true, true);
    QCOMPARE(QFileInfo(path("link")).symLinkTarget(), path("b.txt"));
    d->publish(hfmbase::kCreateSymlink, quint64(1), fileUrl("b.txt"), fileUrl("occupied"), true, false);
    QCOMPARE(readFile(path("occupied")), QByteArray("do not replace"));
    QCOMPARE(htk::MessageDialog::recordedDialogs().size(), 1);

    const QFileDevice::Permissions readOnly = QFileDevice::ReadOwner | QFileDevice::ReadUser;
    d->publish(hfmbase::kSetPermission, quint64(1), url("redir:///a.txt"), readOnly);
    // Owner, group and other bits; the "user" ones say what the running user may do.
    QCOMPARE(QFileInfo(path("a.txt")).permissions() & 0x7077, readOnly & 0x7077);

    d->publish(hfmbase::kHideFiles, quint64(1), QList<QUrl> {fileUrl("a.txt")});
    d->publish(hfmbase::kHideFiles, quint64(1), QList<QUrl> {fileUrl("b.txt"), url("redir:///a.txt")});
    QCOMPARE(readFile(path(".hidden")), QByteArray("a.txt\nb.txt\n"));
}

void FileOperationsTest::clipboardAndPaste()
{
    writeFile(path("src/a.txt"), "a");
    QDir().mkpath(path("dst"));
    auto *d = hpf::dispatcher();
    const QList<QUrl> sources {fileUrl("src/a.txt")};

    d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(hfmbase::ClipBoard::kCopyAction), sources);
    QCOMPARE(QGuiApplication::clipboard()->mimeData()->urls(), sources);
    d->publish(hfmbase::kPasteFiles, quint64(1), fileUrl("src"));
    QTRY_COMPARE(results(hfmbase::kCopyResult).size(), 1);
    QCOMPARE(readFile(path("src/a (1).txt")), QByteArray("a"));

    d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(hfmbase::ClipBoard::kCutAction), sources);
    d->publish(hfmbase::kPasteFiles, quint64(1), fileUrl("dst"));
    QTRY_COMPARE(results(hfmbase::kCutFileResult).size(), 1);
    QCOMPARE(readFile(path("dst/a.txt")), QByteArray("a"));
    QVERIFY(!QFileInfo::exists(path("src/a.txt")));
    // What was cut is pasted once.
    d->publish(hfmbase::kPasteFiles, quint64(1), fileUrl("src"));
    QTRY_COMPARE(operations->runningJobs(), 0);
    QCOMPARE(results(hfmbase::kCutFileResult).size() + results(hfmbase::kCopyResult).size(), 2);

    // An unknown clipboard action changes nothing.
    d->publish(hfmbase::kWriteUrlsToClipboard, quint64(1), quint8(9), QList<QUrl> {fileUrl("dst")});
    QVERIFY(!QGuiApplication::clipboard()->mimeData() || !QGuiApplication::clipboard()->mimeData()->hasUrls());
}

void FileOperationsTest::openAndTerminalAreRecorded()
{
    writeFile(path("doc.txt"), "doc");
    auto *d = hpf::dispatcher();
    d->publish(hfmbase::kOpenFiles, quint64(5), QList<QUrl> {fileUrl("doc.txt"), url("redir:///doc.txt")});
    const QVariantList opened = log.opened();
    QCOMPARE(opened.size(), 2);
    QCOMPARE(opened.at(0).toMap().value(QStringLiteral("url")).toString(), fileUrl("doc.txt").toString());
    QCOMPARE(opened.at(1).toMap().value(QStringLiteral("url")).toString(), fileUrl("doc.txt").toString());
    QCOMPARE(opened.at(1).toMap().value(QStringLiteral("requested")).toString(), QStringLiteral("redir:///doc.txt"));
    QCOMPARE(lastResult(hfmbase::kOpenFilesResult).value(2).toBool(), true);

    d->publish(hfmbase::kOpenFiles, quint64(5), QList<QUrl> {url("sealed:///doc.txt")});
    QCOMPARE(lastResult(hfmbase::kOpenFilesResult).value(2).toBool(), false);
    QCOMPARE(log.opened().size(), 2);

    d->publish(
        hfmbase::kOpenFilesByApp, quint64(5), QList<QUrl> {fileUrl("doc.txt")}, QStringList {QStringLiteral("editor")});
    QCOMPARE(log.opened().last().toMap().value(QStringLiteral("app")).toString(), QStringLiteral("editor"));

    d->publish(hfmbase::kOpenInTerminal, quint64(5), QList<QUrl> {fileUrl("doc.txt")});
    QCOMPARE(log.terminals(), QVariantList {fileUrl(QString()).adjusted(QUrl::StripTrailingSlash).toString()});

    // The result events reached the log too.
    QCOMPARE(log.results().size(), results(hfmbase::kOpenFilesResult).size());
}

QTEST_MAIN(FileOperationsTest)
#include "tst_fileoperations.moc"
