// Device answers taken apart into the device record: positions, scaling,
// the errors that end one answer half-way, the time axis and the follow-up
// reads of the status memory.

#include "app_context.h"
#include "fake_link.h"
#include "fake_user_interface.h"
#include "manual_clock.h"
#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/response_interpreter.h"

#include "test_bytes.h"

#include <QTest>

#include <cstring>

using namespace veltrako;
using namespace veltrako::testing;
using protocol::dispatch_response;

namespace {

QByteArray single_le(float f) {
    char raw[4];
    std::memcpy(raw, &f, 4); // the test machine is little-endian, as the device's floats are
    return QByteArray(raw, 4);
}

// A live status answer of 47 bytes; positions as the device sends them.
struct Live {
    QByteArray p = QByteArray(47, '\0');
    Live() { p[0] = 'I'; }
    Live& at(int pos, int value) {
        p[pos - 1] = static_cast<char>(value);
        return *this;
    }
    Live& be16(int pos, int value) { return at(pos, value >> 8).at(pos + 1, value & 0xFF); }
    Live& ticks(int t) { return be16(2, t); }
};

struct Harness {
    ManualClock clock;
    FakeUserInterface ui;
    AppContext ctx{clock, ui, std::make_unique<FakeLink>()};
    QList<QByteArray> compliance;
    Harness() {
        ctx.hooks.compliance_answer = [this](const QByteArray& p) { compliance << p; };
    }
    void identity(const QByteArray& sw) { dispatch_response(ctx, "?" + sw); }
    QList<QByteArray> queued() const {
        QList<QByteArray> q;
        for (int i = 1; i <= ctx.protocol.queue_count; ++i)
            q << ctx.protocol.send_queue[static_cast<std::size_t>(i)];
        return q;
    }
};

} // namespace

class TestInterpreter : public QObject {
    Q_OBJECT
private slots:
    void float_decoding_data() {
        QTest::addColumn<QByteArray>("raw");
        QTest::addColumn<double>("expected");
        QTest::newRow("343.2") << single_le(343.2f) << double(343.2f);
        QTest::newRow("-12.5") << single_le(-12.5f) << -12.5;
        QTest::newRow("1") << single_le(1.0f) << 1.0;
        QTest::newRow("tiny") << single_le(1.5e-30f) << double(1.5e-30f);
        QTest::newRow("four zero bytes") << QByteArray(4, '\0') << std::ldexp(1.0, -127);
    }
    void float_decoding() {
        QFETCH(QByteArray, raw);
        QFETCH(double, expected);
        const double got = protocol::bytes_to_single(raw);
        QVERIFY2(std::abs(got - expected) <= std::abs(expected) * 1e-12,
                 qPrintable(QString::number(got, 'g', 17)));
    }

    void live_values_scaled() {
        Harness h;
        Live live;
        live.ticks(1000)
            .at(8, 100)    // O2 above the cap
            .be16(10, 160) // 2.0 l/min
            .be16(12, 1234)
            .be16(18, 45)
            .be16(20, 0x0334) // 820 raw = 24.0 V
            .at(22, 5)
            .at(23, 1)
            .at(24, 0x81)
            .at(25, 7)
            .at(26, 50) // 50 * 0.04 = 2
            .at(27, 255)
            .at(28, 224)
            .at(29, 112)
            .at(35, 4)
            .be16(36, 200); // 2.5 l/min
        live.p.replace(3, 4, single_le(343.5f));
        live.p.replace(13, 4, single_le(31.25f));
        dispatch_response(h.ctx, live.p);
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE(d.device_ticks, 1000);
        QCOMPARE(d.schall, 343.5);
        QCOMPARE(d.O2, 95.0);
        QCOMPARE(d.VOLUMENSTROM, 2.0);
        QCOMPARE(d.druck, 1234.0);
        QCOMPARE(d.GASTEMP, 31.25);
        QCOMPARE(d.KOMPRESSORTEMP, 45.0);
        QCOMPARE(d.spannung, 24.0);
        QCOMPARE(int(d.ventile), 5);
        QCOMPARE(int(d.alarmstufe), 1);
        QCOMPARE(int(d.alarme), 0x81);
        QCOMPARE(int(d.phase), 7);
        QCOMPARE(int(d.wert26), 2);
        QCOMPARE(d.ventiloeffnung, 100.0);
        QCOMPARE(d.sensor1, 100.0);
        QCOMPARE(d.sensor2, 50.0);
        QCOMPARE(int(d.alarme2), 4);
        QCOMPARE(d.SOLL_VOLUMENSTROM, 2.5);
        QVERIFY(d.live_valid);
        QCOMPARE(d.live_time, 0.0); // the first status starts the axis at 0
        QCOMPARE(h.ui.record_changes, 1);
        QCOMPARE(h.ctx.live_history.samples().size(), std::size_t(1));

        dispatch_response(h.ctx, Live().ticks(1001).at(8, 90).p);
        QCOMPARE(h.ctx.device.O2, 90.0);
    }

