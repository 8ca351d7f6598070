#pragma once
// The simulated oxygen concentrator: the far end of the cable. It cuts the
// host's bytes into frames (any chunking), answers each command its latency
// after it arrived, speaks raw bytes while its boot loader runs,
// and shows the faults it is told to. Everything it does follows from the
// bytes it was sent and the times passed in, so a test replays exactly.

#include "boot_loader.h"
#include "command_dispatcher.h"
#include "device_state.h"
#include "device_time.h"
#include "faults.h"
#include "link/sim_peer.h"

#include <QByteArray>

#include <QString>

#include <deque>
#include <functional>
#include <limits>
#include <memory>

namespace veltrako::sim {

struct Scenario;

class Concentrator final : public link::SimPeer {
public:
    // `present` is the PC's time at power-on: the device clock starts there
    // unless the scenario fixes it (CLOCK), and so do records placed
    // relative to it.
    explicit Concentrator(const Scenario& scenario, const QDateTime& present = pc_present_time());

    bool plugged_in() const override { return !faults_.unplug; }
    void receive(const QByteArray& bytes, double now_ms) override;
    QByteArray transmit(double now_ms) override;
    double next_transmit_ms() const override;

    const Faults& faults() const { return faults_; }
    // Takes effect for the next answer; "every Nth answer" counts from here.
    // Pulling the cable loses what was on its way in either direction.
    void set_faults(const Faults& faults);

    bool in_boot_loader() const { return in_boot_loader_; }
    const BootLoader& boot_loader() const { return loader_; }
    // The device's memory and settings, for tests to look at or to change
    // while it runs (an alarm coming on, say).
    DeviceState& state() { return device_; }
    const DeviceState& state() const { return device_; }

    // One request the device took: a command payload, or a boot loader request.
    struct Event {
        qint64 at_ms = 0;
        bool boot_loader = false;
        QByteArray request;
        QByteArray answer; // empty when nothing is sent
    };
    void set_observer(std::function<void(const Event&)> observer) {
        observer_ = std::move(observer);
    }

    // How long the boot loader takes to write one data line to flash, on top
    // of its latency.
    static constexpr int flash_write_ms = 8;

private:
    void take_frames(double now_ms);
    void take_boot_loader_requests(double now_ms);
    // The faults aimed at one record of the usage memory, on a "k" request.
    void answer_record(const QByteArray& request, Reply reply, double now_ms);
    void send_answer_frame(const QByteArray& payload, double now_ms, int extra_delay_ms = 0);
    void schedule(QByteArray bytes, double due_ms);
    void report(double now_ms, bool boot_loader, QByteArray request, QByteArray answer) const;

    DeviceState device_;
    int latency_ms_; // from the last byte of a request to the first of its answer
    BootLoader loader_;
    Faults faults_;
    bool in_boot_loader_ = false;
    QByteArray received_;

    struct Pending {
        double due_ms;
        QByteArray bytes;
    };
    std::deque<Pending> outbox_;
    double last_due_ms_ = -std::numeric_limits<double>::infinity();
    qint64 answers_since_faults_set_ = 0;
    // How often each record fault has hit since the faults were set.
    int late_answers_ = 0;
    int duplicated_answers_ = 0;
    int wrong_index_answers_ = 0;
    int refused_answers_ = 0;
    std::function<void(const Event&)> observer_;
};

// The simulated device of "--link sim[:SCENARIO]": a sample scenario by name
// (empty: "default") or a scenario file. nullptr with `error` set when the
// scenario cannot be loaded.
std::shared_ptr<link::SimPeer> make_concentrator(const QString& scenario, QString* error);

} // namespace veltrako::sim
