// Language files: which lines become texts, and where a faulty file stops.

#include "config/language.h"
#include "fake_user_interface.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace veltrako;
using namespace veltrako::config;

namespace {

const QString load_failed = QStringLiteral("Language File could not be loaded.");

QString write_file(const QTemporaryDir& dir, const QByteArray& bytes) {
    const QString path = dir.filePath(QStringLiteral("langde.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

// Every stored entry as "number|size|text", in number order.
QStringList entries(const LanguageTables& tables) {
    QStringList out;
    for (int n = 0; n < language_entries; ++n)
        if (!tables.text(n).isEmpty() || tables.size(n) != 0)
            out << QStringLiteral("%1|%2|%3").arg(n).arg(tables.size(n)).arg(tables.text(n));
    return out;
}

} // namespace

class TestLanguage : public QObject {
    Q_OBJECT
private slots:
    void load_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QStringList>("stored");

        QTest::newRow("comment after blanks")
            << QByteArray("   * 11000|0|nicht\r\n11001|0|Datei\r\n") << true
            << QStringList{"11001|0|Datei"};
        QTest::newRow("blank lines and blanks around a line")
            << QByteArray("\r\n  11002|0|Hilfe  \r\n\t\r\n") << true
            << QStringList{"11002|0|Hilfe"};
        QTest::newRow("the later line wins")
            << QByteArray("11000|0|Alt\r\n11000|12|Neu\r\n") << true << QStringList{"11000|12|Neu"};
        QTest::newRow("first and last number") << QByteArray("0|0|Null\r\n20000|255|Ende\r\n")
                                               << true << QStringList{"0|0|Null", "20000|255|Ende"};
        QTest::newRow("20001 stops, later lines unread")
            << QByteArray("11000|0|A\r\n20001|0|B\r\n11001|0|C\r\n") << false
            << QStringList{"11000|0|A"};
        QTest::newRow("number not a number")
            << QByteArray("11000|0|A\r\nelf|0|B\r\n") << false << QStringList{"11000|0|A"};
        QTest::newRow("size 256") << QByteArray("11000|0|A\r\n11001|256|B\r\n11002|0|C\r\n")
                                  << false << QStringList{"11000|0|A"};
        QTest::newRow("two fields") << QByteArray("11000|0|A\r\n11001|0\r\n11002|0|C\r\n") << false
                                    << QStringList{"11000|0|A"};
        QTest::newRow("text ends at the next bar")
            << QByteArray("11000|0|Ger\xC3\xA4t|Rest\r\n") << true << QStringList{"11000|0|Gerät"};
        QTest::newRow("UTF-8 text survives")
            << QByteArray("11001|10|Ger\xC3\xA4t/Protokoll/Pr\xC3\xBC"
                          "fer \xE2\x80\x93 \xC2\xB0"
                          "C\r\n")
            << true << QStringList{"11001|10|Gerät/Protokoll/Prüfer – °C"};
        QTest::newRow("byte order mark of a Windows editor") << QByteArray("\xEF\xBB\xBF"
                                                                           "11000|0|A\r\n")
                                                             << true << QStringList{"11000|0|A"};
    }
    void load() {
        QFETCH(QByteArray, file);
        QFETCH(bool, ok);
        QFETCH(QStringList, stored);

        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        testing::FakeUserInterface ui;
        LanguageTables tables;
        QCOMPARE(load_language(tables, write_file(dir, file), ui), ok);
        QCOMPARE(ui.messages, ok ? QStringList{} : QStringList{load_failed});
        QCOMPARE(entries(tables), stored);
    }

    void a_new_file_replaces_the_old_texts() {
        QTemporaryDir dir;
        testing::FakeUserInterface ui;
        LanguageTables tables;
        QVERIFY(
            load_language(tables, write_file(dir, "11000|12|Ger\xC3\xA4t\r\n3806|0|Zeit\r\n"), ui));
        QVERIFY(load_language(tables, write_file(dir, "11001|0|Device\r\n"), ui));
        QCOMPARE(entries(tables), QStringList{"11001|0|Device"});
    }

    void missing_file_leaves_the_tables_empty() {
        QTemporaryDir dir;
        testing::FakeUserInterface ui;
        LanguageTables tables;
        QVERIFY(load_language(tables, write_file(dir, "11000|12|Ger\xC3\xA4t\r\n"), ui));
        QVERIFY(!load_language(tables, dir.filePath(QStringLiteral("langxx.txt")), ui));
        QCOMPARE(ui.messages, QStringList{load_failed});
        QCOMPARE(entries(tables), QStringList{});
    }
};

QTEST_GUILESS_MAIN(TestLanguage)
#include "test_language.moc"
