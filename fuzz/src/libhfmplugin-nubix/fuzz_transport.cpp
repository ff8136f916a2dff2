// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes, cut into reads, through the frame splitter and hands
// every message to the message handler. The first byte chooses the read
// sizes: below 64 every read has that many bytes plus one, otherwise the
// sizes vary from 1 to 512, drawn from a generator seeded with that byte.
// Besides crashes and sanitizer reports, it stops on messages that differ
// from the bytes of the reads cut at every form feed, each decoded whole.
#include "ipc/framesplitter.h"
#include "ipc/nubixmessagehandler.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <cstdint>
#include <cstdlib>

using hfmplugin_nubix::FrameSplitter;
using hfmplugin_nubix::NubixMessageHandler;

namespace {
void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) { }

class ReadSizes
{
public:
    explicit ReadSizes(uint8_t header) : fixed(header < 64 ? header + 1 : 0), state(header * 2654435761u + 1) { }
    int next()
    {
        if (fixed)
            return fixed;
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return int(state % 512) + 1;
    }

private:
    int fixed;
    uint32_t state;
};
}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv);
    // Every message is logged in full; the log is not what is being tested.
    QLoggingCategory::setFilterRules(QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix=false"));
    qInstallMessageHandler(dropMessage);
    NubixMessageHandler::instance();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    ReadSizes sizes(data[0]);
    const char *stream = reinterpret_cast<const char *>(data + 1);
    const int length = int(size - 1);

    FrameSplitter splitter;
    QStringList received;
    QByteArray taken;
    for (int at = 0; at < length;) {
        const QByteArray read(stream + at, qMin(sizes.next(), length - at));
        at += read.size();
        // Messages are dropped after handling, as the client does, so that the
        // splitter may reuse their memory; the check keeps deep copies.
        const QStringList messages = splitter.feed(read);
        for (const QString &message : messages) {
            received.append(QString(message.unicode(), message.size()));
            NubixMessageHandler::instance()->handleMessage(message);
        }
        const int end = read.indexOf('\0');
        taken += read.left(end < 0 ? read.size() : end);
    }

    QList<QByteArray> parts = taken.split(FrameSplitter::kDelimiter);
    const QByteArray rest = parts.takeLast();
    QStringList expected;
    for (const QByteArray &part : qAsConst(parts))
        expected.append(QString::fromUtf8(part));
    if (received != expected || splitter.pending() != rest)
        std::abort();

    QCoreApplication::processEvents();
    return 0;
}
