// Language files: which lines become texts, and where a faulty file stops.

#include "config/language.h"
#include "fake_user_interface.h"
#include "report_harness.h"
#include "table.h"

using namespace veltrako;
using namespace veltrako::config;
using namespace veltrako::testing;

namespace {

// Every stored entry as "number|size|text", in number order.
QStringList entries(const LanguageTables& tables) {
    QStringList out;
    for (int n = 0; n < language_entries; ++n)
        if (!tables.text(n).isEmpty() || tables.size(n) != 0)
            out << QStringLiteral("%1|%2|%3").arg(n).arg(tables.size(n)).arg(tables.text(n));
    return out;
}

using Load = Table<QByteArray, bool, QStringList>;

} // namespace

class TestLanguage : public QObject {
    Q_OBJECT
private slots:
    void load_data() {
        Load row; // file (null: no file at all), loads, entries stored
        // A Windows editor puts a byte order mark first.
        row("comment after a byte order mark and blanks",
            "\xEF\xBB\xBF   * 11000|0|nicht\r\n11001|0|Datei\r\n", true, {"11001|0|Datei"});
        row("the later line wins", "11000|0|Alt\r\n11000|12|Neu\r\n", true, {"11000|12|Neu"});
        row("first and last number", "0|0|Null\r\n20000|255|Ende\r\n", true,
            {"0|0|Null", "20000|255|Ende"});
        const QStringList first_only{"11000|0|A"};
        row("20001 stops, later lines unread", "11000|0|A\r\n20001|0|B\r\n11001|0|C\r\n", false,
            first_only);
        row("size 256", "11000|0|A\r\n11001|256|B\r\n11002|0|C\r\n", false, first_only);
        row("two fields", "11000|0|A\r\n11001|0\r\n11002|0|C\r\n", false, first_only);
        row("UTF-8 text survives, up to the next bar",
            "11001|10|Ger\xC3\xA4t/Pr\xC3\xBC"
            "fer \xE2\x80\x93 \xC2\xB0"
            "C|Rest\r\n",
            true, {"11001|10|Gerät/Prüfer – °C"});
        row("missing file", QByteArray(), false, {});
    }
    // Each file is loaded over the texts of an earlier one, which must not survive.
    void load() {
        const auto [file, ok, stored] = Load::fetch();
        QTemporaryDir dir;
        const QString earlier = dir.filePath(QStringLiteral("langen.txt"));
        const QString path = dir.filePath(QStringLiteral("langde.txt"));
        QVERIFY(write_file(earlier, "3806|7|Zeit\r\n"));
        QVERIFY(file.isNull() || write_file(path, file));
        testing::FakeUserInterface ui;
        LanguageTables tables;
        QVERIFY(load_language(tables, earlier, ui));
        QCOMPARE(load_language(tables, path, ui), ok);
        const QString message = QStringLiteral("Language File could not be loaded.");
        QCOMPARE(ui.messages, ok ? QStringList{} : QStringList{message});
        QCOMPARE(entries(tables), stored);
    }
};

QTEST_GUILESS_MAIN(TestLanguage)
#include "test_language.moc"
