#include "firmware_file.h"

#include "app_context.h"
#include "config/text_file.h"
#include "device/device_view.h"

#include <QLocale>

namespace veltrako::firmware {

namespace {

int hex_digit(QChar c) {
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    return -1;
}

// "KEY = value" with exactly one "="; the value when the key matches.
std::optional<QString> header_value(const QString& line, QLatin1String key) {
    const QStringList parts = line.split(QLatin1Char('='));
    if (parts.size() != 2 || parts[0].trimmed().toUpper() != key)
        return std::nullopt;
    return parts[1];
}

QString without_blanks(QString text) {
    text.remove(QLatin1Char(' '));
    text.remove(QLatin1Char('\t'));
    return text;
}

} // namespace

std::optional<QByteArray> hex_to_bytes(const QString& text) {
    if (text.size() % 2 != 0)
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(text.size() / 2);
    for (qsizetype i = 0; i < text.size(); i += 2) {
        const int high = hex_digit(text[i]);
        const int low = hex_digit(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.append(static_cast<char>(high << 4 | low));
    }
    return bytes;
}

FileCheck parse_firmware_lines(const QStringList& lines, FirmwareImage& image) {
    image = {};
    const auto version = header_value(lines.value(0), QLatin1String("VERSION"));
    if (!version)
        return {FileFault::no_version_line, 0};
    image.version = version->trimmed();
    const auto hardware = header_value(lines.value(1), QLatin1String("HARDWARE"));
    if (!hardware)
        return {FileFault::no_hardware_line, 0};
    // An empty identifier would match a device whose identity was never read.
    image.hardware = without_blanks(*hardware).split(QLatin1Char('|'), Qt::SkipEmptyParts);

    for (qsizetype i = 2; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        // The conversion is tried here already, so that a damaged file is
        // refused before the device has left its application.
        if (!line.startsWith(QLatin1String("42")) || !hex_to_bytes(line))
            return {FileFault::bad_data_line, static_cast<int>(image.data_lines.size())};
        image.data_lines << line;
    }
    if (image.data_lines.isEmpty())
        return {FileFault::no_data_lines, 0};
    return {FileFault::none, static_cast<int>(image.data_lines.size())};
}

QString file_fault_message(const AppContext& ctx, const FileCheck& check) {
    const config::LanguageTables& language = ctx.language;
    switch (check.fault) {
    case FileFault::none:
        return {};
    case FileFault::unreadable:
        return language.text(9101);
    case FileFault::no_version_line:
        return language.text(107);
    case FileFault::no_hardware_line:
        return language.text(108);
    case FileFault::bad_data_line:
        return language.text(3803) + QLatin1Char(' ') +
               device::format_value(check.accepted, 0, QLocale());
    case FileFault::no_data_lines:
        return language.text(109);
    }
    return {};
}

bool load_firmware_file(AppContext& ctx, const QString& path, FirmwareImage& image) {
    const auto lines = config::read_text_lines(path);
    const FileCheck check =
        lines ? parse_firmware_lines(*lines, image) : FileCheck{FileFault::unreadable, 0};
    if (check.fault == FileFault::none)
        return true;
    show_msg(ctx, file_fault_message(ctx, check) + (check.fault == FileFault::unreadable
                                                        ? QStringLiteral("\r\n") + path
                                                        : QString()));
    return false;
}

} // namespace veltrako::firmware
