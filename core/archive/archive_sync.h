#pragma once
// A laptop's archive and its team's server made one: every event the server
// lacks is sent, every event other laptops added is fetched. Offline first:
// every job writes the laptop's file; this is the only place that talks to
// the server.
//
// Each write transaction of the laptop (a visit with all its events, a
// readout, an imported file) travels as one transaction of the server, in
// the order they were written, and each range of the server's transactions
// lands in one transaction of the laptop. Both sides merge by identity and
// by the archive's own rules, so a run that is repeated, interrupted, or
// meets another laptop's run of the same device neither loses nor doubles
// anything. A step that fails (the connection dropped, the server
// restarted, a lock waited too long) is tried again on a new connection,
// three times by default; then the run stops and says what was and was not
// sent.
//
// Both stores are used on the calling thread only.

#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <optional>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::archive {

class ArchiveStore;

struct SyncOptions {
    int retries = 3;
    // Before the first retry; doubled before each further one.
    int first_wait_ms = 500;
    // Server transactions merged per transaction of the laptop.
    int range = 500;
    // PC time of the run (seconds since 1970 UTC), kept as the last sync.
    qint64 now = 0;
    // Set from another thread: the run stops before its next transaction
    // and waits for no retry (the program is closing).
    const std::atomic<bool>* stop = nullptr;
};

struct SyncReport {
    bool complete = false;
    int sent = 0;     // events the server did not have
    int received = 0; // events this archive did not have
    // What was not sent when the run stopped: events and their devices.
    int unsent_events = 0;
    QStringList unsent_devices;
    bool sent_all = false;
    bool gave_up = false; // the server failed every retry; else this archive failed
    QString error;        // why the run stopped
};

// Called after each transaction: `done` of `total` (the total may grow once
// the server says how much it has).
using SyncProgress = std::function<void(int done, int total)>;

SyncReport sync_archive(ArchiveStore& local, ArchiveStore& server, const SyncOptions& options,
                        const SyncProgress& progress = {});

// What a run that stopped did not do and why, in the program's language:
// "not sent: 4 events of VO2-3, VO2-4. The sync gave up after 3 retries:
// ... The next sync completes it." Empty for a complete run.
QString sync_problem_text(const config::LanguageTables& language, const SyncReport& report,
                          const SyncOptions& options);

// When this archive last completed a sync (PC time, seconds since 1970 UTC);
// 0 when it never did.
std::optional<qint64> last_sync(ArchiveStore& local, QString* error);

} // namespace veltrako::archive
