// The settings of the "Gerät" page against the simulated concentrator: what the
// input boxes accept, the bytes of every write with its read-back, the device's
// answer replacing the record, what the technician is told from that answer,
// the question before a change that cannot be undone, and the guards that keep
// anything from being sent.

#include "config/language.h"
#include "device/device_clock.h"
#include "device/device_view.h"
#include "device/settings.h"
#include "device/timing_presets.h"
#include "protocol/commands.h"
#include "settings_harness.h"
#include "sim_helpers.h"
#include "table.h"

#include <functional>

using namespace veltrako;
using namespace veltrako::testing;
using device::WriteOutcome;

using Action = std::function<void(Connected&)>;
Q_DECLARE_METATYPE(Action)

class TestSettings : public QObject {
    Q_OBJECT
    using Entries = Table<bool, QString, QByteArray>; // hours or remaining time; empty: refused
    using Boxes = Table<bool, QStringList, int, QStringList, QList<QByteArray>>;
    using Writes = Table<Action, QList<QByteArray>, Action>;
    using Told = Table<QByteArray, Action, int, QStringList>;
    using Asked = Table<Action, QStringList>;
    using Notes = Table<QString, QString, QString, bool>;
private slots:
    void entries_data() {
        Entries row;
        // Digits reversed, tens of minutes, CRC (start 0x5555) low byte first.
        row("001234:5", true, "001234:5", bytes_of({4, 3, 2, 1, 0, 0, 5, 0x11, 0xCD}));
        row("000000:0", true, "000000:0", bytes_of({0, 0, 0, 0, 0, 0, 0, 0xA5, 0xA0}));
        row("999999:5", true, "999999:5", bytes_of({9, 9, 9, 9, 9, 9, 5, 0x2C, 0xEC}));
        // Shown minutes 55 or 60, tens of minutes 6, seven or nine characters, a
        // letter, a point for the colon, the colon at the end, a blank in front,
        // full-width digits.
        for (const char* bad : {"001234:55", "001234:60", "001234:6", "01234:5", "0012345:5",
                                "00123a:5", "001234.5", "0012345:", " 01234:5", "００1234:5"})
            row(bad, true, QString::fromUtf8(bad), {});
        // The remaining time; 1000, -1 and letters are refused in input_boxes.
        row("rest 0", false, "0", "0");
        row("rest 999", false, "999", "999");
        row("rest with blanks around", false, " 42 ", "42");
        row("rest with leading zeros", false, "007", "7");
        row("rest fraction", false, "12.5", {});
    }
    void entries() {
        const auto [hours, entry, expected] = Entries::fetch();
        if (hours) {
            const auto parsed = device::parse_hours_entry(entry);
            QCOMPARE(parsed ? device::hours_block(*parsed).toHex(' ') : QByteArray(),
                     expected.toHex(' '));
        } else {
            const auto parsed = device::parse_remaining_entry(entry);
            QCOMPARE(parsed ? QByteArray::number(int(*parsed)) : QByteArray(), expected);
        }
    }

    // The input boxes ask again after a bad entry and stop at an empty one;
    // the hours are then asked for once more, with the old and new value.
    void input_boxes_data() {
        Boxes row; // hours, answers, questions, messages, sent
        const QByteArray block = bytes_of({4, 3, 2, 1, 0, 0, 5, 0x11, 0xCD});
        const QList<QByteArray> hours_writes{bytes_of({'E', 0x00, 0x80, 9}) + block,
                                             bytes_of({'E', 0x00, 0x90, 9}) + block};
        row("hours after two bad entries", true, {"1234:5", "001234:9", "001234:5"}, 4,
            {"text111", "text111", "text112"}, hours_writes);
        row("hours as the page shows them", true, {"001234:50"}, 2, {"text112"}, hours_writes);
        row("hours cancelled", true, {"1234:5"}, 2, {"text111"}, {});
        row("hours left empty", true, {""}, 1, {}, {});
        row("remaining time after bad entries", false, {"1000", "-1", "abc", "250"}, 4, {"text114"},
            {bytes_of({'s', 0x00, 0xFA})});
        row("remaining time cancelled", false, {"1000"}, 2, {}, {});
    }
    void input_boxes() {
        const auto [hours, answers, questions, messages, sent] = Boxes::fetch();
        Connected c;
        c.serve();
        c.ui.input_answers = answers;
        c.ui.yes_no_answers = {true};
        const WriteOutcome outcome =
            hours ? device::cmd_setbstd_Click(*c.ctx) : device::cmd_Restzeit_Click(*c.ctx);
        QCOMPARE(outcome, sent.isEmpty() ? WriteOutcome::not_written : WriteOutcome::confirmed);
        QCOMPARE(int(c.ui.questions.size()), questions);
        QCOMPARE(c.ui.questions.first(), hours ? QString("text110") : QString("text113"));
        QCOMPARE(c.ui.messages, messages);
        QCOMPARE(c.writes(), sent);
    }

