#pragma once
// Qt Test data tables with one line per row and one line to read a row.

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

} // namespace veltrako::testing
