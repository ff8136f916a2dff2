// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixentryentity.h"

#include "caches/nubixcaches.h"
#include "utils/nubixutils.h"

#include <QTest>

using namespace hfmplugin_nubix;

namespace {
void setState(const QString &root, bool publicCloud, qint64 used, qint64 total, qint64 quota)
{
    // The entry keys on the root alone, so syncInited stays off throughout.
    NubixCaches::instance()->setSyncInfo(SyncInfo {root, {}, {}, {}, false, publicCloud});
    NubixCaches::instance()->setUserInfo(UserInfo {{}, total - used, used, total, 7, quota});
}
}   // namespace

class TestNubixEntryEntity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeFormatting_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");

        QTest::newRow("nothing used") << qint64(0) << "0.0 B";
        QTest::newRow("exactly 1024 stays in bytes") << qint64(1024) << "1024.0 B";
        QTest::newRow("one byte past a kilobyte") << qint64(1025) << "1.0 KB";
        QTest::newRow("rounded to one decimal") << qint64(1024 * 1024 * 5 / 3) << "1.7 MB";
        QTest::newRow("past the last unit stays in terabytes")
            << qint64(2048) * 1024 * 1024 * 1024 * 1024 << "2048.0 TB";
        QTest::newRow("largest count") << std::numeric_limits<qint64>::max() << "8388608.0 TB";
    }
    void sizeFormatting()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(NubixEntryEntity::formatSize(bytes), text);
    }

    void sizesAndDescription_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<qint64>("quota");
        QTest::addColumn<bool>("showSize");
        QTest::addColumn<QString>("description");

        const QString root = QStringLiteral("/home/a/Kelo Drive");
        QTest::newRow("other negative quota, ready: bar only") << root << qint64(-1) << true << QString();
        QTest::newRow("quota account, no root: nothing") << QString() << qint64(10) << false << QString();
        QTest::newRow("unlimited, no root: nothing") << QString() << qint64(-3) << false << QString();
    }
    void sizesAndDescription()
    {
        QFETCH(QString, root);
        QFETCH(qint64, quota);
        QFETCH(bool, showSize);
        QFETCH(QString, description);

        setState(root, true, 1536, 4096, quota);
        const NubixEntryEntity entity(NubixUtils::computerEntryUrl());
        QCOMPARE(entity.showSize(), showSize);
        QCOMPARE(entity.showProgress(), showSize);
        QCOMPARE(entity.showTotalSize(), showSize);
        QCOMPARE(entity.showUsageSize(), showSize);
        QCOMPARE(entity.description(), description);
        // The figures are there whether shown or not.
        QCOMPARE(entity.sizeUsage(), qint64(1536));
        QCOMPARE(entity.sizeTotal(), qint64(4096));
    }

    void iconWithoutRootIsThePersonalOne()
    {
        setState(QString(), true, 0, 0, 0);
        const NubixEntryEntity entity(NubixUtils::computerEntryUrl());
        QCOMPARE(entity.iconName(), QStringLiteral("nubix-harddisk"));
        QCOMPARE(entity.icon().name(), QIcon::fromTheme(QStringLiteral("nubix-harddisk")).name());
    }

    void answersFollowTheCacheWithoutRefresh()
    {
        setState(QString(), true, 0, 0, -3);
        const NubixEntryEntity entity(NubixUtils::computerEntryUrl());
        QCOMPARE(entity.description(), QString());
        setState(QStringLiteral("/r"), true, 1073741824, 0, -3);
        QCOMPARE(entity.description(), QStringLiteral("Used space 1024.0 MB"));
        QCOMPARE(NubixEntryEntity::storageInfo().relative, qint64(7));
        QCOMPARE(NubixEntryEntity::storageInfo().free, qint64(-1073741824));
    }
};

QTEST_MAIN(TestNubixEntryEntity)
#include "tst_nubixentryentity.moc"
