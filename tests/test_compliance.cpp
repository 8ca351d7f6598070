// The usage memory: readout ends, answer decoding, month clipping and sums,
// "Testdaten", the file in both directions, and the questions asked first.

#include "compliance/compliance_file.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_readout.h"
#include "progress/progress.h"
#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/poll_cycle.h"
#include "protocol/response_interpreter.h"
#include "report_harness.h"
#include "sim_helpers.h"
#include "table.h"

#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::compliance;
using namespace veltrako::testing;

namespace {

struct Harness {
    explicit Harness(const QByteArray& scenario_text = {},
                     link::SimLink::WireTiming timing = link::SimLink::WireTiming::instant)
        : device(std::make_shared<sim::Concentrator>(
              scenario_from("SW=5301\nCLOCK=2025-01-01 00:00:00\n" + scenario_text))),
          ctx(std::make_unique<AppContext>(
              clock, ui, std::make_unique<link::SimLink>(clock, device, timing))) {
        device->set_observer([this](const sim::Concentrator::Event& e) {
            if (!e.boot_loader)
                received << e.request;
        });
        for (int n = 6001; n <= 6015; ++n)
            ctx->language.language_text[n] = QStringLiteral("text%1").arg(n);
        ctx->language.language_text[8500] = QStringLiteral("record %1 of 0..%2 missing");
        ctx->language.language_text[8501] = QStringLiteral("count missing");
        ctx->language.language_text[11102] = QStringLiteral("Record Nr.:");
        install_compliance(*ctx);
    }
    // Opens the device and polls until it has answered a live status.
    void connect() {
        protocol::connect_routine(*ctx);
        for (int i = 0; i < 100 && !(ctx->device.live_valid && ctx->protocol.queue_count == 0); ++i)
            tick();
        QVERIFY(link_enabled(*ctx));
    }
    void tick() {
        clock.advance_ms(50);
        protocol::timer1_tick(*ctx);
    }
    // Clicks "Speicher auslesen" and polls until the readout has ended.
    void read() {
        cmd_complianceread_Click(*ctx);
        for (int i = 0; i < 2000 && ctx->compliance.readout.running(); ++i)
            tick();
    }
    // The record numbers of the "k" requests the device took, in order.
    QList<int> record_requests() const {
        QList<int> numbers;
        for (const QByteArray& p : received)
            if (p.startsWith('k'))
                numbers << int(protocol::PayloadReader(p).be16_signed(2));
        return numbers;
    }
    int requests(char letter) const {
        return int(std::count_if(received.begin(), received.end(),
                                 [&](const QByteArray& p) { return p.startsWith(letter); }));
    }
    ComplianceMemory& memory() { return ctx->compliance; }
    ComplianceState& state() { return ctx->compliance.state; }

    ManualClock clock;
    FakeUserInterface ui;
    std::shared_ptr<sim::Concentrator> device;
    std::unique_ptr<AppContext> ctx;
    QList<QByteArray> received;
};

// A "k" answer for record `n` with raw 32-bit start and end fields.
QByteArray k_answer(int n, quint32 start, quint32 end) {
    return bytes_of({'k', n >> 8, n & 0xFF}) + be32(start) + be32(end);
}

// A period between two ISO times in UTC.
ComplianceRecord period(const char* from, const char* to) {
    const auto at = [](const char* t) {
        return to_stamp(QDateTime::fromString(QLatin1String(t) + 'Z', Qt::ISODate));
    };
    return {at(from), at(to)};
}

void fill(ComplianceMemory& m, const QList<ComplianceRecord>& records) {
    compliance_clear(m);
    for (int i = 0; i < records.size(); ++i)
        m.records[std::size_t(i)] = records[i];
    m.state.last_index = int(records.size()) - 1;
    m.state.has_data = true;
}

ComplianceRecord one_session() {
    return period("2020-02-01T08:00:00", "2020-02-01T09:30:00");
}

// A memory of `records` sessions from `from` to December 2024, in a ring
// of `ring` records (0: the device's own size).
QByteArray memory(int records, const char* from = "2020-01-01", int ring = 0) {
    return (ring ? "COMPLIANCE_RING_SIZE=" + QByteArray::number(ring) + '\n' : QByteArray()) +
           "COMPLIANCE_GENERATE=" + QByteArray::number(records) + "\nCOMPLIANCE_FROM=" + from +
           "\nCOMPLIANCE_TO=2024-12-01\n";
}

using Ends = Table<QByteArray, int, bool, QString, bool>;
using Paces = Table<QByteArray, int, bool, bool, int>;
using Answers = Table<QByteArray, int, QString, Stamp, Stamp>;
using Loads = Table<QByteArray, int, double, int>;
using Saves = Table<bool, bool, bool>;

} // namespace

