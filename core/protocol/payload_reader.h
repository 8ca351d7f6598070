#pragma once
// Reads a device answer by the positions the protocol tables give, counted
// from 1 with the answer letter at position 1. A position past the end, or
// 16-bit signed arithmetic that overflows, throws InterpretError: it ends the
// interpretation of that one payload, keeping what was written before.

#include <QByteArray>
#include <QString>

#include <stdexcept>

namespace veltrako::protocol {

class InterpretError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class PayloadReader {
public:
    explicit PayloadReader(const QByteArray& payload) : p_(payload) {}

    int size() const { return static_cast<int>(p_.size()); }

    int byte(int n) const {
        if (n < 1 || n > p_.size())
            throw InterpretError("position past the end of the answer");
        return static_cast<unsigned char>(p_.at(n - 1));
    }
    // Bytes n and n+1, high byte first, 0..65535.
    int be16(int n) const { return byte(n) * 256 + byte(n + 1); }
    // The same computed in a 16-bit signed number: a high byte of 128 or more overflows.
    int be16_signed(int n) const {
        const int high = byte(n);
        const int low = byte(n + 1);
        if (high >= 128)
            throw InterpretError("16-bit overflow");
        return high * 256 + low;
    }
    // Bytes n..n+3, high byte first, in a 32-bit signed number.
    qint32 be32_signed(int n) const {
        const int b1 = byte(n);
        if (b1 >= 128)
            throw InterpretError("32-bit overflow");
        return static_cast<qint32>(((b1 * 256 + byte(n + 1)) * 256 + byte(n + 2)) * 256 +
                                   byte(n + 3));
    }
    // Position n to the end, one character per byte; empty past the end.
    QString text_from(int n) const {
        return n > p_.size() ? QString() : QString::fromLatin1(p_.mid(n - 1));
    }
    QByteArray bytes(int n, int count) const {
        byte(n + count - 1); // the last one must exist
        return p_.mid(n - 1, count);
    }

private:
    const QByteArray& p_;
};

} // namespace veltrako::protocol
