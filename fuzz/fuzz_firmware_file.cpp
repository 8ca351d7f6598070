// A firmware file comes from wherever the technician got it: any content must
// be accepted or refused, and what is accepted must be fit to send. The same
// bytes go in as a boot loader's greeting, which comes from the device: the
// hardware it names is one word or none.

#include "config/text_file.h"
#include "firmware/firmware_file.h"
#include "firmware/firmware_update.h"
#include "fuzz_support.h"

#include <cstdint>
#include <cstdlib>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString named = firmware::loader_hardware(fuzz::input_bytes(data, size));
    if (named.contains(QLatin1Char(' ')) || named.contains(QLatin1Char('\n')))
        std::abort();
    // The same decoding as a file's bytes get, without the file.
    const QStringList lines = config::decode_text_lines(fuzz::input_bytes(data, size));
    firmware::FirmwareImage image;
    const firmware::FileCheck check = firmware::parse_firmware_lines(lines, image);
    if (check.fault != firmware::FileFault::none)
        return 0;
    // Accepted: every line converts and starts a loader block, and no
    // identifier is empty or holds a blank.
    for (const QString& line : image.data_lines) {
        const auto bytes = firmware::hex_to_bytes(line);
        if (!bytes || bytes->isEmpty() || bytes->at(0) != 0x42)
            std::abort();
    }
    for (const QString& id : image.hardware)
        if (id.isEmpty() || id.contains(QLatin1Char(' ')))
            std::abort();
    return 0;
}
