#include "status/status_table.h"

#include "app_context.h"
#include "config/language.h"
#include "config/text_file.h"
#include "device/device_record.h"
#include "device/device_view.h"
#include "protocol/hex.h"

namespace veltrako::status {

namespace {

constexpr int column = 6;     // every column but the extended alarm words
constexpr int alarm_word = 4; // the extended layout's alarm words
constexpr int label_width = 12;

// Text numbers of the table.
constexpr int text_serial = 3810;
constexpr int text_board = 3811;
constexpr int text_version = 3812;
constexpr int text_date = 3813;
constexpr int headings_basic = 3814;
constexpr int headings_extended = 3818;
constexpr int heading_lines = 4;

const QString crlf = QStringLiteral("\r\n");

// Byte n of a record, counted from 1 as the record tables count; a record
// cut short reads as erased bytes.
int byte_at(const QByteArray& record, int n) {
    return n >= 1 && n <= record.size() ? static_cast<unsigned char>(record.at(n - 1)) : 0;
}

QString cell(const QString& text, int width = column) {
    return text.rightJustified(width, QLatin1Char(' '), true);
}

class LineBuilder {
public:
    LineBuilder(const QByteArray& record, const QLocale& locale) : r_(record), locale_(locale) {}

    void number(double value, int decimals = 0) {
        line_ += cell(device::format_value(value, decimals, locale_));
    }
    void block() { number(byte(1)); }
    void duration() { number(byte(2) * 256 + byte(3)); }
    void hex(int value, int digits, const QString& suffix, int width) {
        line_ += cell(protocol::hex_digits(value, digits) + suffix, width);
    }
    void alarm_time(int n) {
        const int code = byte(n);
        if (code == 0)
            line_ += cell(QStringLiteral("-"));
        else
            number(alarm_seconds(static_cast<std::uint8_t>(code)));
    }
    // A measured value; a zero byte means the device has none.
    void measured(int n, double scale, int decimals, double offset = 0) {
        const int b = byte(n);
        if (b == 0)
            line_ += cell(QStringLiteral("---"));
        else
            number(offset + b * scale, decimals);
    }
    // A share in 1/255 steps, shown as 0 to 100.
    void level(int n) {
        const int b = byte(n);
        if (b == 0)
            line_ += cell(QStringLiteral("---"));
        else
            number(b / 2.55, 1);
    }
    void temperature(int n) { measured(n, 0.25, 1); }
    void valve_time(int n) { measured(n, 0.04, 2); }
    void flow(int n) { measured(n, 0.1, 1); }
    void oxygen(int n) { measured(n, 0.1, 1, 75); }

    int byte(int n) const { return byte_at(r_, n); }
    QString text() const { return line_; }

private:
    const QByteArray& r_;
    const QLocale& locale_;
    QString line_;
};

} // namespace

int alarm_seconds(std::uint8_t code) {
    const int x = code;
    // (x - 1) / 16 rounded, halves to even, in whole numbers; x = 0 gives
    // -1/16, which rounds to 0.
    int k = 0;
    if (x >= 1) {
        k = (x - 1) / 16;
        const int rest = (x - 1) % 16;
        if (rest > 8 || (rest == 8 && k % 2 == 1))
            ++k;
    }
    return (x - 8 * k) * (k + 1);
}

QString format_status_line(const QByteArray& record, bool extended, const QLocale& locale) {
    LineBuilder b(record, locale);
    b.block();
    b.duration();
    if (!extended) {
        b.hex(b.byte(4) * 256 + b.byte(5), 4, QString(), column);
        for (int n = 6; n <= 13; ++n) // alarm times 1..8
            b.alarm_time(n);
        b.temperature(15); // mean
        b.temperature(16); // minimum
        b.temperature(17); // maximum
    } else {
        const QString dollar = QStringLiteral("$");
        b.hex(b.byte(4), 2, dollar, alarm_word);
        for (int n = 6; n <= 8; ++n) // alarm times 1, 3, 5
            b.alarm_time(n);
        b.hex(b.byte(5), 2, dollar, alarm_word);
        b.alarm_time(9);  // alarm time 9
        b.alarm_time(10); // alarm time 10
        b.level(11);
        b.level(12);
        b.measured(13, 10, 0); // count 1
        b.measured(14, 10, 0); // count 2
        b.temperature(16);     // minimum (this layout has no mean)
        b.temperature(17);     // maximum
    }
    b.valve_time(18);
    b.valve_time(19);
    b.flow(extended ? 15 : 14);
    b.oxygen(21); // minimum
    b.oxygen(22); // maximum
    b.oxygen(20); // mean
    return b.text();
}

QStringList format_status_lines(const StatusMemory& memory, const device::DeviceRecord& device,
                                const config::LanguageTables& language, const QDateTime& now,
                                const QLocale& locale) {
    // The language file trims its lines, so the labels get their padding here.
    const auto label = [&language](int n) { return language.text(n).leftJustified(label_width); };
    QStringList lines;
    lines << label(text_serial) + device.SN;
    lines << label(text_board) + device.LP;
    lines << label(text_version) + device.SW;
    lines << label(text_date) + now.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));

    const bool extended = device.o22_source;
    const int first = extended ? headings_extended : headings_basic;
    for (int n = first; n < first + heading_lines; ++n) {
        QString heading = language.text(n);
        // The language file cannot hold "|", so the second layout's
        // headings carry "/" in its place.
        if (extended)
            heading.replace(QLatin1Char('/'), QLatin1Char('|'));
        lines << heading;
    }
    for (int n = 1; n <= memory.record_count(); ++n)
        lines << format_status_line(memory.records[static_cast<std::size_t>(n)], extended, locale);
    return lines;
}

QString format_status(const StatusMemory& memory, const device::DeviceRecord& device,
                      const config::LanguageTables& language, const QDateTime& now,
                      const QLocale& locale) {
    return format_status_lines(memory, device, language, now, locale).join(crlf) + crlf;
}

QString format_status(const AppContext& ctx) {
    return format_status(ctx.status, ctx.device, ctx.language, ctx.clock.now(), QLocale());
}

bool write_status_table(const QString& path, const QString& table) {
    QStringList lines = table.split(crlf);
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast(); // the end of the last line, not another line
    return config::write_text_lines(path, lines);
}

} // namespace veltrako::status
