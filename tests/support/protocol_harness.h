#pragma once
// Small helpers for the protocol, link and simulator tests: the boot
// loader's data lines and Timer1 driven by a hand-moved clock.

#include "app_context.h"
#include "manual_clock.h"
#include "protocol/poll_cycle.h"
#include "table.h"
#include "test_bytes.h"

#include <QTest>

namespace veltrako::testing {

// One data line as the boot loader takes it: 0x42, N, address, N bytes and a
// checksum that makes the sum 0 mod 256 (off by one when `good` is false).
inline QByteArray loader_line(int address, const QByteArray& data, bool good = true) {
    QByteArray line = bytes_of({0x42, int(data.size()), address >> 8, address & 0xFF}) + data;
    int sum = 0;
    for (char c : line)
        sum += static_cast<unsigned char>(c);
    line += static_cast<char>((256 - sum % 256 + (good ? 0 : 1)) % 256);
    return line;
}

// Timer1 ticks every 50 ms until `done` holds, at most `limit` times.
template <class F> bool tick_until(ManualClock& clock, AppContext& ctx, F done, int limit = 2000) {
    for (int i = 0; i < limit && !done(); ++i) {
        clock.advance_ms(50);
        protocol::timer1_tick(ctx);
    }
    return done();
}

} // namespace veltrako::testing
