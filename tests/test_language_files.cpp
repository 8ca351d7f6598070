// The two language files shipped beside the program: each line is a valid
// number|size|text entry, both files hold the same numbers, every Tag of
// frm_main and frm_wait and every message number the code asks for is in
// both, and the German file carries the captions the forms are designed with.

#include "config/language.h"
#include "controls.h"
#include "frm_main.h"
#include "frm_wait.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTabWidget>
#include <QTest>

using namespace veltrako;
using namespace veltrako::ui;

namespace {

struct Parsed {
    QMap<int, QString> texts;
    QStringList errors;
};

// The file as the program's reader takes it: trimmed lines, "*" comments,
// number|size|text. Stricter than the reader: a text may not contain "|",
// and a number may not occur twice.
Parsed parse(const QString& file_name) {
    Parsed result;
    QFile file(QApplication::applicationDirPath() + '/' + file_name);
    if (!file.open(QIODevice::ReadOnly)) {
        result.errors << "cannot open " + file.fileName();
        return result;
    }
    const QByteArray bytes = file.readAll();
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString content = utf8(bytes);
    if (utf8.hasError())
        result.errors << "not UTF-8";
    int line_number = 0;
    for (const QString& raw : content.split('\n')) {
        ++line_number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith('*'))
            continue;
        const QStringList fields = line.split('|');
        bool number_ok = false, size_ok = false;
        const int number = fields.value(0).toInt(&number_ok);
        const int size = fields.value(1).toInt(&size_ok);
        if (fields.size() != 3 || !number_ok || number < 0 || number > 20000 || !size_ok ||
            size < 0 || size > 255) {
            result.errors << QStringLiteral("line %1: %2").arg(line_number).arg(line);
            continue;
        }
        if (result.texts.contains(number))
            result.errors << QStringLiteral("line %1: %2 again").arg(line_number).arg(number);
        result.texts.insert(number, fields[2]);
    }
    return result;
}

// Every Tag below `root` (itself included) with the caption it is designed with.
QMap<int, QString> designed_captions(QObject& root) {
    QMap<int, QString> captions;
    QList<QObject*> objects = root.findChildren<QObject*>();
    objects.prepend(&root);
    for (QObject* o : objects) {
        const int tag = tag_of(o);
        if (tag == 0)
            continue;
        QString text;
        if (auto* tabs = qobject_cast<QTabWidget*>(o)) {
            QStringList pages;
            for (int i = 0; i < tabs->count(); ++i)
                pages << tabs->tabText(i);
            text = pages.join('/');
        } else if (auto* menu = qobject_cast<QMenu*>(o)) {
            text = menu->title();
        } else if (auto* action = qobject_cast<QAction*>(o)) {
            text = action->text();
        } else if (auto* frame = qobject_cast<QGroupBox*>(o)) {
            text = frame->title();
        } else if (auto* label = qobject_cast<QLabel*>(o)) {
            text = label->text();
        } else if (auto* button = qobject_cast<QAbstractButton*>(o)) {
            text = button->text();
        } else if (auto* widget = qobject_cast<QWidget*>(o); widget && widget->isWindow()) {
            text = widget->windowTitle();
        } else {
            text = "<no caption: " + o->objectName() + ">";
        }
        captions.insert(tag, text);
    }
    return captions;
}

QMap<int, QString> all_form_tags() {
    FrmMain form;
    config::LanguageTables language;
    FrmWait wait(language);
    QMap<int, QString> tags = designed_captions(form);
    tags.insert(designed_captions(wait));
    return tags;
}

