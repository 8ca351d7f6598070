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
const QString defaults = QStringLiteral("1/1|50|/opt/veltrako2/|0|");

QString write_file(const QTemporaryDir& dir, const QByteArray& bytes) {
    const QString path = dir.filePath(QString::fromLatin1(config_file_name));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray read_file(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// TIMEOUT/second time-out|TIMERINTERVAL|INITDIR|AUTOSAVE|AUTOSAVEDIR
QString summary(const Config& c) {
    return QStringLiteral("%1/%2|%3|%4|%5|%6")
        .arg(c.TIMEOUT)
        .arg(c.timeout_second)
        .arg(c.TIMERINTERVAL)
        .arg(c.INITDIR, c.AUTOSAVE, c.AUTOSAVEDIR);
}

} // namespace

class TestConfig : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void load_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("expected");

        QTest::newRow("only the interval")
            << QByteArray("TIMERINTERVAL|20\r\n") << true << "1/1|20|/opt/veltrako2/|0|";
        QTest::newRow("all five") << QByteArray("TIMEOUT|2.5\r\nTIMERINTERVAL|40\r\nINITDIR|/h/\r\n"
                                                "AUTOSAVE|1\r\nAUTOSAVEDIR|/h/auto/\r\n")
                                  << true << "2.5/2.5|40|/h/|1|/h/auto/";
        QTest::newRow("abc after other settings")
            << QByteArray("TIMEOUT|3\r\nINITDIR|/d/\r\nTIMERINTERVAL|abc\r\nAUTOSAVE|1\r\n")
            << false << defaults;
        QTest::newRow("interval beyond 16 bits")
            << QByteArray("TIMEOUT|3\r\nTIMERINTERVAL|40000\r\n") << false << defaults;
        QTest::newRow("interval with a fraction")
            << QByteArray("TIMERINTERVAL|20.5\r\n") << false << defaults;
        QTest::newRow("timeout not a number")
            << QByteArray("TIMEOUT|schnell\r\nTIMERINTERVAL|20\r\n") << true
            << "0/0|20|/opt/veltrako2/|0|";
        QTest::newRow("lower-case keys are ignored")
            << QByteArray("timerinterval|20\r\nInitDir|/x/\r\n") << true << defaults;
        QTest::newRow("known key without bar")
            << QByteArray("TIMEOUT|3\r\nAUTOSAVE\r\n") << false << defaults;
        QTest::newRow("unknown line without bar")
            << QByteArray("[veltrako2]\r\nAUTOSAVE|1\r\n") << true << "1/1|50|/opt/veltrako2/|1|";
        QTest::newRow("keys match whole, not by prefix")
            << QByteArray("AUTOSAVEDIR|/a/\r\nTIMEOUTX|9\r\nAUTOSAVE|1\r\n") << true
            << "1/1|50|/opt/veltrako2/|1|/a/";
        QTest::newRow("a repeated key: the later line wins")
            << QByteArray("TIMERINTERVAL|20\r\nTIMERINTERVAL|30\r\n") << true
            << "1/1|30|/opt/veltrako2/|0|";
        QTest::newRow("LF lines, empty lines, extra fields, blanks kept")
            << QByteArray("\nTIMEOUT|2|x\n\nINITDIR|/a/|/b/\nAUTOSAVEDIR| /c d/ \n") << true
            << "2/2|50|/a/|0| /c d/ ";
    }
    void load() {
        QFETCH(QByteArray, file);
        QFETCH(bool, ok);
        QFETCH(QString, expected);

        QTemporaryDir dir;
        testing::FakeUserInterface ui;
        Config config;
        set_config_defaults(config, program_dir);
        QCOMPARE(load_config(config, write_file(dir, file), program_dir, ui), ok);
        QCOMPARE(ui.messages,
                 ok ? QStringList{} : QStringList{QStringLiteral("unable to load configuration")});
        QCOMPARE(summary(config), expected);
    }

    void missing_file_resets_everything() {
        QTemporaryDir dir;
        testing::FakeUserInterface ui;
        Config config;
        config.TIMEOUT = 3;
        config.TIMERINTERVAL = 20;
        config.AUTOSAVEDIR = QStringLiteral("/somewhere/");
        // The folder as the application reports it, without a trailing separator.
        QVERIFY(!load_config(config, dir.filePath(QStringLiteral("veltrako2.ini")),
                             QStringLiteral("/opt/veltrako2"), ui));
        QCOMPARE(ui.messages, QStringList{QStringLiteral("unable to load configuration")});
        QCOMPARE(summary(config), defaults);
    }

    void save_in_the_users_locale_data() {
        QTest::addColumn<double>("timeout");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("whole") << 1.0 << QByteArray("1");
        QTest::newRow("decimal comma") << 1.5 << QByteArray("1,5");
        QTest::newRow("no thousands dot") << 1250.0 << QByteArray("1250");
        QTest::newRow("below one") << 0.25 << QByteArray("0,25");
    }
    void save_in_the_users_locale() {
        QFETCH(double, timeout);
        QFETCH(QByteArray, written);
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));

        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("veltrako2.ini"));
        Config saved;
        set_config_defaults(saved, program_dir);
        saved.TIMEOUT = timeout;
        saved.timeout_second = 9; // not written back
        saved.TIMERINTERVAL = -12;
        saved.INITDIR = QStringLiteral("/home/tech/Geräte/");
        saved.AUTOSAVE = QStringLiteral("1");
        QVERIFY(save_config(saved, path));

        QCOMPARE(read_file(path), "TIMEOUT|" + written +
                                      "\r\nTIMERINTERVAL|-12\r\n"
                                      "INITDIR|/home/tech/Ger\xC3\xA4te/\r\n"
                                      "AUTOSAVE|1\r\nAUTOSAVEDIR|\r\n");

        testing::FakeUserInterface ui;
        Config loaded;
        set_config_defaults(loaded, program_dir);
        QVERIFY(load_config(loaded, path, program_dir, ui));
        saved.timeout_second = saved.TIMEOUT;
        QCOMPARE(summary(loaded), summary(saved));
    }

    void save_into_a_missing_folder_fails() {
        QTemporaryDir dir;
        Config config;
        set_config_defaults(config, program_dir);
        QVERIFY(!save_config(config, dir.filePath(QStringLiteral("gone/veltrako2.ini"))));
    }
};

QTEST_GUILESS_MAIN(TestConfig)
#include "test_config.moc"
