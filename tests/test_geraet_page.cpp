// The controls of the "Gerät" page wired to the simulated concentrator: a
// selector writes only for a choice the user makes, the serial-number box
// keeps what is being typed, the acoustic pictures and the timing buttons
// send, and the preset buttons show the files found.

#include "apply_language.h"
#include "controls.h"
#include "fake_link_context.h"
#include "link/sim_link.h"
#include "protocol/poll_cycle.h"
#include "protocol_harness.h"
#include "report_harness.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "startup.h"
#include "window_harness.h"

#include <QDir>
#include <QGroupBox>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTemporaryDir>
#include <QWheelEvent>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

struct PageHarness {
    explicit PageHarness(const QByteArray& scenario, const QString& program_dir = {})
        // Switched on at the test's PC time.
        : device(std::make_shared<sim::Concentrator>(*sim::parse_scenario(scenario), clock.now())),
          ctx(clock, form, std::make_unique<link::SimLink>(clock, device)) {
        ctx.program_dir = program_dir;
        form.bind(ctx);
        protocol::connect_routine(ctx);
        // The test ticks by hand; a message box's event loop must not tick too.
        ctx.timer1.set_enabled(false);
        settle();
    }
    void settle() {
        tick_until(clock, ctx, [this] {
            return ctx.device.live_valid && ctx.protocol.queue_count == 0 &&
                   !ctx.protocol.waiting_reply;
        });
    }
    QList<QByteArray> queued() const { return testing::queued(ctx); }
    static void focus(QWidget* w, QEvent::Type type, Qt::FocusReason reason) {
        QFocusEvent e(type, reason);
        QApplication::sendEvent(w, &e);
    }

    ManualClock clock;
    FrmMain form;
    std::shared_ptr<sim::Concentrator> device;
    AppContext ctx;
};

} // namespace

class TestGeraetPage : public QObject {
    Q_OBJECT
private slots:
    void selector_and_serial_number_write_only_the_users_choice() {
        PageHarness p("NOISE=off\n");
        auto* box = p.form.control_as<QComboBox>("cb_vs", 0);
        QCOMPARE(box->currentIndex(), 4);
        emit box->activated(6); // locked: not the user's choice
        QVERIFY(p.queued().isEmpty());

        PageHarness::focus(box, QEvent::FocusIn, Qt::MouseFocusReason);
        PageHarness::focus(box, QEvent::FocusOut, Qt::PopupFocusReason); // the list opens
        emit box->activated(6);
        QCOMPARE(p.queued(), (QList<QByteArray>{bytes_of({'u', 6}), "U"}));
        p.settle();
        QCOMPARE(box->currentIndex(), 6);

        PageHarness::focus(box, QEvent::FocusOut, Qt::TabFocusReason);
        QVERIFY(is_locked(box));
        auto* timing = p.form.control_as<QComboBox>("cb_t", 1);
        QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(timing, &wheel);
        QCOMPARE(timing->currentIndex(), 144); // turned over in passing: unchanged
        QVERIFY(p.queued().isEmpty());

        // The serial-number box keeps what is being typed until it is written.
        auto* t_sn = p.form.control_as<QLineEdit>("t_sn");
        QWidget* setsn = p.form.control("cmd_setsn");
        QVERIFY(setsn->isHidden());
        t_sn->setText("VO2-55");
        QVERIFY(!setsn->isHidden());
        p.form.device_record_changed(); // a refresh while the new number waits
        QCOMPARE(t_sn->text(), QString("VO2-55"));
        BoxAnswers yes({QMessageBox::Yes});
        static_cast<QPushButton*>(setsn)->click();
        QCOMPARE(yes.texts.size(), 1); // asked first
        QVERIFY(setsn->isHidden());
        QCOMPARE(p.queued().first(), bytes_of({'E', 0, 0xF0, 12}) + "VO2-55      ");
        p.settle();
        QCOMPARE(t_sn->text(), QString("VO2-55      "));

        t_sn->setText("X");
        t_sn->setText("VO2-55      "); // typed back to the device's number
        PageHarness::focus(t_sn, QEvent::FocusOut, Qt::TabFocusReason);
        QVERIFY(setsn->isHidden());
    }