    void alarm_bits_position_follows_the_family() {
        Harness h;
        h.identity("7E1"); // family 7E carries its alarm bits at position 47
        QVERIFY(h.ctx.device.alarm_at_47);
        dispatch_response(h.ctx, Live().at(24, 0x01).at(47, 0x20).p);
        QCOMPARE(int(h.ctx.device.alarme), 0x20);
    }

    void overflow_ends_the_answer_half_way() {
        Harness h;
        h.ctx.device.druck = 77;
        const float before = h.ctx.device.last_answer_time;
        h.clock.advance_ms(5000);
        // Flow high byte 0x80 overflows 16-bit arithmetic.
        dispatch_response(h.ctx, Live().ticks(500).at(8, 91).be16(10, 0x8000).be16(12, 900).p);
        QCOMPARE(h.ctx.device.device_ticks, 500); // written before the failing step
        QCOMPARE(h.ctx.device.O2, 91.0);
        QCOMPARE(h.ctx.device.druck, 77.0); // after it: old value
        QVERIFY(!h.ctx.device.live_valid);
        QCOMPARE(h.ui.record_changes, 0); // common ending skipped
        QCOMPARE(h.ctx.device.last_answer_time, before);
    }

    // Every 16-bit signed reading of the live status overflows on its own:
    // the fields before it take their new values, the fields from it on keep
    // their old ones, and the answer is not finished. Below 0x8000 all is read.
    void live_overflow_per_field_data() {
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("raw");
        QTest::addColumn<bool>("overflows");
        QTest::newRow("VOLUMENSTROM 0x8000") << 10 << 0x8000 << true;
        QTest::newRow("spannung 0x8000") << 20 << 0x8000 << true;
        QTest::newRow("spannung 0xFFFF") << 20 << 0xFFFF << true;
        QTest::newRow("spannung 0x7FFF") << 20 << 0x7FFF << false;
        QTest::newRow("SOLL_VOLUMENSTROM 0x8000") << 36 << 0x8000 << true;
        QTest::newRow("SOLL_VOLUMENSTROM 0x7FFF") << 36 << 0x7FFF << false;
    }
    void live_overflow_per_field() {
        QFETCH(int, position);
        QFETCH(int, raw);
        QFETCH(bool, overflows);
        Harness h;
        device::DeviceRecord& d = h.ctx.device;
        d.VOLUMENSTROM = d.druck = d.KOMPRESSORTEMP = d.spannung = d.SOLL_VOLUMENSTROM = -1;
        d.ventile = d.alarme2 = 99;
        Live live;
        live.ticks(500).be16(10, 160).be16(12, 900).be16(18, 45).be16(20, 820).at(22, 5);
        live.at(35, 4).be16(36, 200).be16(position, raw);
        dispatch_response(h.ctx, live.p);

        struct Field {
            int position;
            double value;
            double fresh;
        };
        const double scale = position == 20 ? 24.0 / 820.0 : 0.0125;
        const auto fresh = [&](int pos, double normal) {
            return pos == position ? raw * scale : normal;
        };
        const Field fields[] = {
            {10, d.VOLUMENSTROM, fresh(10, 2.0)},
            {12, d.druck, 900},
            {18, d.KOMPRESSORTEMP, 45},
            {20, d.spannung, fresh(20, 24.0)},
            {22, double(d.ventile), 5},
            {35, double(d.alarme2), 4},
            {36, d.SOLL_VOLUMENSTROM, fresh(36, 2.5)},
        };
        const double old_value[] = {-1, -1, -1, -1, 99, 99, -1};
        for (std::size_t i = 0; i < std::size(fields); ++i) {
            const bool written = !overflows || fields[i].position < position;
            QVERIFY2(qFuzzyCompare(fields[i].value, written ? fields[i].fresh : old_value[i]),
                     qPrintable(QStringLiteral("field at %1: %2")
                                    .arg(fields[i].position)
                                    .arg(fields[i].value)));
        }
        QCOMPARE(d.live_valid, !overflows);
        QCOMPARE(h.ui.record_changes, overflows ? 0 : 1);
    }

