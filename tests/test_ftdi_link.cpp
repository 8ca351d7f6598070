// The libftdi link as far as it can be checked with no FTDI chip attached:
// counting, refusing to open, refusing calls without the open handle, the
// translation of line settings, and the hint a user without USB access gets.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/ftdi_link.h"
#include "link/ftdi_mapping.h"
#include "manual_clock.h"

#include <QTest>

#include <ftdi.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

enum Call { baud, characteristics, flow, dtr, timeouts, queue, read_call, write_call, close_call };

link::FtStatus run(link::FtdiLink& ftdi, Call call, link::FtHandle handle) {
    std::uint32_t n = 0;
    QByteArray buffer;
    switch (call) {
    case baud:
        return ftdi.set_baud_rate(handle, 115200);
    case characteristics:
        return ftdi.set_data_characteristics(handle, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                             link::FT_PARITY_NONE);
    case flow:
        return ftdi.set_flow_control(handle, link::FT_FLOW_NONE, 0, 0);
    case dtr:
        return ftdi.set_dtr(handle);
    case timeouts:
        return ftdi.set_timeouts(handle, 100, 250);
    case queue:
        return ftdi.get_queue_status(handle, n);
    case read_call:
        return ftdi.read(handle, buffer, 4, n);
    case write_call:
        return ftdi.write(handle, "#1I", n);
    case close_call:
        return ftdi.close(handle);
    }
    return link::FT_OK;
}

} // namespace

class TestFtdiLink : public QObject {
    Q_OBJECT
private slots:
    void with_nothing_attached_nothing_opens() {
        link::FtdiLink ftdi;
        std::uint32_t count = 7;
        const link::FtStatus listed = ftdi.list_device_count(count);
        if (listed == link::FT_OK && count > 0)
            QSKIP("an FTDI device is attached");
        QCOMPARE(listed, link::FT_OK);
        QCOMPARE(count, 0u);

        link::FtHandle handle = 0;
        QCOMPARE(ftdi.open(0, handle), link::FT_DEVICE_NOT_FOUND);
        QCOMPARE(handle, 0u);
        QVERIFY(!ftdi.last_error_text().isEmpty());

        ManualClock clock;
        FakeUserInterface ui;
        AppContext ctx(clock, ui, std::make_unique<link::FtdiLink>());
        ctx.language.language_text[2100] = QStringLiteral("T2100");
        ctx.language.language_text[2200] = QStringLiteral("T2200");
        QVERIFY(!link::open_device(ctx, false));
        QCOMPARE(ui.messages, QStringList{QStringLiteral("T2100\r\nT2200")});
        QCOMPARE(ctx.link.device_handle, 0u);
    }

    void calls_need_the_open_handle_data() {
        QTest::addColumn<int>("call");
        QTest::addColumn<uint>("handle");
        const char* names[] = {"baud", "characteristics", "flow", "dtr", "timeouts", "queue",
                               "read", "write",           "close"};
        for (int call = baud; call <= close_call; ++call) {
            for (uint handle : {0u, 1u})
                QTest::addRow("%s, handle %u", names[call], handle) << call << handle;
        }
    }
    void calls_need_the_open_handle() {
        QFETCH(int, call);
        QFETCH(uint, handle);
        link::FtdiLink ftdi;
        QCOMPARE(run(ftdi, static_cast<Call>(call), handle), link::FT_INVALID_HANDLE);
    }

    void line_property_data() {
        QTest::addColumn<int>("word");
        QTest::addColumn<int>("stop");
        QTest::addColumn<int>("parity");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("stop_bits");
        QTest::addColumn<int>("ftdi_parity");
        QTest::newRow("device setting")
            << 8 << 2 << 0 << true << int(BITS_8) << int(STOP_BIT_2) << int(NONE);
        QTest::newRow("one stop bit is value 0")
            << 8 << 0 << 0 << true << int(BITS_8) << int(STOP_BIT_1) << int(NONE);
        QTest::newRow("7 bits, even")
            << 7 << 0 << 2 << true << int(BITS_7) << int(STOP_BIT_1) << int(EVEN);
        QTest::newRow("space parity")
            << 8 << 2 << 4 << true << int(BITS_8) << int(STOP_BIT_2) << int(SPACE);
        QTest::newRow("stop bits value 1") << 8 << 1 << 0 << false << 0 << 0 << 0;
        QTest::newRow("6 data bits") << 6 << 2 << 0 << false << 0 << 0 << 0;
        QTest::newRow("parity value 5") << 8 << 2 << 5 << false << 0 << 0 << 0;
    }
    void line_property() {
        QFETCH(int, word);
        QFETCH(int, stop);
        QFETCH(int, parity);
        QFETCH(bool, valid);
        const auto p = link::ftdi::line_property(static_cast<std::uint8_t>(word),
                                                 static_cast<std::uint8_t>(stop),
                                                 static_cast<std::uint8_t>(parity));
        QCOMPARE(p.has_value(), valid);
        if (!valid)
            return;
        QTEST(p->bits, "bits");
        QTEST(p->stop_bits, "stop_bits");
        QTEST(p->parity, "ftdi_parity");
    }

    void refused_usb_access_points_to_the_udev_rule_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("opening");
        QTest::addColumn<bool>("hint");
        QTest::newRow("no permission")
            << -8 << QByteArray("inappropriate permissions on device!") << true << true;
        QTest::newRow("node not openable")
            << -4 << QByteArray("libusb_open() failed") << true << true;
        QTest::newRow("kernel driver holds it")
            << -5 << QByteArray("unable to claim usb device") << true << false;
        QTest::newRow("not while opening")
            << -4 << QByteArray("usb bulk read failed") << false << false;
    }
    void refused_usb_access_points_to_the_udev_rule() {
        QFETCH(int, code);
        QFETCH(QByteArray, text);
        QFETCH(bool, opening);
        QFETCH(bool, hint);
        const QString sentence = link::ftdi::failure_text(code, text.constData(), opening);
        QVERIFY2(sentence.contains(QString::fromLatin1(text)), qPrintable(sentence));
        QVERIFY2(sentence.contains(QString::number(code)), qPrintable(sentence));
        QCOMPARE(sentence.contains(QLatin1String("dist/udev/99-veltrako2-ftdi.rules")), hint);
    }
};

QTEST_GUILESS_MAIN(TestFtdiLink)
#include "test_ftdi_link.moc"
