// Valve timings: the selector texts, the preset files with their crossed key
// mapping, the preset buttons, and what a selector, the factory reset and a
// preset send to the simulated concentrator.

#include "device/device_view.h"
#include "device/timing_presets.h"
#include "protocol/commands.h"
#include "report_harness.h"
#include "settings_harness.h"
#include "table.h"
#include "test_bytes.h"

#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;
using device::WriteOutcome;
using Zeiten = std::array<std::uint8_t, device::preset_timing_count>;
Q_DECLARE_METATYPE(Zeiten)

namespace {

// Every key with a value of its own, so that a crossed mapping shows.
const QStringList full_file{
    "TITEL1=Wenig",      "TITEL2=< 2 l/min", "ZEIT_VORLAUF=10",   "ZEIT_PHASE1=11",
    "ZEIT_A2ON=12",      "ZEIT_A2OFF=13",    "ZEIT_PHASE2=14",    "ZEIT_A1ON=15",
    "ZEIT_A1OFF=16",     "ZEIT_SPUEL1ON=18", "ZEIT_SPUEL1OFF=19", "ZEIT_SPUEL2ON=20",
    "ZEIT_SPUEL2OFF=21",
};
const Zeiten full_zeiten{10, 11, 12, 13, 14, 15, 16, 0, 18, 19, 20, 21};

void write_lines(const QString& path, const QStringList& lines) {
    QVERIFY(veltrako::testing::write_file(path, (lines.join("\r\n") + "\r\n").toUtf8()));
}

QStringList without(QStringList lines, const QString& key) {
    lines.removeIf([&](const QString& l) { return l.startsWith(key + '='); });
    return lines;
}

} // namespace

class TestTimingPresets : public QObject {
    Q_OBJECT
    using Files = Table<QStringList, bool, Zeiten, QString>;
private slots:
    void selector_entries_show_seconds_data() {
        Table<QLocale, int, QString> row; // locale, byte, text
        const QLocale de(QLocale::German, QLocale::Germany);
        const QLocale en(QLocale::English, QLocale::UnitedStates);
        row("144", de, 144, "5,76");
        row("255", de, 255, "10,20");
        row("27 en", en, 27, "1.08");
    }
    void selector_entries_show_seconds() {
        const auto [locale, byte, text] = Table<QLocale, int, QString>::fetch();
        const QStringList entries = device::timing_entries(locale);
        QCOMPARE(entries.size(), 256);
        QCOMPARE(entries.at(byte), text); // entry k is the byte k
    }

