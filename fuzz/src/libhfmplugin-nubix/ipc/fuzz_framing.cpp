// SPDX-License-Identifier: GPL-3.0-or-later
// The frame splitter, fed the input in reads of varying sizes (the first byte
// chooses them), against a reference splitter written here: the bytes of
// every read up to its first zero byte, joined, cut at every form feed, each
// message decoded as UTF-8 whole. A decoding or framing fault of the
// splitter shows as a difference, not only as a crash.
#include "fuzzsupport.h"
#include "ipc/framesplitter.h"

#include <cstdlib>
#include <cstring>

using hfmplugin_nubix::FrameSplitter;

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    nubixfuzz::ReadSizes sizes(data[0]);
    const char *stream = reinterpret_cast<const char *>(data + 1);
    const size_t length = size - 1;

    FrameSplitter splitter;
    QStringList received;
    std::string taken;
    for (size_t at = 0; at < length;) {
        const size_t n = std::min(size_t(sizes.next()), length - at);
        received += splitter.feed(QByteArray(stream + at, int(n)));
        const void *zero = std::memchr(stream + at, '\0', n);
        taken.append(stream + at, zero ? size_t(static_cast<const char *>(zero) - (stream + at)) : n);
        at += n;
    }

    int index = 0;
    size_t head = 0;
    for (size_t end; (end = taken.find(FrameSplitter::kDelimiter, head)) != std::string::npos; head = end + 1) {
        const QString expected = QString::fromUtf8(taken.data() + head, int(end - head));
        if (index >= received.size() || received.at(index) != expected)
            std::abort();
        ++index;
    }
    const QByteArray rest = QByteArray::fromRawData(taken.data() + head, int(taken.size() - head));
    if (index != received.size() || splitter.pending() != rest || splitter.pendingSize() != rest.size())
        std::abort();
    return 0;
}
