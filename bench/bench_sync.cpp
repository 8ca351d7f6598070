// A team's archive at the scale of a morning's syncs: 10 laptops, each of
// which read two devices, every device read by two laptops (20 readouts of
// a full usage memory, 4097 periods each, the second reader's ring moved on
// by 200 nights and its running period longer), synchronised with one
// PostgreSQL server started as the tests start theirs. Every laptop syncs
// twice, two at a time, so that each ends up with everything.
//
// Goal on a 2-core machine: the whole run within 60 s, and the server and
// every laptop holding each distinct period once.

#include "archive/archive_event.h"
#include "archive/archive_schema.h"
#include "archive/archive_server.h"
#include "archive/archive_store.h"
#include "archive/archive_sync.h"
#include "compliance/compliance_month.h"
#include "pg_server.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <memory>

using namespace veltrako;

namespace {

constexpr int laptops = 10;
constexpr int ring = 4097;
constexpr int moved_on = 200;

jobs::UsageReadout readout(int device, int shift, int open_hours) {
    const compliance::Stamp from = compliance::make_stamp(2015, 1, 1, 22, 0, 0);
    jobs::UsageReadout r{QStringLiteral("VO2-%1").arg(device, 4, 10, QLatin1Char('0')),
                         QStringLiteral("LP1240010077"),
                         QDateTime(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC).addDays(shift),
                         {},
                         0};
    for (int i = 0; i < ring; ++i) {
        const compliance::Stamp start = from + (shift + i) * 86400LL;
        r.periods.push_back({start, start + (i == ring - 1 ? open_hours : 8) * 3600LL});
    }
    r.running_start = r.periods.back().start;
    return r;
}

qint64 periods_in(archive::ArchiveStore& store) {
    QSqlQuery q(store.database());
    return q.exec(QStringLiteral("SELECT count(*) FROM usage_periods")) && q.next()
               ? q.value(0).toLongLong()
               : -1;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    testing::PgServer pg;
    if (!pg.ok()) {
        std::fprintf(stderr, "bench_sync: %s\n", qPrintable(pg.error()));
        return 1;
    }
    const QString db = pg.fresh_database();
    QString error;
    {
        archive::ArchiveStore admin(
            archive::parse_server_address(pg.uri(testing::PgServer::admin, db)).address.value());
        if (!archive::init_server(admin, &error)) {
            std::fprintf(stderr, "bench_sync: init-server: %s\n", qPrintable(error));
            return 1;
        }
    }
    pg.add_login(QStringLiteral("tech"), QString::fromLatin1(archive::technician_role));
    const archive::ServerAddress server =
        archive::parse_server_address(pg.uri(QStringLiteral("tech"), db)).address.value();

    // Laptop i read device i (the ring as it stood) and device i+1 (200
    // nights later, its last night longer).
    QTemporaryDir dir;
    QStringList files;
    for (int i = 0; i < laptops; ++i) {
        files << dir.filePath(QStringLiteral("laptop%1.sqlite").arg(i));
        archive::ArchiveStore local(files.back());
        for (const auto& [device, shift, hours] :
             {std::tuple{i, 0, 2}, std::tuple{(i + 1) % laptops, moved_on, 5}}) {
            if (!local.write({archive::usage_event(readout(device, shift, hours), "bench@pc")},
                             nullptr, &error)) {
                std::fprintf(stderr, "bench_sync: %s\n", qPrintable(error));
                return 1;
            }
        }
    }

    QElapsedTimer clock;
    clock.start();
    std::atomic<int> failures{0};
    std::atomic<qint64> slowest{0};
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < laptops; i += 2) {
            std::vector<std::unique_ptr<QThread>> pair;
            for (int j = i; j < i + 2; ++j)
                pair.emplace_back(QThread::create([&, j] {
                    QElapsedTimer own;
                    own.start();
                    archive::ArchiveStore local(files[j]);
                    archive::ArchiveStore remote(server);
                    remote.set_busy_timeout_ms(60000);
                    archive::SyncOptions options;
                    options.now = QDateTime::currentSecsSinceEpoch();
                    const archive::SyncReport r = archive::sync_archive(local, remote, options);
                    if (!r.complete) {
                        std::fprintf(stderr, "bench_sync: laptop %d: %s\n", j, qPrintable(r.error));
                        ++failures;
                    }
                    for (qint64 was = slowest;
                         own.elapsed() > was && !slowest.compare_exchange_weak(was, own.elapsed());)
                        ;
                }));
            for (auto& t : pair)
                t->start();
            for (auto& t : pair)
                t->wait();
        }
    }
    const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
    const qint64 on_server = pg.scalar(QStringLiteral("SELECT count(*) FROM usage_periods"), db);
    const qint64 distinct = qint64(laptops) * (ring + moved_on);
    std::printf("sync: %d laptops, %d readouts of %d periods each, %.1f s, server periods %lld\n",
                laptops, 2 * laptops, ring, seconds, static_cast<long long>(on_server));
    std::printf("slowest sync of one laptop: %.1f s; distinct periods %lld\n",
                static_cast<double>(slowest.load()) / 1000.0, static_cast<long long>(distinct));
    bool whole = on_server == distinct && failures == 0;
    for (const QString& f : files) {
        archive::ArchiveStore local(f);
        if (!local.open(&error) || periods_in(local) != distinct) {
            std::printf("laptop %s holds %lld periods\n", qPrintable(f),
                        static_cast<long long>(periods_in(local)));
            whole = false;
        }
    }
    std::printf(whole ? "every laptop and the server hold each period once\n"
                      : "NOT WHOLE: periods lost or doubled\n");
    return whole ? 0 : 1;
}
