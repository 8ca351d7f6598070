#pragma once
// The settings kept in veltrako2.ini (beside the program, or in the
// user's folder when the program's folder is read-only: config_location.h).

#include <QString>

#include <optional>

namespace veltrako {
class UserInterface;
}

namespace veltrako::config {

inline constexpr auto config_file_name = "veltrako2.ini";

struct Config {
    double TIMEOUT = 1;        // answer time-out of the poll cycle, seconds
    double timeout_second = 1; // set together with TIMEOUT, never written back
    qint16 TIMERINTERVAL = 50; // poll timer interval, milliseconds
    QString INITDIR;           // start folder of every file dialog
    QString AUTOSAVE = QStringLiteral("0");
    QString AUTOSAVEDIR;
    // Prescribed hours of use a day, as the file holds it; empty when the
    // file has no such line. prescribed_hours() reads it.
    QString VERORDNUNG;
    // The share of days, in percent, the best 30 days must meet the
    // prescription on; empty: the default. adherence_share() reads it.
    QString ADHERENZ_ANTEIL;
    // The archive file; "none" turns the archive off; empty: where the
    // location puts it (config_location.h). Written back only when set.
    QString ARCHIV;
    // The team archive's server, a libpq URI without a password; empty: none.
    QString ARCHIV_SERVER;
    // When a device is due: months since its last visit (empty: 6), and, when
    // set, every so many operating hours. As the file holds them; written
    // back only when set.
    QString WARTUNG_MONATE;
    QString WARTUNG_STUNDEN;
    // The limits the inspection's measured values are judged by
    // (report/report_limits.h), as the file holds them; empty when it has no
    // such line, and then written back as it was: not at all.
    QString GRENZE_O2;
    QString GRENZE_FLOW;
    QString GRENZE_SCHUTZLEITER;
    QString GRENZE_ABLEITSTROM_I;
    QString GRENZE_ABLEITSTROM_II;
};

inline constexpr double default_adherence_share = 70;

// The prescribed hours of `text` (VERORDNUNG or --prescribed-hours): 0 for an
// empty text (none), the number for 0 to 24 (with "." or the locale's decimal
// separator), nothing for anything else.
std::optional<double> prescribed_hours(const QString& text);
// The share of ADHERENZ_ANTEIL or --adherence-share, in percent: the default
// for an empty text, the number for 0 to 100 (with "." or the locale's
// decimal separator), nothing for anything else.
std::optional<double> adherence_share(const QString& text);

// The folder of the program with a trailing "/", so that file names can be
// appended to it as they stand.
QString program_folder(const QString& application_dir);

// INITDIR becomes `default_dir` (with its trailing separator): the program's
// folder, or the user's documents folder when the settings live with the user
// (config_location.h).
void set_config_defaults(Config& config, const QString& default_dir);

// Reads `path` over the values already in `config`. On any error (file
// missing, TIMERINTERVAL not a 16-bit whole number, a known key on a line
// without "|") every value goes back to its default, the message "unable to
// load configuration" is shown and the result is false.
bool load_config(Config& config, const QString& path, const QString& default_dir,
                 UserInterface& ui);
// The same on the lines of a file already read.
bool load_config_lines(Config& config, const QStringList& lines, const QString& default_dir,
                       UserInterface& ui);

// Writes the five lines, and VERORDNUNG, ADHERENZ_ANTEIL, ARCHIV and the
// limits when set; TIMEOUT in the user's locale, as load_config reads it.
// False on any error, without a message.
bool save_config(const Config& config, const QString& path);

} // namespace veltrako::config
