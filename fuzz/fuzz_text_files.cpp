// The configuration file and the language file are read from beside the
// program, where anyone can edit them: any content must load or be refused.

#include "config/config.h"
#include "config/language.h"
#include "fuzz_support.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("input.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 0;
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    fuzz::SilentUi ui;
    config::Config cfg;
    config::load_config(cfg, path, dir.path() + QLatin1Char('/'), ui);
    config::LanguageTables tables;
    config::load_language(tables, path, ui);
    return 0;
}
