#pragma once
// The send queue and the poll tick: one command in flight at a time,
// repetitions on silence, the periodic requests, and the general reset.

#include <QByteArray>

namespace veltrako {
class AppContext;
}

namespace veltrako::protocol {

// Appends a payload to the send queue. A full queue shows "Outbuffer
// overflow" and resets the link state; the payload is lost. Always true.
bool queue_command(AppContext& ctx, const QByteArray& payload);
// Sends the oldest queued command unless an answer is outstanding or the
// device's version withholds it; a withheld command is dropped.
void send_next(AppContext& ctx);
// Takes every queued command whose payload begins with `letter` out of the
// queue, the others keeping their order; one already sent stays outstanding.
void drop_queued(AppContext& ctx, char letter);
// Whether the device's version lets this payload through the queue.
bool send_permitted(const AppContext& ctx, const QByteArray& payload);
// One tick of Timer1.
void timer1_tick(AppContext& ctx);
// The answer time-out of the configuration in milliseconds, at least one.
qint64 answer_timeout_ms(const AppContext& ctx);
// Nothing has been heard for longer than the answer time-out: the next tick
// repeats the last command, or gives the device up after three repetitions.
bool answer_overdue(const AppContext& ctx);
// A pause that was not the device's (a person reading a message inside the
// tick): the answer time-out counts from now.
void restart_answer_clock(AppContext& ctx);
// The command on the wire is given up by whoever sent it: no answer is
// waited for and it is not repeated. The answer clock starts again, so a
// device that answers nothing else is still given up by the time-out.
void give_up_outstanding(AppContext& ctx);
// Empties the receive buffer and the queue, forgets the outstanding command,
// clears the device record and its displays, switches Timer1 off.
void reset_link_state(AppContext& ctx);
// Queues the 29 requests that follow opening a device.
void queue_initial_sequence(AppContext& ctx);
// General reset, open the device, initial sequence, Timer1 on (also when no
// device was found, so that the silent reconnection takes over).
void connect_routine(AppContext& ctx);
// Timer1 on again when a device is open and the poll cycle stands still,
// unless the device waits in its boot loader (the poll cycle's frames mean
// nothing there). A job that needs the device calls it before it queues
// anything: a command queued while nothing polls would wait for ever.
void resume_polling(AppContext& ctx);

// The "Entwickler" page's actions.
void cmd_clear(AppContext& ctx);
// Writes the communication log to program folder + "protokoll" + yyyymmddhhnnss + ".txt";
// returns the file written, or an empty text on failure.
QString cmd_saveprotokoll(AppContext& ctx);
void cmd_sendcommand(AppContext& ctx, const QByteArray& typed);

} // namespace veltrako::protocol
