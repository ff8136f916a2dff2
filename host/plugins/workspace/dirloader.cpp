// SPDX-License-Identifier: GPL-3.0-or-later
#include "dirloader.h"
#include "workspacelog.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/urlhelpers.h>

#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QPointer>
#include <QRunnable>
#include <QThreadPool>

#include <algorithm>

namespace hfmplugin_workspace {

namespace {

// Small first batches so that something shows at once, then larger ones so
// that the view does not relayout for every few rows.
constexpr int kFirstBatchSize = 100;
constexpr int kBatchSize = 2000;
constexpr qint64 kFirstBatchMs = 20;
constexpr qint64 kBatchMs = 80;

QThreadPool *listingPool()
{
    static QThreadPool *pool = [] {
        auto *p = new QThreadPool;
        p->setMaxThreadCount(2);
        return p;
    }();
    return pool;
}

// Target of the queued calls of one listing; the job keeps it alive, so the
// calls never meet a destroyed context even when the loader has gone.
class Relay : public QObject
{
};

}   // namespace

QSet<QString> readHiddenNames(const QUrl &dirUrl)
{
    QSet<QString> names;
    const QUrl local = hdehost::operableUrl(dirUrl);
    if (!local.isValid())
        return names;
    QFile file(hdehost::childUrl(local, QStringLiteral(".hidden")).toLocalFile());
    if (!file.open(QIODevice::ReadOnly))
        return names;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QString name = QString::fromUtf8(line).trimmed();
        if (!name.isEmpty())
            names.insert(name);
    }
    return names;
}

struct DirLoader::Job : public QRunnable
{
    QUrl url;
    bool showHidden = false;
    quint64 generation = 0;
    QPointer<DirLoader> loader;
    std::shared_ptr<std::atomic<bool>> cancelled;
    std::shared_ptr<Relay> relay;

    void post(const QVector<FileItemPointer> &items)
    {
        QMetaObject::invokeMethod(
            relay.get(),
            [loader = loader, generation = generation, items] {
                if (loader && loader->generation == generation)
                    Q_EMIT loader->itemsReady(items);
            },
            Qt::QueuedConnection);
    }

    void finish(bool ok, const QString &error, const QSet<QString> &hidden, const QVector<FileItemPointer> &sorted)
    {
        QMetaObject::invokeMethod(
            relay.get(),
            [loader = loader, generation = generation, ok, error, hidden, sorted] {
                if (!loader || loader->generation != generation)
                    return;
                loader->running = false;
                Q_EMIT loader->finished(ok, error, hidden, sorted);
            },
            Qt::QueuedConnection);
    }

    void run() override
    {
        QString error;
        const auto iterator = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(url, QStringList(),
            QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDirIterator::NoIteratorFlags,
            &error);
        if (!iterator) {
            finish(false, error.isEmpty() ? QStringLiteral("cannot list \"%1\"").arg(url.toString()) : error, {}, {});
            return;
        }
        const QSet<QString> hidden = readHiddenNames(url);
        QVector<FileItemPointer> batch;
        QVector<FileItemPointer> all;
        bool first = true;
        QElapsedTimer clock;
        clock.start();
        auto flush = [&] {
            if (batch.isEmpty())
                return;
            std::sort(batch.begin(), batch.end(), itemLessThan);
            all += batch;
            post(batch);
            batch.clear();
            first = false;
            clock.restart();
        };
        while (iterator->hasNext()) {
            if (cancelled->load(std::memory_order_relaxed))
                return;
            const QUrl fileUrl = iterator->next();
            const QString fileName = iterator->fileName();
            if (!showHidden && (fileName.startsWith(QLatin1Char('.')) || hidden.contains(fileName)))
                continue;
            hfmbase::FileInfoPointer info = iterator->fileInfo();
            if (!info)
                info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(fileUrl);
            if (!info) {
                qCWarning(logWorkspace) << "DirLoader: no file info for" << fileUrl;
                continue;
            }
            if (!showHidden && info->isHidden())
                continue;
            // A scheme's iterator may walk a local folder and return its
            // local URLs from next(); the entry's own URL is fileUrl().
            const QUrl itemUrl = iterator->fileUrl();
            batch.append(makeItem(info, itemUrl.isValid() ? itemUrl : fileUrl));
            const int limit = first ? kFirstBatchSize : kBatchSize;
            const qint64 interval = first ? kFirstBatchMs : kBatchMs;
            if (batch.size() >= limit || clock.elapsed() >= interval)
                flush();
        }
        iterator->close();
        flush();
        // Sorted runs: merging them is all the final order costs.
        std::stable_sort(all.begin(), all.end(), itemLessThan);
        finish(true, QString(), hidden, all);
    }
};

DirLoader::DirLoader(QObject *parent) : QObject(parent) { }

DirLoader::~DirLoader()
{
    cancel();
}

void DirLoader::start(const QUrl &url, bool showHidden)
{
    cancel();
    running = true;
    cancelled = std::make_shared<std::atomic<bool>>(false);
    auto *job = new Job;
    job->url = url;
    job->showHidden = showHidden;
    job->generation = generation;
    job->loader = this;
    job->cancelled = cancelled;
    // The relay goes by a queued call of its own, so after every call the
    // job queued before; a plain deleteLater() could overtake them when
    // someone flushes deferred deletions.
    job->relay = std::shared_ptr<Relay>(new Relay, [](Relay *relay) {
        QMetaObject::invokeMethod(
            relay, [relay] { relay->deleteLater(); }, Qt::QueuedConnection);
    });
    job->setAutoDelete(true);
    listingPool()->start(job);
}

void DirLoader::cancel()
{
    ++generation;
    running = false;
    if (cancelled)
        cancelled->store(true);
}

bool DirLoader::isRunning() const
{
    return running;
}

}   // namespace hfmplugin_workspace