class TestCompliance : public QObject {
    Q_OBJECT
private slots:
    // The time left of a readout of 400 records counts down at the pace so
    // far, and reads 0:00 only when it has ended.
    void time_left_counts_down_data() {
        const Table<int, qint64, qint64, QString> row; // done, ms since start, ms left, shown
        row("a quarter in 10 s", 100, 10000, 30000, "0:30");
        row("three quarters in 30 s", 300, 30000, 10000, "0:10");
        row("the last record to come", 399, 39900, 100, "0:01");
    }
    void time_left_counts_down() {
        const auto [done, now_ms, left_ms, shown] = Table<int, qint64, qint64, QString>::fetch();
        progress::Progress readout;
        readout.start(0, 400);
        readout.advance(done, now_ms);
        QCOMPARE(readout.standing().remaining_ms, std::optional<qint64>(left_ms));
        QCOMPARE(progress::minutes_seconds(left_ms), shown);
        readout.finish(now_ms + 100);
        QCOMPARE(readout.standing().remaining_ms, std::optional<qint64>(0));
    }

    void readout_ends_data() {
        // scenario, last index, whether the last record repeats record 0,
        // where the running period ends ("device": the device's present time,
        // "pc": the PC's, "": a stored record), whether the device clock is
        // set back a day after power-on, before the running period's start.
        const Ends row;
        row("empty memory: record 0 only, running", {}, 0, false, "device", false);
        row("device clock before the period's start: the PC's time", {}, 0, false, "pc", true);
        row("ring of 1024 wrapped", memory(1100, "2020-01-01", 1024), 1024, true, "", false);
        row("no ring of 1000", memory(1010, "2020-01-01", 1000), 1010, false, "device", false);
        row("5000 announced: 4096", memory(5000, "2010-01-01", 8192), 4096, false, "", false);
    }
    void readout_ends() {
        const auto [scenario, last_index, duplicate_kept, running_end, clock_set_back] =
            Ends::fetch();
        Harness h(scenario);
        if (clock_set_back)
            h.device->state().clock_seconds_at_set -= 86400;
        h.connect();
        h.received.clear();
        const CompliancePage& page = h.memory().page;
        cmd_complianceread_Click(*h.ctx);
        // A second click while it runs changes nothing.
        QVERIFY(page.record_visible && !page.print_enabled && !page.read_enabled);
        cmd_complianceread_Click(*h.ctx);
        for (int i = 0; i < 2000 && !h.state().has_data; ++i)
            h.tick();
        QVERIFY(h.state().has_data && h.state().from_device && page.read_enabled);
        QCOMPARE(h.state().last_index, last_index);
        QCOMPARE(h.requests('K'), 1);
        QCOMPARE(h.requests('k'), last_index + 1);
        QVERIFY(!page.record_visible);
        QCOMPARE(page.record_caption,
                 QStringLiteral("Record Nr.:%1 / %2").arg(last_index).arg(h.state().record_count));
        const auto& r = h.memory().records;
        QCOMPARE(last_index > 0 && r[std::size_t(last_index)] == r[0], duplicate_kept);
        // The device's clock (power-on 01.01.2025, 14 months behind the PC's)
        // runs on the test's steady clock; its answer is up to a second old.
        const Stamp device_now =
            make_stamp(2025, 1, 1) + h.clock.elapsed_ms() / 1000 - (clock_set_back ? 86400 : 0);
        const Stamp end = r[std::size_t(last_index)].end;
        QCOMPARE(running_end == "device", end >= device_now - 2 && end <= device_now);
        QCOMPARE(running_end == "pc", end == to_stamp(h.clock.now()));
        QVERIFY(last_index == table_upper || r[std::size_t(last_index) + 1] == ComplianceRecord{});
        QVERIFY(page.chart_shown && page.save_enabled);
    }

