// The language files: which lines of a file become texts and where a faulty
// file stops; the two files shipped beside the program hold every number the
// windows and the code ask for; and the texts on the real main window (tab
// captions and their size from one entry, a size kept to its own control,
// empty captions when there is no language file).

#include "apply_language.h"
#include "config/language.h"
#include "controls.h"
#include "frm_wait.h"
#include "report_harness.h"
#include "window_harness.h"

#include <QAction>
#include <QDirIterator>
#include <QGroupBox>
#include <QMenu>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTabBar>

using namespace veltrako;
using namespace veltrako::config;
using namespace veltrako::ui;
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

void put(LanguageTables& tables, int n, const QString& text, int size = 0) {
    tables.language_text[static_cast<std::size_t>(n)] = text;
    tables.language_size[static_cast<std::size_t>(n)] = static_cast<quint8>(size);
}

struct Parsed {
    QMap<int, QString> texts;
    QStringList errors;
};

// The file as the program reads it (trimmed lines, "*" comments,
// number|size|text), but stricter: the text may be neither empty nor hold a
// "|" (the program would cut it off there), and no number may come twice.
Parsed parse(const QString& file_name) {
    Parsed result; // a missing file reads as "<missing>", no entry
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString content = utf8(read_file(QApplication::applicationDirPath() + '/' + file_name));
    if (utf8.hasError())
        result.errors << "not UTF-8";
    static const QRegularExpression entry(QStringLiteral(R"(^(\d{1,5})\|(\d{1,3})\|([^|]+)$)"));
    int line_number = 0;
    for (const QString& raw : content.split('\n')) {
        ++line_number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith('*'))
            continue;
        const QRegularExpressionMatch m = entry.match(line);
        const int number = m.captured(1).toInt();
        if (!m.hasMatch() || number >= config::language_entries || m.captured(2).toInt() > 255 ||
            result.texts.contains(number))
            result.errors << QStringLiteral("line %1: %2").arg(line_number).arg(line);
        else
            result.texts.insert(number, m.captured(3));
    }
    return result;
}

// Every Tag of frm_main and frm_wait, the windows themselves included.
QSet<int> all_form_tags() {
    FrmMain form;
    LanguageTables language;
    FrmWait wait(language);
    QSet<int> tags{tag_of(&form), tag_of(&wait)};
    for (QObject* o : form.findChildren<QObject*>() + wait.findChildren<QObject*>())
        tags.insert(tag_of(o));
    tags.remove(0);
    return tags;
}

