// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <limits>

namespace hfmplugin_nubix {

// Cuts the byte stream from the sync client into messages, each ended by a
// form feed. Bytes are kept until their message is complete and only then
// decoded as UTF-8, so a character split between two reads arrives whole.
// From each read only the bytes before its first zero byte are taken. Only
// the newly arrived bytes are searched for delimiters, so a large message
// that arrives over many reads costs time linear in its size, and waiting
// bytes cost one byte of memory each. Plain value class, used from one
// thread at a time.
class FrameSplitter
{
public:
    static constexpr char kDelimiter = '\x0c';
    // The longest message that can be handed out as text (a QString holds at
    // most this many UTF-16 units, and no message decodes to more units than
    // it has bytes). Longer ones are dropped, up to their delimiter.
    static constexpr qint64 kMaxMessageBytes = (qint64(std::numeric_limits<int>::max()) - 64) / 2;

    // Appends one chunk as read from the socket; returns the messages it
    // completed, in order (an empty message between two delimiters included).
    QStringList feed(const QByteArray &chunk);
    // Bytes received after the last delimiter, waiting for the rest.
    QByteArray pending() const { return m_buffer; }
    // Bytes of the current message so far, those dropped for its size included.
    qint64 pendingSize() const { return m_dropping ? m_dropped : m_buffer.size(); }
    // Whether the current message has grown too long to be handed out.
    bool isDropping() const { return m_dropping; }
    // Forgets the waiting bytes, for a new connection.
    void clear();

private:
    void keep(const char *data, int length);
    void release();

    QByteArray m_buffer;
    bool m_dropping = false;
    qint64 m_dropped = 0;
};

}   // namespace hfmplugin_nubix
