// SPDX-License-Identifier: GPL-3.0-or-later
#include "framesplitter.h"

namespace hfmplugin_nubix {

QStringList FrameSplitter::feed(const QByteArray &chunk)
{
    int length = chunk.indexOf('\0');
    if (length < 0)
        length = chunk.size();

    // Everything before `from` has been searched already and holds no delimiter.
    const int from = m_buffer.size();
    m_buffer.append(QString::fromUtf8(chunk.constData(), length));

    const QChar delimiter {QLatin1Char(kDelimiter)};
    QStringList messages;
    int head = 0;
    for (int pos = m_buffer.indexOf(delimiter, from); pos >= 0; pos = m_buffer.indexOf(delimiter, head)) {
        if (head == 0 && pos == m_buffer.size() - 1) {
            // The buffer holds exactly one message: hand it over without copying.
            m_buffer.chop(1);
            messages.append(std::move(m_buffer));
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
