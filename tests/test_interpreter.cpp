// Device answers taken apart into the device record: positions, scaling,
// the errors that end one answer half-way, the time axis and the follow-up
// reads of the status memory.

#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/response_interpreter.h"

#include "fake_link_context.h"
#include "protocol_harness.h"

#include <array>
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

struct Harness : FakeLinkContext {
    QList<QByteArray> compliance;
    Harness() {
        ctx.hooks.compliance_answer = [this](const QByteArray& p) { compliance << p; };
    }
    void identity(const QByteArray& sw) { dispatch_response(ctx, "?" + sw); }
};

} // namespace

class TestInterpreter : public QObject {
    Q_OBJECT
private slots:
    void float_decoding_data() {
        const Table<QByteArray, double> row;
        row("343.2", single_le(343.2f), double(343.2f));
        row("-12.5", single_le(-12.5f), -12.5);
        row("tiny", single_le(1.5e-30f), double(1.5e-30f));
        row("four zero bytes", QByteArray(4, '\0'), std::ldexp(1.0, -127));
    }
    void float_decoding() {
        const auto [raw, expected] = Table<QByteArray, double>::fetch();
        const double got = protocol::bytes_to_single(raw);
        QVERIFY2(std::abs(got - expected) <= std::abs(expected) * 1e-12,
                 qPrintable(QString::number(got, 'g', 17)));
    }

    void live_values_scaled() {
        Harness h;
        Live live;
        live.ticks(1000).at(8, 100).be16(10, 160).be16(12, 1234); // O2 above the cap, 2.0 l/min
        live.be16(18, 45).be16(20, 0x0334).at(22, 5).at(23, 1);   // 820 raw = 24.0 V
        live.at(24, 0x81).at(25, 7).at(26, 50).at(27, 255);       // 50 * 0.04 = 2
        live.at(28, 224).at(29, 112).at(35, 4).be16(36, 200);     // 2.5 l/min
        live.p.replace(3, 4, single_le(343.5f));
        live.p.replace(13, 4, single_le(31.25f));
        dispatch_response(h.ctx, live.p);
        const device::DeviceRecord& d = h.ctx.device;
        // Whole numbers as one list: a failure names the index of the field.
        QCOMPARE((QList<int>{d.device_ticks, d.ventile, d.alarmstufe, d.alarme, d.phase, d.wert26,
                             d.alarme2}),
                 (QList<int>{1000, 5, 1, 0x81, 7, 2, 4}));
        QStringList shown; // to six digits: a wrong scale or byte is far off
        for (double v : {d.schall, d.O2, d.VOLUMENSTROM, d.druck, d.GASTEMP, d.KOMPRESSORTEMP,
                         d.spannung, d.ventiloeffnung, d.sensor1, d.sensor2, d.SOLL_VOLUMENSTROM})
            shown << QString::number(v);
        QCOMPARE(shown.join(' '), "343.5 95 2 1234 31.25 45 24 100 100 50 2.5");
        QVERIFY(d.live_valid);
        QCOMPARE(d.live_time, 0.0); // the first status starts the axis at 0
        QCOMPARE(h.ui.record_changes, 1);
        QCOMPARE(h.ctx.live_history.samples().size(), std::size_t(1));

        dispatch_response(h.ctx, Live().ticks(1001).at(8, 90).p);
        QCOMPARE(h.ctx.device.O2, 90.0);

        h.identity("7E1"); // family 7E carries its alarm bits at position 47
        dispatch_response(h.ctx, Live().at(24, 0x01).at(47, 0x20).p);
        QCOMPARE(int(h.ctx.device.alarme), 0x20);
    }

    // Every 16-bit signed reading of the live status overflows on its own:
    // the fields before it take their new values, the fields from it on keep
    // their old ones, and the answer is not finished (no record change, no
    // answer time). Below 0x8000 all is read.
    void live_overflow_per_field_data() {
        const Table<int, int, bool> row;
        row("VOLUMENSTROM 0x8000", 10, 0x8000, true);
        row("spannung 0x8000", 20, 0x8000, true);
        row("spannung 0xFFFF", 20, 0xFFFF, true);
        row("spannung 0x7FFF", 20, 0x7FFF, false);
        row("SOLL_VOLUMENSTROM 0x8000", 36, 0x8000, true);
        row("SOLL_VOLUMENSTROM 0x7FFF", 36, 0x7FFF, false);
    }
    void live_overflow_per_field() {
        const auto [position, raw, overflows] = Table<int, int, bool>::fetch();
        Harness h;
        device::DeviceRecord& d = h.ctx.device;
        d.VOLUMENSTROM = d.druck = d.KOMPRESSORTEMP = d.spannung = d.SOLL_VOLUMENSTROM = -1;
        d.ventile = d.alarme2 = 99;
        h.clock.advance_ms(5000);
        const float answered = d.last_answer_time;
        Live live;
        live.ticks(500).at(8, 91).be16(10, 160).be16(12, 900).be16(18, 45).be16(20, 820);
        live.at(22, 5).at(35, 4).be16(36, 200).be16(position, raw);
        dispatch_response(h.ctx, live.p);

        const double scale = position == 20 ? 24.0 / 820.0 : 0.0125;
        const auto fresh = [&](int pos, double normal) {
            return pos == position ? raw * scale : normal;
        };
        // position, value, as read, as before
        const std::array<double, 4> fields[] = {{2, double(d.device_ticks), 500, 0},
                                                {8, d.O2, 91, 0},
                                                {10, d.VOLUMENSTROM, fresh(10, 2.0), -1},
                                                {12, d.druck, 900, -1},
                                                {18, d.KOMPRESSORTEMP, 45, -1},
                                                {20, d.spannung, fresh(20, 24.0), -1},
                                                {22, double(d.ventile), 5, 99},
                                                {35, double(d.alarme2), 4, 99},
                                                {36, d.SOLL_VOLUMENSTROM, fresh(36, 2.5), -1}};
        for (const auto& [at, value, read, before] : fields) {
            const bool written = !overflows || at < position;
            QVERIFY2(qFuzzyCompare(1 + value, 1 + (written ? read : before)),
                     qPrintable(QStringLiteral("field at %1: %2").arg(at).arg(value)));
        }
        QCOMPARE(d.live_valid, !overflows);
        QCOMPARE(h.ui.record_changes, overflows ? 0 : 1);
        QCOMPARE(d.last_answer_time == answered, overflows);
    }

