// The firmware update's progress dialog: what it shows for a block, and that
// nothing closes it while lines are being written.

#include "config/language.h"
#include "frm_firmware_progress.h"

#include <QApplication>
#include <QTest>

using namespace veltrako;

class TestFirmwareProgress : public QObject {
    Q_OBJECT
private slots:
    void shows_the_block_and_cannot_be_closed_while_running() {
        config::LanguageTables language;
        language.language_text[9103] = QStringLiteral("Elapsed:");
        language.language_text[9104] = QStringLiteral("Remaining:");
        ui::FrmFirmwareProgress dialog(language);
        QVERIFY(!(dialog.windowFlags() & Qt::WindowCloseButtonHint));
        QCOMPARE(dialog.windowModality(), Qt::ApplicationModal);

        dialog.begin(2000);
        QVERIFY(dialog.isVisible());
        dialog.block(firmware::ProgressStep{101, 2000, 4500, 85500});
        QCOMPARE(dialog.caption(), QString("Software Update Block 101/2000"));
        QCOMPARE(dialog.bar_value(), 100);
        QCOMPARE(dialog.bar_maximum(), 2000);
        QCOMPARE(dialog.times(), QString("Elapsed: 0:05    Remaining: 1:26"));

        QVERIFY(!dialog.close());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());

        dialog.end();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.bar_value(), 2000);
    }
};

QTEST_MAIN(TestFirmwareProgress)
#include "test_firmware_progress.moc"
