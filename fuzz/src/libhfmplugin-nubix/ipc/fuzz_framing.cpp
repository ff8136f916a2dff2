// SPDX-License-Identifier: GPL-3.0-or-later
// The frame splitter, fed the input in reads of varying sizes (the first byte
// chooses them), against a reference splitter written here: the bytes of
// every read up to its first zero byte, joined, cut at every form feed, each
// message decoded as UTF-8 whole and due with the read that completes it. A
// decoding or framing fault of the splitter shows as a difference, not only
// as a crash.
#include "fuzzsupport.h"
#include "ipc/framesplitter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

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

    // Each read is copied to the end of one heap block, so that reading past
    // it still meets AddressSanitizer's guard, without an allocation per read:
    // the one wrapper is pointed at it again each time, as fromRawData()
    // would allocate a header for every read (a quarter of the time).
    static char *const block = new char[nubixfuzz::ReadSizes::kMax];
    static QByteArray chunk;

    // The reference is kept up to date read by read, so every message is
    // checked as the splitter hands it out, and after each read no complete
    // message may be left waiting.
    FrameSplitter splitter;
    std::string taken;
    taken.reserve(length);
    size_t head = 0;
    for (size_t at = 0; at < length;) {
        const size_t n = std::min(size_t(sizes.next()), length - at);
        char *const read = block + nubixfuzz::ReadSizes::kMax - n;
        std::memcpy(read, stream + at, n);
        const QStringList messages = splitter.feed(chunk.setRawData(read, uint(n)));
        const size_t before = taken.size();
        const void *zero = std::memchr(stream + at, '\0', n);
        taken.append(stream + at, zero ? size_t(static_cast<const char *>(zero) - (stream + at)) : n);
        at += n;
        for (const QString &message : messages) {
            const size_t end = taken.find(FrameSplitter::kDelimiter, head);
            if (end == std::string::npos || message != QString::fromUtf8(taken.data() + head, int(end - head)))
                std::abort();
            head = end + 1;
        }
        // Earlier bytes were searched after their own read.
        if (taken.find(FrameSplitter::kDelimiter, std::max(head, before)) != std::string::npos)
            std::abort();
    }
    const QByteArray rest = QByteArray::fromRawData(taken.data() + head, int(taken.size() - head));
    if (splitter.pending() != rest || splitter.pendingSize() != rest.size())
        std::abort();
    return 0;
}
