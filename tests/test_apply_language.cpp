// Language texts on the real main window: tab captions and their size from
// one entry, captions of the other kinds, the title, a size kept to its own
// control, and empty captions when there is no language file.

#include "apply_language.h"
#include "t2_harness.h"

#include <QAction>
#include <QGroupBox>
#include <QMenu>
#include <QTabBar>

using namespace veltrako;
using config::LanguageTables;
using testing::Table;
using ui::FrmMain;

namespace {

void put(LanguageTables& tables, int n, const QString& text, int size = 0) {
    tables.language_text[static_cast<std::size_t>(n)] = text;
    tables.language_size[static_cast<std::size_t>(n)] = static_cast<quint8>(size);
}

} // namespace

class TestApplyLanguage : public QObject {
    Q_OBJECT
private slots:
    void captions_data() {
        // The tab entry (none: no language file), then the title, the five tabs,
        // men_datei, men_beenden, cmd_setsn, frmZeiten, lbl_AlarmT.
        Table<QString, QString> row;
        row("from the file", "Gerät/Protokoll",
            "veltrako2 Service|Gerät|Protokoll|Compliance|System Status|Entwickler|"
            "File|Quit|Set|Times|T");
        row("surplus tab pieces ignored", "A/B//D/E/F",
            "veltrako2 Service|A|B||D|E|File|Quit|Set|Times|T");
        row("no language file", "", "||Protokoll|Compliance|System Status|Entwickler|||||");
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
};

QTEST_MAIN(TestApplyLanguage)
#include "test_apply_language.moc"
