// The usage memory: readout ends, answer decoding, month clipping and sums,
// "Testdaten", the file in both directions, and the questions asked first.

#include "compliance/compliance_file.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_readout.h"
#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/poll_cycle.h"
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
        for (int i = 0; i < 2000 && !ctx->compliance.state.has_data; ++i)
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
using Paces = Table<QByteArray, int, bool>;
using Answers = Table<QByteArray, int, Stamp, Stamp>;
using Months = Table<QList<ComplianceRecord>, Stamp, Stamp, double, QByteArray, int, int, double>;
using Prescriptions = Table<int, double, int, int, QString>;
using Loads = Table<QByteArray, int, double, int>;
using Saves = Table<bool, bool, bool>;

} // namespace

class TestCompliance : public QObject {
    Q_OBJECT
private slots:
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

    // Whatever the device's pace, every record arrives, each at its place.
    void readout_reads_every_record_in_order_data() {
        // device, answers lost once the readout runs, whether the rest of the
        // readout waits 20 ms a record
        const Paces row;
        row("an answer lost: repeated, then paced", {}, 97, true);
        row("a slow device: 25 ms per answer", "LATENCY_MS=25\n", 0, false);
    }
    void readout_reads_every_record_in_order() {
        const auto [device, drop_every, paced] = Paces::fetch();
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
        h.read();
        QVERIFY(h.state().has_data && h.memory().page.chart_shown);
        QCOMPARE(h.state().last_index, 300);
        for (int i = 0; i < 300; ++i)
            QVERIFY2(h.memory().records[std::size_t(i)] == quick.memory().records[std::size_t(i)],
                     qPrintable(QString::number(i)));
        QCOMPARE(h.memory().records[300].start, quick.memory().records[300].start);
        // Asked in order; a lost answer only repeats its own request.
        const QList<int> asked = h.record_requests();
        QCOMPARE(asked.first(), 0);
        QCOMPARE(asked.last(), 300);
        for (int i = 1; i < asked.size(); ++i)
            QVERIFY(asked[i] == asked[i - 1] + 1 || (drop_every && asked[i] == asked[i - 1]));
        QCOMPARE(asked.size() > 301, drop_every > 0);
        QCOMPARE(h.ctx->protocol.paced_reads, paced);
    }

    void answer_fields_data() {
        // payload, the record index the answer is stored at (-1: refused,
        // nothing changes), start, end
        const Answers row;
        const Stamp epoch = make_stamp(2000, 1, 1);
        row("start 0x80...: empty start only", k_answer(0, 0x80000000u, 60), 0, 0, epoch + 60);
        row("end erased", k_answer(0, 0x7FFFFFFFu, 0xFFFFFFFFu), 0, epoch + 0x7FFFFFFF, 0);
        row("zero seconds is the epoch, not empty", k_answer(0, 0, 0), 0, epoch, epoch);
        row("record 7 answered while 3 was asked: logged, stored at 3", k_answer(7, 100, 200), 3,
            epoch + 100, epoch + 200);
        row("count of 32768", bytes_of({'K', 0x80, 0}), -1, 0, 0);
        row("record number of 32768", k_answer(0x8000, 1, 2), -1, 0, 0);
        row("short record", bytes_of({'k', 0, 0, 1, 2, 3, 4, 5}), -1, 0, 0);
    }
    void answer_fields() {
        const auto [payload, asked, start, end] = Answers::fetch();
        Harness h;
        h.state().record_count = 9;
        h.state().read_index = std::max(asked, 0);
        if (asked < 0) {
            QVERIFY_THROWS_EXCEPTION(protocol::InterpretError, compliance_answer(*h.ctx, payload));
            QCOMPARE(h.state().record_count, 9);
            QCOMPARE(h.state().read_index, 0);
            QVERIFY(h.memory().records[0] == ComplianceRecord{});
            QCOMPARE(h.ctx->protocol.queue_count, 0);
            return;
        }
        compliance_answer(*h.ctx, payload);
        const std::size_t at = std::size_t(asked);
        QCOMPARE(h.memory().records[at].start, start);
        QCOMPARE(h.memory().records[at].end, end);
        QCOMPARE(h.ctx->comm_log.comm_log.endsWith(QStringLiteral("\r\n3/7")), asked == 3);
        QVERIFY(h.memory().records[7] == ComplianceRecord{});
        // Not the last record: the next one is asked for.
        QCOMPARE(h.state().read_index, asked + 1);
        QCOMPARE(h.ctx->protocol.send_queue[1], protocol::cmd::compliance_record(asked + 1));
    }

