// The libftdi link as far as it can be checked with no FTDI chip attached:
// counting, refusing to open, refusing calls without the open handle, the
// translation of line settings, and the hint a user without USB access gets.

#include "link/ftdi_link.h"
#include "link/ftdi_mapping.h"

#include <QTest>

#include <ftdi.h>

using namespace veltrako;

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
        QTest::addColumn<QList<int>>("given");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("device setting")
            << QList<int>{8, 2, 0} << QList<int>{BITS_8, STOP_BIT_2, NONE};
        QTest::newRow("one stop bit is value 0")
            << QList<int>{8, 0, 0} << QList<int>{BITS_8, STOP_BIT_1, NONE};
        QTest::newRow("7 bits, even")
            << QList<int>{7, 0, 2} << QList<int>{BITS_7, STOP_BIT_1, EVEN};
        QTest::newRow("stop bits value 1") << QList<int>{8, 1, 0} << QList<int>{};
        QTest::newRow("6 data bits") << QList<int>{6, 2, 0} << QList<int>{};
        QTest::newRow("parity value 5") << QList<int>{8, 2, 5} << QList<int>{};
    }
    void line_property() {
        QFETCH(QList<int>, given);
        const auto p = link::ftdi::line_property(static_cast<std::uint8_t>(given[0]),
                                                 static_cast<std::uint8_t>(given[1]),
                                                 static_cast<std::uint8_t>(given[2]));
        QTEST(p ? QList<int>({p->bits, p->stop_bits, p->parity}) : QList<int>(), "expected");
    }

    void refused_usb_access_points_to_the_udev_rule_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("opening");
        QTest::addColumn<bool>("hint");
        QTest::newRow("no permission") << -8 << true << true;
        QTest::newRow("node not openable") << -4 << true << true;
        QTest::newRow("kernel driver holds it") << -5 << true << false;
        QTest::newRow("not while opening") << -4 << false << false;
    }
    void refused_usb_access_points_to_the_udev_rule() {
        QFETCH(int, code);
        QFETCH(bool, opening);
        QFETCH(bool, hint);
        const QString sentence = link::ftdi::failure_text(code, "libusb said no", opening);
        QVERIFY2(sentence.contains(QStringLiteral("libusb said no (%1)").arg(code)),
                 qPrintable(sentence));
        QCOMPARE(sentence.contains(QLatin1String("dist/udev/99-veltrako2-ftdi.rules")), hint);
    }
};

QTEST_GUILESS_MAIN(TestFtdiLink)
#include "test_ftdi_link.moc"
