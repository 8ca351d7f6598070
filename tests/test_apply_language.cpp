// Language texts on a form: captions, tab captions, font sizes and the title.

#include "apply_language.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QVBoxLayout>

using namespace veltrako;
using config::LanguageTables;

namespace {

// A small stand-in for frm_main, with designed texts that must be replaced.
struct Form {
    QWidget window;
    QMenuBar* menu_bar = new QMenuBar(&window);
    QMenu* men_datei = menu_bar->addMenu(QStringLiteral("Datei"));
    QAction* men_beenden = new QAction(QStringLiteral("Beenden"), &window);
    QTabWidget* tab1 = new QTabWidget(&window);
    QLabel* lbl_sn = new QLabel(QStringLiteral("Seriennummer"));
    QLineEdit* t_sn = new QLineEdit(QStringLiteral("A123"));
    QGroupBox* frame = new QGroupBox(QStringLiteral("Alarme"));
    QLabel* lbl_plain = new QLabel(QStringLiteral("ohne Tag"));
    QCheckBox* ck_stk = new QCheckBox(QStringLiteral("STK"));
    QPushButton* cmd_setsn = new QPushButton(QStringLiteral("Setzen"), &window);
    QLabel* lbl_bad_tag = new QLabel(QStringLiteral("bleibt"), &window);
    QLabel* lbl_far_tag = new QLabel(QStringLiteral("bleibt auch"), &window);

    Form() {
        window.setWindowTitle(QStringLiteral("veltrako2"));
        window.setProperty("Tag", 11500);
        men_datei->setProperty("Tag", QStringLiteral("11010"));
        men_datei->addAction(men_beenden);
        men_beenden->setProperty("Tag", 11011);

        auto* page = new QWidget;
        auto* layout = new QVBoxLayout(page);
        layout->addWidget(lbl_sn);
        layout->addWidget(t_sn);
        layout->addWidget(frame);
        auto* frame_layout = new QVBoxLayout(frame);
        frame_layout->addWidget(lbl_plain);
        frame_layout->addWidget(ck_stk);
        tab1->addTab(page, QStringLiteral("Gerät"));
        tab1->addTab(new QWidget, QStringLiteral("Protokoll"));
        tab1->addTab(new QWidget, QStringLiteral("Compliance"));
        tab1->setProperty("Tag", 11001);
        lbl_sn->setProperty("Tag", 11002);
        t_sn->setProperty("Tag", 11003);
        frame->setProperty("Tag", 11004);
        ck_stk->setProperty("Tag", 11005);
        cmd_setsn->setProperty("Tag", 11006);
        lbl_bad_tag->setProperty("Tag", QStringLiteral("elf"));
        lbl_far_tag->setProperty("Tag", 20001);
    }

    QStringList tab_texts() const {
        QStringList out;
        for (int i = 0; i < tab1->count(); ++i)
            out << tab1->tabText(i);
        return out;
    }

    // Title, tabs, then every other caption in the order the fields are declared.
    QStringList captions() const {
        return QStringList{window.windowTitle()} + tab_texts() +
               QStringList{men_datei->title(),  men_datei->menuAction()->text(),
                           men_beenden->text(), lbl_sn->text(),
                           t_sn->text(),        frame->title(),
                           lbl_plain->text(),   ck_stk->text(),
                           cmd_setsn->text(),   lbl_bad_tag->text(),
                           lbl_far_tag->text()};
    }
};

void put(LanguageTables& tables, int n, const QString& text, int size = 0) {
    tables.language_text[static_cast<std::size_t>(n)] = text;
    tables.language_size[static_cast<std::size_t>(n)] = static_cast<quint8>(size);
}

} // namespace

class TestApplyLanguage : public QObject {
    Q_OBJECT
private slots:
    void captions_and_title() {
        Form form;
        LanguageTables tables;
        put(tables, 11500, QStringLiteral("veltrako2 Service"));
        put(tables, 11001, QStringLiteral("Gerät/Protokoll"), 10);
        put(tables, 11002, QStringLiteral("Serial number"));
        put(tables, 11003, QStringLiteral("not for a text box"));
        put(tables, 11004, QStringLiteral("Alarms"));
        put(tables, 11005, QStringLiteral("Safety check"));
        put(tables, 11006, QStringLiteral("Set"));
        put(tables, 11010, QStringLiteral("File"));
        put(tables, 11011, QStringLiteral("Quit"));
        ui::apply_language(form.window, tables);
        // Text boxes keep their contents; tags that are no text number are passed over.
        QCOMPARE(form.captions(),
                 (QStringList{"veltrako2 Service", "Gerät", "Protokoll", "Compliance", "File",
                              "File", "Quit", "Serial number", "A123", "Alarms", "ohne Tag",
                              "Safety check", "Set", "bleibt", "bleibt auch"}));
        QCOMPARE(form.tab1->tabBar()->font().pointSize(), 10);
    }

    void tab_captions_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("tabs");
        QTest::newRow("two of three")
            << "Device/Report" << QStringList{"Device", "Report", "Compliance"};
        QTest::newRow("surplus pieces ignored") << "A/B/C/D/E" << QStringList{"A", "B", "C"};
        QTest::newRow("empty piece in the middle") << "A//C" << QStringList{"A", "", "C"};
    }
    void tab_captions() {
        QFETCH(QString, text);
        QFETCH(QStringList, tabs);
        Form form;
        LanguageTables tables;
        put(tables, 11001, text);
        ui::apply_language(form.window, tables);
        QCOMPARE(form.tab_texts(), tabs);
    }

    void size_belongs_to_the_tagged_control_alone() {
        Form form;
        const int designed = form.lbl_plain->font().pointSize();
        const int tab_size = designed + 3;
        const int frame_size = designed + 5;
        const int action_size = designed + 1;
        LanguageTables tables;
        put(tables, 11001, QStringLiteral("Gerät/Protokoll"), tab_size);
        put(tables, 11004, QStringLiteral("Alarme"), frame_size);
        put(tables, 11005, QStringLiteral("STK"), 0);
        put(tables, 11011, QStringLiteral("Beenden"), action_size);
        ui::apply_language(form.window, tables);

        QCOMPARE(form.tab1->tabBar()->font().pointSize(), tab_size);
        QCOMPARE(form.frame->font().pointSize(), frame_size);
        QCOMPARE(form.men_beenden->font().pointSize(), action_size);
        // Controls inside a sized tab widget or group box keep their designed size.
        QCOMPARE(form.lbl_sn->font().pointSize(), designed);
        QCOMPARE(form.t_sn->font().pointSize(), designed);
        QCOMPARE(form.lbl_plain->font().pointSize(), designed);
        QCOMPARE(form.ck_stk->font().pointSize(), designed);
        QCOMPARE(form.cmd_setsn->font().pointSize(), designed);
    }

    void empty_tables_empty_every_tagged_caption() {
        Form form;
        ui::apply_language(form.window, LanguageTables{});
        QCOMPARE(form.captions(),
                 (QStringList{"", "", "Protokoll", "Compliance", "", "", "", "", "A123", "",
                              "ohne Tag", "", "", "bleibt", "bleibt auch"}));
    }
};

QTEST_MAIN(TestApplyLanguage)
#include "test_apply_language.moc"
