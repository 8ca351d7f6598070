#pragma once
// Faults the simulated device can be told to show, each named for what it
// does. Set in a scenario file or switched by a test while the device runs.

#include <QByteArray>

namespace veltrako::sim {

// How often the boot loader refuses the data line named by `nak_line`.
enum class NakAttempts {
    first,     // the first attempt only; the repetition is taken
    first_two, // the first two attempts; the third is taken
    always,    // every attempt
};

// How the boot loader words its acknowledgement of a good data line. A host
// must take only the plain form; the others are what a loader with a slipping
// transmitter or a different build might send.
enum class AckForm {
    plain,          // ">"
    doubled,        // ">>"
    trailing_blank, // "> "
};

struct Faults {
    // Nothing is answered at all, in frames or in the boot loader.
    bool silent = false;
    // Every Nth framed answer is not sent (0: none). Counted from the moment
    // the faults were set.
    int drop_every = 0;
    // Every Nth framed answer goes out with a damaged CRC (0: none).
    int corrupt_crc_every = 0;
    // Sent in front of every framed answer (empty: nothing).
    QByteArray garbage_between_frames;
    // Every framed answer goes out in two parts, the second `split_gap_ms` later.
    bool split_answers = false;
    // Added to the device's latency for every answer.
    int answer_delay_ms = 0;
    // Every write is acknowledged as usual, but the device keeps the values
    // it had (a setting it refuses, a memory that no longer takes writes).
    bool ignore_writes = false;
    // Boot loader: data line k (counted from 1 in the order the lines are
    // acknowledged) is answered with "E" instead of ">" (0: none).
    int nak_line = 0;
    NakAttempts nak_attempts = NakAttempts::first;
    // Boot loader: the form of every acknowledgement (the line is programmed
    // all the same).
    AckForm ack_form = AckForm::plain;
    // Boot loader: the sync request "I" is answered with something that is
    // not the loader's greeting.
    bool lose_sync = false;
    // The cable is pulled: the link sees no device, nothing is heard or sent.
    bool unplug = false;

    // Usage memory: faults on the answers to the request for one record
    // ("k"), each naming the record number it hits (no_record: none).
    // The first answer for this record leaves late_answer_ms after its usual
    // time; the answers behind it wait for it, as on one wire.
    int late_answer_record = no_record;
    int late_answer_ms = 0;
    // The first answer for this record goes out twice.
    int duplicate_answer_record = no_record;
    // The first answer for this record is the record after it, with its number.
    int wrong_index_record = no_record;
    // Answers for this record come cut short, too short to be a record:
    // the first refused_answers of them (every_answer: all).
    int refused_answer_record = no_record;
    int refused_answers = every_answer;
    // Requests for this record are never answered.
    int withheld_record = no_record;

    static constexpr int no_record = -1;
    static constexpr int every_answer = 0;

    static constexpr int split_gap_ms = 5;
    // What garbage_between_frames is set to when a scenario just says "on":
    // line noise with a stray frame start whose length is out of range.
    static QByteArray line_noise() { return QByteArray("\x00\x55\xAA#\xFF\r\n", 7); }
};

} // namespace veltrako::sim
