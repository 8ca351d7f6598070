// The key-value lines shared by the report and compliance files: a value
// must stay on its one line and in its one column. That it comes back as
// typed is checked through the report file in test_report.

#include "config/key_value_lines.h"
#include "table.h"

using namespace veltrako::config;
using veltrako::testing::Table;

class TestKeyValueLines : public QObject {
    Q_OBJECT
private slots:
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

QTEST_GUILESS_MAIN(TestKeyValueLines)
#include "test_key_value_lines.moc"
