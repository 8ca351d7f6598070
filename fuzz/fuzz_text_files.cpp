// The configuration file and the language file are read from beside the
// program, where anyone can edit them: any content must load or be refused.
// The bytes go through the same decoding as a file's, without the file.

#include "config/config.h"
#include "config/language.h"
#include "config/text_file.h"
#include "fuzz_support.h"

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QStringList lines = config::decode_text_lines(fuzz::input_bytes(data, size));
    fuzz::SilentUi ui;
    config::Config cfg;
    config::load_config_lines(cfg, lines, QStringLiteral("/opt/veltrako2/"), ui);
    // Loading empties the tables first, so one set serves every input.
    static config::LanguageTables tables;
    config::load_language_lines(tables, lines, ui);
    return 0;
}