    // Whatever the device's pace and faults, the readout ends with records
    // 0..count, each at its place and each once, or gives up naming the one
    // missing and keeps the link; it never shifts or stretches a record. The
    // requests stay in order: only a repetition asks for a record again.
    void readout_takes_every_record_once_data() {
        // device, answers lost once the readout runs, whether a record is
        // asked for again, whether the rest of the readout waits 20 ms a
        // record, the record given up (-1: none)
        const Paces row;
        row("an answer lost: repeated, then paced", {}, 97, true, true, -1);
        row("a slow device: 25 ms per answer", "LATENCY_MS=25\n", 0, false, false, -1);
        row("an answer later than the time-out", "LATE_ANSWER_RECORD=7\nLATE_ANSWER_MS=1600\n", 0,
            true, true, -1);
        row("a duplicated answer", "DUPLICATE_ANSWER_RECORD=7\n", 0, false, true, -1);
        row("an answer for the wrong index", "WRONG_INDEX_RECORD=7\n", 0, true, true, -1);
        row("a refused answer, then the record", "REFUSED_ANSWER_RECORD=7\nREFUSED_ANSWERS=1\n", 0,
            true, false, -1);
        row("a record always refused", "REFUSED_ANSWER_RECORD=7\n", 0, true, false, 7);
        row("a record that never comes", "WITHHELD_RECORD=7\n", 0, true, true, 7);
    }
    void readout_takes_every_record_once() {
        const auto [device, drop_every, repeated, paced, missing] = Paces::fetch();
        Harness quick(memory(300));
        quick.connect();
        quick.read();
        QCOMPARE(quick.state().last_index, 300);

        Harness h(memory(300) + device, link::SimLink::WireTiming::realistic);
        h.connect();
        sim::Faults faults = h.device->faults();
        faults.drop_every = drop_every;
        h.device->set_faults(faults);
        h.received.clear();
        // Eight seconds to read a message: not the device's silence.
        h.ui.on_message = [&h] { h.clock.advance_ms(8000); };
        const qint64 started = h.clock.elapsed_ms();
        h.read();
        QCOMPARE(h.ctx->protocol.paced_reads, paced);
        // Asked in order; a repetition only asks for its own record again.
        const QList<int> asked = h.record_requests();
        QCOMPARE(asked.first(), 0);
        for (int i = 1; i < asked.size(); ++i)
            QVERIFY(asked[i] == asked[i - 1] + 1 || asked[i] == asked[i - 1]);
        const CompliancePage& page = h.memory().page;
        if (missing >= 0) {
            // The request and three repetitions, then the failure, well
            // within half a minute; nothing to save or print, the device
            // still connected and asked for its live values.
            QCOMPARE(h.memory().readout.phase(), progress::Phase::failed);
            QVERIFY(repeated);
            QCOMPARE(asked.count(missing), 4);
            QCOMPARE(asked.last(), missing);
            QVERIFY(h.clock.elapsed_ms() - started < 30000 + 8000);
            QCOMPARE(h.ui.messages, QStringList{"record 7 of 0..300 missing"});
            QVERIFY(!h.state().has_data && !page.save_enabled && !page.print_enabled);
            QVERIFY(!page.chart_shown && !page.record_visible && page.read_enabled);
            h.received.clear();
            for (int i = 0; i < 100; ++i)
                h.tick();
            QVERIFY(link_enabled(*h.ctx) && h.requests('I') > 10);
            QVERIFY(h.record_requests().isEmpty());
            return;
        }
        QVERIFY(h.state().has_data && page.chart_shown && h.ui.messages.isEmpty());
        QCOMPARE(h.state().last_index, 300);
        for (int i = 0; i < 300; ++i)
            QVERIFY2(h.memory().records[std::size_t(i)] == quick.memory().records[std::size_t(i)],
                     qPrintable(QString::number(i)));
        // Only the running period ends "now".
        QCOMPARE(h.memory().records[300].start, quick.memory().records[300].start);
        QVERIFY(h.memory().records[301] == ComplianceRecord{});
        QCOMPARE(asked.last(), 300);
        QCOMPARE(asked.size() > 301, repeated);
    }