// Numbers the code asks the language tables for with a literal:
// language.text(2000), ctx.language.text(4), language_->text(3), language_text[6011] ...
QSet<int> message_numbers_in_code() {
    static const QRegularExpression call(QStringLiteral(
        R"((?:\blanguage_?\s*(?:\.|->)\s*text\s*\(|\blanguage_text\s*[(\[])\s*(\d+)\s*[)\]])"));
    QSet<int> numbers;
    for (const char* folder : {"core", "ui", "app", "sim"}) {
        QDirIterator it(QStringLiteral(VELTRAKO_SOURCE_DIR "/") + folder,
                        {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QString source = QString::fromUtf8(file.readAll());
            for (const QRegularExpressionMatch& m : call.globalMatch(source))
                numbers.insert(m.captured(1).toInt());
        }
    }
    return numbers;
}

} // namespace

class TestLanguageFiles : public QObject {
    Q_OBJECT
private slots:
    void files_parse_line_by_line_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("German") << "langde.txt";
        QTest::newRow("English") << "langen.txt";
    }
    void files_parse_line_by_line() {
        QFETCH(QString, file);
        const Parsed parsed = parse(file);
        QVERIFY2(parsed.errors.isEmpty(), qPrintable(parsed.errors.join('\n')));
        QVERIFY(parsed.texts.size() > 150);
        for (auto it = parsed.texts.cbegin(); it != parsed.texts.cend(); ++it)
            QVERIFY2(!it.value().isEmpty(), qPrintable(QString::number(it.key())));
    }

    void both_files_hold_the_same_numbers() {
        const QList<int> de = parse("langde.txt").texts.keys();
        const QList<int> en = parse("langen.txt").texts.keys();
        QCOMPARE(de, en);
    }

    void every_tag_is_in_both_files() {
        const QMap<int, QString> tags = all_form_tags();
        QVERIFY(tags.contains(11500));
        QVERIFY(tags.contains(12000));
        for (const char* file : {"langde.txt", "langen.txt"}) {
            const QMap<int, QString> texts = parse(file).texts;
            for (int tag : tags.keys())
                QVERIFY2(texts.contains(tag),
                         qPrintable(QStringLiteral("%1 lacks %2").arg(file).arg(tag)));
        }
        // The tab strip's entry names all five pages in both languages.
        QCOMPARE(parse("langen.txt").texts.value(11000).split('/').size(), 5);
    }

    void german_file_carries_the_designed_captions() {
        const QMap<int, QString> tags = all_form_tags();
        const QMap<int, QString> texts = parse("langde.txt").texts;
        for (auto it = tags.cbegin(); it != tags.cend(); ++it)
            QCOMPARE(texts.value(it.key()), it.value());
    }

    void every_message_number_is_in_both_files() {
        QSet<int> numbers = message_numbers_in_code();
        // The scan finds what the window and the device link ask for.
        QVERIFY(numbers.contains(1100));
        QVERIFY(numbers.contains(2100));
        QVERIFY(numbers.contains(4204));
        // Opening steps are numbered in a table rather than by literal calls.
        for (int n : {2300, 2400, 2500, 2600, 2700, 2800})
            numbers.insert(n);
        for (const char* file : {"langde.txt", "langen.txt"}) {
            const QMap<int, QString> texts = parse(file).texts;
            for (int n : numbers) {
                QVERIFY2(n < 11000, qPrintable(QString::number(n)));
                QVERIFY2(texts.contains(n),
                         qPrintable(QStringLiteral("%1 lacks %2").arg(file).arg(n)));
            }
        }
    }

    void status_table_headings_span_the_table() {
        const QMap<int, QString> texts = parse("langde.txt").texts;
        // Basic layout: 20 columns of 6; extended: 122 characters.
        QCOMPARE(texts.value(3815).size(), 120);
        QCOMPARE(texts.value(3817), QString(122, '-'));
        QCOMPARE(texts.value(3819).size(), 122);
        QCOMPARE(texts.value(3821), QString(122, '-'));
        QVERIFY(texts.value(3818).contains('/'));
        QVERIFY(texts.value(2300).contains("dist/udev"));
        QVERIFY(parse("langen.txt").texts.value(2300).contains("dist/udev"));
    }
};

QTEST_MAIN(TestLanguageFiles)
#include "test_language_files.moc"
