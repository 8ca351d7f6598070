// The two language files shipped beside the program: each line is a valid
// number|size|text entry, both hold the same numbers, and every Tag of
// frm_main and frm_wait and every message number the code asks for is in both.

#include "config/language.h"
#include "controls.h"
#include "frm_wait.h"
#include "report_harness.h"
#include "t2_harness.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QStringDecoder>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

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
    config::LanguageTables language;
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

class TestLanguageFiles : public QObject {
    Q_OBJECT
private slots:
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

QTEST_MAIN(TestLanguageFiles)
#include "test_language_files.moc"
