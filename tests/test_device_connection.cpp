// Opening and closing the one device: order of the steps, the messages the
// technician sees for each failure, silence during automatic reconnection.

#include "fake_link_context.h"
#include "link/device_connection.h"
#include "protocol_harness.h"

using namespace veltrako;
using namespace veltrako::testing;

namespace {

struct Harness : FakeLinkContext {
    Harness() {
        for (int n : {2000, 2100, 2200, 2300, 2400, 2500, 2600, 2700, 2800})
            ctx.language.language_text[n] = QStringLiteral("T%1").arg(n);
    }
};

} // namespace

class TestDeviceConnection : public QObject {
    Q_OBJECT
private slots:
    void opens_with_the_line_settings_in_order_and_closes_first_when_open() {
        Harness h;
        QVERIFY(link::open_device(h.ctx, false));
        QCOMPARE(h.link->calls, (QStringList{"list", "open 0", "baud 115200", "data 8 2 0",
                                             "flow 0 0 0", "dtr", "timeouts 100 250"}));
        QCOMPARE(h.ctx.link.device_handle, 7u);
        QCOMPARE(h.ui.out, QString("Handle:7\r\n"));
        QVERIFY(h.ui.messages.isEmpty());

        // Opening again closes first.
        QVERIFY(link::open_device(h.ctx, false));
        QCOMPARE(h.link->calls.indexOf("close 7"), 7);
        QCOMPARE(h.ui.out, QString("Handle:7\r\nDevice Closed\r\nHandle:7\r\n"));
    }

    void failures_data() {
        // devices counted, step that fails, message, closed again
        const Table<int, FakeLink::Step, QString, bool> row;
        row("count fails", 1, FakeLink::list, "DLL-Error:4", false);
        row("no device", 0, FakeLink::step_count, "T2100\r\nT2200", false);
        row("two devices", 2, FakeLink::step_count, "T20002", false);
        row("open", 1, FakeLink::open_step, "T2300 DLL-Error:4", false);
        row("baud", 1, FakeLink::baud, "T2400 DLL-Error:4", true);
        row("characteristics", 1, FakeLink::characteristics, "T2500 DLL-Error:4", true);
        row("flow", 1, FakeLink::flow, "T2600 DLL-Error:4", true);
        row("dtr", 1, FakeLink::dtr, "T2700 DLL-Error:4", true);
        row("timeouts", 1, FakeLink::timeouts, "T2800 DLL-Error:4", true);
    }
    void failures() {
        const auto [devices, failing, message, closed_after] =
            Table<int, FakeLink::Step, QString, bool>::fetch();
        for (bool silent : {false, true}) {
            Harness h;
            h.link->device_count = static_cast<std::uint32_t>(devices);
            h.link->failing_step = failing;
            QVERIFY(!link::open_device(h.ctx, silent));
            QCOMPARE(h.ctx.link.device_handle, 0u);
            QCOMPARE(h.link->calls.contains("close 7"), closed_after);
            QCOMPARE(h.ui.messages, silent ? QStringList{} : QStringList{message});
            // Nothing is opened when the count is wrong.
            if (devices != 1)
                QVERIFY(!h.link->calls.contains("open 0"));
        }
    }

    void close_and_raw_traffic() {
        Harness h;
        QCOMPARE(link::close_device(h.ctx), link::FT_OK);
        QVERIFY(h.ui.out.isEmpty()); // nothing was open

        h.ctx.link.device_handle = 7;
        h.link->close_status = link::FT_IO_ERROR;
        QCOMPARE(link::close_device(h.ctx), link::FT_IO_ERROR);
        QCOMPARE(h.ui.out, QString("Error Device Closed: 4\r\n"));
        QCOMPARE(h.ctx.link.device_handle, 0u);

        h.ui.out.clear();
        link::write_raw(h.ctx, "I"); // closed: nothing goes out
        QVERIFY(h.link->written.isEmpty());
        QVERIFY(link::read_raw(h.ctx).isEmpty());

        QVERIFY(link::open_device(h.ctx, true));
        h.ui.out.clear();
        link::write_raw(h.ctx, "I");
        QCOMPARE(h.link->written, QByteArray("I"));
        h.link->incoming = "ae60000 ok";
        QCOMPARE(link::read_raw(h.ctx), QByteArray("ae60000 ok"));
        QVERIFY(link::read_raw(h.ctx).isEmpty());

        // A short read is reported, and the full-length buffer is handed on.
        h.link->incoming = "abcd";
        h.link->short_by = 1;
        QCOMPARE(link::read_raw(h.ctx).size(), 4);
        QCOMPARE(h.ui.out, QString("4|RxBytes<>BytesReturned:4/3\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestDeviceConnection)
#include "test_device_connection.moc"