    // Each setting's write and read-back, byte for byte, and the value the
    // device reports afterwards in the record.
    void writes_and_read_backs_data() {
        Writes row; // action, sent, check
        row(
            "serial number cut to 12",
            [](Connected& c) {
                device::cmd_setsn_Click(*c.ctx, "ABCDEFGHIJKLMN");
                QCOMPARE(c.ctx->device.SN, QString("ABCDEFGHIJKLMN")); // shown as typed at once
            },
            {bytes_of({'E', 0x00, 0xF0, 12}) + "ABCDEFGHIJKL", bytes_of({'e', 0, 0xF0, 12})},
            [](Connected& c) { QCOMPARE(c.ctx->device.SN, QString("ABCDEFGHIJKL")); });
        row(
            "remaining time shown once the device answered",
            [](Connected& c) {
                c.ui.input_answers = {"12"};
                device::cmd_Restzeit_Click(*c.ctx);
                QCOMPARE(c.ctx->device.rest_text, QString());
            },
            {bytes_of({'s', 0, 12}), "S"},
            [](Connected& c) { QCOMPARE(c.ctx->device.rest_text, QString("12")); });
        row(
            "hours reset", [](Connected& c) { device::cmd_resetbstd_Click(*c.ctx); },
            {"C", bytes_of({'e', 0, 0x80, 7})},
            [](Connected& c) { QCOMPARE(c.ctx->device.BSTD, QString("000000:00")); });
        row(
            "acoustic flow-low off again",
            [](Connected& c) {
                c.ctx->device.wert_x = 0x09;
                device::pic_akust_Click(*c.ctx, device::AcousticAlarm::vollo);
            },
            {bytes_of({'x', 1}), "X"}, [](Connected& c) { QCOMPARE(c.ctx->device.wert_x, 1); });
    }
    void writes_and_read_backs() {
        const auto [action, sent, check] = Writes::fetch();
        Connected c;
        c.ui.yes_no_answers = {true};
        action(c);
        QCOMPARE(c.queued(), sent);
        c.settle();
        check(c);
    }

