#include "config/key_value_lines.h"

namespace veltrako::config {

QString key_value_line(const QString& key, const QString& value) {
    QString v;
    v.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c == QLatin1Char('|')) {
            v += QLatin1Char('/');
        } else if (c == QLatin1Char('\r')) {
            // CR LF is one line break, not two.
            if (i + 1 < value.size() && value.at(i + 1) == QLatin1Char('\n'))
                ++i;
            v += QLatin1String("\\n");
        } else if (c == QLatin1Char('\n')) {
            v += QLatin1String("\\n");
        } else {
            v += c;
        }
    }
    return key + QLatin1Char('|') + v;
}

QString restore_line_breaks(const QString& stored) {
    QString v = stored;
    v.replace(QLatin1String("\\n"), QLatin1String("\r\n"));
    return v;
}

} // namespace veltrako::config
