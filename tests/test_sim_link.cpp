// The in-process link honours the D2XX contract and, with wire timing on,
// takes as long as 115200 baud with 11 bits a byte.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"
#include "scripted_peer.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

struct Harness {
    explicit Harness(link::SimLink::WireTiming timing = link::SimLink::WireTiming::instant) {
        auto backend = std::make_unique<link::SimLink>(clock, peer, timing);
        ctx = std::make_unique<AppContext>(clock, ui, std::move(backend));
    }
    ManualClock clock;
    FakeUserInterface ui;
    std::shared_ptr<ScriptedPeer> peer = std::make_shared<ScriptedPeer>();
    std::unique_ptr<AppContext> ctx;
};

} // namespace

class TestSimLink : public QObject {
    Q_OBJECT
private slots:
    // Wrong line settings reach nobody. Plugged in: one device, and frames
    // there and back at once. Pulled: reads fail with a reason, and there is
    // no device to open.
    void plugged_in_and_pulled() {
        Harness h;
        link::FtHandle handle = 0;
        std::uint32_t written = 0;
        QCOMPARE(h.ctx->link.backend->open(0, handle), link::FT_OK);
        h.ctx->link.backend->set_baud_rate(handle, 9600); // all else right
        h.ctx->link.backend->set_data_characteristics(handle, 8, 2, 0);
        h.ctx->link.backend->write(handle, protocol::build_frame("?"), written);
        QVERIFY(h.peer->received.isEmpty());

        h.peer->answer = [](const QByteArray& p) {
            return p == "?" ? QByteArray("?5121") : QByteArray();
        };
        QVERIFY(link::open_device(*h.ctx, false));
        QVERIFY(h.ui.out.startsWith("Handle:"));
        protocol::send_frame(*h.ctx, "?");
        QCOMPARE(h.peer->received, QList<QByteArray>{"?"});
        QCOMPARE(link::read_raw(*h.ctx), protocol::build_frame("?5121"));

        h.peer->present = false;
        std::uint32_t rx = 99;
        QCOMPARE(h.ctx->link.backend->get_queue_status(h.ctx->link.device_handle, rx),
                 link::FT_IO_ERROR);
        QCOMPARE(rx, 0u);
        QVERIFY(!h.ctx->link.backend->last_error_text().isEmpty());
        QVERIFY(!link::open_device(*h.ctx, true));
        QCOMPARE(h.ctx->link.device_handle, 0u);
    }

    void wire_timing_is_realistic() {
        Harness h(link::SimLink::WireTiming::realistic);
        const QByteArray answer = "I" + QByteArray(46, 'x');
        h.peer->answer = [&](const QByteArray&) { return answer; };
        QVERIFY(link::open_device(*h.ctx, true));
        protocol::send_frame(*h.ctx, "I"); // 5 bytes out, 51 bytes back

        std::uint32_t rx = 0;
        link::DeviceLink& backend = *h.ctx->link.backend;
        backend.get_queue_status(h.ctx->link.device_handle, rx);
        QCOMPARE(rx, 0u);
        h.clock.advance_ms(3);
        backend.get_queue_status(h.ctx->link.device_handle, rx);
        QVERIFY2(rx > 0 && rx < 51, qPrintable(QString::number(rx))); // arriving byte by byte
        // 56 bytes at 11 bits each take 5.35 ms; the device answers on the
        // first whole millisecond after the command is in.
        h.clock.advance_ms(2);
        backend.get_queue_status(h.ctx->link.device_handle, rx);
        QVERIFY(rx < 51);
        h.clock.advance_ms(2);
        QCOMPARE(link::read_raw(*h.ctx), protocol::build_frame(answer));
    }
};

QTEST_GUILESS_MAIN(TestSimLink)
#include "test_sim_link.moc"
