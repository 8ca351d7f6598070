#pragma once
// What became of a write to the device, judged by the device's own answer to
// the read queued after it, never by a fixed wait. The waiting keeps the
// event loop (and so the poll timer) running and adds nothing to what is
// sent: it only watches which command each answer belongs to.

#include "user_interface.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace veltrako {
class AppContext;
}

namespace veltrako::device {

enum class WriteOutcome {
    not_written, // refused, cancelled, or answered No: nothing was sent
    confirmed,   // the device reports the value written
    differs,     // the device reports another value
    no_answer,   // the read-back was not answered
};

// Set up before the write is queued; notes, for every answer of the device,
// the command it answers (one command is in flight at a time, so that is the
// command last sent).
class ReadBackWatch {
public:
    explicit ReadBackWatch(AppContext& ctx);
    ~ReadBackWatch();
    ReadBackWatch(const ReadBackWatch&) = delete;
    ReadBackWatch& operator=(const ReadBackWatch&) = delete;

    // Waits until the device has answered `read_back` after it answered
    // `write` (the last write and the last read of a series). False when the
    // link went down, Timer1 is off (nothing would be sent) or the time the
    // repetitions could take has run out.
    bool await(const QByteArray& write, const QByteArray& read_back);

private:
    bool answered(const QByteArray& write, const QByteArray& read_back) const;

    AppContext& ctx_;
    std::function<void(const QByteArray&)> previous_;
    QList<QByteArray> answered_; // the command each answer belonged to, in order
};

// One write's result as it is told.
struct ReadBack {
    QString what;     // the setting's name ("Restzeit")
    QString written;  // the value written, as people read it
    QString reported; // the value the device reports after the read-back
    bool answered = false;
    bool equal = false; // the reported value is the one written
    QString before;     // the value before the write, as people read it
};

// How the outcome reaches the technician: a message box where the write has
// always ended with one, otherwise a note beside the connection state.
enum class Telling { message, note };

// Tells the outcome and returns it; a confirmed write is handed on to the
// device's history (FeatureHooks::device_written). A confirmed write told by message shows
// `confirmed_message` (the text it always showed); everything else names the
// setting, and for a failure both the value written and what the device
// reports.
WriteOutcome tell_outcome(AppContext& ctx, const ReadBack& result, Telling telling,
                          const QString& confirmed_message = {});

// Asks before a change that cannot be undone, naming the old and the new
// value; true only for Yes.
bool confirm_change(AppContext& ctx, const QString& question, const QString& old_value,
                    const QString& new_value);

} // namespace veltrako::device
