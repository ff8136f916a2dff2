// SPDX-License-Identifier: GPL-3.0-or-later
// Each response and notification parser on its own: the first byte picks the
// parser, the rest is the JSON text of the answer's "data" or of the
// notification's "args", wrapped in a valid envelope, so that the fuzzer
// spends its time inside the records rather than on the envelope.
#include "fuzzsupport.h"
#include "ipc/nubixmessagehandler.h"

using hfmplugin_nubix::NubixMessageHandler;

namespace {
const char *const kResponses[] = {"getUserInfo", "getSyncInfo", "getFileStatus"};
const char *const kNotifications[]
    = {"syncInited", "syncRoot", "banDirs", "syncQuantity", "syncErrors", "fileSyncStatus"};
}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    NubixMessageHandler::instance();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const int choice = data[0] % 9;
    // Appended piece by piece: Qt copies them with memcpy, while a string
    // builder expression is compiled here, instrumented, a byte at a time
    // (a sixth of the time).
    QByteArray message;
    message.reserve(int(size) + 128);
    if (choice < 3) {
        message.append("{\"type\":\"pong\",\"data\":{\"method\":\"")
            .append(kResponses[choice])
            .append("\",\"key\":\"{k\",\"data\":");
    } else {
        message.append("{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"{k\",\"data\":{\"type\":\"")
            .append(kNotifications[choice - 3])
            .append("\",\"args\":");
    }
    message.append(reinterpret_cast<const char *>(data + 1), int(size - 1)).append(choice < 3 ? "}}" : "}}}");
    NubixMessageHandler::instance()->handleMessage(QString::fromUtf8(message));
    return 0;
}
