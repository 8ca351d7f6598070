#include "config/config_location.h"

#include "config/config.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace veltrako::config {

UserFolders standard_user_folders() {
    UserFolders folders;
    folders.config_dir = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                         QStringLiteral("/veltrako2");
    folders.documents_dir = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    folders.data_dir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                       QStringLiteral("/veltrako2");
    return folders;
}

ConfigLocation choose_config_location(const QString& program_dir, bool program_ini_writable,
                                      const UserFolders& folders) {
    const QString beside = program_folder(program_dir) + QLatin1String(config_file_name);
    ConfigLocation location;
    if (program_ini_writable) {
        location.config_path = beside;
        location.user_dir = program_folder(program_dir);
        location.archive_path = program_folder(program_dir) + QLatin1String(archive_file_name);
        return location;
    }
    location.config_path = program_folder(folders.config_dir) + QLatin1String(config_file_name);
    location.seed_path = beside;
    location.user_dir = program_folder(folders.documents_dir);
    location.in_user_folder = true;
    location.archive_path = program_folder(folders.data_dir) + QLatin1String(archive_file_name);
    return location;
}

bool can_write_config(const QString& ini_path) {
    const QFileInfo info(ini_path);
    // The file is replaced through a temporary one in the same folder.
    QTemporaryFile probe(info.absolutePath() + QStringLiteral("/.veltrako2-probe-XXXXXX"));
    if (!probe.open())
        return false;
    probe.close();
    if (!info.exists())
        return true;
    // Opened for appending without writing: the settings stay as they are.
    QFile file(ini_path);
    return file.open(QIODevice::WriteOnly | QIODevice::Append);
}

void prepare_config_location(const ConfigLocation& location) {
    if (!location.in_user_folder)
        return;
    QDir().mkpath(QFileInfo(location.config_path).absolutePath());
    QDir().mkpath(location.user_dir);
    if (!QFileInfo::exists(location.config_path) && QFileInfo::exists(location.seed_path)) {
        QFile::copy(location.seed_path, location.config_path);
        // The shipped file is read-only; the user's copy must not be.
        QFile::setPermissions(location.config_path,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                  QFileDevice::ReadGroup | QFileDevice::ReadOther);
    }
}

QString archive_path(const ConfigLocation& location, const QString& setting,
                     const QString& option) {
    const bool from_option = !option.trimmed().isEmpty();
    const QString chosen = from_option ? option.trimmed() : setting.trimmed();
    if (chosen.compare(QLatin1String("none"), Qt::CaseInsensitive) == 0)
        return {};
    if (chosen.isEmpty())
        return location.archive_path;
    if (QFileInfo(chosen).isAbsolute())
        return chosen;
    // A path typed on the command line means what the shell means by it;
    // one in the ini cannot know the folder the program is started from.
    return from_option ? QFileInfo(chosen).absoluteFilePath()
                       : QFileInfo(location.config_path).absoluteDir().absoluteFilePath(chosen);
}

ConfigLocation find_config_location(const QString& program_dir, const UserFolders& folders) {
    const QString beside = program_folder(program_dir) + QLatin1String(config_file_name);
    return choose_config_location(program_dir, can_write_config(beside), folders);
}

ConfigLocation locate_config(const QString& program_dir, const UserFolders& folders) {
    const ConfigLocation location = find_config_location(program_dir, folders);
    prepare_config_location(location);
    return location;
}

QString readable_config(const ConfigLocation& location) {
    if (QFileInfo::exists(location.config_path))
        return location.config_path;
    if (!location.seed_path.isEmpty() && QFileInfo::exists(location.seed_path))
        return location.seed_path;
    return {};
}

} // namespace veltrako::config
