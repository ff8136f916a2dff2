// SPDX-License-Identifier: GPL-3.0-or-later
// The workspace's model of one folder: listed off the GUI thread in batches,
// in reading order (folders first, numbers by value), hidden names left out,
// selections kept across the final ordering, stale listings dropped, and
// live changes applied.
#include "../app/filetestutils.h"
#include "filemodel.h"

#include <hostcommon/hostmetatypes.h>

#include <QDir>
#include <QFile>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace filetest;
using hfmplugin_workspace::FileModel;

namespace {

// `name` inside `dir`.
QString in(const QTemporaryDir &dir, const char *name)
{
    return dir.filePath(QString::fromUtf8(name));
}

QStringList rowNames(const FileModel &model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.index(row, FileModel::kName).data().toString());
    return names;
}

bool load(FileModel &model, const QString &path)
{
    QSignalSpy finished(&model, &FileModel::loadingFinished);
    model.setRootUrl(QUrl::fromLocalFile(path));
    return finished.wait(10000);
}

}   // namespace

class FileModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { hdehost::registerHostMetaTypes(); }

    void listsInReadingOrder_data()
    {
        QTest::addColumn<int>("files");
        QTest::newRow("one batch") << 5;
        QTest::newRow("several batches") << 450;
    }

    void listsInReadingOrder()
    {
        QFETCH(int, files);
        QTemporaryDir dir;
        // Written in an order unlike the expected one.
        for (int i = files; i >= 1; --i)
            writeFile(dir.filePath(QStringLiteral("item %1.txt").arg(i)));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("zeta")));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("Alpha")));
        writeFile(in(dir, ".dotfile"));
        writeFile(in(dir, "secret.txt"));
        writeFile(in(dir, ".hidden"), "secret.txt\n");

        FileModel model;
        QVERIFY(load(model, dir.path()));
        QStringList expected = words("Alpha|zeta");
        for (int i = 1; i <= files; ++i)
            expected.append(QStringLiteral("item %1.txt").arg(i));
        QCOMPARE(rowNames(model), expected);
        QCOMPARE(model.index(0, 0).data(FileModel::kIsDirRole).toBool(), true);
        QCOMPARE(model.index(2, 0).data(FileModel::kUrlRole).toUrl(), QUrl::fromLocalFile(in(dir, "item 1.txt")));

        // Shown on request, and gone again.
        QSignalSpy finished(&model, &FileModel::loadingFinished);
        model.setShowHidden(true);
        QVERIFY(finished.wait(10000));
        QCOMPARE(model.rowCount(), files + 5);
        model.setShowHidden(false);
        QVERIFY(finished.wait(10000));
        QCOMPARE(model.rowCount(), files + 2);
    }

    void selectionSurvivesTheFinalOrder()
    {
        QTemporaryDir dir;
        for (int i = 450; i >= 1; --i)
            writeFile(dir.filePath(QStringLiteral("f%1").arg(i)));
        FileModel model;
        QPersistentModelIndex first;
        QString firstName;
        // Hold on to the first row that shows, before the listing ends.
        connect(&model, &QAbstractItemModel::rowsInserted, this, [&] {
            if (!first.isValid()) {
                first = model.index(0, 0);
                firstName = first.data().toString();
            }
        });
        QVERIFY(load(model, dir.path()));
        QVERIFY(first.isValid());
        QCOMPARE(first.data().toString(), firstName);
        QCOMPARE(first.row(), firstName.mid(1).toInt() - 1);
    }

    void aNewFolderDropsTheOldListing()
    {
        QTemporaryDir big;
        for (int i = 0; i < 450; ++i)
            writeFile(big.filePath(QStringLiteral("old-%1").arg(i)));
        QTemporaryDir small;
        writeFile(in(small, "new.txt"));

        FileModel model;
        QSignalSpy finished(&model, &FileModel::loadingFinished);
        model.setRootUrl(QUrl::fromLocalFile(big.path()));
        model.setRootUrl(QUrl::fromLocalFile(small.path()));
        QVERIFY(finished.wait(10000));
        QCOMPARE(rowNames(model), words("new.txt"));
        // Nothing of the first listing arrives later.
        QTest::qWait(300);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(rowNames(model), words("new.txt"));
    }

    void liveChanges()
    {
        QTemporaryDir dir;
        writeFile(in(dir, "b.txt"));
        FileModel model;
        QVERIFY(load(model, dir.path()));

        writeFile(in(dir, "a.txt"));
        writeFile(in(dir, "c.txt"));
        writeFile(in(dir, ".quiet"));
        QTRY_COMPARE(rowNames(model), words("a.txt|b.txt|c.txt"));
        QVERIFY(QFile::rename(in(dir, "a.txt"), in(dir, "d.txt")));
        QVERIFY(QFile::remove(in(dir, "b.txt")));
        QTRY_COMPARE(rowNames(model), words("c.txt|d.txt"));
        // Names listed in ".hidden" go as soon as it changes.
        writeFile(in(dir, ".hidden"), "c.txt\n");
        QTRY_COMPARE(rowNames(model), words("d.txt"));

        // Many arrivals and departures at once keep the order.
        QStringList many;
        QStringList even;
        for (int i = 1; i <= 60; ++i) {
            many << QStringLiteral("n%1").arg(i);
            if (i % 2 == 0)
                even << many.last();
        }
        for (auto it = many.crbegin(); it != many.crend(); ++it)
            writeFile(dir.filePath(*it));
        QTRY_COMPARE(rowNames(model), words("d.txt") + many);
        for (const QString &name : qAsConst(many)) {
            if (!even.contains(name))
                QVERIFY(QFile::remove(dir.filePath(name)));
        }
        QTRY_COMPARE(rowNames(model), words("d.txt") + even);
    }

    void missingFolderReportsAnError()
    {
        FileModel model;
        QSignalSpy finished(&model, &FileModel::loadingFinished);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("FileModel: listing .* failed")));
        model.setRootUrl(QUrl(QStringLiteral("nosuchscheme:///x")));
        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.first().first().toBool(), false);
        QVERIFY(!model.errorString().isEmpty());
        QCOMPARE(model.rowCount(), 0);
    }

    void burstOfUpdatesRepaintsOnce()
    {
        QTemporaryDir dir;
        QStringList names;
        for (int i = 0; i < 300; ++i) {
            names.append(QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0')));
            writeFile(dir.filePath(names.last()));
        }
        FileModel model;
        QVERIFY(load(model, dir.path()));
        QCOMPARE(rowNames(model), names);

        QSignalSpy repaint(&model, &QAbstractItemModel::dataChanged);
        int ranges = 0;
        writeFile(dir.filePath(QStringLiteral("f150")), "grown");
        for (const QString &name : qAsConst(names))
            model.updateFile(QUrl::fromLocalFile(dir.filePath(name)));
        model.updateFile(QUrl::fromLocalFile(dir.filePath(QStringLiteral("f150"))));   // twice: still one
        // Nothing repaints inside the burst; after it a few range repaints (one,
        // unless the machine is slow enough to split the work) cover every row.
        QCOMPARE(repaint.count(), 0);
        QSet<int> covered;
        QTRY_VERIFY([&] {
            for (; !repaint.isEmpty(); repaint.removeFirst()) {
                const QList<QVariant> &args = repaint.first();
                for (int row = args.at(0).value<QModelIndex>().row(); row <= args.at(1).value<QModelIndex>().row();
                     ++row)
                    covered.insert(row);
                ++ranges;
            }
            return covered.size() == names.size();
        }());
        QVERIFY2(ranges < names.size() / 10, qPrintable(QString::number(ranges)));
        QCOMPARE(model.index(150, FileModel::kSize).data().toString(), QLocale().formattedDataSize(5));
        QCOMPARE(rowNames(model), names);
    }
};

QTEST_MAIN(FileModelTest)
#include "tst_filemodel.moc"