    // The remaining time is a plain unsigned 16-bit count.
    void remaining_time_is_unsigned_data() {
        QTest::addColumn<int>("high");
        QTest::addColumn<int>("low");
        QTest::addColumn<QString>("text");
        QTest::newRow("300") << 0x01 << 0x2C << "300";
        QTest::newRow("high byte 128") << 0x80 << 0x01 << "32769";
        QTest::newRow("all ones") << 0xFF << 0xFF << "65535";
    }
    void remaining_time_is_unsigned() {
        QFETCH(int, high);
        QFETCH(int, low);
        QFETCH(QString, text);
        Harness h;
        dispatch_response(h.ctx, bytes_of({'S', high, low}));
        QCOMPARE(h.ctx.device.rest_text, text);
        QCOMPARE(h.ui.record_changes, 1);
    }

    // Memory answers at the edges of the status area: the last slot asked
    // for, the one past it that a device may still send, and beyond.
    void status_area_edges_data() {
        QTest::addColumn<int>("address");
        QTest::addColumn<int>("records");
        QTest::addColumn<QList<QByteArray>>("queued");
        QTest::addColumn<bool>("completed");
        QTest::newRow("0x100: record 1")
            << 0x100 << 1 << QList<QByteArray>{protocol::cmd::read_status_record(2)} << false;
        QTest::newRow("0x3AA: record 32, the last asked for")
            << 0x3AA << 32 << QList<QByteArray>{} << true;
        QTest::newRow("0x3C0: record 33") << 0x3C0 << 33 << QList<QByteArray>{} << true;
        QTest::newRow("0x3C1: outside") << 0x3C1 << 0 << QList<QByteArray>{} << false;
        QTest::newRow("0x0FF: outside") << 0x0FF << 0 << QList<QByteArray>{} << false;
    }
    void status_area_edges() {
        QFETCH(int, address);
        QFETCH(int, records);
        QFETCH(QList<QByteArray>, queued);
        QFETCH(bool, completed);
        Harness h;
        int completions = 0;
        h.ctx.hooks.status_readout_complete = [&] { ++completions; };
        const QByteArray data(22, '\x21');
        dispatch_response(h.ctx, bytes_of({'e', address >> 8, address & 0xFF, 22}) + data);
        QCOMPARE(h.ctx.status.record_count(), records);
        if (records > 0)
            QCOMPARE(h.ctx.status.records[std::size_t(records)], data);
        QCOMPARE(h.queued(), queued);
        QCOMPARE(completions, completed ? 1 : 0);
        QCOMPARE(h.ui.record_changes, 1);
    }

    void short_answer_ends_interpretation() {
        Harness h;
        dispatch_response(h.ctx, bytes_of({'I', 0x01, 0x02}));
        QCOMPARE(h.ctx.device.device_ticks, 0x0102);
        QVERIFY(!h.ctx.device.live_valid);
        QCOMPARE(h.ui.record_changes, 0);
    }

    void time_axis() {
        Harness h;
        dispatch_response(h.ctx, Live().ticks(65530).p);
        QCOMPARE(h.ctx.device.live_time, 0.0);
        dispatch_response(h.ctx, Live().ticks(4).p);
        QCOMPARE(h.ctx.device.live_time, 10 * 0.04); // 0.4 s across the wrap

        h.ctx.device.restart_time = true;
        dispatch_response(h.ctx, Live().ticks(9).p);
        QCOMPARE(h.ctx.device.live_time, 0.0);
        QVERIFY(!h.ctx.device.restart_time);

        Harness wraps;
        for (int t : {100, 60000, 5, 60000, 5, 60000, 5})
            dispatch_response(wraps.ctx, Live().ticks(t).p);
        QCOMPARE(wraps.ctx.device.tick_offset, 3 * 65536 - 100);
    }

