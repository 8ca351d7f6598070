// Text files from older tools: which bytes become which lines and characters.

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
};

QTEST_GUILESS_MAIN(TestTextFile)
#include "test_text_file.moc"