// Numbers the code asks the language tables for with a literal:
// language.text(2000), ctx.language.text(4), language_->text(3), language_text[6011] ...
// or through a named constant: constexpr int text_month = 8101;
QSet<int> message_numbers_in_code() {
    static const QRegularExpression call(
        QStringLiteral(R"((?:\blanguage_?\s*(?:\.|->)\s*text\s*\(|\blanguage_text\s*[(\[]|)"
                       R"(^[ \t]*constexpr\s+int\s+text_\w+\s*=)\s*(\d+)\s*[)\];])"),
        QRegularExpression::MultilineOption);
    QSet<int> numbers;
    for (const char* folder : {"core", "ui", "app", "cli", "sim"}) {
        QDirIterator it(QStringLiteral(VELTRAKO_SOURCE_DIR "/") + folder,
                        {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            for (const QRegularExpressionMatch& m :
                 call.globalMatch(QString::fromUtf8(read_file(it.next()))))
                numbers.insert(m.captured(1).toInt());
        }
    }
    return numbers;
}

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
        FakeUserInterface ui;
        LanguageTables tables;
        QVERIFY(load_language(tables, earlier, ui));
        QCOMPARE(load_language(tables, path, ui), ok);
        const QString message = QStringLiteral("Language File could not be loaded.");
        QCOMPARE(ui.messages, ok ? QStringList{} : QStringList{message});
        QCOMPARE(entries(tables), stored);
    }

    void captions_data() {
        // The tab entry (none: no language file), then the title, the six tabs
        // (the sixth with a text of its own), men_datei, men_beenden,
        // cmd_setsn, frmZeiten, lbl_AlarmT.
        Table<QString, QString> row;
        row("from the file", "Gerät/Protokoll",
            "veltrako2 Service|Gerät|Protokoll|Compliance|System Status|Entwickler|History|"
            "File|Quit|Set|Times|T");
        row("surplus tab pieces ignored", "A/B//D/E/F",
            "veltrako2 Service|A|B||D|E|History|File|Quit|Set|Times|T");
        row("no language file", "", "||Protokoll|Compliance|System Status|Entwickler||||||");
    }
    void captions() {
        const auto [tab_entry, captions] = Table<QString, QString>::fetch();
        FrmMain form;
        const int designed = form.control("lbl_t", 0)->font().pointSize();
        const bool file = !tab_entry.isEmpty();
        LanguageTables tables;
        if (file) {
            put(tables, 11000, tab_entry, 10);
            put(tables, 11500, "veltrako2 Service");
            put(tables, 11200, "History");
            put(tables, 11001, "File");
            put(tables, 11004, "Quit", designed + 1);
            put(tables, 11012, "Set");
            put(tables, 11057, "Times", designed + 5);
            put(tables, 11045, "T");
        }
        ui::apply_language(form, tables);
        QStringList got{form.windowTitle()};
        for (int i = 0; i < form.tab1()->count(); ++i)
            got << form.tab1()->tabText(i);
        got << form.findChild<QMenu*>("men_datei")->title()
            << form.menu_action("men_beenden")->text()
            << form.control_as<QPushButton>("cmd_setsn")->text()
            << form.control_as<QGroupBox>("frmZeiten")->title()
            << form.control_as<QLabel>("lbl_AlarmT")->text();
        QCOMPARE(got.join('|'), captions);

        // A size belongs to the one control its entry names.
        QCOMPARE(form.tab1()->tabBar()->font().pointSize(), file ? 10 : designed);
        QCOMPARE(form.menu_action("men_beenden")->font().pointSize(),
                 file ? designed + 1 : designed);
        QCOMPARE(form.control("frmZeiten")->font().pointSize(), file ? designed + 5 : designed);
        QCOMPARE(form.control("lbl_t", 0)->font().pointSize(), designed); // inside frmZeiten
        QCOMPARE(form.control("cb_t", 0)->font().pointSize(), designed);
    }

    // English and German are both complete: each holds every number the other has.
    void both_files_hold_the_same_numbers() {
        const Parsed german = parse("langde.txt"), english = parse("langen.txt");
        const QList<int> de = german.texts.keys(), en = english.texts.keys();
        QVERIFY(de.size() > 300);
        QStringList only;
        for (int n : de)
            if (!english.texts.contains(n))
                only << "de " + QString::number(n);
        for (int n : en)
            if (!german.texts.contains(n))
                only << "en " + QString::number(n);
        QVERIFY2(only.isEmpty(), qPrintable(only.join(", ")));
    }

    void file_holds_every_number_data() {
        Table<QString>()("German", "langde.txt")("English", "langen.txt");
    }
    void file_holds_every_number() {
        const Parsed parsed = parse(std::get<0>(Table<QString>::fetch()));
        QVERIFY2(parsed.errors.isEmpty(), qPrintable(parsed.errors.join('\n')));
        // The tab strip's entry names all five pages.
        QCOMPARE(parsed.texts.value(11000).split('/').size(), 5);
        // Status table headings span the table: 20 columns of 6, or 122 characters.
        QCOMPARE(parsed.texts.value(3815).size(), 120);
        QCOMPARE(parsed.texts.value(3819).size(), 122);
        QCOMPARE(parsed.texts.value(3817), QString(122, '-'));
        QCOMPARE(parsed.texts.value(3821), QString(122, '-'));

        const QSet<int> tags = all_form_tags();
        QVERIFY(tags.contains(11500) && tags.contains(12000) && tags.contains(11057));
        QSet<int> numbers = message_numbers_in_code();
        // The scan finds what the window and the device link ask for.
        QVERIFY(numbers.contains(1100) && numbers.contains(2100) && numbers.contains(4204));
        // Opening steps are numbered in a table rather than by literal calls.
        for (int n : {2300, 2400, 2500, 2600, 2700, 2800})
            numbers.insert(n);
        for (int n : tags + numbers)
            QVERIFY2(parsed.texts.contains(n), qPrintable(QString::number(n)));
    }
};

QTEST_MAIN(TestLanguage)
#include "test_language.moc"
