// SPDX-License-Identifier: GPL-3.0-or-later
// The port file: its bytes are written to a file and read back as start-up
// reads them (bounded, never blocking), then its first line is parsed. The
// read must give exactly the first bytes of the file, and the parse must
// agree with a reference written here on every line that is plain digits.
#include "fuzzsupport.h"
#include "ipc/nubixmessagehandler.h"

#include <QDir>
#include <QFile>

#include <cstdlib>

#include <unistd.h>

using hfmplugin_nubix::NubixMessageHandler;

namespace {
QString portFile;
constexpr int kReadBound = 256;
}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    const QString dir = QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
    portFile = QStringLiteral("%1/nubix-fuzz-port-%2").arg(dir).arg(QCoreApplication::applicationPid());
    // Not left behind in the shared tmpfs when the run ends.
    static const QByteArray name = QFile::encodeName(portFile);
    std::atexit([] { ::unlink(name.constData()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    {
        QFile file(portFile);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            return 0;
    }
    QByteArray head;
    if (!NubixMessageHandler::readPortFileHead(portFile, &head) || head != bytes.left(kReadBound))
        std::abort();

    quint16 port = 0;
    QString line;
    const bool ok = NubixMessageHandler::parsePortLine(head, &port, &line);

    // Reference: the first line without carriage returns; when it is one to
    // five ASCII digits around ASCII blanks, it is the port if it fits.
    QByteArray first = head.left(head.indexOf('\n') < 0 ? head.size() : head.indexOf('\n'));
    first.replace('\r', QByteArray());
    const QByteArray trimmed = first.trimmed();
    bool digits = !trimmed.isEmpty() && trimmed.size() <= 5;
    for (const char c : trimmed)
        digits = digits && c >= '0' && c <= '9';
    if (digits) {
        const int value = trimmed.toInt();
        if (ok != (value <= 65535) || (ok && port != value))
            std::abort();
    }
    if (ok && line.isEmpty())
        std::abort();
    return 0;
}