    // Cancelled while an answer is on its way, and read again at once: the
    // answer of the old run lands nowhere, the new run holds its own records.
    void cancel_and_read_again_at_once() {
        Harness quick(memory(40));
        quick.connect();
        quick.read();
        Harness h(memory(40) + "LATENCY_MS=30\n", link::SimLink::WireTiming::realistic);
        h.connect();
        bool restarted = false;
        h.clock.on_wait = [&](int) {
            if (restarted || h.state().read_index != 10 || !h.ctx->protocol.waiting_reply)
                return;
            restarted = true;
            compliance_cancel(*h.ctx);
            cmd_complianceread_Click(*h.ctx);
        };
        h.received.clear();
        h.read();
        QVERIFY(restarted && h.state().has_data);
        QCOMPARE(h.requests('K'), 2);
        QCOMPARE(h.state().last_index, 40);
        for (int i = 0; i < 40; ++i)
            QVERIFY2(h.memory().records[std::size_t(i)] == quick.memory().records[std::size_t(i)],
                     qPrintable(QString::number(i)));
    }

    // A count the device never gives readably: asked four times, then the
    // readout says so; no record is asked for without it.
    void count_never_readable() {
        Harness h;
        h.connect();
        h.ctx->payload_handler = [&h](const QByteArray& p) {
            protocol::dispatch_response(*h.ctx, p.startsWith('K') ? bytes_of({'K', 0x80, 0}) : p);
        };
        h.received.clear();
        h.read();
        QCOMPARE(h.memory().readout.phase(), progress::Phase::failed);
        QCOMPARE(h.ui.messages, QStringList{"count missing"});
        QCOMPARE(h.requests('K'), 4);
        QCOMPARE(h.requests('k'), 0);
    }

    void answer_fields_data() {
        // payload, the record waited for (-1: the count), what becomes of
        // it: "stored" at that index, "ignored" (logged, nothing stored) or
        // "refused" (the interpreter throws), start, end
        const Answers row;
        const Stamp epoch = make_stamp(2000, 1, 1);
        row("start 0x80...: empty start only", k_answer(0, 0x80000000u, 60), 0, "stored", 0,
            epoch + 60);
        row("end erased", k_answer(0, 0x7FFFFFFFu, 0xFFFFFFFFu), 0, "stored", epoch + 0x7FFFFFFF,
            0);
        row("zero seconds is the epoch, not empty", k_answer(0, 0, 0), 0, "stored", epoch, epoch);
        row("record 3 while 3 is waited for", k_answer(3, 100, 200), 3, "stored", epoch + 100,
            epoch + 200);
        row("record 7 while 3 is waited for", k_answer(7, 100, 200), 3, "ignored", 0, 0);
        row("record 2 again while 3 is waited for", k_answer(2, 100, 200), 3, "ignored", 0, 0);
        row("a record while the count is waited for", k_answer(0, 100, 200), -1, "ignored", 0, 0);
        row("count of 32768", bytes_of({'K', 0x80, 0}), -1, "refused", 0, 0);
        row("record number of 32768", k_answer(0x8000, 1, 2), 0, "refused", 0, 0);
        row("short record", bytes_of({'k', 0, 0, 1, 2, 3, 4, 5}), 0, "refused", 0, 0);
    }
    void answer_fields() {
        const auto [payload, awaited, outcome, start, end] = Answers::fetch();
        Harness h;
        ComplianceMemory& m = h.memory();
        m.readout.start(0);
        h.state().record_count = 9;
        h.state().read_index = std::max(awaited, 0);
        m.wait.record = awaited;
        if (outcome == "refused") {
            QVERIFY_THROWS_EXCEPTION(protocol::InterpretError, compliance_answer(*h.ctx, payload));
            QCOMPARE(h.state().record_count, 9);
            QVERIFY(h.memory().records[0] == ComplianceRecord{});
            QCOMPARE(h.ctx->protocol.queue_count, 0);
            return;
        }
        compliance_answer(*h.ctx, payload);
        const int number = int(protocol::PayloadReader(payload).be16_signed(2));
        if (outcome == "ignored") {
            QVERIFY(h.ctx->comm_log.comm_log.endsWith(
                QStringLiteral("\r\n%1/%2").arg(std::max(awaited, 0)).arg(number)));
            QVERIFY(h.memory().records[std::size_t(number)] == ComplianceRecord{});
            QCOMPARE(h.state().read_index, std::max(awaited, 0));
            QCOMPARE(h.ctx->protocol.queue_count, 0);
            return;
        }
        const std::size_t at = std::size_t(awaited);
        QCOMPARE(h.memory().records[at].start, start);
        QCOMPARE(h.memory().records[at].end, end);
        // Not the last record: the next one is asked for.
        QCOMPARE(h.state().read_index, awaited + 1);
        QCOMPARE(h.ctx->protocol.send_queue[1], protocol::cmd::compliance_record(awaited + 1));
    }

