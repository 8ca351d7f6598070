#include "concentrator.h"

#include "bytes.h"
#include "command_dispatcher.h"
#include "protocol/frame_codec.h"
#include "scenario.h"

#include <algorithm>
#include <cmath>

namespace veltrako::sim {

namespace {

// The commands that change what the device stores.
bool is_write(const QByteArray& payload) {
    return !payload.isEmpty() && QByteArrayView("tsECwuoxZ").contains(payload.at(0));
}

// The device's clocks count whole milliseconds.
qint64 whole_ms(double ms) {
    return static_cast<qint64>(std::floor(ms));
}

} // namespace

Concentrator::Concentrator(const Scenario& scenario, const QDateTime& present)
    : device_(scenario, present), latency_ms_(scenario.latency_ms),
      loader_(scenario.boot_loader_greeting), faults_(scenario.faults),
      in_boot_loader_(scenario.boot_loader_at_power_on) {
    if (in_boot_loader_)
        loader_.enter();
}

void Concentrator::set_faults(const Faults& faults) {
    if (faults.unplug && !faults_.unplug) {
        outbox_.clear();
        received_.clear();
    }
    faults_ = faults;
    answers_since_faults_set_ = 0;
    late_answers_ = duplicated_answers_ = wrong_index_answers_ = refused_answers_ = 0;
}

void Concentrator::receive(const QByteArray& bytes, double now_ms) {
    if (faults_.unplug)
        return;
    device_.advance_hours(whole_ms(now_ms));
    received_ += bytes;
    // The boot loader may hand back to the application in the middle of a
    // chunk (and "b" hands over to it), so the two take turns until the bytes
    // run out or neither can go on.
    for (;;) {
        const bool was_in_boot_loader = in_boot_loader_;
        if (in_boot_loader_)
            take_boot_loader_requests(now_ms);
        else
            take_frames(now_ms);
        if (in_boot_loader_ == was_in_boot_loader)
            return;
    }
}

void Concentrator::take_frames(double now_ms) {
    while (!in_boot_loader_) {
        const protocol::FrameStep step = protocol::scan_frame(received_);
        if (step.kind == protocol::FrameStep::need_more)
            return;
        if (step.kind != protocol::FrameStep::frame) {
            received_.remove(0, 1); // resynchronise on the next "#"
            continue;
        }
        const QByteArray payload = protocol::frame_payload(received_, step);
        received_.remove(0, step.frame_size);
        Reply reply;
        if (faults_.ignore_writes && is_write(payload)) {
            const DeviceState kept = device_;
            reply = answer_command(device_, payload, whole_ms(now_ms));
            device_ = kept;
        } else {
            reply = answer_command(device_, payload, whole_ms(now_ms));
        }
        switch (reply.kind) {
        case Reply::none:
            report(now_ms, false, payload, {});
            break;
        case Reply::answer:
            if (payload.startsWith('k')) {
                answer_record(payload, std::move(reply), now_ms);
                break;
            }
            report(now_ms, false, payload, reply.payload);
            send_answer_frame(reply.payload, now_ms);
            break;
        case Reply::enter_boot_loader:
            report(now_ms, false, payload, {});
            in_boot_loader_ = true;
            loader_.enter();
            break;
        }
    }
}

void Concentrator::take_boot_loader_requests(double now_ms) {
    while (in_boot_loader_) {
        const qsizetype before = received_.size();
        const QByteArray pending = received_;
        const BootLoader::Step step = loader_.take(received_, faults_);
        const QByteArray request = pending.left(before - received_.size());
        switch (step.kind) {
        case BootLoader::Step::need_more:
            return;
        case BootLoader::Step::ignored:
            break;
        case BootLoader::Step::restart:
            report(now_ms, true, request, {});
            in_boot_loader_ = false;
            device_.restart(whole_ms(now_ms), loader_.lines_this_session() > 0);
            break;
        case BootLoader::Step::send:
            report(now_ms, true, request, step.answer);
            if (!faults_.silent) {
                const int delay = latency_ms_ + (step.programs_flash ? flash_write_ms : 0);
                schedule(step.answer, now_ms + delay + faults_.answer_delay_ms);
            }
            break;
        }
    }
}

void Concentrator::answer_record(const QByteArray& request, Reply reply, double now_ms) {
    const int n = static_cast<int>(be16_at(request, 2));
    const Faults& f = faults_;
    if (n == f.withheld_record) {
        report(now_ms, false, request, {});
        return;
    }
    if (n == f.wrong_index_record && wrong_index_answers_++ == 0) {
        QByteArray next("k");
        append_be16(next, static_cast<std::uint16_t>(n + 1));
        reply = answer_command(device_, next, whole_ms(now_ms));
    }
    if (n == f.refused_answer_record &&
        (f.refused_answers == Faults::every_answer || refused_answers_ < f.refused_answers)) {
        ++refused_answers_;
        reply.payload.truncate(5); // the number and half a time stamp
    }
    const int delay = n == f.late_answer_record && late_answers_++ == 0 ? f.late_answer_ms : 0;
    report(now_ms, false, request, reply.payload);
    send_answer_frame(reply.payload, now_ms, delay);
    if (n == f.duplicate_answer_record && duplicated_answers_++ == 0)
        send_answer_frame(reply.payload, now_ms);
}

void Concentrator::send_answer_frame(const QByteArray& payload, double now_ms, int extra_delay_ms) {
    if (faults_.silent)
        return;
    const qint64 n = ++answers_since_faults_set_;
    if (faults_.drop_every > 0 && n % faults_.drop_every == 0)
        return;
    QByteArray frame = protocol::build_frame(payload);
    if (faults_.corrupt_crc_every > 0 && n % faults_.corrupt_crc_every == 0)
        frame[frame.size() - 1] = static_cast<char>(frame.at(frame.size() - 1) ^ 0x5A);
    const QByteArray bytes = faults_.garbage_between_frames + frame;
    const double due = now_ms + latency_ms_ + faults_.answer_delay_ms + extra_delay_ms;
    if (faults_.split_answers) {
        const qsizetype half = bytes.size() / 2;
        schedule(bytes.left(half), due);
        schedule(bytes.mid(half), due + Faults::split_gap_ms);
    } else {
        schedule(bytes, due);
    }
}

void Concentrator::schedule(QByteArray bytes, double due_ms) {
    // One wire: answers leave in the order their commands came.
    due_ms = std::max(due_ms, last_due_ms_);
    last_due_ms_ = due_ms;
    outbox_.push_back({due_ms, std::move(bytes)});
}

QByteArray Concentrator::transmit(double now_ms) {
    QByteArray out;
    while (!outbox_.empty() && outbox_.front().due_ms <= now_ms) {
        out += outbox_.front().bytes;
        outbox_.pop_front();
    }
    return out;
}

double Concentrator::next_transmit_ms() const {
    return outbox_.empty() || faults_.unplug ? nothing_pending : outbox_.front().due_ms;
}

void Concentrator::report(double now_ms, bool boot_loader, QByteArray request,
                          QByteArray answer) const {
    if (observer_)
        observer_({whole_ms(now_ms), boot_loader, std::move(request), std::move(answer)});
}

std::shared_ptr<link::SimPeer> make_concentrator(const QString& scenario, QString* error) {
    const auto s = load_scenario(scenario.isEmpty() ? QStringLiteral("default") : scenario, error);
    if (!s)
        return nullptr;
    return std::make_shared<Concentrator>(*s);
}

} // namespace veltrako::sim
