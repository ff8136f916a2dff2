// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

namespace kelodrive {

// Cuts a byte stream into frames ended by the byte 0x0C. Not thread-safe; one per connection.
class FrameReader
{
public:
    static constexpr char kDelimiter = '\x0c';
    // A peer that sends more than this without a delimiter loses the pending bytes.
    static constexpr int kMaxPending = 64 * 1024 * 1024;

    // Appends bytes and returns the frames they complete, in order (empty frames included).
    // Sets *overflowed when pending bytes were discarded for exceeding kMaxPending.
    QList<QByteArray> feed(const QByteArray &bytes, bool *overflowed = nullptr);
    int pendingBytes() const { return m_buffer.size(); }

    // The bytes to write for one message.
    static QByteArray frame(const QByteArray &payload);

private:
    QByteArray m_buffer;
};

}   // namespace kelodrive