    // What the technician is told comes from the device's answer to the
    // read-back: a device that keeps its old value is named with it.
    void outcome_comes_from_the_read_back_data() {
        // scenario, action, outcome, told in the last message or the last note
        const Told table;
        const auto row = [&table](const char* name, QByteArray s, Action act, WriteOutcome o,
                                  QStringList told) { table(name, s, act, int(o), told); };
        const QByteArray keeps = "IGNORE_WRITES=on\n";
        const Action set_rest = [](Connected& c) {
            c.ui.input_answers = {"250"};
            c.outcome = device::cmd_Restzeit_Click(*c.ctx);
        };
        const Action set_hours = [](Connected& c) {
            c.ui.input_answers = {"004321:2"};
            c.outcome = device::cmd_setbstd_Click(*c.ctx);
            // The field shows the device's value as soon as it answered.
            QCOMPARE(c.ctx->device.BSTD,
                     QString(c.device->faults().ignore_writes ? "001234:50" : "004321:20"));
        };
        const Action set_sn = [](Connected& c) {
            c.outcome = device::cmd_setsn_Click(*c.ctx, "VO2-77");
        };
        const Action set_flow = [](Connected& c) {
            c.outcome = device::cb_vs_Click(*c.ctx, 0, 7, false);
        };
        row("remaining time kept", keeps, set_rest, WriteOutcome::differs, {"250", "500"});
        row("hours taken", {}, set_hours, WriteOutcome::confirmed, {"text112"});
        row("hours kept", keeps, set_hours, WriteOutcome::differs, {"004321:20", "001234:50"});
        row("serial number taken", {}, set_sn, WriteOutcome::confirmed, {"text8010", "VO2-77"});
        row("serial number kept", keeps, set_sn, WriteOutcome::differs,
            {"text8012", "VO2-77", "VO2-0012345"});
        row("flow selector kept", keeps, set_flow, WriteOutcome::differs, {"text8025 ", "7", "4"});
        row("clock taken", {},
            [](Connected& c) {
                // The note writes the time as the date box does, in the program's language.
                c.ctx->language.words = QLocale(QLocale::German);
                const QDateTime pc = c.clock.now();
                c.outcome = device::cmd_setdatetime_Click(*c.ctx);
                QVERIFY2(c.ui.notes.last().contains(device::format_device_time(
                             QDateTime::fromSecsSinceEpoch(pc.toSecsSinceEpoch(), Qt::UTC),
                             c.ctx->language.words)),
                         qPrintable(c.ui.notes.last()));
            },
            WriteOutcome::confirmed, {"text8023"});
        row("device falls silent", {},
            [](Connected& c) {
                sim::Faults f;
                f.silent = true;
                c.device->set_faults(f);
                c.outcome = device::cb_vs_Click(*c.ctx, 1, 3, false);
            },
            WriteOutcome::no_answer, {"text8013"});
    }
    void outcome_comes_from_the_read_back() {
        const auto [scenario, action, outcome, told] = Told::fetch();
        Connected c(scenario);
        c.serve();
        c.ui.yes_no_answers = {true};
        action(c);
        QCOMPARE(int(c.outcome), outcome);
        // The remaining time and the hours end with a message box, as they
        // always did; the others with a note beside the connection state.
        const bool boxed = !c.ui.messages.isEmpty() && c.ui.notes.isEmpty();
        const QString last = boxed ? c.ui.messages.last() : c.ui.notes.last();
        for (const QString& t : told)
            QVERIFY2(last.contains(t), qPrintable(last));
        if (!boxed)
            QCOMPARE(c.ui.note_icon, outcome == int(WriteOutcome::confirmed)
                                         ? MsgIcon::information
                                         : MsgIcon::exclamation);
    }

    // Only a read answered after the write tells what the device took: the
    // poll's own read of the same value, answered before it, still shows the
    // old value.
    void read_back_is_the_read_after_the_write() {
        Connected c;
        device::ReadBackWatch watch(*c.ctx);
        const auto answer = [&c](const QByteArray& command) {
            c.ctx->protocol.last_command = command;
            c.ctx->payload_handler(bytes_of({'U', 4}));
        };
        answer("T");
        answer("t1234");
        QVERIFY(!watch.await("t1234", "T")); // the poll is off: no waiting
        answer("T");
        QVERIFY(watch.await("t1234", "T"));
    }

    // A change that cannot be undone is asked for first, naming the old and
    // the new value; No sends nothing.
    void irreversible_writes_ask_first_data() {
        Asked row; // action; question, old and new value named
        row("serial number",
            [](Connected& c) { c.outcome = device::cmd_setsn_Click(*c.ctx, "X1"); },
            {"text8032", "VO2-0012345", "X1"});
        row("hours reset", [](Connected& c) { c.outcome = device::cmd_resetbstd_Click(*c.ctx); },
            {"text8034", "001234:50", "000000:00"});
        row("hours set",
            [](Connected& c) {
                c.ui.input_answers = {"000007:1"};
                c.outcome = device::cmd_setbstd_Click(*c.ctx);
            },
            {"text8033", "001234:50", "000007:10"});
    }
    void irreversible_writes_ask_first() {
        const auto [action, named] = Asked::fetch();
        for (const bool yes : {false, true}) {
            Connected c;
            c.ui.yes_no_answers = {yes};
            action(c);
            QCOMPARE(c.ui.confirmations.size(), 1);
            const QString asked = c.ui.confirmations.first();
            QVERIFY2(asked.startsWith(named[0]) && asked.contains("text8030 " + named[1]) &&
                         asked.contains("text8031 " + named[2]),
                     qPrintable(asked));
            QCOMPARE(c.outcome == WriteOutcome::not_written, !yes);
            QCOMPARE(c.queued().isEmpty(), !yes);
        }
    }

