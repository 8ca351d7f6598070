// veltrako2.ini: what a technician's hand-edited or damaged file does to the
// settings, and that a written file reads back in the user's locale.

#include "config/config.h"
#include "report_harness.h"
#include "table.h"

#include <QLocale>

using namespace veltrako;
using namespace veltrako::config;
using namespace veltrako::testing;

namespace {

const QString program_dir = QStringLiteral("/opt/veltrako2/");
const QString failed = QStringLiteral("unable to load configuration!>1/1|50|/opt/veltrako2/|0|");

// TIMEOUT/second time-out|TIMERINTERVAL|INITDIR|AUTOSAVE|AUTOSAVEDIR
QString summary(const Config& c) {
    return QStringLiteral("%1/%2|%3|%4|%5|%6")
        .arg(c.TIMEOUT)
        .arg(c.timeout_second)
        .arg(c.TIMERINTERVAL)
        .arg(c.INITDIR, c.AUTOSAVE, c.AUTOSAVEDIR);
}

// Loads `path` over the defaults: the messages shown, ">" when it loaded or
// "!>" when not, then the summary.
QString load(const QString& path) {
    FakeUserInterface ui;
    Config config;
    set_config_defaults(config, program_dir);
    const bool ok = load_config(config, path, program_dir, ui);
    return ui.messages.join(QLatin1Char('+')) + (ok ? QLatin1String(">") : QLatin1String("!>")) +
           summary(config);
}

// The file (null: none at all) and what loading it leaves. A failed load
// leaves the defaults, also for what was read before the fault.
using Loads = Table<QByteArray, QString>;

} // namespace

class TestConfig : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void load_data() {
        const Loads row;
        row("only the interval", "TIMERINTERVAL|20\r\n", ">1/1|20|/opt/veltrako2/|0|");
        row("abc after other settings",
            "TIMEOUT|3\r\nINITDIR|/d/\r\nTIMERINTERVAL|abc\r\nAUTOSAVE|1\r\n", failed);
        row("interval beyond 16 bits", "TIMEOUT|3\r\nTIMERINTERVAL|40000\r\n", failed);
        row("known key without bar", "TIMEOUT|3\r\nAUTOSAVE\r\n", failed);
        row("missing file", QByteArray(), failed);
        row("timeout not a number", "TIMEOUT|schnell\r\nTIMERINTERVAL|20\r\n",
            ">0/0|20|/opt/veltrako2/|0|");
        row("lower-case keys are ignored", "timerinterval|20\r\nInitDir|/x/\r\n",
            ">1/1|50|/opt/veltrako2/|0|");
        row("unknown lines ignored, keys match whole",
            "[veltrako2]\r\nAUTOSAVEDIR|/a/\r\nTIMEOUTX|9\r\nAUTOSAVE|1\r\n",
            ">1/1|50|/opt/veltrako2/|1|/a/");
        row("LF lines, empty lines, extra fields, blanks kept",
            "\nTIMEOUT|2|x\n\nINITDIR|/a/|/b/\nAUTOSAVEDIR| /c d/ \n", ">2/2|50|/a/|0| /c d/ ");
    }
    void load() {
        const auto [file, expected] = Loads::fetch();
        QTemporaryDir dir;
        const QString path = dir.filePath(QString::fromLatin1(config_file_name));
        QVERIFY(file.isNull() || write_file(path, file));
        QCOMPARE(::load(path), expected);
    }

    // A German system writes a decimal comma, in CR LF lines, and reads it back.
    void save_and_load_in_the_users_locale() {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("veltrako2.ini"));
        Config saved;
        set_config_defaults(saved, program_dir);
        saved.TIMEOUT = 1.5;
        saved.TIMERINTERVAL = -12;
        saved.INITDIR = QStringLiteral("/home/tech/Geräte/");
        saved.AUTOSAVE = QStringLiteral("1");
        saved.AUTOSAVEDIR = QStringLiteral("/a/");
        QVERIFY(save_config(saved, path));
        QCOMPARE(read_file(path),
                 "TIMEOUT|1,5\r\nTIMERINTERVAL|-12\r\nINITDIR|/home/tech/Ger\xC3\xA4te/\r\n"
                 "AUTOSAVE|1\r\nAUTOSAVEDIR|/a/\r\n");
        saved.timeout_second = saved.TIMEOUT;
        QCOMPARE(::load(path), ">" + summary(saved));
    }

    // A prescription or a limit typed into the file survives every rewrite
    // (a dialog that remembers its folder), as typed; a file without one
    // stays without.
    void optional_setting_survives_a_rewrite_data() {
        const Table<QByteArray> row;
        row("set", "VERORDNUNG|15,5")("none", QByteArray());
        row("no number: kept for the person to see", "VERORDNUNG|viel");
        row("a limit", "GRENZE_SCHUTZLEITER|0,2")("a limit that is no number", "GRENZE_O2|viel");
        row("both", "VERORDNUNG|6\r\nADHERENZ_ANTEIL|80");
        row("a share alone", "ADHERENZ_ANTEIL|75,5");
    }
    void optional_setting_survives_a_rewrite() {
        const auto [line] = Table<QByteArray>::fetch();
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("veltrako2.ini"));
        QVERIFY(write_file(path, "TIMERINTERVAL|20\r\n" + (line.isEmpty() ? line : line + "\r\n")));
        Config config;
        FakeUserInterface ui;
        QVERIFY(load_config(config, path, program_dir, ui));
        config.INITDIR = QStringLiteral("/chosen/");
        QVERIFY(save_config(config, path));
        const QByteArray written = read_file(path);
        QVERIFY(written.contains("INITDIR|/chosen/\r\n"));
        for (const char* key : {"VERORDNUNG", "ADHERENZ_ANTEIL", "GRENZE_"})
            QCOMPARE(written.contains(key), line.contains(key));
        QVERIFY2(line.isEmpty() || written.endsWith(line + "\r\n"), written.constData());
    }

    void prescribed_hours_data() {
        const Table<QString, double> row; // text, hours (-1: refused)
        row("empty: none", "", 0.0)("whole", " 15 ", 15.0)("point", "15.5", 15.5);
        row("the locale's comma", "15,5", 15.5)("upper end", "24", 24.0);
        row("above a day", "24.5", -1.0)("negative", "-1", -1.0)("words", "15 h", -1.0);
        row("not a number", "nan", -1.0);
    }
    void prescribed_hours() {
        const auto [text, hours] = Table<QString, double>::fetch();
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(config::prescribed_hours(text).value_or(-1.0), hours);
    }

    void adherence_share_data() {
        const Table<QString, double> row; // text, share (-1: refused)
        row("empty: the default", "", 70.0)("whole", "80", 80.0)("comma", "66,5", 66.5);
        row("none at all", "0", 0.0)("every day", "100", 100.0)("above", "100.5", -1.0);
        row("with a percent sign", "70 %", -1.0);
    }
    void adherence_share() {
        const auto [text, share] = Table<QString, double>::fetch();
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(config::adherence_share(text).value_or(-1.0), share);
    }
};

QTEST_GUILESS_MAIN(TestConfig)
#include "test_config.moc"
