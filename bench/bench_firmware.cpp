// A firmware update against the simulated concentrator with real wire timing
// and the real clock. The floor is the first poll's wait for every line
// (a line of normal length and its ">" are on the wire well within it); the
// time from the first line written to the last one acknowledged is reported
// as a ratio to that floor (target: at most 1.02).
//
//   build/bin/bench_firmware [lines, default 2000]

#include "app_context.h"
#include "firmware/firmware_update.h"
#include "link/device_connection.h"
#include "link/sim_link.h"
#include "null_user_interface.h"
#include "sim/concentrator.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace veltrako;

namespace {

// 16 data bytes for the loader at `address`, as a file holds them.
QString data_line(int address) {
    QByteArray line("\x42\x10", 2);
    line += static_cast<char>(address >> 8);
    line += static_cast<char>(address & 0xFF);
    for (int i = 0; i < 16; ++i)
        line += static_cast<char>((address + i) & 0xFF);
    int sum = 0;
    for (char c : line)
        sum += static_cast<unsigned char>(c);
    line += static_cast<char>((256 - sum % 256) % 256);
    return QString::fromLatin1(line.toHex().toUpper());
}

class Timing final : public firmware::UpdateProgress {
public:
    void begin(int) override {}
    void block(const firmware::ProgressStep& step) override {
        if (step.block == 1)
            timer.start();
    }
    void end() override { lines_ns = timer.nsecsElapsed(); }
    QElapsedTimer timer;
    qint64 lines_ns = 0;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int lines = argc > 1 ? QByteArray(argv[1]).toInt() : 2000;
    SystemClock clock;
    bench::NullUserInterface ui;
    QString error;
    auto device = sim::make_concentrator(QStringLiteral("default"), &error);
    auto* concentrator = static_cast<sim::Concentrator*>(device.get());
    AppContext ctx(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));
    if (!link::open_device(ctx, true)) {
        std::fprintf(stderr, "the simulated device does not open\n");
        return 1;
    }

    firmware::FirmwareImage image;
    image.version = QStringLiteral("5122");
    image.hardware = {QStringLiteral("AE61")};
    for (int i = 0; i < lines; ++i)
        image.data_lines << data_line(16 * i);

    // How late the clock's own 40 ms wait returns on this machine: the part
    // of any excess that is the system's, not the update's.
    const int calibration = 100;
    QElapsedTimer wait_timer;
    wait_timer.start();
    for (int i = 0; i < calibration; ++i)
        clock.wait_ms(firmware::loader::quick_poll_ms);
    const double wait_excess_ms =
        wait_timer.nsecsElapsed() / 1e6 / calibration - firmware::loader::quick_poll_ms;

    Timing timing;
    QElapsedTimer total;
    total.start();
    const auto result = firmware::program_firmware(ctx, image, timing);
    const double total_ms = total.nsecsElapsed() / 1e6;
    const double lines_ms = timing.lines_ns / 1e6;
    const double floor_ms = lines * double(firmware::loader::quick_poll_ms);
    std::printf("%d lines: %s, %lld programmed\n", lines,
                result == firmware::UpdateResult::done ? "done" : "FAILED",
                static_cast<long long>(concentrator->boot_loader().programmed_lines().size()));
    std::printf("lines written: %.1f ms, floor %.0f ms, ratio %.4f (%.3f ms a line over the "
                "floor)\n",
                lines_ms, floor_ms, lines_ms / floor_ms, (lines_ms - floor_ms) / lines);
    std::printf("wait_ms(%d) alone returns %.3f ms late on average, so the update adds %.3f ms "
                "a line of its own\n",
                firmware::loader::quick_poll_ms, wait_excess_ms,
                (lines_ms - floor_ms) / lines - wait_excess_ms);
    std::printf("whole update with loader entry, sync and restart: %.1f ms\n", total_ms);
    return result == firmware::UpdateResult::done ? 0 : 1;
}
