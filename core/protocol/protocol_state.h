#pragma once
// Receive buffer and send queue of the frame protocol.

#include <QByteArray>

#include <array>

namespace veltrako::protocol {

inline constexpr int send_queue_capacity = 100;

struct ProtocolState {
    QByteArray rx_buffer;       // received bytes not yet cut into frames
    bool waiting_reply = false; // a sent command is unanswered
    // Entries 1..queue_count are used; entry 1 is the oldest.
    std::array<QByteArray, send_queue_capacity + 1> send_queue;
    int queue_count = 0;
    QByteArray last_command; // payload last sent from the queue, for repetitions
    int retry_count = 0;
    qint32 tick_count = 0;
    bool timer_busy = false; // re-entrancy guard of the poll tick
    // The rest of this record readout sends each "k" and then waits 20 ms,
    // instead of sending it the moment the previous answer is handled: set
    // by a repetition after a time-out and by a record number other than the
    // one asked for, cleared when a readout starts.
    bool paced_reads = false;
};

} // namespace veltrako::protocol