    // Identity answers: the version text, its family code and the flags the
    // family trips.
    void identity_data() {
        QTest::addColumn<QByteArray>("sw");
        QTest::addColumn<QString>("family");
        QTest::addColumn<bool>("o22");
        QTest::addColumn<bool>("at47");
        QTest::addColumn<bool>("valves");
        QTest::addColumn<bool>("special");
        QTest::newRow("5121") << QByteArray("5121") << "512" << false << false << false << false;
        QTest::newRow("7012") << QByteArray("7012") << "701" << true << false << false << false;
        QTest::newRow("701: 70 maps to 50")
            << QByteArray("701") << "50" << false << false << false << false;
        QTest::newRow("711: 71 maps to 51")
            << QByteArray("711") << "51" << false << false << false << false;
        QTest::newRow("7E") << QByteArray("7E1") << "7E" << true << true << true << false;
        QTest::newRow("7C") << QByteArray("7C2") << "7C" << true << true << false << false;
        QTest::newRow("66") << QByteArray("661") << "66" << true << false << false << false;
        QTest::newRow("AA") << QByteArray("AA3") << "AA" << true << true << true << false;
        QTest::newRow("8D") << QByteArray("8D0") << "8D" << true << true << false << false;
        QTest::newRow("A8") << QByteArray("A81") << "A8" << true << true << true << false;
        QTest::newRow("A9") << QByteArray("A92") << "A9" << true << true << true << false;
        QTest::newRow("A7: below the A8..A9 range")
            << QByteArray("A71") << "A7" << true << false << false << false;
        QTest::newRow("56") << QByteArray("561") << "56" << true << false << false << false;
        QTest::newRow("55") << QByteArray("551") << "55" << false << false << false << false;
        QTest::newRow("628") << QByteArray("628") << "62" << false << false << false << true;
        QTest::newRow("748x") << QByteArray("7480") << "748" << true << false << false << true;
    }
    void identity() {
        QFETCH(QByteArray, sw);
        QFETCH(QString, family);
        QFETCH(bool, o22);
        QFETCH(bool, at47);
        QFETCH(bool, valves);
        QFETCH(bool, special);
        Harness h;
        h.identity(sw);
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE(d.SW, QString::fromLatin1(sw));
        QCOMPARE(d.sw_num, d.SW.chopped(1));
        QCOMPARE(d.family_code, family);
        QCOMPARE(d.o22_source, o22);
        QCOMPARE(d.alarm_at_47, at47);
        QCOMPARE(d.valve_layout, valves);
        QCOMPARE(d.special_model, special);
    }

