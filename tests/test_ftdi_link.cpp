// The libftdi link as far as it can be checked with no FTDI chip attached:
// counting, refusing to open, refusing calls without the open handle, the
// translation of line settings, and the hint a user without USB access gets.

#include "link/ftdi_link.h"
#include "link/ftdi_mapping.h"
#include "protocol_harness.h"

#include <ftdi.h>

using namespace veltrako;
using namespace veltrako::testing;

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
        // Without an open chip no call reaches libftdi, whatever handle is given.
        QCOMPARE(ftdi.set_baud_rate(1, 115200), link::FT_INVALID_HANDLE);
        std::uint32_t written = 0;
        QCOMPARE(ftdi.write(0, "#1I", written), link::FT_INVALID_HANDLE);
    }

    // word length, stop bits value, parity value -> libftdi bits, stop bits,
    // parity; an empty result is a refusal.
    void line_property_data() {
        const Table<QList<int>, QList<int>> row;
        row("device setting", {8, 2, 0}, {BITS_8, STOP_BIT_2, NONE});
        row("one stop bit is value 0", {8, 0, 0}, {BITS_8, STOP_BIT_1, NONE});
        row("7 bits, even", {7, 0, 2}, {BITS_7, STOP_BIT_1, EVEN});
        row("stop bits value 1", {8, 1, 0}, {});
        row("6 data bits", {6, 2, 0}, {});
        row("parity value 5", {8, 2, 5}, {});
    }
    void line_property() {
        const auto [given, expected] = Table<QList<int>, QList<int>>::fetch();
        const auto p = link::ftdi::line_property(static_cast<std::uint8_t>(given[0]),
                                                 static_cast<std::uint8_t>(given[1]),
                                                 static_cast<std::uint8_t>(given[2]));
        QCOMPARE(p ? QList<int>({p->bits, p->stop_bits, p->parity}) : QList<int>(), expected);
    }

    void refused_usb_access_points_to_the_udev_rule_data() {
        const Table<int, bool, bool> row; // libusb code, while opening, hint given
        row("no permission", -8, true, true);
        row("node not openable", -4, true, true);
        row("kernel driver holds it", -5, true, false);
        row("not while opening", -4, false, false);
    }
    void refused_usb_access_points_to_the_udev_rule() {
        const auto [code, opening, hint] = Table<int, bool, bool>::fetch();
        const QString sentence = link::ftdi::failure_text(code, "libusb said no", opening);
        QVERIFY2(sentence.contains(QStringLiteral("libusb said no (%1)").arg(code)),
                 qPrintable(sentence));
        QCOMPARE(sentence.contains(QLatin1String("dist/udev/99-veltrako2-ftdi.rules")), hint);
    }
};

QTEST_GUILESS_MAIN(TestFtdiLink)
#include "test_ftdi_link.moc"
