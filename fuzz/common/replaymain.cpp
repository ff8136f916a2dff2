// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz harness once on every file of the directories given, as the
// fuzzer would, without the fuzzer: ctest replays the seed corpus and every
// input that once crashed. A failing input aborts the program.
#include <QDir>
#include <QFile>
#include <QTextStream>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir dir(QString::fromLocal8Bit(argv[i]));
        const QStringList names = dir.entryList(QDir::Files, QDir::Name);
        for (const QString &name : names) {
            QFile file(dir.filePath(name));
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            std::fprintf(stderr, "replaying %s\n", qPrintable(file.fileName()));
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
            ++inputs;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", inputs);
    return inputs > 0 ? 0 : 1;
}
