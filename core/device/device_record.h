#pragma once
// The program's one picture of the connected concentrator. Written only by
// the response interpreter and clear_device_record; read by the live page,
// the settings, the status memory and the test report.

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <optional>

namespace veltrako::device {

struct DeviceRecord {
    // Identity and counters. Texts hold device bytes one per character (Latin-1).
    QString SN;            // serial number, memory 0x00F0
    QString LP;            // board serial number, memory 0x00E0
    QString SW;            // firmware version text ("?")
    QString sw_num;        // SW without its last character
    QString family_code;   // sw_num with "70" -> "50", "71" -> "51"
    QString BSTD;          // operating hours "000000:00"
    QString rest_text;     // remaining time ("S")
    QDateTime geraetezeit; // device clock ("T"); null = the zero date
    // When geraetezeit came from a "T" answer, on the program's steady clock
    // (Clock::elapsed_ms); nullopt while it holds no reading of the device.
    std::optional<qint64> geraetezeit_ms;
    std::array<std::uint8_t, 14> zeiten{}; // valve timings ZEITEN0..ZEITEN13 ("r")
    QString info_text;                     // "!"
    bool info_valid = false;
    QString text_40, text_58, text_d0; // memory 0x0040, 0x0058, 0x00D0
    std::uint8_t wert_o = 0, wert_u = 0, wert_x = 0;

    // Live status ("I").
    qint32 device_ticks = 0;
    qint32 tick_prev = 0;
    qint32 tick_offset = 0;
    double live_time = 0; // seconds since the time axis started
    double schall = 0;
    double O2 = 0;
    double VOLUMENSTROM = 0;
    double SOLL_VOLUMENSTROM = 0;
    double druck = 0;
    double GASTEMP = 0;
    double KOMPRESSORTEMP = 0;
    double spannung = 0;
    double ventiloeffnung = 0;
    double sensor1 = 0;
    double sensor2 = 0;
    std::uint8_t ventile = 0;
    std::uint8_t alarmstufe = 0;
    std::uint8_t alarme = 0;
    std::uint8_t alarme2 = 0;
    std::uint8_t phase = 0;
    std::uint8_t wert26 = 0;

    // Flags and bookkeeping.
    bool live_valid = false;          // an "I" answer was interpreted since the last clearing
    bool restart_time = false;        // the next "I" restarts the time axis at 0
    float last_answer_time = 0;       // seconds since midnight at the end of the last answer
    bool valve_layout = false;        // second set of valve labels
    bool alarm_at_47 = false;         // alarm bits of "I" at position 47 instead of 24
    bool o22_source = false;          // O22 alarm from alarme2; extended status layout
    bool clock_supported = false;     // the send queue lets "T" through
    bool remaining_supported = false; // the send queue lets "S" through
    bool special_model =
        false; // SW "628"/"528", or family above "70" with "8" as third SW character
    bool bulk_read_started = false; // the automatic status readout of the poll cycle has begun
    QStringList bulk_texts;         // 41 texts (0..40) kept for that readout
};

// Empties every text, zeroes every number, clears every flag.
void clear_device_record(DeviceRecord& record);

// Sets valve_layout, alarm_at_47, o22_source and special_model from the
// identity just read.
void detect_device_type(DeviceRecord& record);

// Parameter keys under which device values go into the test report, index
// 0 (empty) to 31.
const QStringList& parameter_keys();

} // namespace veltrako::device
