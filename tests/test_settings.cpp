// The settings of the "Gerät" page against the simulated concentrator: what the
// input boxes accept, the bytes of every write with its read-back, the device's
// answer replacing the record, and the guards that keep anything from being sent.

#include "device/settings.h"
#include "protocol/commands.h"
#include "settings_harness.h"
#include "sim_helpers.h"
#include "test_bytes.h"

#include <QTest>

#include <functional>

using namespace veltrako;
using namespace veltrako::testing;

using Action = std::function<void(Connected&)>;
Q_DECLARE_METATYPE(Action)

namespace {

QByteArray e_read(int address, int count) {
    return bytes_of({'e', address >> 8, address & 0xFF, count});
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT
private slots:
    void hours_entries_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QByteArray>("block"); // empty: refused
        // Digits reversed, tens of minutes, CRC (start 0x5555) low byte first.
        QTest::newRow("001234:5") << "001234:5" << bytes_of({4, 3, 2, 1, 0, 0, 5, 0x11, 0xCD});
        QTest::newRow("000000:0") << "000000:0" << bytes_of({0, 0, 0, 0, 0, 0, 0, 0xA5, 0xA0});
        QTest::newRow("999999:5") << "999999:5" << bytes_of({9, 9, 9, 9, 9, 9, 5, 0x2C, 0xEC});
        QTest::newRow("tens of minutes 6") << "001234:6" << QByteArray();
        QTest::newRow("seven characters") << "01234:5" << QByteArray();
        QTest::newRow("nine characters") << "0012345:5" << QByteArray();
        QTest::newRow("letter among the hours") << "00123a:5" << QByteArray();
        QTest::newRow("point for the colon") << "001234.5" << QByteArray();
        QTest::newRow("colon at the end") << "0012345:" << QByteArray();
        QTest::newRow("blank in front") << " 01234:5" << QByteArray();
        QTest::newRow("full-width digits") << QString::fromUtf8("００1234:5") << QByteArray();
    }
    void hours_entries() {
        QFETCH(QString, entry);
        QFETCH(QByteArray, block);
        const auto parsed = device::parse_hours_entry(entry);
        QCOMPARE(parsed.has_value(), !block.isEmpty());
        if (parsed)
            QCOMPARE(device::hours_block(*parsed).toHex(' '), block.toHex(' '));
    }

