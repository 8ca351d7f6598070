#pragma once
// The archive as the program uses it: one store, run on a thread of its own
// in the window so that no merge or query holds the user-interface thread,
// or inline where waiting does no harm (the command line, tests). The store
// is made, opened and closed on that thread and used nowhere else: Qt SQL
// connections cannot move between threads.
//
// Jobs run in the order they were posted; what a job hands back is delivered
// on the thread that owns the service, in the same order.

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QThread;

namespace veltrako::archive {

class ArchiveStore;

class ArchiveService : public QObject {
    Q_OBJECT
public:
    enum class Mode { inline_jobs, own_thread };

    // `path` empty: no archive; every job is told so.
    ArchiveService(QString path, Mode mode, int busy_timeout_ms = 5000);
    // Finishes the jobs posted, delivers their answers and closes the file.
    ~ArchiveService() override;

    bool enabled() const { return !path_.isEmpty(); }
    QString path() const { return path_; }

    // `job` runs with the store on the archive's thread; `done`, when given,
    // runs afterwards on this object's thread.
    void post(std::function<void(ArchiveStore&)> job, std::function<void()> done = {});
    // Runs `job` and waits for it; answers of earlier jobs are delivered first.
    void run_now(const std::function<void(ArchiveStore&)>& job);
    // Waits until every job posted so far has run and its answer is delivered.
    void wait_idle();

signals:
    // Something new was archived (said by whoever wrote it, on this thread).
    void written();

private:
    class Worker;
    void deliver_pending();

    QString path_;
    Mode mode_;
    int busy_timeout_ms_;
    std::unique_ptr<QThread> thread_;
    Worker* worker_ = nullptr;            // lives in thread_
    std::unique_ptr<ArchiveStore> store_; // inline mode
};

} // namespace veltrako::archive
