#include "protocol/commands.h"

namespace veltrako::protocol::cmd {

namespace {

QByteArray letter(char c) {
    return QByteArray(1, c);
}

void append16(QByteArray& out, std::uint16_t v) {
    out += static_cast<char>(v >> 8);
    out += static_cast<char>(v & 0xFF);
}

void append32(QByteArray& out, std::uint32_t v) {
    append16(out, static_cast<std::uint16_t>(v >> 16));
    append16(out, static_cast<std::uint16_t>(v & 0xFFFF));
}

char index_digit(int index) {
    return static_cast<char>(0x30 + index);
}

} // namespace

QByteArray live_status() {
    return letter('I');
}
QByteArray read_clock() {
    return letter('T');
}

qint64 seconds_since_2000(const QDateTime& t) {
    const QDateTime epoch(QDate(2000, 1, 1), QTime(0, 0), t.timeSpec());
    return epoch.secsTo(t);
}

QByteArray set_clock_seconds(std::uint32_t seconds) {
    QByteArray out = letter('t');
    append32(out, seconds);
    return out;
}

QByteArray set_clock(const QDateTime& local_now) {
    return set_clock_seconds(static_cast<std::uint32_t>(seconds_since_2000(local_now)));
}

QByteArray read_remaining() {
    return letter('S');
}

QByteArray set_remaining(std::uint16_t value) {
    QByteArray out = letter('s');
    append16(out, value);
    return out;
}

QByteArray identity() {
    return letter('?');
}
QByteArray information() {
    return letter('!');
}
QByteArray reset_hours() {
    return letter('C');
}

QByteArray read_memory(std::uint16_t address, std::uint8_t count) {
    QByteArray out = letter('e');
    append16(out, address);
    out += static_cast<char>(count);
    return out;
}

QByteArray write_memory(std::uint16_t address, const QByteArray& data) {
    QByteArray out = letter('E');
    append16(out, address);
    out += static_cast<char>(data.size());
    out += data;
    return out;
}

QByteArray read_hours() {
    return read_memory(addr_hours, 7);
}
QByteArray read_board() {
    return read_memory(addr_board, 12);
}
QByteArray read_text_d0() {
    return read_memory(addr_text_d0, 4);
}
QByteArray read_serial() {
    return read_memory(addr_serial, 12);
}
QByteArray read_text_40() {
    return read_memory(addr_text_40, 22);
}
QByteArray read_text_58() {
    return read_memory(addr_text_58, 8);
}

QByteArray read_status_record(int n) {
    const int address = (n - 1) * status_record_size + addr_status_first;
    return read_memory(static_cast<std::uint16_t>(address), status_record_size);
}

QByteArray write_serial(const QByteArray& serial) {
    QByteArray text = serial + QByteArray(serial_length, ' ');
    text.truncate(serial_length);
    return write_memory(addr_serial, text);
}

QByteArray write_low_power(char value) {
    return write_memory(addr_low_power, QByteArray(1, value));
}

QByteArray write_hours_block(std::uint16_t address, const QByteArray& block9) {
    return write_memory(address, block9);
}

QByteArray read_timing(int index) {
    QByteArray out = letter('r');
    out += index_digit(index);
    return out;
}

QByteArray write_timing(int index, std::uint8_t value) {
    QByteArray out = letter('w');
    out += index_digit(index);
    out += static_cast<char>(value);
    return out;
}

QByteArray read_flow_selector(int selector) {
    return letter(selector == 0 ? 'U' : 'O');
}

QByteArray write_flow_selector(int selector, std::uint8_t value) {
    QByteArray out = letter(selector == 0 ? 'u' : 'o');
    out += static_cast<char>(value);
    return out;
}

QByteArray read_acoustic_alarm() {
    return letter('X');
}

QByteArray write_acoustic_alarm(std::uint8_t v) {
    QByteArray out = letter('x');
    out += static_cast<char>(v);
    return out;
}

QByteArray compliance_count() {
    return letter('K');
}

QByteArray compliance_record(std::uint16_t n) {
    QByteArray out = letter('k');
    append16(out, n);
    return out;
}

QByteArray compliance_erase() {
    return letter('Z');
}
QByteArray boot_loader() {
    return letter('b');
}

} // namespace veltrako::protocol::cmd

namespace veltrako::protocol::cmd {

QList<QByteArray> initial_sequence() {
    QList<QByteArray> seq{identity(),     read_hours(),  read_board(),
                          read_text_d0(), read_serial(), read_acoustic_alarm()};
    for (int i = 0; i <= 13; ++i)
        seq << read_timing(i);
    seq << read_flow_selector(0) << read_flow_selector(1) << information() << read_clock()
        << read_remaining() << live_status() << information() << read_text_40() << read_text_58();
    return seq;
}

} // namespace veltrako::protocol::cmd