    void remaining_entries_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("value"); // -1: refused
        QTest::newRow("0") << "0" << 0;
        QTest::newRow("999") << "999" << 999;
        QTest::newRow("blanks around") << " 42 " << 42;
        QTest::newRow("leading zeros") << "007" << 7;
        QTest::newRow("1000") << "1000" << -1;
        QTest::newRow("-1") << "-1" << -1;
        QTest::newRow("abc") << "abc" << -1;
        QTest::newRow("fraction") << "12.5" << -1;
    }
    void remaining_entries() {
        QFETCH(QString, entry);
        QFETCH(int, value);
        const auto parsed = device::parse_remaining_entry(entry);
        QCOMPARE(parsed ? int(*parsed) : -1, value);
    }

    // The input boxes ask again after a bad entry and stop at an empty one.
    void input_boxes_data() {
        QTest::addColumn<bool>("hours");
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QList<QByteArray>>("sent");
        const QByteArray block = bytes_of({4, 3, 2, 1, 0, 0, 5, 0x11, 0xCD});
        const QList<QByteArray> hours_writes{bytes_of({'E', 0x00, 0x80, 9}) + block,
                                             bytes_of({'E', 0x00, 0x90, 9}) + block};
        QTest::newRow("hours after two bad entries")
            << true << QStringList{"1234:5", "001234:9", "001234:5"} << 3
            << QStringList{"text111", "text111", "text112"} << hours_writes;
        QTest::newRow("hours cancelled")
            << true << QStringList{"1234:5"} << 2 << QStringList{"text111"} << QList<QByteArray>{};
        QTest::newRow("hours left empty")
            << true << QStringList{""} << 1 << QStringList{} << QList<QByteArray>{};
        QTest::newRow("remaining time after bad entries")
            << false << QStringList{"1000", "-1", "abc", "250"} << 4 << QStringList{"text114"}
            << QList<QByteArray>{bytes_of({'s', 0x00, 0xFA}), "S"};
        QTest::newRow("remaining time cancelled")
            << false << QStringList{"1000"} << 2 << QStringList{} << QList<QByteArray>{};
    }
    void input_boxes() {
        QFETCH(bool, hours);
        QFETCH(QStringList, answers);
        QFETCH(int, questions);
        QFETCH(QStringList, messages);
        QFETCH(QList<QByteArray>, sent);
        Connected c;
        c.ui.input_answers = answers;
        const bool written =
            hours ? device::cmd_setbstd_Click(*c.ctx) : device::cmd_Restzeit_Click(*c.ctx);
        QCOMPARE(written, !sent.isEmpty());
        QCOMPARE(c.ui.questions.size(), questions);
        QCOMPARE(c.ui.questions.first(), hours ? QString("text110") : QString("text113"));
        QCOMPARE(c.ui.messages, messages);
        QCOMPARE(c.queued(), sent);
    }

    // Each setting's write and read-back, byte for byte, and the value the
    // device reports afterwards in the record.
    void writes_and_read_backs_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QList<QByteArray>>("sent");
        QTest::addColumn<Action>("check");
        const auto row = [](const char* name, Action act, QList<QByteArray> sent, Action check) {
            QTest::newRow(name) << act << sent << check;
        };
        row(
            "serial number padded to 12",
            [](Connected& c) { device::cmd_setsn_Click(*c.ctx, "VO2-77"); },
            {bytes_of({'E', 0x00, 0xF0, 12}) + "VO2-77      ", e_read(0xF0, 12)},
            [](Connected& c) { QCOMPARE(c.ctx->device.SN, QString("VO2-77      ")); });
        row(
            "serial number cut to 12",
            [](Connected& c) { device::cmd_setsn_Click(*c.ctx, "ABCDEFGHIJKLMN"); },
            {bytes_of({'E', 0x00, 0xF0, 12}) + "ABCDEFGHIJKL", e_read(0xF0, 12)},
            [](Connected& c) { QCOMPARE(c.ctx->device.SN, QString("ABCDEFGHIJKL")); });
        row(
            "hours reset", [](Connected& c) { device::cmd_resetbstd_Click(*c.ctx); },
            {"C", e_read(0x80, 7)},
            [](Connected& c) { QCOMPARE(c.ctx->device.BSTD, QString("000000:00")); });
        row(
            "hours set",
            [](Connected& c) {
                c.ui.input_answers = {"004321:2"};
                device::cmd_setbstd_Click(*c.ctx);
                // The periodic read of 0x0080 brings the new value.
                c.ctx->protocol.tick_count = 400 * 3 + 10;
            },
            {bytes_of({'E', 0x00, 0x80, 9, 1, 2, 3, 4, 0, 0, 2, 0xE5, 0x97}),
             bytes_of({'E', 0x00, 0x90, 9, 1, 2, 3, 4, 0, 0, 2, 0xE5, 0x97})},
            [](Connected& c) { QCOMPARE(c.ctx->device.BSTD, QString("004321:20")); });
        row(
            "low power 4 to 5", [](Connected& c) { device::cmd_togglelp_Click(*c.ctx); },
            {bytes_of({'E', 0x00, 0xE4, 1, '5'}), e_read(0xE0, 12)},
            [](Connected& c) { QCOMPARE(c.ctx->device.LP, QString("LP1250010077")); });
        row(
            "flow selector U", [](Connected& c) { device::cb_vs_Click(*c.ctx, 0, 7, false); },
            {bytes_of({'u', 7}), "U"}, [](Connected& c) { QCOMPARE(c.ctx->device.wert_u, 7); });
        row(
            "flow selector O", [](Connected& c) { device::cb_vs_Click(*c.ctx, 1, 255, false); },
            {bytes_of({'o', 255}), "O"}, [](Connected& c) { QCOMPARE(c.ctx->device.wert_o, 255); });
        // The device starts with 1 (temperature alarm sounds).
        row(
            "acoustic O21 on",
            [](Connected& c) { device::pic_akust_Click(*c.ctx, device::AcousticAlarm::o21); },
            {bytes_of({'x', 3}), "X"}, [](Connected& c) { QCOMPARE(c.ctx->device.wert_x, 3); });
        row(
            "acoustic flow-low off again",
            [](Connected& c) {
                c.ctx->device.wert_x = 0x09;
                device::pic_akust_Click(*c.ctx, device::AcousticAlarm::vollo);
            },
            {bytes_of({'x', 1}), "X"}, [](Connected& c) { QCOMPARE(c.ctx->device.wert_x, 1); });
    }
    void writes_and_read_backs() {
        QFETCH(Action, action);
        QFETCH(QList<QByteArray>, sent);
        QFETCH(Action, check);
        Connected c;
        action(c);
        QCOMPARE(c.queued(), sent);
        c.settle();
        check(c);
    }

    // The PC's present time goes to the device (its own clock stood at
    // 2026-03-02 09:30 at power-on) and comes back from it.
    void clock_takes_the_pc_time() {
        Connected c;
        const QDateTime now = c.clock.now();
        const QDateTime whole = QDateTime::fromSecsSinceEpoch(now.toSecsSinceEpoch(), Qt::UTC);
        device::cmd_setdatetime_Click(*c.ctx);
        QCOMPARE(c.ctx->device.geraetezeit, now);
        const quint32 s = device_seconds(whole.date(), whole.time());
        QCOMPARE(c.queued(), (QList<QByteArray>{bytes_of({'t', int(s >> 24), int(s >> 16 & 0xFF),
                                                          int(s >> 8 & 0xFF), int(s & 0xFF)}),
                                                "T"}));
        c.settle();
        // The device clock runs on while the answers go to and fro.
        const qint64 ahead = whole.secsTo(c.ctx->device.geraetezeit);
        QVERIFY2(ahead >= 0 && ahead <= 2, qPrintable(QString::number(ahead)));
    }

    // A value changed before the write shows until the device answers.
    void record_is_provisional_until_the_read_back() {
        Connected c;
        device::cmd_setsn_Click(*c.ctx, "TYPED");
        QCOMPARE(c.ctx->device.SN, QString("TYPED"));
        c.ui.input_answers = {"12"};
        device::cmd_Restzeit_Click(*c.ctx);
        QCOMPARE(c.ctx->device.rest_text, QString());
        c.settle();
        QCOMPARE(c.ctx->device.SN, QString("TYPED       "));
        QCOMPARE(c.ctx->device.rest_text, QString("12"));
    }

    // Nothing goes out for a programmatic change, without live data, or for
    // a board without the low-power mode.
    void guards_send_nothing_data() {
        QTest::addColumn<Action>("action");
        const auto row = [](const char* name, Action act) { QTest::newRow(name) << act; };
        row("locked flow selector",
            [](Connected& c) { QVERIFY(!device::cb_vs_Click(*c.ctx, 0, 9, true)); });
        row("board without low power", [](Connected& c) {
            c.ctx->device.LP = "LP1260010077";
            QVERIFY(!device::cmd_togglelp_Click(*c.ctx));
        });
        row("low power without live data", [](Connected& c) {
            c.ctx->device.live_valid = false;
            QVERIFY(!device::cmd_togglelp_Click(*c.ctx));
        });
        row("hours without live data", [](Connected& c) {
            c.ctx->device.live_valid = false;
            c.ui.input_answers = {"001234:5"};
            QVERIFY(!device::cmd_setbstd_Click(*c.ctx));
            QVERIFY(c.ui.questions.isEmpty());
        });
    }
    void guards_send_nothing() {
        QFETCH(Action, action);
        Connected c;
        action(c);
        QVERIFY(c.queued().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
