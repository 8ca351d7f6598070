#pragma once
// Serves one simulated concentrator on a pseudo-terminal, so that a program
// that opens serial ports by path (the serial link, a terminal program) can
// talk to it. Bytes read from the terminal go to the device with the time
// elapsed since the server started; the device's output is written when it is
// due. A client may close the terminal and open it again as often as it
// likes; while none has it open, what the device sends is lost, as on a
// cable with nobody at the other end.

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace veltrako::sim {

class Concentrator;

class PtyServer {
public:
    explicit PtyServer(Concentrator& device);
    ~PtyServer();
    PtyServer(const PtyServer&) = delete;
    PtyServer& operator=(const PtyServer&) = delete;

    // Creates the terminal pair, in raw mode at 115200 baud, 8 data bits,
    // 2 stop bits. False with `error` set when the system refuses.
    bool open(QString* error);
    // The path clients open, e.g. /dev/pts/7.
    QString slave_path() const { return slave_path_; }
    // Whether a client has the terminal open, as far as the server can tell.
    bool client_present() const { return !hung_up_; }

    // Called with one line for every request the device took.
    void set_log(std::function<void(const QString&)> log);

private:
    void read_from_client();
    void write_due_output();
    void flush();
    void schedule_next_output();
    void client_gone();
    void look_for_client();

    Concentrator& device_;
    int master_ = -1;
    QString slave_path_;
    QElapsedTimer clock_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    QTimer output_due_;
    QTimer client_watch_;
    QByteArray unwritten_;
    bool hung_up_ = false;
};

} // namespace veltrako::sim
