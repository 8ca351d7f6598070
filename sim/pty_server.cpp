#include "pty_server.h"

#include "concentrator.h"
#include "protocol/hex.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace veltrako::sim {

namespace {

// How often the server looks whether a client has opened the terminal again
// after the last one closed it (the master reports a hang-up until then).
constexpr int client_watch_ms = 50;

QString system_error(const char* what) {
    return QStringLiteral("%1: %2").arg(QLatin1String(what),
                                        QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace

PtyServer::PtyServer(Concentrator& device) : device_(device) {
    output_due_.setSingleShot(true);
    output_due_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&output_due_, &QTimer::timeout, [this] { write_due_output(); });
    client_watch_.setInterval(client_watch_ms);
    QObject::connect(&client_watch_, &QTimer::timeout, [this] { look_for_client(); });
}

PtyServer::~PtyServer() {
    readable_.reset();
    writable_.reset();
    if (master_ >= 0)
        ::close(master_);
}

bool PtyServer::open(QString* error) {
    const auto fail = [&](const char* what) {
        if (error)
            *error = system_error(what);
        if (master_ >= 0)
            ::close(master_);
        master_ = -1;
        return false;
    };
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0)
        return fail("posix_openpt");
    if (::grantpt(master_) != 0)
        return fail("grantpt");
    if (::unlockpt(master_) != 0)
        return fail("unlockpt");
    char name[128] = {};
    if (::ptsname_r(master_, name, sizeof name) != 0)
        return fail("ptsname_r");
    ::fcntl(master_, F_SETFD, FD_CLOEXEC);
    if (::fcntl(master_, F_SETFL, ::fcntl(master_, F_GETFL) | O_NONBLOCK) != 0)
        return fail("fcntl");

    // Bytes pass untouched: no echo, no line editing, no CR/LF translation.
    termios tio{};
    if (::tcgetattr(master_, &tio) != 0)
        return fail("tcgetattr");
    ::cfmakeraw(&tio);
    tio.c_cflag |= CSTOPB | CLOCAL | CREAD;
    ::cfsetispeed(&tio, B115200);
    ::cfsetospeed(&tio, B115200);
    if (::tcsetattr(master_, TCSANOW, &tio) != 0)
        return fail("tcsetattr");

    slave_path_ = QString::fromLocal8Bit(name);
    clock_.start();
    readable_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, [this] { read_from_client(); });
    writable_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Write);
    writable_->setEnabled(false);
    QObject::connect(writable_.get(), &QSocketNotifier::activated, [this] { flush(); });
    return true;
}

void PtyServer::set_log(std::function<void(const QString&)> log) {
    if (!log) {
        device_.set_observer({});
        return;
    }
    device_.set_observer([log = std::move(log)](const Concentrator::Event& e) {
        const QString answer = e.answer.isEmpty() ? QStringLiteral("(no answer)")
                                                  : protocol::hex_dump(e.answer).trimmed();
        log(QStringLiteral("%1 %2%3 -> %4")
                .arg(e.at_ms / 1000.0, 9, 'f', 3)
                .arg(e.boot_loader ? QStringLiteral("loader ") : QString())
                .arg(protocol::hex_dump(e.request).trimmed(), answer));
    });
}

void PtyServer::read_from_client() {
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n > 0) {
            device_.receive(QByteArray(buffer, static_cast<qsizetype>(n)), clock_.elapsed());
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            break;
        client_gone(); // EIO: the last client closed the terminal
        return;
    }
    schedule_next_output();
}

void PtyServer::schedule_next_output() {
    const double next = device_.next_transmit_ms();
    if (next == Concentrator::nothing_pending) {
        output_due_.stop();
        return;
    }
    output_due_.start(static_cast<int>(
        std::clamp<double>(std::ceil(next - static_cast<double>(clock_.elapsed())), 0, 60000)));
}

void PtyServer::write_due_output() {
    const QByteArray out = device_.transmit(clock_.elapsed());
    if (!hung_up_) {
        unwritten_ += out;
        flush();
    }
    schedule_next_output();
}

void PtyServer::flush() {
    while (!unwritten_.isEmpty()) {
        const ssize_t n =
            ::write(master_, unwritten_.constData(), static_cast<size_t>(unwritten_.size()));
        if (n > 0) {
            unwritten_.remove(0, n);
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            writable_->setEnabled(true); // the client reads slowly: go on when it has room
            return;
        }
        client_gone();
        return;
    }
    writable_->setEnabled(false);
}

void PtyServer::client_gone() {
    hung_up_ = true;
    unwritten_.clear();
    // The master stays readable (hang-up) until a client opens the terminal
    // again; watching it with the notifier would spin, so look now and then.
    readable_->setEnabled(false);
    writable_->setEnabled(false);
    client_watch_.start();
}

void PtyServer::look_for_client() {
    pollfd p{master_, POLLIN, 0};
    if (::poll(&p, 1, 0) < 0 || (p.revents & POLLHUP))
        return;
    hung_up_ = false;
    client_watch_.stop();
    readable_->setEnabled(true);
    if (p.revents & POLLIN)
        read_from_client();
}

} // namespace veltrako::sim
