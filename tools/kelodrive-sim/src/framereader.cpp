// SPDX-License-Identifier: GPL-3.0-or-later
#include "framereader.h"

namespace kelodrive {

QList<QByteArray> FrameReader::feed(const QByteArray &bytes, bool *overflowed)
{
    if (overflowed)
        *overflowed = false;
    QList<QByteArray> frames;
    // Only the new bytes can hold a delimiter: the old ones were searched before.
    int searchFrom = m_buffer.size();
    m_buffer.append(bytes);
    int start = 0;
    int pos;
    while ((pos = m_buffer.indexOf(kDelimiter, searchFrom)) >= 0) {
        frames.append(m_buffer.mid(start, pos - start));
        start = pos + 1;
        searchFrom = start;
    }
    if (start > 0)
        m_buffer.remove(0, start);
    if (m_buffer.size() > kMaxPending) {
        m_buffer.clear();
        if (overflowed)
            *overflowed = true;
    }
    return frames;
}

QByteArray FrameReader::frame(const QByteArray &payload)
{
    QByteArray out;
    out.reserve(payload.size() + 1);
    out.append(payload);
    out.append(kDelimiter);
    return out;
}

}   // namespace kelodrive
