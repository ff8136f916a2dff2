// SPDX-License-Identifier: GPL-3.0-or-later
#include "malformedframes.h"

namespace kelodrive {

const QList<QByteArray> &malformedFrames()
{
    static const QList<QByteArray> frames = {
        QByteArray("this is not JSON"),
        QByteArray(R"({"type":"ping","data":{"method":"notify","key":"{0)"),
        QByteArray("[1,2,3]"),
        QByteArray("42"),
        QByteArray(R"({"type":"pong","data":{}})"),
        QByteArray(R"({"type":"pong"})"),
        QByteArray(R"({"type":"bogus","data":{"method":"getUserInfo","key":"k"}})"),
        QByteArray(R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncRoot"}}})"),
        QByteArray(R"({"type":"ping","data":{"method":"notify","key":"k","data":{}}})"),
        QByteArray(
            R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncInited","args":{"a":1}}}})"),
        QByteArray(
            R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncQuantity","args":"many"}}})"),
        QByteArray(R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"noSuchSignal","args":1}}})"),
        QByteArray(R"({"type":"ping","data":{"method":"noSuchRequest","key":"k","data":{}}})"),
        QByteArray(R"({"type":"pong","data":{"method":"noSuchMethod","key":"k","data":{"code":0}}})"),
        QByteArray(R"({"type":"pong","data":{"method":"getFileStatus","key":"k","data":{"code":0,"result":"x"}}})"),
        QByteArray(),
        QByteArray("\xff\xfe\xfd invalid UTF-8"),
        QByteArray("{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"k\",\"data\":{\"type\":\"syncRoot\","
                   "\"args\":\"\xc3\x28\"}}}"),
    };
    return frames;
}

}   // namespace kelodrive
