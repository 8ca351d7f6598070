#pragma once
// A throw-away PostgreSQL server for the tests and the benchmark of the team
// archive: made with initdb in a temporary folder, started with pg_ctl on a
// free port of 127.0.0.1 (without fsync: the machine does not crash under a
// test, the server may; a commit it confirmed survives its immediate stop),
// password logins only (scram-sha-256), the
// passwords in a ~/.pgpass of its own (PGPASSFILE) as a team would keep
// them. PostgreSQL refuses to run as root, so under root the server runs as
// the unprivileged `postgres` user of Debian's package. It is stopped when
// the object goes, and, should the test program die first, by a watchdog
// that notices within a second.
//
// A server that cannot be had is an error the caller fails on, never a
// reason to skip.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUuid>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace veltrako::testing {

class PgServer {
public:
    static constexpr auto admin = "veltrako_admin";

    PgServer() { launch(); }

    ~PgServer() {
        close_admin();
        if (running_)
            stop();
    }

    PgServer(const PgServer&) = delete;
    PgServer& operator=(const PgServer&) = delete;

    bool ok() const { return error_.isEmpty(); }
    QString error() const { return error_; }

private:
    void launch() {
        if (!dir_.isValid())
            return fail(QStringLiteral("no temporary folder"));
        bin_ = find_bin();
        if (bin_.isEmpty())
            return fail(QStringLiteral("initdb and pg_ctl not found (Debian package postgresql)"));
        pgpass_ = dir_.filePath(QStringLiteral("pgpass"));
        qputenv("PGPASSFILE", QFile::encodeName(pgpass_));
        admin_password_ = fresh_password();
        const QString pwfile = dir_.filePath(QStringLiteral("pw"));
        if (!write(pwfile, admin_password_.toUtf8() + '\n'))
            return fail(QStringLiteral("cannot write ") + pwfile);
        if (geteuid() == 0) {
            const passwd* pw = getpwnam("postgres");
            if (!pw)
                return fail(QStringLiteral("running as root, and there is no user postgres to run"
                                           " the server as"));
            uid_ = pw->pw_uid;
            gid_ = pw->pw_gid;
            if (::chown(QFile::encodeName(dir_.path()).constData(), uid_, gid_) != 0 ||
                ::chown(QFile::encodeName(pwfile).constData(), uid_, gid_) != 0)
                return fail(QStringLiteral("cannot hand the folder to postgres"));
        }
        QString out;
        if (!tool(QStringLiteral("initdb"),
                  {QStringLiteral("-D"), data(), QStringLiteral("-U"), QString::fromLatin1(admin),
                   QStringLiteral("--pwfile=") + pwfile, QStringLiteral("--auth=scram-sha-256"),
                   QStringLiteral("--no-sync"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                   QStringLiteral("--locale=C")},
                  &out))
            return fail(QStringLiteral("initdb failed: ") + out);
        QFile::remove(pwfile);
        // Another program may take the port between looking and starting.
        for (int attempt = 0; attempt < 3 && !running_; ++attempt) {
            port_ = free_port();
            running_ = start(&out);
        }
        if (!running_)
            return fail(QStringLiteral("the server did not start: ") + out + log());
        start_watchdog();
        add_pgpass_line(QString::fromLatin1(admin), admin_password_);
    }

public:
    int port() const { return port_; }
    QString pgpass() const { return pgpass_; }

    // postgresql://user@127.0.0.1:port/database
    QString uri(const QString& user, const QString& database) const {
        return QStringLiteral("postgresql://%1@127.0.0.1:%2/%3").arg(user).arg(port_).arg(database);
    }

    // A database of its own for one test.
    QString fresh_database() {
        const QString name = QStringLiteral("t%1").arg(++databases_);
        exec(QStringLiteral("CREATE DATABASE %1").arg(name));
        return name;
    }

    // A login with a password (in the pgpass file) in `role`.
    QString add_login(const QString& name, const QString& role) {
        const QString password = fresh_password();
        exec(QStringLiteral("CREATE ROLE %1 LOGIN PASSWORD '%2' IN ROLE %3")
                 .arg(name, password, role));
        add_pgpass_line(name, password);
        return password;
    }

    // A statement as the server's administrator, in `database`; the error
    // text, empty on success.
    QString exec(const QString& sql, const QString& database = QStringLiteral("postgres")) {
        QSqlDatabase db = admin_connection(database);
        if (!db.isOpen())
            return db.lastError().text();
        QSqlQuery q(db);
        return q.exec(sql) ? QString() : q.lastError().text();
    }
    // The first value the statement gives; -1 when none.
    qint64 scalar(const QString& sql, const QString& database) {
        QSqlDatabase db = admin_connection(database);
        QSqlQuery q(db);
        return q.exec(sql) && q.next() ? q.value(0).toLongLong() : -1;
    }

    // Ends every session of the database's clients but this one's own.
    void terminate_clients(const QString& database) {
        scalar(QStringLiteral("SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity"
                              " WHERE datname = '%1' AND pid <> pg_backend_pid()")
                   .arg(database),
               QStringLiteral("postgres"));
    }

    // The server goes away at once, as on a power cut, and comes back.
    bool stop() {
        close_admin();
        QString out;
        running_ =
            !tool(QStringLiteral("pg_ctl"),
                  {QStringLiteral("-D"), data(), QStringLiteral("-m"), QStringLiteral("immediate"),
                   QStringLiteral("-w"), QStringLiteral("stop")},
                  &out);
        return !running_;
    }
    bool start(QString* out = nullptr) {
        QString text;
        running_ = tool(QStringLiteral("pg_ctl"),
                        {QStringLiteral("-D"), data(), QStringLiteral("-l"),
                         dir_.filePath(QStringLiteral("log")), QStringLiteral("-w"),
                         QStringLiteral("-t"), QStringLiteral("60"), QStringLiteral("-o"),
                         QStringLiteral("-c listen_addresses=127.0.0.1 -c port=%1"
                                        " -c unix_socket_directories=%2 -c fsync=off"
                                        " -c full_page_writes=off"
                                        " -c max_connections=40 -c shared_buffers=16MB")
                             .arg(port_)
                             .arg(dir_.path()),
                         QStringLiteral("start")},
                        &text);
        if (out)
            *out = text;
        return running_;
    }

    // What the server wrote to its log.
    QString log() const {
        QFile f(dir_.filePath(QStringLiteral("log")));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

private:
    void fail(const QString& why) { error_ = why; }
    QString data() const { return dir_.filePath(QStringLiteral("data")); }

    static QString find_bin() {
        QDir lib(QStringLiteral("/usr/lib/postgresql"));
        QStringList versions = lib.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        std::sort(versions.begin(), versions.end(),
                  [](const QString& a, const QString& b) { return a.toInt() > b.toInt(); });
        for (const QString& v : versions)
            if (QFile::exists(lib.filePath(v + QStringLiteral("/bin/pg_ctl"))))
                return lib.filePath(v + QStringLiteral("/bin"));
        const QString on_path = QStandardPaths::findExecutable(QStringLiteral("pg_ctl"));
        return on_path.isEmpty() ? QString() : QFileInfo(on_path).canonicalPath();
    }

    static QString fresh_password() {
        return QStringLiteral("pw") +
               QString::number(QRandomGenerator::global()->generate64(), 36) +
               QString::number(QRandomGenerator::global()->generate64(), 36);
    }

public:
    // A port of 127.0.0.1 nobody listens on (at the moment of asking).
    static int free_port() {
        const int s = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        int port = 0;
        if (::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
            ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) == 0)
            port = ntohs(a.sin_port);
        ::close(s);
        return port;
    }

private:
    static bool write(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
    }

    void add_pgpass_line(const QString& user, const QString& password) {
        QFile f(pgpass_);
        if (f.open(QIODevice::Append))
            f.write(
                QStringLiteral("127.0.0.1:%1:*:%2:%3\n").arg(port_).arg(user, password).toUtf8());
        f.close();
        // libpq reads a password file only the owner can read.
        f.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }

    // A server program, as the unprivileged user when we are root.
    bool tool(const QString& name, const QStringList& arguments, QString* out) const {
        QProcess p;
        p.setProcessChannelMode(QProcess::MergedChannels);
        const QString program = bin_ + QLatin1Char('/') + name;
        if (uid_ != 0) {
            const uid_t uid = uid_;
            const gid_t gid = gid_;
            p.setChildProcessModifier([uid, gid] {
                if (::setgid(gid) != 0 || ::setuid(uid) != 0)
                    ::_exit(126);
            });
        }
        p.setWorkingDirectory(dir_.path());
        p.start(program, arguments);
        const bool finished = p.waitForFinished(90000);
        *out = QString::fromLocal8Bit(p.readAll());
        return finished && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    }

    // Stops the server should this program end without doing so itself.
    void start_watchdog() {
        QStringList command{
            bin_ + QStringLiteral("/pg_ctl"), QStringLiteral("-D"),  data(), QStringLiteral("-m"),
            QStringLiteral("immediate"),      QStringLiteral("stop")};
        if (uid_ != 0)
            command = QStringList{QStringLiteral("setpriv"), QStringLiteral("--reuid=%1").arg(uid_),
                                  QStringLiteral("--regid=%1").arg(gid_),
                                  QStringLiteral("--clear-groups")} +
                      command;
        const QString script = QStringLiteral("while kill -0 %1 2>/dev/null; do sleep 1; done; "
                                              "test -d '%2' && exec %3 >/dev/null 2>&1")
                                   .arg(::getpid())
                                   .arg(data(), command.join(QLatin1Char(' ')));
        QProcess::startDetached(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script});
    }

    QSqlDatabase admin_connection(const QString& database) {
        const QString name = QStringLiteral("pg-admin-") + database + QString::number(port_);
        if (!connections_.contains(name)) {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
            db.setHostName(QStringLiteral("127.0.0.1"));
            db.setPort(port_);
            db.setUserName(QString::fromLatin1(admin));
            db.setDatabaseName(database);
            connections_ << name;
        }
        QSqlDatabase db = QSqlDatabase::database(name, false);
        if (!db.isOpen() || !QSqlQuery(db).exec(QStringLiteral("SELECT 1")))
            db.open();
        return db;
    }

    void close_admin() {
        for (const QString& name : connections_) {
            QSqlDatabase::database(name, false).close();
            QSqlDatabase::removeDatabase(name);
        }
        connections_.clear();
    }

    QTemporaryDir dir_;
    QString bin_;
    QString pgpass_;
    QString admin_password_;
    QString error_;
    uid_t uid_ = 0;
    gid_t gid_ = 0;
    int port_ = 0;
    int databases_ = 0;
    bool running_ = false;
    QStringList connections_;
};

} // namespace veltrako::testing
