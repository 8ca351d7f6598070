#include "config/text_file.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

namespace veltrako::config {

std::optional<QStringList> read_text_lines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;

    // The decoder drops a leading byte order mark unless told to keep it.
    QStringDecoder decode(QStringConverter::Utf8);
    const QString text = decode(bytes);

    QStringList lines = text.split(QLatin1Char('\n'));
    if (lines.last().isEmpty())
        lines.removeLast();
    for (QString& line : lines)
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    return lines;
}

bool write_text_lines(const QString& path, const QStringList& lines) {
    QSaveFile file(path);
    // Unbuffered, so that every short write is seen here: Qt's buffered
    // write reports a disk that fills up part-way as success, and commit()
    // would then put a cut-off file in place of the old one.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    QByteArray bytes;
    for (const QString& line : lines) {
        bytes += line.toUtf8();
        bytes += "\r\n";
    }
    for (qint64 done = 0; done < bytes.size();) {
        const qint64 n = file.write(bytes.constData() + done, bytes.size() - done);
        if (n <= 0)
            return false; // the temporary file is discarded, the old one stays
        done += n;
    }
    return file.commit();
}

} // namespace veltrako::config
