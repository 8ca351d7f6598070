// The "Protokoll" page on the window: a visit starts a fresh report, edits
// mark it, the typed report outlasts the connection, showing the record fills the controls and
// counts as unchanged, collecting reads them back, and the device-data picture draws the snapshot.

#include "apply_language.h"
#include "config/language.h"
#include "inspected_device.h"
#include "link/device_connection.h"
#include "painter_surface.h"
#include "protocol/poll_cycle.h"
#include "report/report_draft.h"
#include "report/report_print.h"
#include "report/report_record.h"
#include "report_page.h"
#include "startup.h"
#include "window_harness.h"

#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

struct Harness : Window {
    Harness() : Window(QDateTime(QDate(2026, 4, 7), QTime(9, 8, 7), Qt::UTC)) {
        ctx.device.live_valid = true;
        ctx.device.SN = QStringLiteral("VO2-1");
        ctx.device.BSTD = QStringLiteral("000012:30");
        ctx.language.language_text[11011] = QStringLiteral("Seriennummer");
        ctx.language.language_text[8551] = QStringLiteral("verwerfen?");
        ctx.config_path = dir.filePath(QStringLiteral("veltrako2.ini"));
    }
    QTemporaryDir dir; // the configuration's folder, where the draft goes
    void open_page() {
        form.tab1()->setCurrentIndex(static_cast<int>(Page::geraet));
        form.tab1()->setCurrentIndex(static_cast<int>(Page::protokoll));
    }
};

} // namespace

class TestReportPage : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void fresh_report_shown_and_collected() {
        Harness h;
        h.open_page();
        QVERIFY(!h.ctx.report.report_changed);
        QVERIFY(h.get<QPushButton>("cmd_save")->isEnabled());
        // Every kind of report control marks the report when edited.
        const auto marks = [&](const std::function<void()>& edit) {
            h.ctx.report.report_changed = false;
            edit();
            return h.ctx.report.report_changed;
        };
        QVERIFY(marks([&] { h.get<QLineEdit>("t_patient")->setText(QStringLiteral("Otto")); }));
        QVERIFY(marks([&] { h.get<QCheckBox>("ck_stk")->setChecked(true); }));
        QVERIFY(marks([&] { h.get<QPlainTextEdit>("t_bemerkungen")->setPlainText("x"); }));
        QVERIFY(marks([&] { h.get<QLineEdit>("t_Datum")->setText(QStringLiteral("01.01.2000")); }));

        // What the controls show is kept a second after the last edit.
        const QString draft = report::draft_path(h.ctx);
        h.clock.advance_ms(report::DraftKeeper::delay_ms);
        h.ctx.report_draft.tick();
        const auto kept = report::read_draft(draft, {});
        QVERIFY(kept);
        QCOMPARE(kept->report.value(QStringLiteral("t_Patient")), QStringLiteral("Otto"));
        QCOMPARE(kept->report.value(QStringLiteral("ck_stk")), QStringLiteral("1"));

        h.clock.set_now(QDateTime(QDate(2026, 4, 8), QTime(17, 0, 1), Qt::UTC));
        h.ctx.device.live_valid = false;
        BoxAnswers discard({QMessageBox::Yes});
        h.open_page();
        QCOMPARE(discard.texts, QStringList{"verwerfen?"});
        QVERIFY(!QFile::exists(draft)); // discarded on purpose
        QVERIFY(h.get<QLineEdit>("t_patient")->text().isEmpty());
        QVERIFY(!h.get<QCheckBox>("ck_stk")->isChecked());
        QCOMPARE(h.get<QLineEdit>("t_Datum")->text(), QStringLiteral("08.04.2026"));
        QCOMPARE(h.get<QLineEdit>("t_Uhrzeit")->text(), QStringLiteral("17:00:01"));
        QVERIFY(!h.ctx.report.report_changed);
        // Without live device data there is nothing to save or print.
        QVERIFY(!h.get<QPushButton>("cmd_save")->isEnabled());
        QVERIFY(!h.form.control("frm_protokoll")->isEnabled());

        // Showing the record fills the controls, collecting reads them back.
        h.get<QCheckBox>("ck_Ansaugtest")->setChecked(true);
        report::ReportRecord& r = h.ctx.report;
        r.set_value(QStringLiteral("t_Bemerkungen"), QStringLiteral("eins\r\nzwei"));
        r.set_value(QStringLiteral("ck_Ansaugtest"), QStringLiteral("ja"));
        r.set_value(QStringLiteral("ck_Maxflow"), QStringLiteral("1"));
        r.set_value(QStringLiteral("t_Pruefer"), QStringLiteral("M. Huber"));
        show_report(h.form, h.ctx);
        QVERIFY(!r.report_changed);
        QCOMPARE(h.get<QPlainTextEdit>("t_bemerkungen")->toPlainText(),
                 QStringLiteral("eins\nzwei"));
        QCOMPARE(h.get<QLineEdit>("t_pruefer")->text(), QStringLiteral("M. Huber"));
        QVERIFY(h.get<QCheckBox>("ck_maxflow")->isChecked());
        // Not a number: the box keeps its state.
        QVERIFY(h.get<QCheckBox>("ck_Ansaugtest")->isChecked());