    // The remaining time is a plain unsigned 16-bit count.
    void remaining_time_is_unsigned_data() {
        const Table<int, int, QString> row;
        row("300", 0x01, 0x2C, "300");
        row("high byte 128", 0x80, 0x01, "32769");
        row("all ones", 0xFF, 0xFF, "65535");
    }
    void remaining_time_is_unsigned() {
        const auto [high, low, text] = Table<int, int, QString>::fetch();
        Harness h;
        dispatch_response(h.ctx, bytes_of({'S', high, low}));
        QCOMPARE(h.ctx.device.rest_text, text);
        QCOMPARE(h.ui.record_changes, 1);
    }

    // Memory answers at the edges of the status area: the first record, the
    // last slot asked for, the one past it that a device may still send, and
    // beyond.
    void status_area_edges_data() {
        const Table<int, int, QList<QByteArray>, bool> row;
        row("0x100: record 1", 0x100, 1, {protocol::cmd::read_status_record(2)}, false);
        row("0x116: record 2", 0x116, 2, {protocol::cmd::read_status_record(3)}, false);
        row("0x3AA: record 32, the last asked for", 0x3AA, 32, {}, true);
        row("0x3C0: record 33", 0x3C0, 33, {}, true);
        row("0x3C1: outside", 0x3C1, 0, {}, false);
        row("0x0FF: outside", 0x0FF, 0, {}, false);
    }
    void status_area_edges() {
        const auto [address, records, queued, completed] =
            Table<int, int, QList<QByteArray>, bool>::fetch();
        Harness h;
        int completions = 0;
        h.ctx.hooks.status_readout_complete = [&] { ++completions; };
        const QByteArray data(22, '\x21');
        dispatch_response(h.ctx, bytes_of({'e', address >> 8, address & 0xFF, 22}) + data);
        QCOMPARE(h.ctx.status.record_count(), records);
        if (records > 0)
            QCOMPARE(h.ctx.status.records[std::size_t(records)], data);
        QCOMPARE(testing::queued(h.ctx), queued);
        QCOMPARE(completions, completed ? 1 : 0);
        QCOMPARE(h.ui.record_changes, 1);
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
    // family trips, one decimal digit each: O22 source, alarm at 47, valve
    // layout, special model.
    void identity_data() {
        const Table<QByteArray, QString, int> row;
        row("5121", "5121", "512", 0);
        row("7012", "7012", "701", 1000);
        row("701: 70 maps to 50", "701", "50", 0);
        row("711: 71 maps to 51", "711", "51", 0);
        row("7E", "7E1", "7E", 1110);
        row("7C", "7C2", "7C", 1100);
        row("66", "661", "66", 1000);
        row("AA", "AA3", "AA", 1110);
        row("8D", "8D0", "8D", 1100);
        row("A8", "A81", "A8", 1110);
        row("A9", "A92", "A9", 1110);
        row("A7: below the A8..A9 range", "A71", "A7", 1000);
        row("56", "561", "56", 1000);
        row("55", "551", "55", 0);
        row("628", "628", "62", 1);
        row("748x", "7480", "748", 1001);
    }
    void identity() {
        const auto [sw, family, flags] = Table<QByteArray, QString, int>::fetch();
        Harness h;
        h.identity(sw);
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE(d.SW, QString::fromLatin1(sw));
        QCOMPARE(d.sw_num, d.SW.chopped(1));
        QCOMPARE(d.family_code, family);
        QCOMPARE(d.o22_source * 1000 + d.alarm_at_47 * 100 + d.valve_layout * 10 + d.special_model,
                 flags);
    }

    void memory_texts_and_operating_hours() {
        Harness h;
        h.ctx.device.BSTD = "999999:99 old";
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x80, 7, 4, 3, 2, 1, 0, 0, 5}));
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xF0, 12}) + "SN-000123   ");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xE0, 12}) + "12344");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x40, 3}) + "abc");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0x58, 2}) + "de");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xD0, 4}) + "H512");
        dispatch_response(h.ctx, bytes_of({'e', 0x00, 0xC0, 1}) + "z"); // no field there
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE((QStringList{d.BSTD, d.SN, d.LP, d.text_40, d.text_58, d.text_d0}),
                 (QStringList{"001234:50", "SN-000123   ", "12344", "abc", "de", "H512"}));
        QCOMPARE(h.ui.record_changes, 7);
    }

    void timing_index_limit_data() {
        const Table<QByteArray, int, bool, bool> row; // sw, index, stored, ended normally
        row("family 50 index 3", "501", 3, true, true);
        row("family 50 index 8 ignored", "501", 8, false, true);
        row("family 21 index 8", "211", 8, true, true);
        row("family 21 index 13", "211", 13, true, true);
        row("family 21 index 14 out of range", "211", 14, false, false);
        row("family 50 index 14 not looked at", "501", 14, false, true);
    }
    void timing_index_limit() {
        const auto [sw, index, stored, ended_normally] =
            Table<QByteArray, int, bool, bool>::fetch();
        Harness h;
        h.identity(sw);
        const int changes = h.ui.record_changes;
        dispatch_response(h.ctx, bytes_of({'r', 0x30 + index, 42}));
        if (index <= 13)
            QCOMPARE(h.ctx.device.zeiten[std::size_t(index)] == 42, stored);
        QCOMPARE(h.ui.record_changes == changes + 1, ended_normally);
    }

    void device_clock_data() {
        const Table<QByteArray, QDateTime> row;
        const QDateTime epoch(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
        row("zero", bytes_of({'T', 0, 0, 0, 0}), epoch);
        row("one day and ten seconds", bytes_of({'T', 0, 0x01, 0x51, 0x8A}), epoch.addSecs(86410));
        row("high byte 0x80", bytes_of({'T', 0x80, 1, 2, 3}), epoch);
        row("high byte 127", bytes_of({'T', 127, 1, 2, 3}), epoch);
        row("2026", bytes_of({'T', 0x31, 0x37, 0x4B, 0xC0}), epoch.addSecs(0x31374BC0));
    }
    void device_clock() {
        const auto [answer, expected] = Table<QByteArray, QDateTime>::fetch();
        Harness h;
        dispatch_response(h.ctx, answer);
        QCOMPARE(h.ctx.device.geraetezeit, expected);
    }

    // A short answer ends its interpretation half-way; an unknown letter
    // still ends normally; then the one-byte answers, the information text
    // and the compliance answers, which go to their hook.
    void other_answers() {
        Harness h;
        dispatch_response(h.ctx, bytes_of({'I', 0x01, 0x02}));
        QCOMPARE(h.ctx.device.device_ticks, 0x0102);
        QVERIFY(!h.ctx.device.live_valid);
        QCOMPARE(h.ui.record_changes, 0);
        h.ctx.protocol.retry_count = 2;
        h.clock.advance_ms(3000);
        dispatch_response(h.ctx, QByteArray("w"));
        QCOMPARE(h.ui.record_changes, 1);
        QCOMPARE(h.ctx.protocol.retry_count, 0);
        QCOMPARE(h.ctx.device.last_answer_time, seconds_since_midnight(h.clock.now()));

        for (const QByteArray& answer : {bytes_of({'O', 3}), bytes_of({'U', 4}), bytes_of({'X', 2}),
                                         QByteArray("!V2.3 build 7")})
            dispatch_response(h.ctx, answer);
        const device::DeviceRecord& d = h.ctx.device;
        QCOMPARE((QList<int>{d.wert_o, d.wert_u, d.wert_x, d.info_valid}),
                 (QList<int>{3, 4, 2, 1}));
        dispatch_response(h.ctx, QByteArray("!-"));
        QVERIFY(!h.ctx.device.info_valid);

        const int changes = h.ui.record_changes;
        dispatch_response(h.ctx, bytes_of({'K', 0, 3}));
        dispatch_response(h.ctx, bytes_of({'k', 0, 1, 0, 0, 0, 1, 0, 0, 0, 2}));
        QCOMPARE(h.compliance.size(), 2);
        QCOMPARE(h.compliance.at(0), bytes_of({'K', 0, 3}));
        QCOMPARE(h.ui.record_changes, changes + 2);
        // An overflow reported by the hook ends that answer like our own.
        h.ctx.hooks.compliance_answer = [](const QByteArray&) {
            throw protocol::InterpretError("overflow");
        };
        dispatch_response(h.ctx, bytes_of({'K', 0x80, 0}));
        QCOMPARE(h.ui.record_changes, changes + 2);
    }
};

QTEST_GUILESS_MAIN(TestInterpreter)
#include "test_interpreter.moc"