    void pictures_and_timing_buttons_send() {
        PageHarness p("NOISE=off\nTIMINGS=1 2 3 4 5 6 7 0 0 0 0 0 0 0\n");
        // Each picture switches its own alarm (bits 2, 4 and 8 of the
        // acoustic byte, which is 1) and only its own shows the note.
        const char* pictures[] = {"pic_akustO21", "pic_akustO22", "pic_akustvollo"};
        for (int i = 0; i < 3; ++i) {
            QTest::mouseClick(p.form.control(pictures[i]), Qt::LeftButton);
            QCOMPARE(p.queued(), (QList<QByteArray>{bytes_of({'x', char(1 | 2 << i)}), "X"}));
            p.settle();
            for (int j = 0; j < 3; ++j)
                QVERIFY2(p.form.control_as<QLabel>(pictures[j])->text() ==
                             (i == j ? QString(QChar(0x266A)) : QString()),
                         pictures[j]);
            if (i < 2) { // and switches it off again
                QTest::mouseClick(p.form.control(pictures[i]), Qt::LeftButton);
                p.settle();
            }
        }
        // "Low Power ein/aus" is off until the device's answer is shown:
        // a second click meanwhile would toggle it back.
        auto* togglelp = p.form.control_as<QPushButton>("cmd_togglelp");
        bool looked = false;
        p.clock.on_wait = [&](int) {
            looked = true;
            QVERIFY(!togglelp->isEnabled());
        };
        togglelp->click();
        p.clock.on_wait = nullptr;
        QVERIFY(looked);
        p.settle();
        QVERIFY(togglelp->isEnabled());
        device::clear_device_record(p.ctx.device); // no device: nothing known to sound
        p.form.device_record_changed();
        QVERIFY(p.form.control_as<QLabel>("pic_akustvollo")->text().isEmpty());
        protocol::connect_routine(p.ctx); // and back
        p.ctx.timer1.set_enabled(false);
        p.settle();

        BoxAnswers no({QMessageBox::No});
        p.form.control_as<QPushButton>("cmd_t_reset")->click();
        QCOMPARE(no.texts.size(), 1);
        QCOMPARE(p.form.control_as<QComboBox>("cb_t", 0)->currentIndex(), 1); // as it was
        QVERIFY(p.queued().isEmpty());
        BoxAnswers yes({QMessageBox::Yes});
        p.form.control_as<QPushButton>("cmd_t_reset")->click();
        QCOMPARE(p.form.control_as<QComboBox>("cb_t", 0)->currentIndex(), 100);
        QCOMPARE(p.queued().size(), 14);
        p.settle();
        QCOMPARE(p.form.control_as<QComboBox>("cb_t", 6)->currentIndex(), 134);
        QCOMPARE(p.form.control_as<QComboBox>("cb_t", 6)->currentText(), QString("5.36"));
    }

    void preset_buttons_show_the_files() {
        QTemporaryDir dir;
        QVERIFY(write_file(dir.filePath("Zeiten_3.txt"),
                           "TITEL1=Hoch\r\nTITEL2=ab 4 l\r\nZEIT_VORLAUF=90\r\n"));
        PageHarness p("NOISE=off\nSW=7E5\n", dir.path() + '/');
        auto* three = p.form.control_as<QPushButton>("cmdPresetZeiten", 3);
        QVERIFY(three->isEnabled());
        QCOMPARE(three->text(), QString("Hoch\nab 4 l"));
        QVERIFY(!p.form.control("cmdPresetZeiten", 1)->isEnabled());
        // The question before, and the closing message of the preset.
        BoxAnswers boxes({QMessageBox::Yes, QMessageBox::Ok});
        three->click();
        QCOMPARE(boxes.texts.size(), 2);
        QCOMPARE(p.queued().first(), bytes_of({'w', '0', 90}));
        QCOMPARE(p.queued().size(), 22);

        QVERIFY(!p.form.control("frm_zeiten_preset")->isHidden());
        // A model without presets shows no presets box at all.
        PageHarness older("NOISE=off\n", dir.path() + '/');
        QVERIFY(older.form.control("frm_zeiten_preset")->isHidden());
    }

    // The page and the status bar say how far the device's clock is off, and
    // the note of a write beside it does not hide that.
    void clock_note_on_the_page_and_the_status_bar() {
        PageHarness p("CLOCK=2026-03-12 09:30:00\n");
        QVERIFY(
            config::load_language(p.ctx.language, VELTRAKO_SOURCE_DIR "/lang/langde.txt", p.form));
        auto* page = p.form.findChild<QLabel*>("lbl_uhrabweichung");
        auto* bar = p.form.findChild<QLabel*>("lbl_clock_note");
        QVERIFY(page && bar && !page->isVisibleTo(&p.form) && !bar->isVisibleTo(&p.form));
        // Months later by the PC's calendar, at the same time of day, so that
        // the poll's own time-outs see no jump.
        p.clock.set_now(QDateTime(QDate(2026, 11, 23), p.clock.now().time(), Qt::UTC));
        p.form.show_note(QStringLiteral("Restzeit vom Gerät bestätigt: 12"), MsgIcon::information);
        for (int tick = 0; tick < 100; ++tick) { // the clock is read again on the way
            p.clock.advance_ms(50);
            protocol::timer1_tick(p.ctx);
        }
        QCOMPARE(bar->text(), QStringLiteral("Geräteuhr geht 8 Monate 11 Tage nach"));
        QVERIFY(bar->isVisibleTo(&p.form) && page->isVisibleTo(&p.form));
        QVERIFY2(page->text().startsWith(bar->text() + " – „PC-Zeit übernehmen“"),
                 qPrintable(page->text()));
        QCOMPARE(p.form.findChild<QLabel*>("lbl_note")->text(),
                 QStringLiteral("Restzeit vom Gerät bestätigt: 12"));
    }

