// SPDX-License-Identifier: GPL-3.0-or-later
// A folder's "getFileStatus" answer as the client writes it, compact, for the
// status cache's benchmarks.
#pragma once

#include <QByteArray>
#include <QString>

namespace nubixbench {

// The cloud path of entry i: 25 folders, the names spread evenly over them.
inline QString cloudPath(int i)
{
    return QStringLiteral("/Documents/Projects/Quarterly Reports/%1/report-%2.docx")
        .arg(2000 + i % 25)
        .arg(i, 6, 10, QLatin1Char('0'));
}

inline QByteArray fileStatusAnswer(int entries)
{
    QByteArray text = "{\"type\":\"pong\",\"data\":{\"method\":\"getFileStatus\","
                      "\"key\":\"{3f2a8a5e-2c4b-4c7e-9d55-0a1b2c3d4e5f\",\"data\":{\"code\":0,\"result\":[";
    for (int i = 0; i < entries; ++i) {
        if (i)
            text += ',';
        text += "{\"fileid\":" + QByteArray::number(Q_INT64_C(281474976710656) + i) + ",\"isDir\":false,\"path\":\""
            + cloudPath(i).toUtf8() + "\",\"plan\":\"" + (i % 3 ? "upload" : "download")
            + "\",\"plan_error\":0,\"plan_status\":" + QByteArray::number(1 + i % 3) + "}";
    }
    text += "]}}}";
    return text;
}

}   // namespace nubixbench
