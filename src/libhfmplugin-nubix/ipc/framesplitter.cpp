// SPDX-License-Identifier: GPL-3.0-or-later
#include "framesplitter.h"

#include <cstring>

namespace hfmplugin_nubix {

namespace {
// Memory kept for reuse after a message is bounded, so that one huge message
// does not pin its size for the life of the connection.
constexpr int kMaxSpareCapacity = 32 * 1024 * 1024;

bool isAscii(const char *data, int length)
{
    // Eight bytes at a time; the high bit of any byte marks non-ASCII.
    quint64 bits = 0;
    int i = 0;
    for (; i + 8 <= length; i += 8) {
        quint64 word;
        std::memcpy(&word, data + i, sizeof word);
        bits |= word;
    }
    for (; i < length; ++i)
        bits |= uchar(data[i]);
    return (bits & Q_UINT64_C(0x8080808080808080)) == 0;
}
}   // namespace

QStringList FrameSplitter::feed(const QByteArray &chunk)
{
    // memchr rather than QByteArray::indexOf, which looks at one byte at a time.
    const void *zero = std::memchr(chunk.constData(), '\0', size_t(chunk.size()));
    const int length = zero ? int(static_cast<const char *>(zero) - chunk.constData()) : chunk.size();

    if (m_buffer.isEmpty() && !m_spare.isEmpty() && m_spare.isDetached()) {
        // Writing into memory already in use is much cheaper than faulting in
        // fresh pages for every large message.
        m_buffer = std::move(m_spare);
        m_spare = QString();
        m_buffer.resize(0);
    }

    // Everything before `from` has been searched already and holds no delimiter.
    const int from = m_buffer.size();
    const char *const data = chunk.constData();
    // ASCII, the usual case, is its own UTF-8 decoding: it is widened in place
    // and its delimiters are found in the bytes, one position per character.
    const bool ascii = isAscii(data, length);
    if (ascii)
        m_buffer.append(QLatin1String(data, length));
    else
        m_buffer.append(QString::fromUtf8(data, length));

    const QChar delimiter {QLatin1Char(kDelimiter)};
    const auto nextDelimiter = [&](int start) {
        if (!ascii)
            return m_buffer.indexOf(delimiter, start);
        const int offset = start - from;
        const void *hit = std::memchr(data + offset, kDelimiter, size_t(length - offset));
        return hit ? from + int(static_cast<const char *>(hit) - data) : -1;
    };

    QStringList messages;
    int head = 0;
    for (int pos = nextDelimiter(from); pos >= 0; pos = nextDelimiter(head)) {
        if (head == 0 && pos == m_buffer.size() - 1) {
            // The buffer holds exactly one message: hand it over without copying.
            m_buffer.chop(1);
            messages.append(m_buffer);
            if (m_buffer.capacity() <= kMaxSpareCapacity)
                m_spare = m_buffer;
            m_buffer = QString();
            return messages;
        }
        messages.append(m_buffer.mid(head, pos - head));
        head = pos + 1;
    }

    if (head == m_buffer.size())
        m_buffer = QString();
    else if (head > 0)
        m_buffer.remove(0, head);
    return messages;
}

}   // namespace hfmplugin_nubix
