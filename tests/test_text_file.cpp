// Text files from older tools: which bytes become which lines and characters;
// and the key-value lines shared by the report and compliance files, where a
// value must stay on its one line and in its one column (that it comes back
// as typed is checked through the report file in test_report).

#include "config/key_value_lines.h"
#include "config/text_file.h"
#include "table.h"

using namespace veltrako::config;
using veltrako::testing::Table;

class TestTextFile : public QObject {
    Q_OBJECT
private slots:
    void decode_data() {
        const Table<QByteArray, QStringList> row;
        row("UTF-8", "M\xC3\xBCller\r\nStra\xC3\x9F\x65\r\n", {"Müller", "Straße"});
        row("UTF-8 after a byte order mark", "\xEF\xBB\xBFGer\xC3\xA4t\r\n", {"Gerät"});
        row("Windows-1252", "M\xFCller\r\nStra\xDF\x65\r\n", {"Müller", "Straße"});
        row("Windows-1252 only for its own 0x80..0x9F", "\x80 \x96 \x84x\x93 \x81",
            {"€ – „x“ \u0081"});
        // One byte that is not UTF-8 makes the whole file Windows-1252.
        row("UTF-8 and Windows-1252 mixed", "\xC3\xA4\n\xE4\n", {"Ã¤", "ä"});
        row("UTF-8 cut off at the end", "ok\n\xC3", {"ok", "Ã"});
        row("byte order mark before Windows-1252", "\xEF\xBB\xBF\xFC\n", {"ü"});
        row("lone CR", "a\rb\r\rc\r", {"a", "b", "", "c"});
        row("LF, CR LF and CR mixed", "a\nb\r\nc\rd", {"a", "b", "c", "d"});
        row("LF CR is two line ends", "a\n\rb", {"a", "", "b"});
        row("empty lines kept, the last end starts none", "\r\n\r\nx\r\n", {"", "", "x"});
        row("empty file", "", {});
    }
    void decode() {
        const auto [bytes, lines] = Table<QByteArray, QStringList>::fetch();
        QCOMPARE(decode_text_lines(bytes), lines);
    }

    void line_data() {
        const Table<QString, QString> row; // value, its line
        row("plain", "Max Muster", "NAME|Max Muster")("empty", "", "NAME|");
        row("bar becomes slash", "a|b||c", "NAME|a/b//c");
        row("CR LF is one break", "one\r\ntwo", "NAME|one\\ntwo");
        row("lone LF", "one\ntwo", "NAME|one\\ntwo")("lone CR", "one\rtwo", "NAME|one\\ntwo");
        row("LF CR is two breaks", "a\n\rb", "NAME|a\\n\\nb");
        row("break at the end", "end\r\n", "NAME|end\\n");
    }
    void line() {
        const auto [value, line] = Table<QString, QString>::fetch();
        QCOMPARE(key_value_line(QStringLiteral("NAME"), value), line);
    }
};

QTEST_GUILESS_MAIN(TestTextFile)
#include "test_text_file.moc"
