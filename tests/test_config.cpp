// veltrako2.ini: what a technician's hand-edited or damaged file does to the
// settings, and that a written file reads back in the user's locale.

#include "config/config.h"
#include "fake_user_interface.h"

#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

using namespace veltrako;
using namespace veltrako::config;

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
    testing::FakeUserInterface ui;
    Config config;
    set_config_defaults(config, program_dir);
    const bool ok = load_config(config, path, program_dir, ui);
    return ui.messages.join(QLatin1Char('+')) + (ok ? QLatin1String(">") : QLatin1String("!>")) +
           summary(config);
}

} // namespace

class TestConfig : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    // A failed load leaves the defaults, also for what was read before the fault.
    void load_data() {
        QTest::addColumn<QByteArray>("file"); // null: no file at all
        QTest::addColumn<QString>("expected");
        QTest::newRow("only the interval")
            << QByteArray("TIMERINTERVAL|20\r\n") << ">1/1|20|/opt/veltrako2/|0|";
        QTest::newRow("abc after other settings")
            << QByteArray("TIMEOUT|3\r\nINITDIR|/d/\r\nTIMERINTERVAL|abc\r\nAUTOSAVE|1\r\n")
            << failed;
        QTest::newRow("interval beyond 16 bits")
            << QByteArray("TIMEOUT|3\r\nTIMERINTERVAL|40000\r\n") << failed;
        QTest::newRow("known key without bar") << QByteArray("TIMEOUT|3\r\nAUTOSAVE\r\n") << failed;
        QTest::newRow("missing file") << QByteArray() << failed;
        QTest::newRow("timeout not a number")
            << QByteArray("TIMEOUT|schnell\r\nTIMERINTERVAL|20\r\n")
            << ">0/0|20|/opt/veltrako2/|0|";
        QTest::newRow("lower-case keys are ignored")
            << QByteArray("timerinterval|20\r\nInitDir|/x/\r\n") << ">1/1|50|/opt/veltrako2/|0|";
        QTest::newRow("unknown lines ignored, keys match whole")
            << QByteArray("[veltrako2]\r\nAUTOSAVEDIR|/a/\r\nTIMEOUTX|9\r\nAUTOSAVE|1\r\n")
            << ">1/1|50|/opt/veltrako2/|1|/a/";
        QTest::newRow("LF lines, empty lines, extra fields, blanks kept")
            << QByteArray("\nTIMEOUT|2|x\n\nINITDIR|/a/|/b/\nAUTOSAVEDIR| /c d/ \n")
            << ">2/2|50|/a/|0| /c d/ ";
    }
    void load() {
        QFETCH(QByteArray, file);
        QTemporaryDir dir;
        const QString path = dir.filePath(QString::fromLatin1(config_file_name));
        QFile out(path);
        QVERIFY(file.isNull() ||
                (out.open(QIODevice::WriteOnly) && out.write(file) == file.size()));
        out.close();
        QTEST(::load(path), "expected");
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

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(),
                 "TIMEOUT|1,5\r\nTIMERINTERVAL|-12\r\nINITDIR|/home/tech/Ger\xC3\xA4te/\r\n"
                 "AUTOSAVE|1\r\nAUTOSAVEDIR|/a/\r\n");
        saved.timeout_second = saved.TIMEOUT;
        QCOMPARE(::load(path), ">" + summary(saved));
    }

    // A prescription typed into the file survives every rewrite (a dialog
    // that remembers its folder), as typed; a file without one stays without.
    void prescription_survives_a_rewrite_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("set") << QByteArray("VERORDNUNG|15,5");
        QTest::newRow("no number: kept for the person to see") << QByteArray("VERORDNUNG|viel");
        QTest::newRow("none") << QByteArray();
    }
    void prescription_survives_a_rewrite() {
        QFETCH(QByteArray, line);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("veltrako2.ini"));
        QFile in(path);
        const QByteArray text = "TIMERINTERVAL|20\r\n" + (line.isEmpty() ? line : line + "\r\n");
        QVERIFY(in.open(QIODevice::WriteOnly) && in.write(text) == text.size());
        in.close();
        Config config;
        testing::FakeUserInterface ui;
        QVERIFY(load_config(config, path, program_dir, ui));
        config.INITDIR = QStringLiteral("/chosen/");
        QVERIFY(save_config(config, path));
        QVERIFY(in.open(QIODevice::ReadOnly));
        const QByteArray written = in.readAll();
        QVERIFY(written.contains("INITDIR|/chosen/\r\n"));
        QCOMPARE(written.contains("VERORDNUNG"), !line.isEmpty());
        QVERIFY2(line.isEmpty() || written.endsWith(line + "\r\n"), written.constData());
    }

    void prescribed_hours_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("hours"); // -1: refused
        QTest::newRow("empty: none") << "" << 0.0;
        QTest::newRow("whole") << " 15 " << 15.0;
        QTest::newRow("point") << "15.5" << 15.5;
        QTest::newRow("the locale's comma") << "15,5" << 15.5;
        QTest::newRow("upper end") << "24" << 24.0;
        QTest::newRow("above a day") << "24.5" << -1.0;
        QTest::newRow("negative") << "-1" << -1.0;
        QTest::newRow("words") << "15 h" << -1.0;
        QTest::newRow("not a number") << "nan" << -1.0;
    }
    void prescribed_hours() {
        QFETCH(QString, text);
        QFETCH(double, hours);
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(config::prescribed_hours(text).value_or(-1.0), hours);
    }
};

QTEST_GUILESS_MAIN(TestConfig)
#include "test_config.moc"
