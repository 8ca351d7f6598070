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
};

} // namespace veltrako::protocol
