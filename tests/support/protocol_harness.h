#pragma once
// Small helpers for the protocol, link and simulator tests: data tables with
// one line per row and one line to read a row, the boot loader's data lines,
// and Timer1 driven by a hand-moved clock.

#include "app_context.h"
#include "manual_clock.h"
#include "protocol/poll_cycle.h"
#include "test_bytes.h"

#include <QTest>

#include <iterator>
#include <tuple>
#include <utility>

namespace veltrako::testing {

// A data table whose columns have the types T...: `Table<int, bool> row;` in
// the _data function declares the columns, `row("name", 3, true);` adds a
// row (converting each value to its column's type), and
// `auto [n, on] = Table<int, bool>::fetch();` reads the current row.
template <class... T> struct Table {
    Table() { add(std::index_sequence_for<T...>{}); }
    const Table& operator()(const QByteArray& name, T... values) const {
        (QTest::newRow(name.constData()) << ... << values);
        return *this;
    }
    static std::tuple<T...> fetch() { return read(std::index_sequence_for<T...>{}); }

private:
    // Qt keeps the column names by pointer: they must outlive the table.
    static constexpr const char* column[] = {"c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7"};
    static_assert(sizeof...(T) <= std::size(column));
    template <std::size_t... I> static void add(std::index_sequence<I...>) {
        (QTest::addColumn<T>(column[I]), ...);
    }
    template <std::size_t... I> static std::tuple<T...> read(std::index_sequence<I...>) {
        return {*static_cast<T*>(QTest::qData(column[I], qMetaTypeId<T>()))...};
    }
};

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
