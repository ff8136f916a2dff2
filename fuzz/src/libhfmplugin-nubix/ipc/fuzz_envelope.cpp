// SPDX-License-Identifier: GPL-3.0-or-later
// One received message, as the transport hands it over, through the envelope
// parse and the dispatch to every request handler, response parser and
// notification parser. No socket is connected: what the handler would send
// is dropped by the transport.
#include "fuzzsupport.h"
#include "ipc/nubixmessagehandler.h"

using hfmplugin_nubix::NubixMessageHandler;

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    NubixMessageHandler::instance();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString message = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    NubixMessageHandler::instance()->handleMessage(message);
    return 0;
}
