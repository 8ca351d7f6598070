#include "command_dispatcher.h"

#include "bytes.h"
#include "device_state.h"

namespace veltrako::sim {

namespace {

Reply answer(QByteArray payload) {
    return {Reply::answer, std::move(payload)};
}
Reply acknowledge(char letter) {
    return answer(QByteArray(1, letter));
}
Reply with_byte(char letter, int value) {
    QByteArray p(1, letter);
    p += static_cast<char>(value);
    return answer(p);
}

// Payload length each letter comes with; "E" carries its data on top.
int expected_length(char letter) {
    switch (letter) {
    case '?':
    case '!':
    case 'I':
    case 'T':
    case 'S':
    case 'C':
    case 'U':
    case 'O':
    case 'X':
    case 'K':
    case 'Z':
    case 'b':
        return 1;
    case 'r':
    case 'u':
    case 'o':
    case 'x':
        return 2;
    case 's':
    case 'w':
    case 'k':
        return 3;
    case 'e':
    case 'E':
        return 4;
    case 't':
        return 5;
    default:
        return -1;
    }
}

// The timing index travels as the digit character "0" + index.
int timing_index(const QByteArray& p) {
    const int index = byte_at(p, 2) - '0';
    return index >= 0 && index < 14 ? index : -1;
}

} // namespace

Reply answer_command(DeviceState& d, const QByteArray& p, std::int64_t now_ms) {
    if (p.isEmpty())
        return {};
    const char letter = p.at(0);
    const int length = expected_length(letter);
    if (length < 0 || (letter == 'E' ? p.size() < length || p.size() != length + byte_at(p, 4)
                                     : p.size() != length))
        return {};

    switch (letter) {
    case '?':
        return answer('?' + d.sw);
    case '!':
        return answer('!' + d.info);
    case 'I':
        return answer(live_status_answer(d.live, d.zeiten, d.family, now_ms - d.power_on_ms));
    case 'T': {
        QByteArray out("T");
        append_be32(out, static_cast<std::uint32_t>(d.clock_seconds(now_ms)));
        return answer(out);
    }
    case 't':
        d.clock_seconds_at_set = be32_at(p, 2);
        d.clock_set_ms = now_ms;
        return acknowledge('t');
    case 'S': {
        QByteArray out("S");
        append_be16(out, d.remaining);
        return answer(out);
    }
    case 's':
        // The device counts at most 999; a larger value is not taken.
        if (be16_at(p, 2) <= max_remaining)
            d.remaining = static_cast<std::uint16_t>(be16_at(p, 2));
        return acknowledge('s');
    case 'e': {
        const int address = static_cast<int>(be16_at(p, 2));
        const int count = byte_at(p, 4);
        if (count > max_memory_read)
            return {};
        QByteArray out = p.left(4);
        out += d.memory.read(address, count);
        return answer(out);
    }
    case 'E': {
        const int address = static_cast<int>(be16_at(p, 2));
        const QByteArray data = p.mid(4);
        // A new hours value counts on from now.
        if (d.memory.write(address, data) && touches_hours(address, static_cast<int>(data.size())))
            d.hours_counted_ms = now_ms;
        return acknowledge('E');
    }
    case 'C':
        d.memory.set_hours({});
        d.hours_counted_ms = now_ms;
        return acknowledge('C');
    case 'r': {
        const int index = timing_index(p);
        if (index < 0)
            return {};
        QByteArray out = p.left(2);
        out += static_cast<char>(d.zeiten[static_cast<std::size_t>(index)]);
        return answer(out);
    }
    case 'w': {
        // A timing the device does not have is not stored, but the write is
        // acknowledged like any other.
        if (const int index = timing_index(p); index >= 0)
            d.zeiten[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(byte_at(p, 3));
        return acknowledge('w');
    }
    case 'U':
        return with_byte('U', d.flow_selector_u);
    case 'O':
        return with_byte('O', d.flow_selector_o);
    case 'u':
        d.flow_selector_u = static_cast<std::uint8_t>(byte_at(p, 2));
        return acknowledge('u');
    case 'o':
        d.flow_selector_o = static_cast<std::uint8_t>(byte_at(p, 2));
        return acknowledge('o');
    case 'X':
        return with_byte('X', d.acoustic_alarm);
    case 'x':
        d.acoustic_alarm = static_cast<std::uint8_t>(byte_at(p, 2));
        return acknowledge('x');
    case 'K': {
        QByteArray out("K");
        append_be16(out, d.compliance.count());
        return answer(out);
    }
    case 'k': {
        const std::uint32_t n = be16_at(p, 2);
        const ComplianceRecord r = d.compliance.record(n, d.running_session(now_ms));
        QByteArray out = p.left(3);
        append_be32(out, r.start);
        append_be32(out, r.end);
        return answer(out);
    }
    case 'Z':
        d.compliance.erase();
        d.session_start = static_cast<std::uint32_t>(d.clock_seconds(now_ms));
        return acknowledge('Z');
    case 'b':
        return {Reply::enter_boot_loader, {}};
    default:
        return {};
    }
}

} // namespace veltrako::sim
