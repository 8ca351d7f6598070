#pragma once
// The five settings kept in veltrako2.ini beside the program.

#include <QString>

namespace veltrako {
class UserInterface;
}

namespace veltrako::config {

inline constexpr auto config_file_name = "veltrako2.ini";

struct Config {
    double TIMEOUT = 1;         // answer time-out of the poll cycle, seconds
    double timeout_second = 1;  // set together with TIMEOUT, never written back
    qint16 TIMERINTERVAL = 50;  // poll timer interval, milliseconds
    QString INITDIR;            // start folder of every file dialog
    QString AUTOSAVE = QStringLiteral("0");
    QString AUTOSAVEDIR;
};

void set_config_defaults(Config& config, const QString& program_dir);
bool load_config(Config& config, const QString& path, const QString& program_dir,
                 UserInterface& ui);
bool save_config(const Config& config, const QString& path);

} // namespace veltrako::config