    void load_accepts_data() {
        // content, a record's index, its minutes, the last index
        const Loads row;
        row("90 minutes into record 5", "5|01.02.2020 08:00:00-01.02.2020 09:30:00\r\n", 5, 90, 5);
        row("empty lines skipped, LF ends, later line wins",
            "\n7|01.02.2020 08:00:00-01.02.2020 08:10:00\n\n"
            "7|02.02.2020 08:00:00-02.02.2020 08:20:00\n",
            7, 20, 7);
        row("last line read sets the end, not the largest index",
            "9|01.02.2020 08:00:00-01.02.2020 08:30:00\r\n"
            "3|01.01.2020 08:00:00-01.01.2020 08:05:00\r\n",
            9, 30, 3);
        row("CR-only line ends of an old tool",
            "5|01.02.2020 08:00:00-01.02.2020 09:30:00\r"
            "6|01.02.2020 10:00:00-01.02.2020 10:05:00\r",
            5, 90, 6);
        row("date only is midnight", "4096|01.02.2020-02.02.2020\r\n", 4096, 1440, 4096);
    }
    void load_accepts() {
        const auto [content, index, minutes, last_index] = Loads::fetch();
        QTemporaryDir dir;
        Harness h;
        QVERIFY(write_file(dir.filePath("in.txt"), content));
        QVERIFY(load_compliance_file(*h.ctx, dir.filePath("in.txt")));
        const ComplianceRecord r = h.memory().records[std::size_t(index)];
        QCOMPARE((r.end - r.start) / 60.0, minutes);
        QCOMPARE(h.state().last_index, last_index);
        QVERIFY(h.state().has_data && !h.state().from_device);
        QVERIFY(h.ui.messages.isEmpty());
    }

    void load_rejects_data() {
        const Table<QByteArray> row;
        row("third field", "1|01.02.2020 08:00:00-01.02.2020 09:00:00|x");
        row("index not a number", "a|01.02.2020 08:00-01.02.2020 09:00");
        row("index 4097", "4097|01.02.2020 08:00:00-01.02.2020 09:00:00");
        row("negative index", "-1|01.02.2020 08:00:00-01.02.2020 09:00:00");
        row("single date", "1|01.02.2020 08:00:00");
        row("no such day", "1|30.02.2020 08:00:00-01.03.2020 09:00:00");
        row("hour 24", "1|01.02.2020 24:00:00-02.02.2020 09:00:00");
        row("the zero date", "1|30.12.1899 00:00:00-01.02.2020 09:00:00");
    }
    void load_rejects() {
        const auto [bad] = Table<QByteArray>::fetch();
        QTemporaryDir dir;
        Harness h;
        const QString path = dir.filePath("in.txt");
        QVERIFY(write_file(path, "2|01.01.2020 08:00:00-01.01.2020 09:00:00\r\n" + bad + "\r\n" +
                                     "3|01.01.2020 08:00:00-01.01.2020 09:00:00\r\n"));
        QVERIFY(!load_compliance_file(*h.ctx, path));
        QCOMPARE(h.ui.messages,
                 QStringList{"text6009\r\ntext6010 (" + QString::fromLatin1(bad) + ")"});
        // What came before stays in the table, but nothing is shown or printed.
        QCOMPARE(h.memory().records[2].start, make_stamp(2020, 1, 1, 8));
        QVERIFY(h.memory().records[3] == ComplianceRecord{});
        QVERIFY(!h.state().has_data && !h.memory().page.print_enabled);
        QVERIFY(!h.memory().page.chart_shown);
    }

    void load_cancelled_still_empties_the_table() {
        Harness h;
        fill(h.memory(), {one_session()});
        QVERIFY(!compliance_load(*h.ctx));
        QVERIFY(!h.state().has_data && h.memory().records[0] == ComplianceRecord{});
        QCOMPARE(h.ui.dialogs.at(0).filter, QStringLiteral("text6003 (*.txt)|*.txt"));
    }

