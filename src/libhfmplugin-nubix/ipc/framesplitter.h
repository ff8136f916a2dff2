// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace hfmplugin_nubix {

// Cuts the byte stream from the sync client into messages, each ended by a
// form feed. Each chunk is decoded as UTF-8 on its own, up to its first zero
// byte. Only the newly arrived text is searched for delimiters, so a large
// message that arrives over many reads costs time linear in its size, and
// the memory of a large message is used again for the next one once its
// reader has let go of it. Plain value class, used from one thread at a time.
class FrameSplitter
{
public:
    static constexpr char kDelimiter = '\x0c';

    // Appends one chunk as read from the socket; returns the messages it
    // completed, in order (an empty message between two delimiters included).
    QStringList feed(const QByteArray &chunk);
    // Text received after the last delimiter, waiting for the rest.
    QString pending() const { return m_buffer; }

private:
    QString m_buffer;
    // The last message handed out whole; its memory becomes the next buffer
    // when nobody else holds it any more.
    QString m_spare;
};

}   // namespace hfmplugin_nubix
