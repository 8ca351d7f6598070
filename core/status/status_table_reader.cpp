#include "status/status_table_reader.h"

namespace veltrako::status {

namespace {

// The heading labels are padded to this width; the value follows.
constexpr int label_width = 12;
constexpr int heading_lines = 8;
constexpr int basic_columns = 20;
constexpr int extended_columns = 21;

QString value_after_label(const QString& line) {
    return line.size() > label_width ? line.mid(label_width).trimmed() : QString();
}

bool whole_number(const QString& text, int low, int high) {
    bool ok = false;
    const int n = text.toInt(&ok);
    return ok && n >= low && n <= high;
}

} // namespace

std::optional<SavedStatusTable> read_status_table(const QStringList& lines) {
    if (lines.size() < heading_lines)
        return std::nullopt;
    SavedStatusTable t;
    t.sn = value_after_label(lines[0]);
    t.lp = value_after_label(lines[1]);
    t.sw = value_after_label(lines[2]);
    t.at =
        QDateTime::fromString(value_after_label(lines[3]), QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    if (!t.at.isValid() || t.sn.isEmpty())
        return std::nullopt;
    int columns = 0;
    for (qsizetype i = heading_lines; i < lines.size(); ++i) {
        const QString& line = lines[i];
        if (line.trimmed().isEmpty())
            continue;
        const QStringList fields = line.simplified().split(QLatin1Char(' '));
        const int n = static_cast<int>(fields.size());
        if ((n != basic_columns && n != extended_columns) || (columns != 0 && n != columns) ||
            !whole_number(fields[0], 0, 255) || !whole_number(fields[1], 0, 65535))
            return std::nullopt;
        columns = n;
        t.record_lines << line;
    }
    t.extended = columns == extended_columns;
    return t;
}

} // namespace veltrako::status
