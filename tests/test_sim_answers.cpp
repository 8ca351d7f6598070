// The simulated concentrator's answer to every command, at the positions the
// program reads, over each route a test or the program can use: frames handed
// to the device directly, and the in-process link with and without wire timing.

#include "link/sim_link.h"
#include "manual_clock.h"
#include "sim_helpers.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QByteArray device_text = R"(
SW=5121
INFO=Info text
SN=SN-1
LP=LP1240
HARDWARE_ID=AE61
TEXT_40=forty
TEXT_58=fifty8
HOURS=1234:50
CLOCK=2026-03-02 10:00:00
REMAINING=321
TIMINGS=100 144 144 27 134 27 134 7 8 9 10 11 12 13
FLOW_SELECTOR_U=4
FLOW_SELECTOR_O=10
ACOUSTIC_ALARM=2
NOISE=off
COMPLIANCE_RECORD=2026-02-01 08:00:00 / 2026-02-01 20:30:00
COMPLIANCE_RECORD=-
)";

enum class Route { direct, link_instant, link_realistic };

// Sends each request in turn, one second after power-on, waiting 30 ms after
// each, and returns the answers that came back to each.
QList<QList<QByteArray>> exchange(Route route, const QList<QByteArray>& requests) {
    const sim::Scenario scenario = scenario_from(device_text);
    QList<QList<QByteArray>> answers;
    if (route == Route::direct) {
        DirectDevice d(scenario);
        for (const QByteArray& r : requests)
            answers << d.ask(r, 30);
        return answers;
    }
    ManualClock clock;
    auto device = std::make_shared<sim::Concentrator>(scenario);
    link::SimLink link(clock, device,
                       route == Route::link_instant ? link::SimLink::WireTiming::instant
                                                    : link::SimLink::WireTiming::realistic);
    link::FtHandle h = 0;
    if (link.open(0, h) != link::FT_OK || link.set_baud_rate(h, 115200) != link::FT_OK ||
        link.set_data_characteristics(h, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                      link::FT_PARITY_NONE) != link::FT_OK)
        qFatal("the simulated link does not open");
    clock.advance_ms(1000);
    for (const QByteArray& r : requests) {
        std::uint32_t written = 0;
        link.write(h, protocol::build_frame(r), written);
        clock.advance_ms(30);
        std::uint32_t waiting = 0;
        link.get_queue_status(h, waiting);
        QByteArray buffer;
        std::uint32_t got = 0;
        link.read(h, buffer, waiting, got);
        answers << frame_payloads(buffer.left(got));
    }
    return answers;
}

QByteArray be32(qint64 v) {
    return bytes_of({int(v >> 24) & 0xFF, int(v >> 16) & 0xFF, int(v >> 8) & 0xFF, int(v) & 0xFF});
}

qint64 seconds_of(QDate d, QTime t) {
    return QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).secsTo(QDateTime(d, t, Qt::UTC));
}

const QList<std::pair<const char*, Route>> routes = {{"direct", Route::direct},
                                                     {"link instant", Route::link_instant},
                                                     {"link realistic", Route::link_realistic}};

} // namespace

