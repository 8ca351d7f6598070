#pragma once
// The device's boot loader. It speaks raw bytes, no frames:
//   "I"  sync request, answered with the loader's greeting: "ae60000", the
//        loader's version and, from a loader that knows it, the hardware
//        identifier of the board ("ae60000 BL1.3 AE61\r\n")
//   0x42 N a_hi a_lo d1..dN s   one data line: N data bytes for address a; s
//        makes the sum of all N + 5 bytes 0 mod 256. Answered ">" when good,
//        "E" when the checksum is wrong.
//   "R"  leave the loader and restart the application (no answer).
// Any other byte is ignored.

#include "faults.h"

#include <QByteArray>
#include <QList>

namespace veltrako::sim {

class BootLoader {
public:
    static constexpr char data_line_start = 0x42;

    struct Step {
        enum Kind {
            need_more, // an incomplete request stands in the buffer
            send,      // send `answer`
            restart,   // leave the loader
            ignored,   // a byte the loader does not know was dropped
        };
        Kind kind = need_more;
        QByteArray answer;
        bool programs_flash = false; // the answer follows a flash write (takes longer)
    };

    explicit BootLoader(QByteArray greeting = "ae60000 BL1.3\r\n");

    // Starts a loader session: attempt counters begin anew, programmed lines stay.
    void enter();
    // Takes one request from the front of `buffer`.
    Step take(QByteArray& buffer, const Faults& faults);

    // Every data line taken, as received, in order (over all sessions).
    const QList<QByteArray>& programmed_lines() const { return programmed_; }
    // Data lines taken in the current session.
    int lines_this_session() const { return session_lines_; }
    // Every data line received in this session, good or not.
    int attempts_this_session() const { return session_attempts_; }

private:
    bool refuse(const Faults& faults) const;

    QByteArray greeting_;
    QList<QByteArray> programmed_;
    int session_lines_ = 0;
    int session_attempts_ = 0;
    int attempts_on_line_ = 0;
};

} // namespace veltrako::sim