    void save_data() {
        // connected, data from the device, saved
        const Saves row;
        row("device data", true, true, true);
        row("loaded from a file", true, false, false);
        row("no device", false, true, false);
    }
    // Saving asks for a name until one is taken; the file read back gives
    // the same table, empty records left out.
    void save() {
        const auto [connected, from_device, saved] = Saves::fetch();
        QTemporaryDir dir;
        Harness h("SN=VO2-4711\n");
        if (connected)
            h.connect();
        h.ctx->program_dir = dir.path() + '/';
        ComplianceMemory& m = h.memory();
        fill(m, {one_session(),
                 {0, make_stamp(2020, 2, 2)},
                 period("2020-02-03T23:59:59", "2020-02-04T00:00:01"),
                 {make_stamp(2020, 2, 5), 0},
                 period("2020-02-06T07:00:00", "2020-02-06T07:00:00")});
        const ComplianceRecords before = m.records;
        h.state().from_device = from_device;
        const QString existing = dir.filePath("old.txt");
        QVERIFY(write_file(existing, "keep"));
        h.ui.file_answers << existing << existing;
        h.ui.yes_no_answers << false << true; // not this one ... then yes, overwrite
        QCOMPARE(compliance_save(*h.ctx), saved);
        if (!saved) {
            QCOMPARE(h.ui.messages, QStringList{"text6006"});
            QVERIFY(h.ui.dialogs.isEmpty());
            return;
        }
        QCOMPARE(h.ui.dialogs.size(), 2);
        QCOMPARE(h.ui.questions, (QStringList{"text6008", "text6008"}));
        QVERIFY(h.ui.dialogs[0].proposed_name.startsWith("Compliance_VO2-4711_20260302_10"));
        QCOMPARE(h.ui.dialogs[0].filter, QStringLiteral("text6007 (*.txt)|*.txt"));
        QCOMPARE(read_file(existing), QByteArray("0|01.02.2020 08:00:00-01.02.2020 09:30:00\r\n"
                                                 "2|03.02.2020 23:59:59-04.02.2020 00:00:01\r\n"
                                                 "4|06.02.2020 07:00:00-06.02.2020 07:00:00\r\n"));
        QVERIFY(load_compliance_file(*h.ctx, existing));
        for (int i : {0, 2, 4})
            QCOMPARE(m.records[std::size_t(i)], before[std::size_t(i)]);
        QVERIFY(m.records[1] == ComplianceRecord{} && m.records[3] == ComplianceRecord{});
        QCOMPARE(m.state.last_index, 4);
        QCOMPARE(m.state.shown_month, make_stamp(2020, 2, 1));
        // Loaded data prints but cannot be saved again.
        QVERIFY(m.page.print_enabled && !m.page.save_enabled && m.page.chart_shown);
    }

    // Erasing asks first (a refusal: test_cli_compliance); the buttons follow
    // the link, and a reset of the link empties the table and hides the count.
    void delete_asks_first() {
        Harness h;
        const CompliancePage& page = h.memory().page;
        protocol::connect_routine(*h.ctx);
        // Open, but nothing answered yet: the buttons wait for the link.
        follow_link_state(*h.ctx);
        QVERIFY(!page.read_enabled);
        h.connect();
        follow_link_state(*h.ctx);
        QVERIFY(page.read_enabled && page.delete_enabled);
        h.received.clear();
        fill(h.memory(), {one_session()});
        h.ui.ok_cancel_answers << true;
        cmd_compliancedelete_Click(*h.ctx);
        QCOMPARE(h.ui.questions, QStringList{"text6011"});
        for (int i = 0; i < 5; ++i)
            h.tick();
        QCOMPARE(h.requests('Z'), 1);
        QVERIFY(!h.state().has_data && h.memory().records[0] == ComplianceRecord{});

        cmd_complianceread_Click(*h.ctx);
        QVERIFY(page.record_visible && !page.read_enabled);
        protocol::reset_link_state(*h.ctx);
        QCOMPARE(h.memory().readout.phase(), progress::Phase::idle);
        QVERIFY(!page.record_visible && !page.delete_enabled && !page.read_enabled);
        QVERIFY(page.dauer_text.isEmpty());
        QCOMPARE(h.state().record_count, 0);
    }
};

QTEST_MAIN(TestCompliance)
#include "test_compliance.moc"