class TestSimAnswers : public QObject {
    Q_OBJECT
private slots:
    void reading_commands_data() {
        QTest::addColumn<int>("route");
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("answer");
        const qint64 clock_now = seconds_of({2026, 3, 2}, {10, 0, 1});
        const QList<std::pair<const char*, std::pair<QByteArray, QByteArray>>> rows = {
            {"?", {"?", "?5121"}},
            {"!", {"!", "!Info text"}},
            {"T", {"T", "T" + be32(clock_now)}},
            {"S", {"S", bytes_of({'S', 0x01, 0x41})}},
            {"e hours",
             {bytes_of({'e', 0x00, 0x80, 7}), bytes_of({'e', 0x00, 0x80, 7, 4, 3, 2, 1, 0, 0, 5})}},
            {"e serial",
             {bytes_of({'e', 0x00, 0xF0, 12}), bytes_of({'e', 0x00, 0xF0, 12}) + "SN-1        "}},
            {"e board",
             {bytes_of({'e', 0x00, 0xE0, 12}), bytes_of({'e', 0x00, 0xE0, 12}) + "LP1240      "}},
            {"e hardware id",
             {bytes_of({'e', 0x00, 0xD0, 4}), bytes_of({'e', 0x00, 0xD0, 4}) + "AE61"}},
            {"e text 40",
             {bytes_of({'e', 0x00, 0x40, 22}),
              bytes_of({'e', 0x00, 0x40, 22}) + "forty" + QByteArray(17, ' ')}},
            {"e text 58",
             {bytes_of({'e', 0x00, 0x58, 8}), bytes_of({'e', 0x00, 0x58, 8}) + "fifty8  "}},
            {"e past the end",
             {bytes_of({'e', 0x03, 0xFE, 4}),
              bytes_of({'e', 0x03, 0xFE, 4, 0xFF, 0xFF, 0xFF, 0xFF})}},
            {"e nothing", {bytes_of({'e', 0x00, 0x40, 0}), bytes_of({'e', 0x00, 0x40, 0})}},
            {"r 0", {"r0", bytes_of({'r', '0', 100})}},
            {"r 13", {"r=", bytes_of({'r', '=', 13})}},
            {"U", {"U", bytes_of({'U', 4})}},
            {"O", {"O", bytes_of({'O', 10})}},
            {"X", {"X", bytes_of({'X', 2})}},
            {"K", {"K", bytes_of({'K', 0, 2})}},
            {"k 0",
             {bytes_of({'k', 0, 0}), bytes_of({'k', 0, 0}) +
                                         be32(seconds_of({2026, 2, 1}, {8, 0})) +
                                         be32(seconds_of({2026, 2, 1}, {20, 30}))}},
            {"k erased", {bytes_of({'k', 0, 1}), bytes_of({'k', 0, 1}) + QByteArray(8, '\xFF')}},
            {"k running",
             {bytes_of({'k', 0, 2}),
              bytes_of({'k', 0, 2}) + be32(seconds_of({2026, 3, 2}, {10, 0})) + be32(clock_now)}},
            // writes are acknowledged with their letter alone
            {"t", {bytes_of({'t', 0, 0, 0, 10}), "t"}},
            {"s", {bytes_of({'s', 0, 10}), "s"}},
            {"E", {bytes_of({'E', 0x00, 0xF0, 1, 'X'}), "E"}},
            {"w", {bytes_of({'w', '3', 9}), "w"}},
            {"u", {bytes_of({'u', 1}), "u"}},
            {"o", {bytes_of({'o', 1}), "o"}},
            {"x", {bytes_of({'x', 1}), "x"}},
            {"C", {"C", "C"}},
            {"Z", {"Z", "Z"}},
            // not answered
            {"b", {"b", QByteArray()}},
            {"unknown letter", {"Q", QByteArray()}},
            {"r index 14", {"r>", QByteArray()}},
            {"? with a tail", {"?x", QByteArray()}},
            {"e too long for a frame", {bytes_of({'e', 0x01, 0x00, 97}), QByteArray()}},
            {"E count mismatch", {bytes_of({'E', 0x00, 0xF0, 2, 'X'}), QByteArray()}},
            {"t short", {bytes_of({'t', 0, 0, 10}), QByteArray()}},
        };
        for (const auto& [route_name, route] : routes)
            for (const auto& [name, io] : rows)
                QTest::addRow("%s %s", route_name, name) << int(route) << io.first << io.second;
    }
    void reading_commands() {
        QFETCH(int, route);
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, answer);
        const QList<QByteArray> got = exchange(Route(route), {request}).first();
        if (answer.isEmpty()) {
            QVERIFY2(got.isEmpty(), qPrintable(got.value(0).toHex(' ')));
        } else {
            QCOMPARE(got.size(), 1);
            QCOMPARE(got.first().toHex(' '), answer.toHex(' '));
        }
    }

    // A write changes what the matching read answers.
    void writes_show_in_the_read_back_data() {
        QTest::addColumn<int>("route");
        QTest::addColumn<QByteArray>("write");
        QTest::addColumn<QByteArray>("read");
        QTest::addColumn<QByteArray>("answer");
        const QList<std::tuple<const char*, QByteArray, QByteArray, QByteArray>> rows = {
            {"clock", bytes_of({'t', 0x12, 0x34, 0x56, 0x78}), "T",
             bytes_of({'T', 0x12, 0x34, 0x56, 0x78})},
            {"remaining", bytes_of({'s', 0x01, 0x02}), "S", bytes_of({'S', 0x01, 0x02})},
            {"serial", bytes_of({'E', 0x00, 0xF0, 12}) + "NEW-SN-12345",
             bytes_of({'e', 0x00, 0xF0, 12}), bytes_of({'e', 0x00, 0xF0, 12}) + "NEW-SN-12345"},
            {"low power", bytes_of({'E', 0x00, 0xE4, 1, '5'}), bytes_of({'e', 0x00, 0xE0, 12}),
             bytes_of({'e', 0x00, 0xE0, 12}) + "LP1250      "},
            {"timing", bytes_of({'w', '3', 99}), "r3", bytes_of({'r', '3', 99})},
            {"timing 13", bytes_of({'w', '=', 200}), "r=", bytes_of({'r', '=', 200})},
            {"flow selector u", bytes_of({'u', 7}), "U", bytes_of({'U', 7})},
            {"flow selector o", bytes_of({'o', 9}), "O", bytes_of({'O', 9})},
            {"acoustic alarm", bytes_of({'x', 0}), "X", bytes_of({'X', 0})},
            {"hours reset", "C", bytes_of({'e', 0x00, 0x80, 7}),
             bytes_of({'e', 0x00, 0x80, 7, 0, 0, 0, 0, 0, 0, 0})},
            {"compliance erase", "Z", "K", bytes_of({'K', 0, 0})},
        };
        for (const auto& [route_name, route] : routes)
            for (const auto& [name, write, read, answer] : rows)
                QTest::addRow("%s %s", route_name, name) << int(route) << write << read << answer;
    }
    void writes_show_in_the_read_back() {
        QFETCH(int, route);
        QFETCH(QByteArray, write);
        QFETCH(QByteArray, read);
        QFETCH(QByteArray, answer);
        const auto got = exchange(Route(route), {write, read});
        QCOMPARE(got.at(0), (QList<QByteArray>{write.left(1)}));
        QCOMPARE(got.at(1).size(), 1);
        QCOMPARE(got.at(1).first().toHex(' '), answer.toHex(' '));
    }

    // Several commands in one write, and one command in single bytes, are
    // answered in order.
    void any_chunking_of_the_commands() {
        DirectDevice d(scenario_from(device_text));
        const QByteArray three =
            protocol::build_frame("?") + protocol::build_frame("U") + protocol::build_frame("X");
        QCOMPARE(frame_payloads(d.send_raw(three)),
                 (QList<QByteArray>{"?5121", bytes_of({'U', 4}), bytes_of({'X', 2})}));
        QByteArray out;
        for (char c : protocol::build_frame("O"))
            out += d.send_raw(QByteArray(1, c), 1);
        out += d.send_raw({}, 10);
        QCOMPARE(frame_payloads(out), (QList<QByteArray>{bytes_of({'O', 10})}));
        // Noise and a damaged frame in front do not keep the next command from its answer.
        QByteArray damaged = protocol::build_frame("S");
        damaged[damaged.size() - 1] = static_cast<char>(damaged.at(damaged.size() - 1) ^ 1);
        QCOMPARE(frame_payloads(d.send_raw("\x00zz" + damaged + protocol::build_frame("?"))),
                 (QList<QByteArray>{"?5121"}));
    }

    // The answer is due a short processing time after the command arrived,
    // and no earlier.
    void answers_come_after_a_processing_time() {
        sim::Concentrator device(scenario_from(device_text));
        QCOMPARE(device.next_transmit_ms(), link::SimPeer::nothing_pending);
        device.receive(protocol::build_frame("?"), 500);
        const qint64 due = device.next_transmit_ms();
        QVERIFY(due > 500 && due <= 510);
        QVERIFY(device.transmit(due - 1).isEmpty());
        QCOMPARE(frame_payloads(device.transmit(due)), (QList<QByteArray>{"?5121"}));
        QCOMPARE(device.next_transmit_ms(), link::SimPeer::nothing_pending);
    }

    // With wire timing the 51 bytes of a live status frame take about 4.4 ms
    // on the wire at 115200 baud, after the command's own 0.5 ms and the
    // device's processing time.
    void realistic_wire_timing_delivers_the_live_status_in_pieces() {
        ManualClock clock;
        auto device = std::make_shared<sim::Concentrator>(scenario_from(device_text));
        link::SimLink link(clock, device, link::SimLink::WireTiming::realistic);
        link::FtHandle h = 0;
        QCOMPARE(link.open(0, h), link::FT_OK);
        link.set_baud_rate(h, 115200);
        link.set_data_characteristics(h, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                      link::FT_PARITY_NONE);
        std::uint32_t n = 0;
        link.write(h, protocol::build_frame("I"), n);
        clock.advance_ms(5);
        link.get_queue_status(h, n);
        QVERIFY2(n > 0 && n < 51, qPrintable(QString::number(n)));
        clock.advance_ms(10);
        link.get_queue_status(h, n);
        QCOMPARE(n, 51u);
    }
};

QTEST_GUILESS_MAIN(TestSimAnswers)
#include "test_sim_answers.moc"