    void operating_hours_rebuilt() {
        Harness h;
        h.ctx.device.BSTD = "999999:99 old";
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x80, 7, 4, 3, 2, 1, 0, 0, 5}));
        QCOMPARE(h.ctx.device.BSTD, QString("001234:50"));
    }

    void identity_memory_texts() {
        Harness h;
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xF0, 12}) + "SN-000123   ");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xE0, 12}) + "12344");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x40, 3}) + "abc");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x58, 2}) + "de");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xD0, 4}) + "H512");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xC0, 1}) + "z"); // no field there
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE(d.SN, QString("SN-000123   "));
        QCOMPARE(d.LP, QString("12344"));
        QCOMPARE(d.text_40, QString("abc"));
        QCOMPARE(d.text_58, QString("de"));
        QCOMPARE(d.text_d0, QString("H512"));
        QCOMPARE(h.ui.record_changes, 6);
    }

    void timing_index_limit_data() {
        QTest::addColumn<QByteArray>("sw");
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("stored");
        QTest::addColumn<bool>("ended_normally");
        QTest::newRow("family 50 index 3") << QByteArray("501") << 3 << true << true;
        QTest::newRow("family 50 index 8 ignored") << QByteArray("501") << 8 << false << true;
        QTest::newRow("family 21 index 8") << QByteArray("211") << 8 << true << true;
        QTest::newRow("family 21 index 13") << QByteArray("211") << 13 << true << true;
        QTest::newRow("family 21 index 14 out of range")
            << QByteArray("211") << 14 << false << false;
        QTest::newRow("family 50 index 14 not looked at")
            << QByteArray("501") << 14 << false << true;
    }
    void timing_index_limit() {
        QFETCH(QByteArray, sw);
        QFETCH(int, index);
        QFETCH(bool, stored);
        QFETCH(bool, ended_normally);
        Harness h;
        h.identity(sw);
        const int changes = h.ui.record_changes;
        dispatch_response(h.ctx, bytes_of({'r', 0x30 + index, 42}));
        if (index <= 13)
            QCOMPARE(h.ctx.device.zeiten[std::size_t(index)] == 42, stored);
        QCOMPARE(h.ui.record_changes == changes + 1, ended_normally);
    }

    void single_byte_answers() {
        Harness h;
        dispatch_response(h.ctx, bytes_of({'O', 3}));
        dispatch_response(h.ctx, bytes_of({'U', 4}));
        dispatch_response(h.ctx, bytes_of({'X', 2}));
        dispatch_response(h.ctx, bytes_of({'S', 0x01, 0x2C}));
        dispatch_response(h.ctx, QByteArray("!V2.3 build 7"));
        QCOMPARE(int(h.ctx.device.wert_o), 3);
        QCOMPARE(int(h.ctx.device.wert_u), 4);
        QCOMPARE(int(h.ctx.device.wert_x), 2);
        QCOMPARE(h.ctx.device.rest_text, QString("300"));
        QVERIFY(h.ctx.device.info_valid);
        dispatch_response(h.ctx, QByteArray("!-"));
        QVERIFY(!h.ctx.device.info_valid);
    }

    void device_clock_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QDateTime>("expected");
        const QDateTime epoch(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
        QTest::newRow("zero") << bytes_of({'T', 0, 0, 0, 0}) << epoch;
        QTest::newRow("one day and ten seconds")
            << bytes_of({'T', 0, 0x01, 0x51, 0x8A}) << epoch.addSecs(86410);
        QTest::newRow("high byte 0x80") << bytes_of({'T', 0x80, 1, 2, 3}) << epoch;
        QTest::newRow("high byte 127") << bytes_of({'T', 127, 1, 2, 3}) << epoch;
        QTest::newRow("2026") << bytes_of({'T', 0x31, 0x37, 0x4B, 0xC0})
                              << epoch.addSecs(0x31374BC0);
    }
    void device_clock() {
        QFETCH(QByteArray, answer);
        QFETCH(QDateTime, expected);
        Harness h;
        dispatch_response(h.ctx, answer);
        QCOMPARE(h.ctx.device.geraetezeit, expected);
    }

    void status_records_chain() {
        Harness h;
        QByteArray data(22, '\x11');
        dispatch_response(h.ctx, bytes_of({'e', 0x01, 0x16, 22}) + data); // record 2
        QCOMPARE(h.ctx.status.record_count(), 2);
        QCOMPARE(h.ctx.status.records[2], data);
        QCOMPARE(h.queued(), QList<QByteArray>{protocol::cmd::read_status_record(3)});

        int completed = 0;
        h.ctx.hooks.status_readout_complete = [&] { ++completed; };
        // Record 32 is the last one asked for.
        dispatch_response(h.ctx, bytes_of({'e', 0x03, 0xAA, 22}) + data);
        QCOMPARE(h.ctx.status.record_count(), 32);
        QCOMPARE(h.queued().size(), 1);
        QCOMPARE(completed, 1);

        // An erased record (data byte 2 = 255) ends the readout without storing.
        QByteArray erased(22, '\0');
        erased[1] = '\xFF';
        h.ctx.status.restart();
        h.ctx.status.mark = status::ReadoutMark::pending;
        int saved = 0;
        h.ctx.hooks.status_save_due = [&] { ++saved; };
        dispatch_response(h.ctx, bytes_of({'e', 0x01, 0x00, 22}) + erased);
        QCOMPARE(h.ctx.status.record_count(), 0);
        QCOMPARE(completed, 2);
        QCOMPARE(saved, 1); // the common ending saves a readout started for saving
        QCOMPARE(h.ctx.status.mark, status::ReadoutMark::idle);
    }

    void compliance_answers_go_to_their_hook() {
        Harness h;
        dispatch_response(h.ctx, bytes_of({'K', 0, 3}));
        dispatch_response(h.ctx, bytes_of({'k', 0, 1, 0, 0, 0, 1, 0, 0, 0, 2}));
        QCOMPARE(h.compliance.size(), 2);
        QCOMPARE(h.compliance.at(0), bytes_of({'K', 0, 3}));
        QCOMPARE(h.ui.record_changes, 2);

        // An overflow reported by the hook ends that answer like our own.
        h.ctx.hooks.compliance_answer = [](const QByteArray&) {
            throw protocol::InterpretError("overflow");
        };
        dispatch_response(h.ctx, bytes_of({'K', 0x80, 0}));
        QCOMPARE(h.ui.record_changes, 2);
    }

    void unknown_letter_still_ends_normally() {
        Harness h;
        h.ctx.protocol.retry_count = 2;
        h.clock.advance_ms(3000);
        dispatch_response(h.ctx, QByteArray("w"));
        QCOMPARE(h.ui.record_changes, 1);
        QCOMPARE(h.ctx.protocol.retry_count, 0);
        QCOMPARE(h.ctx.device.last_answer_time, seconds_since_midnight(h.clock.now()));
    }
};

QTEST_GUILESS_MAIN(TestInterpreter)
#include "test_interpreter.moc"
