#pragma once
// The ".ae6" firmware file: a VERSION line, a HARDWARE line listing the
// boards the firmware fits, then data lines in hexadecimal text, each of which
// the boot loader takes as one block.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::firmware {

struct FirmwareImage {
    QString version;
    QStringList hardware;   // identifiers, blanks removed
    QStringList data_lines; // trimmed hex text, in file order
};

// Why a file was refused.
enum class FileFault {
    none,
    unreadable,
    no_version_line,
    no_hardware_line,
    bad_data_line, // not starting with "42", odd length or a non-hex digit
    no_data_lines,
};

struct FileCheck {
    FileFault fault = FileFault::none;
    int accepted = 0; // data lines accepted before the fault
};

// Each pair of hex digits becomes one byte, first digit the high nibble.
// nullopt for an odd length or a character that is not a hex digit.
std::optional<QByteArray> hex_to_bytes(const QString& text);

// Reads the lines of a firmware file into `image`, which is emptied first.
FileCheck parse_firmware_lines(const QStringList& lines, FirmwareImage& image);

// The message a refused file gets, in the user's language.
QString file_fault_message(const AppContext& ctx, const FileCheck& check);

// Reads and checks the file; on failure shows its message and returns false.
bool load_firmware_file(AppContext& ctx, const QString& path, FirmwareImage& image);

} // namespace veltrako::firmware
