// The boot loader dialogue: entered by the framed "b", then raw bytes: the
// sync "I", data lines acknowledged with ">" (or refused with "E"), and "R"
// back to the application with the new firmware's identity.

#include "sim_helpers.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// 0x42, N, address, N data bytes, and a checksum making the sum 0 mod 256.
QByteArray data_line(int address, const QByteArray& data, bool good = true) {
    QByteArray line = bytes_of({0x42, int(data.size()), address >> 8, address & 0xFF}) + data;
    int sum = 0;
    for (char c : line)
        sum += static_cast<unsigned char>(c);
    line += static_cast<char>((256 - sum % 256 + (good ? 0 : 1)) % 256);
    return line;
}

struct Loader : DirectDevice {
    explicit Loader(const QByteArray& text = "SW=5121\nSW_AFTER_UPDATE=5122\n")
        : DirectDevice(scenario_from(text)) {
        if (!send_raw(protocol::build_frame("b")).isEmpty() || !device.in_boot_loader())
            qFatal("the device did not enter its boot loader");
    }
};

} // namespace

class TestSimBootLoader : public QObject {
    Q_OBJECT
private slots:
    void sync_answers_with_the_greeting() {
        Loader d;
        QCOMPARE(d.send_raw("I"), QByteArray("ae60000 BL1.3\r\n"));
        // Frames mean nothing to the loader.
        QVERIFY(d.send_raw(protocol::build_frame("?")).isEmpty());
        QVERIFY(d.device.in_boot_loader());
    }

    void lost_sync() {
        Loader d("LOSE_SYNC=on\n");
        const QByteArray answer = d.send_raw("I");
        QVERIFY(!answer.isEmpty());
        QVERIFY(!answer.startsWith("ae60000"));
    }

    void data_lines_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("programmed");
        QTest::newRow("good") << data_line(0x1000, "\x01\x02\x03") << QByteArray(">") << 1;
        QTest::newRow("empty data") << data_line(0x1000, {}) << QByteArray(">") << 1;
        QTest::newRow("bad checksum")
            << data_line(0x1000, "\x01\x02\x03", false) << QByteArray("E") << 0;
        QTest::newRow("two in one write")
            << data_line(0x1000, "ab") + data_line(0x1002, "cd") << QByteArray(">>") << 2;
        QTest::newRow("noise before")
            << "\x00\x13" + data_line(0x2000, "z") << QByteArray(">") << 1;
        QTest::newRow("good, bad, good")
            << data_line(1, "a") + data_line(2, "b", false) + data_line(2, "b") << QByteArray(">E>")
            << 2;
        QTest::newRow("incomplete") << data_line(0x1000, "abc").left(5) << QByteArray() << 0;
    }
    void data_lines() {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, answer);
        QFETCH(int, programmed);
        Loader d;
        QCOMPARE(d.send_raw(bytes), answer);
        QCOMPARE(d.device.boot_loader().lines_this_session(), programmed);
    }

    void a_line_in_single_bytes() {
        Loader d;
        const QByteArray line = data_line(0x0400, QByteArray(64, '\x5A'));
        QByteArray answer;
        for (char c : line)
            answer += d.send_raw(QByteArray(1, c), 1);
        answer += d.send_raw({}, 20);
        QCOMPARE(answer, QByteArray(">"));
        QCOMPARE(d.device.boot_loader().programmed_lines(), QList<QByteArray>{line});
    }

    // Line k is refused on its first attempt, its first two, or always; the
    // lines around it are taken.
    void nak_line_data() {
        QTest::addColumn<int>("attempts");
        QTest::addColumn<QByteArray>("answers");
        QTest::newRow("first attempt") << int(sim::NakAttempts::first) << QByteArray("E>");
        QTest::newRow("first two attempts")
            << int(sim::NakAttempts::first_two) << QByteArray("EE>");
        QTest::newRow("always") << int(sim::NakAttempts::always) << QByteArray("EEE");
    }
    void nak_line() {
        QFETCH(int, attempts);
        QFETCH(QByteArray, answers);
        Loader d;
        sim::Faults f;
        f.nak_line = 2;
        f.nak_attempts = sim::NakAttempts(attempts);
        d.device.set_faults(f);
        QCOMPARE(d.send_raw(data_line(0, "first")), QByteArray(">"));
        QByteArray got;
        for (int attempt = 0; attempt < 3 && !got.endsWith('>'); ++attempt)
            got += d.send_raw(data_line(5, "second"));
        QCOMPARE(got, answers);
        if (answers.endsWith('>'))
            QCOMPARE(d.send_raw(data_line(11, "third")), QByteArray(">"));
    }

    void restart_with_the_new_firmware() {
        Loader d;
        QCOMPARE(d.send_raw("I" + data_line(0, "abc") + data_line(3, "def")),
                 QByteArray("ae60000 BL1.3\r\n>>"));
        QVERIFY(d.send_raw("R").isEmpty());
        QVERIFY(!d.device.in_boot_loader());
        QCOMPARE(d.answer("?"), QByteArray("?5122"));
        QCOMPARE(d.device.boot_loader().programmed_lines(),
                 (QList<QByteArray>{data_line(0, "abc"), data_line(3, "def")}));
        // The application starts from the beginning: ticks from 0.
        const QByteArray live = d.answer("I");
        QVERIFY(static_cast<unsigned char>(live.at(1)) * 256 +
                    static_cast<unsigned char>(live.at(2)) <
                3);
    }

    void restart_without_programming_keeps_the_firmware() {
        Loader d;
        d.send_raw("I");
        // "R" and a command in the same write: the application takes the frame.
        QCOMPARE(frame_payloads(d.send_raw("R" + protocol::build_frame("?"))),
                 (QList<QByteArray>{"?5121"}));
    }

    void silent_loader() {
        Loader d("SILENT=on\n");
        QVERIFY(d.send_raw("I" + data_line(0, "x")).isEmpty());
        QCOMPARE(d.device.boot_loader().lines_this_session(), 1);
    }

    // A line is acknowledged after its flash write, later than a sync answer.
    void line_acknowledged_after_the_flash_write() {
        Loader d;
        d.device.receive(data_line(0, "abc"), d.now);
        QCOMPARE(d.device.next_transmit_ms() - d.now,
                 sim::Concentrator::processing_ms + sim::Concentrator::flash_write_ms);
    }
};

QTEST_GUILESS_MAIN(TestSimBootLoader)
#include "test_sim_boot_loader.moc"