    void preset_files_data() {
        Files row; // lines, loaded, timings, TITEL1
        row("every key", full_file, true, full_zeiten, "Wenig");
        Zeiten no_last = full_zeiten;
        no_last[11] = 0;
        row("no ZEIT_SPUEL2OFF: index 11 is 0", without(full_file, "ZEIT_SPUEL2OFF"), true, no_last,
            "Wenig");
        row("blanks, empty lines, unknown keys",
            QStringList{"", " ZEIT_A1ON = 7 ", "   ", "ZEIT_7=99", "TITEL1=a=b", "# note"}, true,
            Zeiten{0, 0, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0}, "a=b");
        row("256 ends the file", QStringList{"ZEIT_VORLAUF=5", "ZEIT_PHASE1=256", "ZEIT_PHASE2=9"},
            false, Zeiten{5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "");
        for (const char* bad : {"abc", "-1", "", "1.5"})
            row(QByteArray("ZEIT_A2ON=") + bad, {QStringLiteral("ZEIT_A2ON=") + bad}, false, {},
                {});
    }
    void preset_files() {
        const auto [lines, loaded, zeiten, titel1] = Files::fetch();
        device::PresetRecord p;
        p.preset_zeiten.fill(77); // a second file must not inherit the first one's values
        p.titel2 = "old";
        QCOMPARE(device::parse_preset_lines(lines, p), loaded);
        QCOMPARE(p.preset_zeiten, zeiten);
        QCOMPARE(p.titel1, titel1);
        if (!lines.contains("TITEL2=< 2 l/min"))
            QCOMPARE(p.titel2, QString());
    }

    // Each file is looked for once; the buttons show what that found.
    void preset_buttons() {
        QTemporaryDir dir;
        const QString folder = dir.path() + '/';
        write_lines(folder + "Zeiten_1.txt", full_file);
        write_lines(folder + "Zeiten_3.txt", {"TITEL1=x", "ZEIT_VORLAUF=300"});
        device::PresetTable table;
        device::setup_presets(table, folder, false);
        QVERIFY(!table.shown && !table.preset(1).tried); // hidden buttons read no file

        device::setup_presets(table, folder, true);
        QVERIFY(table.shown && table.buttons[0].enabled);
        QCOMPARE(table.buttons[0].caption, QString("Wenig\r\n< 2 l/min"));
        QVERIFY(!table.buttons[1].enabled && !table.buttons[2].enabled);
        QCOMPARE(table.buttons[2].caption, QString("---")); // the file with 300 in it
        QVERIFY(table.preset(2).tried && !table.preset(2).loaded);

        // Changed or added while the program runs: not read again.
        write_lines(folder + "Zeiten_1.txt", {"TITEL1=neu", "ZEIT_VORLAUF=1"});
        write_lines(folder + "Zeiten_2.txt", full_file);
        device::setup_presets(table, folder, true);
        QCOMPARE(table.buttons[0].caption, QString("Wenig\r\n< 2 l/min"));
        QCOMPARE(table.preset(1).preset_zeiten[0], 10);
        QVERIFY(!table.buttons[1].enabled);
        QVERIFY(!device::load_preset(table, 0, folder));
        QVERIFY(!device::load_preset(table, 4, folder));
    }

    // The buttons are offered to the models with the rinse valve only.
    void presets_follow_the_family_data() {
        Table<QString, bool> row; // SW, buttons offered
        row("7E", "7E5", true);
        row("AA", "AA1", true);
        row("A8", "A81", true);
        row("7C", "7C1", false);
        row("512", "5121", false);
    }
    void presets_follow_the_family() {
        const auto [sw, wanted] = Table<QString, bool>::fetch();
        QTemporaryDir dir;
        write_lines(dir.path() + "/Zeiten_2.txt", full_file);
        Connected c("SW=" + sw.toLatin1() + "\n", dir.path() + '/');
        QCOMPARE(c.ctx->presets.shown, wanted);
        QCOMPARE(c.ctx->presets.buttons[1].enabled, wanted);
    }

    // The factory values go to indexes 0..6; 7..13 keep theirs (a device
    // whose record keeps all 14).
    void reset_touches_the_first_seven_only() {
        Connected c("SW=2141\nTIMINGS=1 2 3 4 5 6 7 8 9 10 11 12 13 14\n");
        c.ui.yes_no_answers = {true};
        device::cmd_t_reset_Click(*c.ctx);
        // Asked with the old and the factory values, in seconds.
        QCOMPARE(c.ui.confirmations.size(), 1);
        QVERIFY2(c.ui.confirmations[0].contains("text8030 0: 0.04  1: 0.08") &&
                     c.ui.confirmations[0].contains("text8031 0: 4.00  1: 5.76"),
                 qPrintable(c.ui.confirmations[0]));
        QList<QByteArray> writes, reads;
        const int factory[] = {100, 144, 144, 27, 134, 27, 134};
        for (int i = 0; i < 7; ++i) {
            writes << bytes_of({'w', '0' + i, factory[i]});
            reads << bytes_of({'r', '0' + i});
        }
        QCOMPARE(c.queued(), writes + reads);
        c.settle();
        const std::array<std::uint8_t, 14> after{100, 144, 144, 27, 134, 27, 134,
                                                 8,   9,   10,  11, 12,  13, 14};
        QCOMPARE(c.ctx->device.zeiten, after);
    }

    // A preset writes every timing of its file but index 7, then reads each
    // back; its message comes once the device reports every value written,
    // and a device that keeps its timings is named with them.
    void preset_writes_all_but_index_7_data() {
        Table<QByteArray, QString> row; // faults, told
        row("taken", QByteArray(), "text116");
        row("kept", QByteArray("IGNORE_WRITES=on\n"),
            "text8028 text8011 0: 0.40  1: 0.44  2: 0.48  3: 0.52  4: 0.56  "
            "5: 0.60  6: 0.64, text8012 0: 0.04  1: 0.08");
    }
    void preset_writes_all_but_index_7() {
        const auto [faults, told] = Table<QByteArray, QString>::fetch();
        QTemporaryDir dir;
        write_lines(dir.path() + "/Zeiten_1.txt", without(full_file, "ZEIT_SPUEL2OFF"));
        // A model with the rinse valve, whose record keeps only 0..6.
        Connected c("SW=7E5\nTIMINGS=1 2 3 4 5 6 7 8 9 10 11 12 13 14\n" + faults,
                    dir.path() + '/');
        c.ui.yes_no_answers = {false, true};
        c.ctx->device.live_valid = false;
        QCOMPARE(device::cmdPresetZeiten_Click(*c.ctx, 1), WriteOutcome::not_written);
        c.ctx->device.live_valid = true;
        // no file: nothing to write
        QCOMPARE(device::cmdPresetZeiten_Click(*c.ctx, 2), WriteOutcome::not_written);
        QVERIFY(c.ui.confirmations.isEmpty());
        QCOMPARE(device::cmdPresetZeiten_Click(*c.ctx, 1), WriteOutcome::not_written); // No
        QVERIFY(c.queued().isEmpty() && c.ui.messages.isEmpty());

        c.serve();
        const qsizetype before = c.received.size();
        device::cmdPresetZeiten_Click(*c.ctx, 1);
        QList<QByteArray> writes, reads, sent;
        const int values[] = {10, 11, 12, 13, 14, 15, 16, -1, 18, 19, 20, 0};
        for (int i = 0; i < 12; ++i) {
            if (i == 7)
                continue;
            writes << bytes_of({'w', '0' + i, values[i]});
            reads << bytes_of({'r', '0' + i});
        }
        for (const QByteArray& p : c.received.mid(before))
            if (p.startsWith('w') || p.startsWith('r'))
                sent << p;
        QCOMPARE(sent, writes + reads);
        QCOMPARE(c.ui.messages.size(), 1);
        QVERIFY2(c.ui.messages[0].startsWith(told), qPrintable(c.ui.messages[0]));
        const std::array<std::uint8_t, 14> in_device{10, 11, 12, 13, 14, 15, 16,
                                                     8,  18, 19, 20, 0,  13, 14};
        if (faults.isEmpty())
            QCOMPARE(c.device->state().zeiten, in_device);
        for (std::size_t i = 0; i < 7; ++i) // the record shows what the device reports
            QCOMPARE(c.ctx->device.zeiten[i], c.device->state().zeiten[i]);
    }
};

QTEST_GUILESS_MAIN(TestTimingPresets)
#include "test_timing_presets.moc"
