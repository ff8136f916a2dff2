// SPDX-License-Identifier: GPL-3.0-or-later
// How fast the simulator answers and pushes, measured end to end over a localhost socket.
// Targets: a "getFileStatus" answer for a 10,000-entry folder within 100 ms, and 10,000
// notifications per second to one client, sustained.
#include "benchapp.h"

#include <kelodrivesim/simulator.h>

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

namespace {

// A started simulator, serving `syncRoot` when one is given, with one client
// connected that counts frames without parsing them, so that it costs as little as possible.
struct Session
{
    explicit Session(const QString &syncRoot = QString())
    {
        sim.setPortFilePath(QString());
        sim.setAskPluginInfo(false);
        if (!syncRoot.isEmpty()) {
            sim.setRescanMs(0);
            sim.setSyncRoot(syncRoot);
        }
        sim.start();
        socket.connectToHost(QStringLiteral("127.0.0.1"), sim.port());
        socket.waitForConnected(5000);
        QObject::connect(&socket, &QTcpSocket::readyRead, [this] {
            const QByteArray bytes = socket.readAll();
            frames += bytes.count('\x0c');
            bytesRead += bytes.size();
        });
        nubixbench::spinUntil([this] { return sim.connectionCount() >= 1; });
    }
    // Runs the event loop until count frames have arrived in all; false after 10 s.
    bool waitFor(qint64 count)
    {
        return nubixbench::spinUntil([this, count] { return frames >= count; }, 10000);
    }

    kelodrive::Simulator sim;
    QTcpSocket socket;
    qint64 frames = 0;
    qint64 bytesRead = 0;
};

// The request as the plug-in frames it: indented.
QByteArray fileStatusRequest(const QString &dir)
{
    const QByteArray compact = R"({"type":"ping","data":{"from":"client","to":"server","method":"getFileStatus",)"
                               R"("data":{"basedir":")"
        + dir.toUtf8() + R"(","type":"dir"},"version":1,"key":"{bench","timestamp":0}})";
    return QJsonDocument::fromJson(compact).toJson() + '\x0c';
}

void BM_FileStatusOfLargeFolder(benchmark::State &state)
{
    const int entries = int(state.range(0));
    QTemporaryDir dir;
    const QString root = dir.path() + QStringLiteral("/root");
    if (!QDir().mkpath(root + QStringLiteral("/big"))
        || !nubixbench::writeFiles(root + QStringLiteral("/big"), entries)) {
        state.SkipWithError("cannot create the folder");
        return;
    }
    Session client(root);
    const QByteArray request = fileStatusRequest(QStringLiteral("/big"));

    double worstMs = 0;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        const qint64 want = client.frames + 1;
        client.socket.write(request);
        client.socket.flush();
        if (!client.waitFor(want)) {
            state.SkipWithError("no answer");
            break;
        }
        worstMs = qMax(worstMs, timer.nsecsElapsed() / 1e6);
    }
    state.counters["entries"] = entries;
    state.counters["answer_bytes"] = double(client.bytesRead) / double(qMax<qint64>(1, client.frames));
    state.counters["worst_ms"] = worstMs;
}
BENCHMARK(BM_FileStatusOfLargeFolder)->Arg(10000)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// Pushes at a steady 10,000 per second for the given seconds and checks that the client
// keeps up: "delivered_per_s" is what arrived, "max_backlog" the most frames in flight.
void BM_SustainedNotifications(benchmark::State &state)
{
    const int seconds = int(state.range(0));
    constexpr int kRate = 10000;
    Session client;

    for (auto _ : state) {
        const qint64 base = client.frames;
        qint64 sent = 0;
        qint64 maxBacklog = 0;
        QElapsedTimer clock;
        clock.start();
        QTimer pacer;
        pacer.setTimerType(Qt::PreciseTimer);
        pacer.setInterval(1);
        QObject::connect(&pacer, &QTimer::timeout, [&] {
            const qint64 due = qMin<qint64>(qint64(seconds) * kRate, clock.nsecsElapsed() * kRate / 1000000000);
            const qint64 now = due - sent;
            if (now > 0)
                client.sim.sendBurst(int(now), QStringLiteral("syncQuantity"));
            sent = due;
            maxBacklog = qMax(maxBacklog, sent - (client.frames - base));
        });
        pacer.start();
        while (sent < qint64(seconds) * kRate)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        pacer.stop();
        if (!client.waitFor(base + sent)) {
            state.SkipWithError("notifications lost");
            break;
        }
        const double elapsed = clock.nsecsElapsed() / 1e9;
        state.counters["delivered_per_s"] = double(sent) / elapsed;
        state.counters["max_backlog"] = double(maxBacklog);
    }
}
BENCHMARK(BM_SustainedNotifications)->Arg(3)->Iterations(1)->Unit(benchmark::kSecond);

}   // namespace

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.kelodrive.sim");
    return nubixbench::runBenchmarks(argc, argv, options);
}