    // The month shown, its sums and the summary under the chart.
    void month_pass_data() {
        // records, month asked for, month shown, hours, neighbours with use
        // ("<" before, ">" after), days of the month, days used, longest gap
        // (-1: none)
        const Months row;
        using L = QList<ComplianceRecord>;
        const Stamp march = make_stamp(2021, 3, 1);
        row("22:00 on the 3rd to 06:00 on the 5th",
            L{period("2021-03-03T22:00:00", "2021-03-05T06:00:00")}, 0, march, 32, "", 31, 3, -1);
        row("begun in the previous month: from the 1st",
            L{period("2021-02-27T20:00:00", "2021-03-01T02:30:00")}, make_stamp(2021, 3, 15), march,
            2.5, "<", 31, 1, -1);
        row("running into the next month: up to its start",
            L{period("2021-02-28T23:00:00", "2021-03-01T01:00:00")}, make_stamp(2021, 2, 10),
            make_stamp(2021, 2, 1), 1, ">", 28, 1, -1);
        row("latest end chooses the month; start after end ignored",
            L{period("2021-06-02T08:00:00", "2021-06-02T09:00:00"),
              period("2022-01-05T10:00:00", "2022-01-04T10:00:00"),
              period("2021-05-30T08:00:00", "2021-05-30T10:00:00")},
            0, make_stamp(2021, 6, 1), 1, "<", 30, 1, -1);
        row("empty start or end draws nothing",
            L{{0, make_stamp(2021, 4, 2, 10)},
              {make_stamp(2021, 4, 3, 8), 0},
              period("2021-04-04T10:00:00", "2021-04-04T10:30:00")},
            make_stamp(2021, 4, 1), make_stamp(2021, 4, 1), 0.5, "", 30, 1, -1);
        row("no records: the present month, nothing used", L{}, 0, make_stamp(2026, 3, 1), 0, "",
            31, 0, -1);
        row("pause between two sessions",
            L{period("2021-03-03T08:00:00", "2021-03-03T10:00:00"),
              period("2021-03-05T08:00:00", "2021-03-05T12:00:00")},
            0, march, 6, "", 31, 2, 46);
        row("overlaps are one use, not a negative pause",
            L{period("2021-03-10T08:00:00", "2021-03-10T12:00:00"),
              period("2021-03-10T09:00:00", "2021-03-10T10:00:00"),
              period("2021-03-10T13:00:00", "2021-03-10T14:00:00"),
              period("2021-03-01T06:00:00", "2021-03-01T07:00:00")},
            0, march, 7, "", 31, 2, 217);
        row("ending at midnight uses no time on the next day",
            L{period("2021-03-07T20:00:00", "2021-03-08T00:00:00")}, 0, march, 4, "", 31, 1, -1);
    }
    void month_pass() {
        const auto [records, shown, month, hours, neighbours, days, days_used, gap] =
            Months::fetch();
        ComplianceMemory m;
        fill(m, records);
        m.state.shown_month = shown;
        const Month result =
            compliance_month_pass(m.state, m.records, make_stamp(2026, 3, 2, 10, 0, 0));
        QCOMPARE(m.state.shown_month, month);
        QCOMPARE(m.state.total_hours, hours);
        QCOMPARE(m.state.has_prev_month, neighbours.contains('<'));
        QCOMPARE(m.state.has_next_month, neighbours.contains('>'));
        QCOMPARE(result.days, days);
        const MonthSummary s = summarise(result);
        QCOMPARE(s.days_used, days_used);
        QCOMPARE(s.mean_hours_per_day_used, days_used ? hours / days_used : 0.0);
        QCOMPARE(s.longest_gap_hours.value_or(-1.0), gap);
        QCOMPARE(s.total_hours, hours);
    }

    void months_with_use_lists_each_month_touched() {
        ComplianceMemory m;
        // Ends at midnight on March 1st; the zero-length session is no use.
        fill(m, {period("2021-01-31T22:00:00", "2021-03-01T00:00:00"),
                 period("2020-11-05T10:00:00", "2020-11-05T10:00:00")});
        const std::vector<Stamp> expected{make_stamp(2021, 1, 1), make_stamp(2021, 2, 1)};
        QCOMPARE(months_with_use(m.records, m.state.last_index), expected);
    }

    // Days that reached a prescription of 15 h, of the days up to the last
    // record: a known January (and the February the last record ends in).
    void prescription_days_data() {
        // month, prescribed hours, days meeting it, days counted, usage line.
        // 5th: exactly 15 h; 6th: one second short; 7th/8th: 15 h across
        // midnight, 7.5 h on each day; 9th: two stretches of 7.5 h.
        const Prescriptions row;
        row("January, wholly before the last record: all its days", 1, 15, 2, 31,
            "2021-01|60.0|5|12.0|2");
        row("a lower prescription counts the split days too", 1, 7.5, 5, 31,
            "2021-01|60.0|5|12.0|5");
        row("February up to the day of the last record's end", 2, 15, 0, 3, "2021-02|2.0|1|2.0|0");
        row("no prescription: four fields as before", 2, 0, 0, 3, "2021-02|2.0|1|2.0");
    }
    void prescription_days() {
        const auto [month, hours, meeting, counted, line] = Prescriptions::fetch();
        ComplianceMemory m;
        fill(m, {period("2021-01-05T06:00:00", "2021-01-05T21:00:00"),
                 period("2021-01-06T06:00:00", "2021-01-06T20:59:59"),
                 period("2021-01-07T16:30:00", "2021-01-08T07:30:00"),
                 period("2021-01-09T06:00:00", "2021-01-09T13:30:00"),
                 period("2021-01-09T14:00:00", "2021-01-09T21:30:00"),
                 period("2021-02-03T10:00:00", "2021-02-03T12:00:00")});
        const Stamp start = make_stamp(2021, month, 1);
        const Month mo = month_periods(m.records, m.state.last_index, start);
        if (hours > 0) {
            const PrescriptionDays d =
                compliance::prescription_days(mo, hours, last_record_end(m.records, 5));
            QCOMPARE(d.meeting, meeting);
            QCOMPARE(d.counted, counted);
        }
        QCOMPARE(month_usage_line(m.records, m.state.last_index, start, hours, QLocale::c()), line);
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
