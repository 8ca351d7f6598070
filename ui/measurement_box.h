#pragma once
// The box "Messwerte" on the "Protokoll" page: a text box for each measured
// value with its unit, the limit it is judged by and the verdict beside it,
// the protection class, the instruments used, the result of the report and
// the note about the device's O2 sensor. Boxes take only what can become a
// number (or a protection class): anything else is refused at once with a
// red frame and a tooltip saying what they take. The rules are in
// core/report/report_measurements.

class QGroupBox;

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class FrmMain;

// The box with its controls, named as the report keys name them (m_O2,
// m_Flow, t_Schutzklasse, m_Schutzleiter, m_Ableitstrom, t_Messgeraet).
QGroupBox* build_measurement_box();

// Validators, refusals and the verdicts that follow every edit.
void bind_measurement_box(FrmMain& form, AppContext& ctx);

// The verdicts, limits, result and note for what the page shows now, judged
// by the report's limits against its device data; a box that holds what is
// no number (a file's, say) is framed red.
void show_judgement(FrmMain& form, const AppContext& ctx);

} // namespace veltrako::ui
