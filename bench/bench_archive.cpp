// The archive at the scale of a device's life: merging readouts of a full
// usage memory again and again (as visit after visit reads the same periods
// and a few new ones), and the history of one device with 40,000 periods:
// the month lines, opening its Verlauf view on the archive's thread, and the
// share of it the user-interface thread does.
//
// Goals on a 2-core machine: one full readout merged in at most 300 ms; the
// history of 40,000 periods opened in at most 200 ms; nothing on the
// user-interface thread longer than 50 ms.

#include "archive/archive_event.h"
#include "archive/archive_history.h"
#include "archive/archive_store.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace veltrako;

namespace {

// A full ring of 4097 nightly periods, moved on by `shift` nights, the last
// one still running and seen at `readout` (hours after the first).
jobs::UsageReadout full_readout(const QString& sn, int shift, int readout) {
    const compliance::Stamp from = compliance::make_stamp(2015, 1, 1, 22, 0, 0);
    jobs::UsageReadout r{
        sn,
        QStringLiteral("LP1240010077"),
        QDateTime(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC).addSecs(readout * 3600LL),
        {},
        0};
    for (int i = 0; i < 4097; ++i) {
        const compliance::Stamp start = from + (shift + i) * 86400LL;
        r.periods.push_back({start, start + 8 * 3600 + (i == 4096 ? readout : 0)});
    }
    r.running_start = r.periods.back().start;
    return r;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("archive.sqlite"));
    archive::ArchiveStore store(path);
    QString error;
    if (!store.open(&error)) {
        std::fprintf(stderr, "bench_archive: %s\n", qPrintable(error));
        return 1;
    }

    // 100 readouts of one device: every 10th visit the ring has moved on by a
    // week, the others read the same periods with the running one longer.
    QElapsedTimer total;
    total.start();
    qint64 slowest = 0;
    for (int n = 0; n < 100; ++n) {
        const auto event = archive::usage_event(
            full_readout(QStringLiteral("VO2-BENCH"), (n / 10) * 7, n + 1), archive::this_writer());
        QElapsedTimer one;
        one.start();
        if (!store.write({event}, nullptr, &error)) {
            std::fprintf(stderr, "bench_archive: %s\n", qPrintable(error));
            return 1;
        }
        slowest = std::max(slowest, one.elapsed());
    }
    std::printf("archive: 100 readouts of 4097 periods merged in %lld ms (slowest %lld ms)\n",
                static_cast<long long>(total.elapsed()), static_cast<long long>(slowest));

    // One device with 40,000 periods: ten memories' worth, as years of
    // visits (or an import of them) leave them.
    jobs::UsageReadout years = full_readout(QStringLiteral("VO2-LONG"), 0, 1);
    years.periods.clear();
    const compliance::Stamp first = compliance::make_stamp(1990, 1, 1, 22, 0, 0);
    for (int i = 0; i < 40000; ++i) // two periods a day
        years.periods.push_back({first + i * 43200LL, first + i * 43200LL + 4 * 3600});
    if (!store.write({archive::usage_event(years, archive::this_writer())}, nullptr, &error)) {
        std::fprintf(stderr, "bench_archive: %s\n", qPrintable(error));
        return 1;
    }
    QElapsedTimer history;
    history.start();
    const archive::Periods periods = store.periods(QStringLiteral("VO2-LONG"), &error).value();
    const qint64 read_ms = history.elapsed();
    const QStringList lines = archive::usage_lines(periods, 8, 70, QLocale::c());
    std::printf("history: %zu periods of one device, month lines in %lld ms (%lld ms reading)\n",
                periods.size(), static_cast<long long>(history.elapsed()),
                static_cast<long long>(read_ms));

    // Opening the Verlauf view: the archive thread reads the visits, the
    // status entries and the periods; the user-interface thread then makes
    // the month the chart shows.
    QElapsedTimer open;
    open.start();
    const auto visits = store.visits(QStringLiteral("VO2-LONG"), &error).value();
    const auto seen = store.status_first_seen(QStringLiteral("VO2-LONG"), &error).value();
    const auto changes = archive::compare_visits(visits, seen);
    const archive::Periods again = store.periods(QStringLiteral("VO2-LONG"), &error).value();
    const qint64 thread_ms = open.elapsed();
    QElapsedTimer ui;
    ui.start();
    const archive::ChartMonth month = archive::chart_month(again, 0, 0);
    qint64 step_ms = 0;
    for (int i = 1; i <= 12; ++i) { // a year back, month by month
        QElapsedTimer step;
        step.start();
        archive::chart_month(again, compliance::add_months(month.state.shown_month, -i), 0);
        step_ms = std::max(step_ms, step.elapsed());
    }
    std::printf("verlauf: %zu periods opened in %lld ms (archive thread %lld ms, user-interface "
                "thread %lld ms, a month's step at most %lld ms)\n",
                again.size(), static_cast<long long>(open.elapsed()),
                static_cast<long long>(thread_ms), static_cast<long long>(ui.elapsed() / 13),
                static_cast<long long>(step_ms));
    store.close();
    std::printf("archive file: %lld bytes (%s)\n",
                static_cast<long long>(QFileInfo(path).size() +
                                       QFileInfo(path + QStringLiteral("-wal")).size()),
                qPrintable(QString::number(lines.size()) + QStringLiteral(" month lines")));
    return 0;
}
