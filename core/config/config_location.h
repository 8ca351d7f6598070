#pragma once
// Where veltrako2.ini lives and where the files the program writes on its own
// go, decided once at start-up by both front ends.
//
// A copy run from its own folder (the build tree, an unpacked archive) keeps
// everything beside the program, as it always has. An installed copy sits in
// a folder the technician may not write to (/opt/veltrako2 belongs to root).
// There the settings move to the user's configuration folder, seeded from the
// file shipped beside the program, and the default folder for dialogs and the
// communication log becomes the user's documents folder. Without this every
// dialog that remembers its folder would fail to save it, and every file the
// program names itself would fail to write.

#include <QString>

namespace veltrako::config {

// The user's own folders, as the desktop names them.
struct UserFolders {
    QString config_dir;    // settings of this program, e.g. ~/.config/veltrako2
    QString documents_dir; // e.g. ~/Documents
    QString data_dir;      // data of this program, e.g. ~/.local/share/veltrako2
};

// ~/.config/veltrako2 and the documents folder. Both front ends share the
// one configuration folder, whatever their application names are.
UserFolders standard_user_folders();

struct ConfigLocation {
    QString config_path; // the veltrako2.ini to read and to write back
    QString seed_path;   // copied to config_path when that is missing; empty when none
    QString user_dir;    // INITDIR default and the folder of the communication log,
                         // ending in "/"
    bool in_user_folder = false;
    // The archive's file unless ARCHIV or --archive names another: with the
    // settings' rule, beside the program or in the user's data folder.
    QString archive_path;
};

// The decision alone: beside the program when `program_ini_writable`, else in
// the user's folders, seeded from the file beside the program.
ConfigLocation choose_config_location(const QString& program_dir, bool program_ini_writable,
                                      const UserFolders& folders);

// True when `ini_path` could be saved as write_text_lines saves it: a new
// file next to it can be made, and the file itself, when there, may be
// written. Tried for real rather than read from permission bits.
bool can_write_config(const QString& ini_path);

// In the user's folders: creates them and copies the seed when the user has
// no settings yet, so that the first start reads the shipped settings and the
// first save already lands there. Beside the program: nothing to do.
void prepare_config_location(const ConfigLocation& location);

// Probes the file beside the program and decides; nothing is made.
ConfigLocation find_config_location(const QString& program_dir,
                                    const UserFolders& folders = standard_user_folders());

inline constexpr auto archive_file_name = "archive.sqlite";

// The archive file in use: `option` (--archive) over `setting` (ARCHIV) over
// the location's default; "none" in either turns the archive off (empty
// result). A relative --archive is taken from the working folder, a
// relative ARCHIV from the folder of veltrako2.ini.
QString archive_path(const ConfigLocation& location, const QString& setting, const QString& option);

// Probes the file beside the program, decides and prepares.
ConfigLocation locate_config(const QString& program_dir,
                             const UserFolders& folders = standard_user_folders());

// The file that holds the settings of `location` without preparing it: the
// user's own when it is there, else the one it would be seeded from; empty
// when there is neither. For a front end that reads the settings and never
// writes them (the command line).
QString readable_config(const ConfigLocation& location);

} // namespace veltrako::config