    // More than five minutes between the device's clock and the PC's is
    // told, whichever is ahead, in the program's language, in the two largest
    // calendar units.
    void clock_note_data() {
        // language, PC time when the device's clock reads 12.03.2026 09:30, note, clock kept
        Notes row;
        row("months behind", "de", "2026-11-23T09:30Z", "Geräteuhr geht 8 Monate 11 Tage nach",
            false);
        row("hours ahead", "en", "2026-03-12T07:25Z", "Device clock is 2 hours 5 minutes ahead",
            true);
        row("months ahead", "de", "2025-07-01T09:30Z", "Geräteuhr geht 8 Monate 11 Tage vor",
            false);
        row("singular, a zero second unit left out", "de", "2027-04-12T09:30Z",
            "Geräteuhr geht 1 Jahr 1 Monat nach", false);
        row("a day alone", "de", "2026-03-13T09:30Z", "Geräteuhr geht 1 Tag nach", true);
        row("six minutes behind", "de", "2026-03-12T09:36Z", "Geräteuhr geht 6 Minuten nach",
            false);
        row("within five minutes", "de", "2026-03-12T09:34Z", "", false);
    }
    void clock_note() {
        const auto [lang, pc_text, note, kept] = Notes::fetch();
        const QDateTime pc = QDateTime::fromString(pc_text, Qt::ISODate);
        Connected c(QByteArray("CLOCK=2026-03-12 09:30:00\n") + (kept ? "IGNORE_WRITES=on\n" : ""));
        QVERIFY(config::load_language(c.ctx->language, VELTRAKO_LANG_DIR "/lang" + lang + ".txt",
                                      c.ui));
        // The device clock has run on since power-on; the PC's is set half a
        // minute further off, as the answer read may be up to a second old.
        const int away = pc > QDateTime(QDate(2026, 3, 12), QTime(9, 30), Qt::UTC) ? 30 : -30;
        c.clock.set_now(pc.addMSecs(c.clock.elapsed_ms()).addSecs(away));
        QCOMPARE(device::clock_offset_note(*c.ctx), note);
        // "PC-Zeit übernehmen" ends the note once the device's clock reads
        // right, not while a device keeps its clock.
        c.serve();
        device::cmd_setdatetime_Click(*c.ctx);
        c.settle();
        QCOMPARE(device::clock_offset_note(*c.ctx), kept ? note : QString());
        // Nothing is said without a reading of the device's clock.
        c.ctx->device.geraetezeit_ms.reset();
        QCOMPARE(device::clock_offset_note(*c.ctx), QString());
    }

    // Nothing goes out for a programmatic change, without live data, or for
    // a board without the low-power mode.
    void guards_send_nothing_data() {
        Table<Action> row;
        row("locked flow selector",
            [](Connected& c) { c.outcome = device::cb_vs_Click(*c.ctx, 0, 9, true); });
        row("board without low power", [](Connected& c) {
            c.ctx->device.LP = "LP1260010077";
            c.outcome = device::cmd_togglelp_Click(*c.ctx);
        });
        row("low power without live data", [](Connected& c) {
            c.ctx->device.live_valid = false;
            c.outcome = device::cmd_togglelp_Click(*c.ctx);
        });
        row("hours without live data", [](Connected& c) {
            c.ctx->device.live_valid = false;
            c.ui.input_answers = {"001234:5"};
            c.outcome = device::cmd_setbstd_Click(*c.ctx);
            QVERIFY(c.ui.questions.isEmpty());
        });
        row("locked timing selector",
            [](Connected& c) { c.outcome = device::cb_t_Click(*c.ctx, 2, 150, true); });
        row("timing without live data", [](Connected& c) {
            c.ctx->device.live_valid = false;
            c.outcome = device::cb_t_Click(*c.ctx, 2, 150, false);
        });
    }
    void guards_send_nothing() {
        const auto [action] = Table<Action>::fetch();
        Connected c;
        c.serve();
        c.ui.yes_no_answers = {true};
        action(c);
        QCOMPARE(c.outcome, WriteOutcome::not_written);
        QVERIFY(c.writes().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
