#include "config/file_names.h"

#include <QStringList>

namespace veltrako::config {

QString file_name_part(const QString& text) {
    QString part = text.trimmed();
    for (QChar& c : part)
        if (c.unicode() < 32 || c.unicode() == 127 || QStringLiteral("\\/:*?\"<>|").contains(c))
            c = QLatin1Char('_');
    return part;
}

QString proposed_file_name(const QString& prefix, const QStringList& parts, const QString& suffix) {
    QStringList kept;
    if (!prefix.isEmpty())
        kept << prefix;
    for (const QString& p : parts)
        if (const QString cleaned = file_name_part(p); !cleaned.isEmpty())
            kept << cleaned;
    return kept.join(QLatin1Char('_')) + suffix;
}

} // namespace veltrako::config
