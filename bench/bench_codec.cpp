// Throughput of the checksum and of the frame receiver, against the wire:
// 115200 baud at 11 bits a byte carries 10472.7 bytes a second.
//
//   build/bin/bench_codec [megabytes]

#include "app_context.h"
#include "link/device_link.h"
#include "null_user_interface.h"
#include "protocol/crc.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace veltrako;

namespace {

constexpr double wire_bytes_per_second = 115200.0 / 11.0;

void report_rate(const char* what, qint64 bytes, qint64 nanoseconds) {
    const double seconds = nanoseconds / 1e9;
    const double mb_per_s = bytes / seconds / 1e6;
    const double ratio = bytes / seconds / wire_bytes_per_second;
    std::printf("%-14s %8.1f MB/s   %10.0f x the wire\n", what, mb_per_s, ratio);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const qint64 megabytes = argc > 1 ? QByteArray(argv[1]).toLongLong() : 64;

    // calc_crc over a large buffer.
    QByteArray data(1 << 20, '\0');
    for (qsizetype i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i * 31 + 7);
    QElapsedTimer t;
    t.start();
    std::uint32_t sink = 0;
    for (qint64 i = 0; i < megabytes; ++i)
        sink += protocol::calc_crc(data);
    report_rate("calc_crc", megabytes * data.size(), t.nsecsElapsed());

    // parse_frames over live-status frames, delivered in chunks of what one
    // 50 ms tick brings at full wire speed.
    SystemClock clock;
    bench::NullUserInterface ui;
    AppContext ctx(clock, ui, nullptr);
    qint64 payloads = 0;
    ctx.payload_handler = [&](const QByteArray&) { ++payloads; };
    QByteArray stream;
    QByteArray live(47, '\x21');
    live[0] = 'I';
    while (stream.size() < (1 << 20))
        stream += protocol::build_frame(live);
    const qsizetype chunk = 525;
    const qint64 parse_megabytes = std::max<qint64>(1, megabytes / 8);
    t.restart();
    for (qint64 round = 0; round < parse_megabytes; ++round)
        for (qsizetype at = 0; at < stream.size(); at += chunk)
            protocol::parse_frames(ctx, stream.mid(at, chunk));
    report_rate("parse_frames", parse_megabytes * stream.size(), t.nsecsElapsed());
    std::printf("(%lld frames, checksum sink %u)\n", static_cast<long long>(payloads), sink);
    return 0;
}
