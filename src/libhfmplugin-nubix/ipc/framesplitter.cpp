// SPDX-License-Identifier: GPL-3.0-or-later
#include "framesplitter.h"

#include "nubixglobal.h"

#include <cstring>

namespace hfmplugin_nubix {

namespace {
// Capacity kept for the next message after a long one, so that one huge
// message does not pin its size for the life of the connection.
constexpr int kMaxKeptCapacity = 32 * 1024 * 1024;
}   // namespace

QStringList FrameSplitter::feed(const QByteArray &chunk)
{
    const char *const data = chunk.constData();
    // memchr rather than QByteArray::indexOf, which looks at one byte at a time.
    const void *zero = std::memchr(data, '\0', size_t(chunk.size()));
    const int length = zero ? int(static_cast<const char *>(zero) - data) : chunk.size();

    QStringList messages;
    int head = 0;
    while (const void *hit = std::memchr(data + head, kDelimiter, size_t(length - head))) {
        const int end = int(static_cast<const char *>(hit) - data);
        if (m_buffer.isEmpty() && !m_dropping) {
            // The whole message is in this read: decoded straight from it.
            messages.append(QString::fromUtf8(data + head, end - head));
        } else {
            keep(data + head, end - head);
            if (m_dropping) {
                nubixWarning() << "TcpClient: Dropped a message of" << m_dropped << "bytes, too long to be read";
                m_dropping = false;
                m_dropped = 0;
            } else {
                messages.append(QString::fromUtf8(m_buffer));
                release();
            }
        }
        head = end + 1;
    }
    keep(data + head, length - head);
    return messages;
}

void FrameSplitter::keep(const char *data, int length)
{
    if (length <= 0)
        return;
    if (m_dropping) {
        m_dropped += length;
        return;
    }
    if (m_buffer.size() + qint64(length) > kMaxMessageBytes) {
        m_dropping = true;
        m_dropped = m_buffer.size() + qint64(length);
        m_buffer = QByteArray();
        return;
    }
    m_buffer.append(data, length);
}

void FrameSplitter::release()
{
    // Writing into memory already in use is cheaper than faulting in fresh
    // pages for every large message; reserve() keeps it over the truncation.
    if (m_buffer.isDetached() && m_buffer.capacity() <= kMaxKeptCapacity) {
        m_buffer.reserve(m_buffer.capacity());
        m_buffer.truncate(0);
    } else {
        m_buffer = QByteArray();
    }
}

void FrameSplitter::clear()
{
    m_buffer = QByteArray();
    m_dropping = false;
    m_dropped = 0;
}

}   // namespace hfmplugin_nubix
