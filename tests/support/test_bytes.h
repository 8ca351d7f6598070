#pragma once
// Byte strings written as lists of numbers, as the protocol tables give them.

#include <QByteArray>

#include <initializer_list>

namespace veltrako::testing {

inline QByteArray bytes_of(std::initializer_list<int> values) {
    QByteArray out;
    for (int v : values)
        out += static_cast<char>(v);
    return out;
}

} // namespace veltrako::testing