        h.get<QCheckBox>("ck_maxflow")->setChecked(false);
        h.get<QLineEdit>("t_Ort")->setText(QStringLiteral("Bonn"));
        collect_report(h.form, h.ctx);
        QCOMPARE(r.value(QStringLiteral("ck_Maxflow")), QStringLiteral("0"));
        QCOMPARE(r.value(QStringLiteral("ck_Ansaugtest")), QStringLiteral("1"));
        QCOMPARE(r.value(QStringLiteral("t_Ort")), QStringLiteral("Bonn"));
        QCOMPARE(r.value(QStringLiteral("t_Bemerkungen")), QStringLiteral("eins\nzwei"));
    }

    // A report of another device says so until the connection is gone. A
    // lost connection blanks the live page, not the report being typed; a
    // device found again refreshes the snapshot but keeps what was typed and
    // that it is unsaved.
    void typed_report_outlasts_the_device() {
        Harness h;
        h.ctx.language.language_text[8200] = QStringLiteral("Protokoll zu");
        h.ctx.language.language_text[8201] = QStringLiteral("angeschlossen");
        h.open_page();
        const QLabel* note = h.get<QLabel>("lbl_anderes_geraet");
        QVERIFY(note->isHidden());
        h.ctx.report.report_device.SN = QStringLiteral("VO2-9");
        show_report(h.form, h.ctx);
        QVERIFY(!note->isHidden());
        QCOMPARE(note->text(), QStringLiteral("Protokoll zu VO2-9 angeschlossen VO2-1"));

        h.get<QLineEdit>("t_patient")->setText(QStringLiteral("Otto"));
        h.get<QPlainTextEdit>("t_zubehoer")->setPlainText(QStringLiteral("Maske"));
        h.get<QLineEdit>("t_sn")->setText(QStringLiteral("VO2-1"));
        protocol::reset_link_state(h.ctx);
        QVERIFY(note->isHidden());
        QVERIFY(h.get<QLineEdit>("t_sn")->text().isEmpty());
        QCOMPARE(h.get<QPlainTextEdit>("t_zubehoer")->toPlainText(), QStringLiteral("Maske"));
        QVERIFY(!h.get<QLineEdit>("t_Datum")->text().isEmpty());
        QVERIFY(h.ctx.report.report_changed);

        // The silent reconnection found the device before it answered: the
        // report keeps the device data of its snapshot, and can be saved.
        h.ctx.device = device::DeviceRecord{};
        QVERIFY(h.ctx.hooks.device_found);
        h.ctx.hooks.device_found();
        QVERIFY(h.ctx.report.device_valid());
        QCOMPARE(h.ctx.report.report_device.SN, QStringLiteral("VO2-9"));
        QVERIFY(h.get<QPushButton>("cmd_save")->isEnabled());
        QVERIFY(h.ctx.report.report_changed);
        QCOMPARE(h.get<QLineEdit>("t_patient")->text(), QStringLiteral("Otto"));

        // Back to the page: asked first; No (the default) keeps everything,
        // the device data of the report's own device too.
        h.ctx.device.live_valid = true;
        h.ctx.device.SN = QStringLiteral("VO2-1");
        int preset = 0;
        when_modal([&preset](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            preset = int(box->standardButton(box->defaultButton()));
            box->defaultButton()->click();
        });
        h.open_page();
        QCOMPARE(preset, int(QMessageBox::No));
        QCOMPARE(h.get<QLineEdit>("t_patient")->text(), QStringLiteral("Otto"));
        QCOMPARE(h.get<QPlainTextEdit>("t_zubehoer")->toPlainText(), QStringLiteral("Maske"));
        QCOMPARE(h.ctx.report.report_device.SN, QStringLiteral("VO2-9"));
        QVERIFY(h.ctx.report.report_changed);
        // Nothing typed: no question, a fresh report.
        h.get<QLineEdit>("t_patient")->clear();
        h.get<QPlainTextEdit>("t_zubehoer")->clear();
        h.open_page();
        QVERIFY(!h.ctx.report.report_changed);
    }

    // What a technician met: the device stops answering while the report is
    // typed. The window stays on "Protokoll", the report keeps its entries
    // and its device data through the lost connection and the silent
    // reconnection, and can still be saved.
    void device_lost_while_typing() {
        Harness h;
        h.ctx.config.TIMEOUT = 0.5;
        h.form.show();
        h.open_page();
        QVERIFY(link::open_device(h.ctx, true));
        h.get<QLineEdit>("t_patient")->setText(QStringLiteral("Erika"));
        h.get<QCheckBox>("ck_stk")->setChecked(true);
        BoxAnswers lost; // "does not answer any more"
        for (int tick = 0; tick < 10 && h.ctx.link.device_handle != 0; ++tick) {
            h.clock.advance_ms(600);
            protocol::timer1_tick(h.ctx);
        }
        QCOMPARE(lost.texts.size(), 1);
        QCOMPARE(h.form.current_page(), Page::protokoll);
        QVERIFY(!h.ctx.device.live_valid);
        protocol::timer1_tick(h.ctx); // found again, not answering yet
        QVERIFY(h.ctx.link.device_handle != 0);
        QCOMPARE(h.form.current_page(), Page::protokoll);
        QCOMPARE(h.get<QLineEdit>("t_patient")->text(), QStringLiteral("Erika"));
        QVERIFY(h.get<QCheckBox>("ck_stk")->isChecked());
        QVERIFY(h.ctx.report.device_valid() && h.ctx.report.report_changed);
        QCOMPARE(h.ctx.report.report_device.SN, QStringLiteral("VO2-1"));
        QVERIFY(h.get<QPushButton>("cmd_save")->isEnabled());
    }

    void picture_draws_the_snapshot() {
        Harness h;
        QWidget* picture = h.form.control("p_geraetedaten");
        const auto ink = [picture] {
            const QImage image = picture->grab().toImage();
            int dark = 0;
            for (int y = 2; y < image.height() - 2; ++y)
                for (int x = 2; x < image.width() - 2; ++x)
                    dark += qGray(image.pixel(x, y)) < 128;
            return dark;
        };
        h.form.resize(1200, 900);
        h.ctx.device.live_valid = false;
        h.open_page();
        const int empty = ink();
        QCOMPARE(empty, 0); // nothing to draw without device data
        h.ctx.device.live_valid = true;
        h.open_page();
        QVERIFY2(ink() > empty + 200, qPrintable(QString::number(ink())));
    }

    // Typed measurements are judged at once against the report's limits and
    // the snapshot's set flow and O2; a keystroke that makes no number is
    // refused with a red frame and says why; class II greys out the
    // protective earth; a file's value that is no number shows as refused.
    void measurements_judged_as_typed() {
        Harness h;
        h.ctx.device = inspected_device(); // set flow 2.0, O2 shown as 95
        h.ctx.config.GRENZE_O2 = QStringLiteral("85");
        for (int n : {8901, 8902, 8903, 8904, 8905, 8911})
            h.ctx.language.language_text[static_cast<std::size_t>(n)] =
                QStringLiteral("T%1").arg(n);
        h.ctx.language.language_text[8905] = QStringLiteral("O2 %1");
        h.form.show();
        h.open_page();
        const auto text = [&](const char* name) { return h.get<QLabel>(name)->text(); };
        auto* o2 = h.get<QLineEdit>("m_O2");
        QCOMPARE(text("lbl_m_O2_bewertung"), QString());
        QCOMPARE(text("lbl_ergebnis"), QStringLiteral("T8904: T8903"));
        QTest::keyClicks(o2, "8O4,5");
        QCOMPARE(o2->text(), QStringLiteral("84,5"));
        QCOMPARE(text("lbl_m_O2_grenze"), QStringLiteral("\u2265 85"));
        QCOMPARE(text("lbl_m_O2_bewertung"), QStringLiteral("T8902"));
        QCOMPARE(text("lbl_ergebnis"), QStringLiteral("T8904: T8902"));
        QCOMPARE(text("lbl_o2_hinweis"), QStringLiteral("O2 10,5"));
        QTest::keyClick(o2, Qt::Key_X);
        QVERIFY(o2->styleSheet().contains("red") || o2->styleSheet().contains("255, 0, 0"));
        QCOMPARE(o2->toolTip(), QStringLiteral("T8911"));
        QCOMPARE(o2->text(), QStringLiteral("84,5")); // refused: never in the box
        QTest::keyClick(o2, Qt::Key_Backspace);
        QVERIFY(o2->styleSheet().isEmpty() && o2->toolTip().isEmpty());
        QTest::keyClick(o2, Qt::Key_5);
        QVERIFY(h.ctx.report.report_changed);

        h.get<QLineEdit>("m_Flow")->setText(QStringLiteral("2.2"));
        QCOMPARE(text("lbl_m_Flow_bewertung"), QStringLiteral("T8901"));
        QTest::keyClicks(h.get<QLineEdit>("t_Schutzklasse"), "i2i");
        QCOMPARE(h.get<QLineEdit>("t_Schutzklasse")->text(), QStringLiteral("II"));
        QVERIFY(!h.get<QLineEdit>("m_Schutzleiter")->isEnabled());
        QCOMPARE(text("lbl_m_Ableitstrom_grenze"), QStringLiteral("\u2264 0,1"));

        // What the page shows is what is saved.
        collect_report(h.form, h.ctx);
        QCOMPARE(h.ctx.report.value("m_O2"), QStringLiteral("84,5"));
        QCOMPARE(h.ctx.report.value("t_Schutzklasse"), QStringLiteral("II"));
        QCOMPARE(h.ctx.report.limits.o2_min, 85.0);

        h.ctx.report.set_value(QStringLiteral("m_Ableitstrom"), QStringLiteral("wenig"));
        show_report(h.form, h.ctx);
        QCOMPARE(h.get<QLineEdit>("m_Ableitstrom")->toolTip(), QStringLiteral("T8911"));
        QCOMPARE(text("lbl_m_Ableitstrom_bewertung"), QString());
    }

    // In the window a 1024 x 768 screen with a panel gets, in German and
    // English, with every value typed, the O2 note shown and a device of
    // fourteen valve timings: the whole page in sight without a scroll bar,
    // no control squeezed below what it needs or over another, and the
    // device data whole inside its picture.
    void page_fits_1024x768_data() {
        Table<QString> row;
        row("de", QStringLiteral("de"))("en", QStringLiteral("en"));
    }
    void page_fits_1024x768() {
        const auto [language] = Table<QString>::fetch();
        Harness h;
        h.ctx.device = inspected_device(QStringLiteral("25"));
        QVERIFY(config::load_language(
            h.ctx.language, QString(VELTRAKO_SOURCE_DIR "/lang/lang%1.txt").arg(language), h.form));
        ui::apply_language(h.form, h.ctx.language);
        h.form.resize(ui::form_size(QSize(1024, 768 - 40)));
        h.form.show();
        h.open_page();
        const std::pair<const char*, const char*> typed[] = {
            {"t_patient", "Erika Mustermann-Lüdenscheidt"},
            {"m_O2", "80,5"},
            {"m_Flow", "2,1"},
            {"t_Schutzklasse", "I"},
            {"m_Schutzleiter", "0,35"},
            {"m_Ableitstrom", "0,05"},
            {"t_Messgeraet", "Oxy 3, kal. 01/2026; Secutest, kal. 02/2026"}};
        for (const auto& [name, value] : typed)
            h.get<QLineEdit>(name)->setText(QString::fromUtf8(value));
        QApplication::processEvents();
        QVERIFY(!h.get<QLabel>("lbl_o2_hinweis")->isHidden());

        QWidget* page = h.form.control("page_protokoll");
        auto* area = h.form.findChild<QScrollArea*>("page_protokoll_scroll");
        QVERIFY(!area->horizontalScrollBar()->isVisible());
        QVERIFY(!area->verticalScrollBar()->isVisible());
        for (QWidget* w : page->findChildren<QWidget*>()) {
            if (!w->isVisibleTo(page) || w->objectName().startsWith("qt_"))
                continue;
            QVERIFY2(page->rect().contains(QRect(w->mapTo(page, QPoint()), w->size())),
                     qPrintable(w->objectName()));
            const QSize needed = w->minimumSize().expandedTo(w->minimumSizeHint());
            QVERIFY2(w->width() >= needed.width() && w->height() >= needed.height(),
                     qPrintable(w->objectName()));
            for (QWidget* other :
                 w->parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
                QVERIFY2(other == w || !other->isVisibleTo(page) ||
                             !other->geometry().intersects(w->geometry()),
                         qPrintable(w->objectName() + " overlaps " + other->objectName()));
        }
        QWidget* picture = h.form.control("p_geraetedaten");
        QImage image(picture->size(), QImage::Format_RGB32);
        QPainter painter(&image);
        paint::PainterSurface surface(painter);
        print::FontSpec font;
        font.points = 8;
        surface.set_font(font);
        const double bottom =
            report::draw_device_data(surface, h.ctx.report, h.ctx.language, QLocale(), 100, 100,
                                     surface.scale_width() - 200);
        QVERIFY2(bottom <= surface.scale_height(),
                 qPrintable(QStringLiteral("%1 > %2").arg(bottom).arg(surface.scale_height())));
    }
};

QTEST_MAIN(TestReportPage)
#include "test_report_page.moc"
