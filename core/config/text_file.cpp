#include "config/text_file.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

namespace veltrako::config {

namespace {

// Windows-1252 differs from Latin-1 only in 0x80..0x9F. The five bytes it
// leaves undefined keep their Latin-1 control character, as Windows does.
constexpr char16_t cp1252_high[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QString from_windows_1252(QByteArrayView bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        *out++ = (b >= 0x80 && b < 0xA0) ? QChar(cp1252_high[b - 0x80]) : QChar(b);
    }
    return text;
}

QString decode_text(QByteArrayView bytes) {
    const QByteArrayView bom("\xEF\xBB\xBF");
    if (bytes.startsWith(bom))
        bytes = bytes.sliced(bom.size());
    // Stateless: a sequence cut off at the end of the file is an error too.
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return from_windows_1252(bytes);
}

} // namespace

QStringList decode_text_lines(const QByteArray& bytes) {
    const QString text = decode_text(bytes);
    QStringList lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c != QLatin1Char('\r') && c != QLatin1Char('\n'))
            continue;
        lines << text.sliced(start, i - start);
        if (c == QLatin1Char('\r') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
            ++i;
        start = i + 1;
    }
    if (start < text.size())
        lines << text.sliced(start);
    return lines;
}

std::optional<QStringList> read_text_lines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return decode_text_lines(bytes);
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
