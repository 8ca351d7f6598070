// Frames on the wire: the checksum, the sender and the receiver's
// resynchronisation after damaged input.

#include "protocol/crc.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"
#include "protocol/hex.h"

#include "fake_link_context.h"
#include "protocol_harness.h"

using namespace veltrako;
using namespace veltrako::testing;

namespace {

struct Harness : FakeLinkContext {
    QList<QByteArray> payloads;
    Harness() {
        ctx.payload_handler = [this](const QByteArray& p) { payloads << p; };
    }
};

} // namespace

class TestFrames : public QObject {
    Q_OBJECT
private slots:
    // Every entry of the table against the polynomial worked bit by bit.
    void crc_table_is_the_standard_one() {
        for (int i = 0; i < 256; ++i) {
            auto reg = static_cast<std::uint16_t>(i << 8);
            for (int bit = 0; bit < 8; ++bit)
                reg = static_cast<std::uint16_t>(reg & 0x8000 ? (reg << 1) ^ 0x1021 : reg << 1);
            QVERIFY2(protocol::crc_table[std::size_t(i)] == reg, qPrintable(QString::number(i)));
        }
    }

    // Sent (logged but not written while no device is open), then received
    // back: the frame is shown and the wait for an answer ends.
    void frames_on_the_wire_data() {
        const Table<QByteArray, QByteArray> row; // payload, bytes on the wire
        row("I", "I", bytes_of({0x23, 0x31, 0x49, 0x14, 0x53}));
        row("four-byte payload", bytes_of({0x65, 0x00, 0x10, 0x04}),
            bytes_of({0x23, 0x34, 0x65, 0x00, 0x10, 0x04, 0xDC, 0x93}));
    }
    void frames_on_the_wire() {
        const auto [payload, wire] = Table<QByteArray, QByteArray>::fetch();
        QCOMPARE(protocol::build_frame(payload), wire);
        Harness h;
        QCOMPARE(protocol::send_frame(h.ctx, payload), protocol::send_no_device);
        QVERIFY(h.link->written.isEmpty() && h.ctx.comm_log.comm_log.startsWith("OUT "));
        h.ctx.link.device_handle = 7;
        QCOMPARE(protocol::send_frame(h.ctx, payload), link::FT_OK);
        QCOMPARE(h.link->written, wire);
        QVERIFY(h.ctx.comm_log.comm_log.contains(protocol::hex_dump(payload) + "\r\n"));

        h.ctx.protocol.waiting_reply = true;
        protocol::parse_frames(h.ctx, wire);
        QCOMPARE(h.payloads, QList<QByteArray>{payload});
        QVERIFY(!h.ctx.protocol.waiting_reply && h.ctx.protocol.rx_buffer.isEmpty());
        QCOMPARE(h.ui.info_caption, QString::fromLatin1(wire.toHex(' ').toUpper() + ' '));
        QVERIFY(h.ctx.comm_log.comm_log.contains("IN  "));
    }

    // Each row feeds the receiver in chunks and lists the payloads that must
    // come out, and how many reports land on the developer page.
    void parse_data() {
        // chunks fed to the receiver, payloads that come out, reports on the
        // developer page
        const Table<QList<QByteArray>, QList<QByteArray>, QStringList> row;
        const QByteArray i = protocol::build_frame("I");
        const QByteArray s_payload = bytes_of({'S', 0x01, 0x2C});
        const QByteArray s = protocol::build_frame(s_payload);
        row("garbage before #", {QByteArray("xx\x00\xff", 4) + i}, {"I"}, {});
        row("two frames in one read", {i + s}, {"I", s_payload}, {});
        const QByteArray largest(100, 'x');
        row("the largest payload, 100 bytes", {protocol::build_frame(largest)}, {largest}, {});
        row("one frame over two reads", {s.left(3), s.mid(3)}, {s_payload}, {});
        // A length character of "0"+101 is rejected; the "#" of a good frame
        // hidden in the bytes behind it is found.
        row("bad length resynchronises", {bytes_of({'#', 0x30 + 101, 'x'}) + i}, {"I"},
            {":Invalid clen101\r\n"});
        row("length below zero", {bytes_of({'#', 0x2F}) + i}, {"I"}, {":Invalid clen-1\r\n"});
        // A frame whose payload carries a complete valid frame: the outer CRC
        // is broken, so scanning one byte on finds the inner frame.
        QByteArray outer = protocol::build_frame(bytes_of({'e'}) + i);
        outer[outer.size() - 1] = static_cast<char>(outer.at(outer.size() - 1) ^ 0x01);
        // The report names the CRC received and the one computed, as four upper-case digits.
        row("bad CRC resynchronises inside the frame", {outer}, {"I"}, {"Invalid CRCDE33/DE32"});
        const QByteArray empty = protocol::build_frame({});
        row("empty payload alone waits", {empty}, {}, {});
        row("empty payload taken once a byte follows", {empty, "z"}, {QByteArray()}, {});
    }
    void parse() {
        const auto [chunks, expected, reports] =
            Table<QList<QByteArray>, QList<QByteArray>, QStringList>::fetch();
        Harness h;
        for (const QByteArray& c : chunks)
            protocol::parse_frames(h.ctx, c);
        QCOMPARE(h.payloads, expected);
        if (reports.isEmpty())
            QVERIFY2(h.ui.out.isEmpty(), qPrintable(h.ui.out));
        for (const QString& r : reports) {
            QVERIFY2(h.ui.out.endsWith(r), qPrintable(h.ui.out));
            QVERIFY(h.ctx.comm_log.comm_log.contains("ERR "));
        }
    }
};

QTEST_GUILESS_MAIN(TestFrames)
#include "test_frames.moc"
