#include "archive/archive_service.h"

#include "archive/archive_store.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

namespace veltrako::archive {

// Owns the store on the archive's thread.
class ArchiveService::Worker : public QObject {
public:
    Worker(QString path, int busy_timeout_ms)
        : path_(std::move(path)), busy_timeout_ms_(busy_timeout_ms) {}

    ArchiveStore& store() {
        if (!store_) {
            store_ = std::make_unique<ArchiveStore>(path_);
            store_->set_busy_timeout_ms(busy_timeout_ms_);
        }
        return *store_;
    }
    void drop_store() { store_.reset(); }

private:
    QString path_;
    int busy_timeout_ms_;
    std::unique_ptr<ArchiveStore> store_;
};

ArchiveService::ArchiveService(QString path, Mode mode, int busy_timeout_ms)
    : path_(std::move(path)), mode_(mode), busy_timeout_ms_(busy_timeout_ms) {
    if (mode_ == Mode::inline_jobs) {
        store_ = std::make_unique<ArchiveStore>(path_);
        store_->set_busy_timeout_ms(busy_timeout_ms_);
        return;
    }
    thread_ = std::make_unique<QThread>();
    thread_->setObjectName(QStringLiteral("archive"));
    worker_ = new Worker(path_, busy_timeout_ms_);
    worker_->moveToThread(thread_.get());
    connect(thread_.get(), &QThread::finished, worker_, &QObject::deleteLater);
    thread_->start();
}

ArchiveService::~ArchiveService() {
    if (mode_ == Mode::inline_jobs)
        return;
    // The store is closed on its own thread, after every job posted.
    QMetaObject::invokeMethod(
        worker_, [w = worker_] { w->drop_store(); }, Qt::BlockingQueuedConnection);
    deliver_pending();
    thread_->quit();
    thread_->wait();
}

void ArchiveService::post(std::function<void(ArchiveStore&)> job, std::function<void()> done) {
    if (mode_ == Mode::inline_jobs) {
        job(*store_);
        if (done)
            done();
        return;
    }
    QMetaObject::invokeMethod(
        worker_,
        [this, w = worker_, job = std::move(job), done = std::move(done)]() mutable {
            job(w->store());
            if (done)
                QMetaObject::invokeMethod(this, std::move(done), Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void ArchiveService::run_now(const std::function<void(ArchiveStore&)>& job) {
    if (mode_ == Mode::inline_jobs) {
        job(*store_);
        return;
    }
    QMetaObject::invokeMethod(
        worker_, [w = worker_, &job] { job(w->store()); }, Qt::BlockingQueuedConnection);
    deliver_pending();
}

void ArchiveService::wait_idle() {
    run_now([](ArchiveStore&) {});
}

void ArchiveService::deliver_pending() {
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

} // namespace veltrako::archive