    // Every simulated family in the window a 1024 x 768 screen with a panel
    // gets, in German and English, and in a large window: each value box
    // shows the widest value the family sent whole, the whole "Messwerte"
    // box is there, no control is squeezed below what it needs and none
    // overlaps another. On the small screen every box is in sight without a
    // scroll bar.
    void page_fits_every_family_data() {
        const QDir folder(QStringLiteral(VELTRAKO_SOURCE_DIR "/sim/scenarios"));
        const QStringList files = folder.entryList({"*.scn"}, QDir::Files);
        QVERIFY(files.size() >= 5);
        // 40 pixels of the screen's height go to a panel.
        const QSize small = ui::form_size(QSize(1024, 768 - 40));
        QVERIFY(small.width() <= 1024 && small.height() <= 768 - 40);
        Table<QString, QSize, QString> row;
        for (const QString& file : files) {
            for (const char* language : {"de", "en"})
                row(QString("%1 1024x768 %2").arg(file, language).toUtf8(), folder.filePath(file),
                    small, QString(language));
            row(QString("%1 1400x1000").arg(file).toUtf8(), folder.filePath(file),
                QSize(1400, 1000), QString("de"));
        }
    }
    void page_fits_every_family() {
        const auto [scenario, window, language] = Table<QString, QSize, QString>::fetch();
        // The family's values without its faults: a lost answer would end in
        // a message box, and the values are what counts here.
        static const QRegularExpression fault(
            "^(SILENT|DROP_EVERY|CORRUPT_CRC_EVERY|GARBAGE_BETWEEN_FRAMES|SPLIT_ANSWERS|UNPLUG)=");
        QByteArray scenario_text;
        for (const QByteArray& line : read_file(scenario).split('\n'))
            if (!fault.match(QString::fromUtf8(line)).hasMatch())
                scenario_text += line + '\n';
        PageHarness p(scenario_text);
        QVERIFY(config::load_language(
            p.ctx.language, QString(VELTRAKO_SOURCE_DIR "/lang/lang%1.txt").arg(language), p.form));
        ui::apply_language(p.form, p.ctx.language);
        p.form.resize(window);
        p.form.show();
        QMap<QString, QString> widest; // box -> widest text it showed
        for (int tick = 0; tick < 600; ++tick) {
            p.clock.advance_ms(50);
            protocol::timer1_tick(p.ctx);
            for (QLineEdit* box : p.form.findChildren<QLineEdit*>(QRegularExpression("^t_"))) {
                const QString text = box->text();
                if (box->fontMetrics().horizontalAdvance(text) >
                    box->fontMetrics().horizontalAdvance(widest.value(box->objectName())))
                    widest[box->objectName()] = text;
            }
        }
        QApplication::processEvents();
        QWidget* page = p.form.control("page_geraet");
        for (auto it = widest.cbegin(); it != widest.cend(); ++it) {
            auto* box = p.form.control_as<QLineEdit>(it.key());
            if (!box->isVisibleTo(page))
                continue;
            QStyleOptionFrame option;
            option.initFrom(box);
            option.lineWidth =
                box->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, box);
            const int room =
                box->style()->subElementRect(QStyle::SE_LineEditContents, &option, box).width() -
                box->textMargins().left() - box->textMargins().right() - 2 * 2;
            QVERIFY2(box->fontMetrics().horizontalAdvance(it.value()) <= room,
                     qPrintable(it.key() + ": " + it.value()));
        }
        if (window.width() <= 1024) {
            auto* area = p.form.findChild<QScrollArea*>("page_geraet_scroll");
            QVERIFY(!area->horizontalScrollBar()->isVisible());
            QVERIFY(!area->verticalScrollBar()->isVisible());
            const QRect seen(page->mapTo(area->viewport(), QPoint(0, 0)), page->size());
            QVERIFY(area->viewport()->rect().contains(seen));
            for (QGroupBox* box : page->findChildren<QGroupBox*>())
                QVERIFY2(!box->isVisibleTo(page) ||
                             page->rect().contains(QRect(box->mapTo(page, QPoint()), box->size())),
                         qPrintable(box->objectName()));
        }
        QWidget* values = p.form.control("frm_messwerte");
        QWidget* phase = p.form.control("lbl_Phase");
        QVERIFY(values->contentsRect().contains(
            QRect(phase->mapTo(values, QPoint(0, 0)), phase->size())));
        for (QWidget* w : page->findChildren<QWidget*>()) {
            if (!w->isVisibleTo(page) || w->objectName().startsWith("qt_"))
                continue;
            const QSize needed = w->minimumSize().expandedTo(w->minimumSizeHint());
            QVERIFY2(w->width() >= needed.width() && w->height() >= needed.height(),
                     qPrintable(w->objectName()));
            for (QWidget* other :
                 w->parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
                QVERIFY2(other == w || !other->isVisibleTo(page) ||
                             !other->geometry().intersects(w->geometry()),
                         qPrintable(w->objectName() + " overlaps " + other->objectName()));
        }
    }
};

QTEST_MAIN(TestGeraetPage)
#include "test_geraet_page.moc"
