// The key-value lines shared by the report and compliance files: a value
// must stay on its one line and in its one column, and come back as typed.

#include "config/key_value_lines.h"

#include <QTest>

using namespace veltrako::config;

class TestKeyValueLines : public QObject {
    Q_OBJECT
private slots:
    void line_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("line");
        QTest::newRow("plain") << "Max Muster"
                               << "NAME|Max Muster";
        QTest::newRow("empty") << ""
                               << "NAME|";
        QTest::newRow("bar becomes slash") << "a|b||c"
                                           << "NAME|a/b//c";
        QTest::newRow("CR LF is one break") << "one\r\ntwo"
                                            << "NAME|one\\ntwo";
        QTest::newRow("lone LF") << "one\ntwo"
                                 << "NAME|one\\ntwo";
        QTest::newRow("lone CR") << "one\rtwo"
                                 << "NAME|one\\ntwo";
        QTest::newRow("LF CR is two breaks") << "a\n\rb"
                                             << "NAME|a\\n\\nb";
        QTest::newRow("break at the end") << "end\r\n"
                                          << "NAME|end\\n";
    }
    void line() {
        QFETCH(QString, value);
        QFETCH(QString, line);
        QCOMPARE(key_value_line(QStringLiteral("NAME"), value), line);
    }

    void restored_remark_reads_as_typed() {
        const QString remark = QStringLiteral("Filter gewechselt\r\nSchlauch neu\r\n");
        const QString stored = key_value_line(QStringLiteral("BEMERKUNG"), remark).section('|', 1);
        QCOMPARE(restore_line_breaks(stored), remark);
    }
};

QTEST_GUILESS_MAIN(TestKeyValueLines)
#include "test_key_value_lines.moc"
