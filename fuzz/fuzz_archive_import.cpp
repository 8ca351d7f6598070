// Files imported into the archive come from any folder a technician kept:
// any content read as a visit file, a status table, a report or a compliance
// file must give whole events or a reason, never a crash, and a status table
// read must hand on entries in the one form the archive keys them by.

#include "archive/archive_import.h"
#include "config/text_file.h"
#include "fuzz_support.h"
#include "status/status_table_reader.h"

#include <QString>
#include <QStringList>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QStringList lines = config::decode_text_lines(fuzz::input_bytes(data, size));
    // The first byte picks the file's name: the visit's own file or any other.
    const QString path = size > 0 && data[0] % 2 == 0
                             ? QStringLiteral("/v/VO2-1_2026-03-02/Besuch.txt")
                             : QStringLiteral("/v/VO2-1_2026-03-02/x.txt");
    const archive::ImportedFile f = archive::read_import_lines(
        path, lines, QString(), QString(), QStringLiteral("SN"), QStringLiteral("fuzz@host"), true);
    if (f.events.empty() == f.error.isEmpty())
        __builtin_trap(); // either events or a reason
    for (const archive::ArchiveEvent& e : f.events) {
        if (e.id.isEmpty() || e.sn.isEmpty())
            __builtin_trap();
        for (const archive::StatusEntry& s : e.entries)
            if (s.entry != s.entry.simplified() || s.entry.contains(QLatin1Char(',')))
                __builtin_trap();
        // A report's measurements come with a result in one of its three words.
        if (e.measured && e.measured->result != QLatin1String("pass") &&
            e.measured->result != QLatin1String("fail") &&
            e.measured->result != QLatin1String("incomplete"))
            __builtin_trap();
    }
    if (const auto table = status::read_status_table(lines))
        if (table->sn.isEmpty() || !table->at.isValid())
            __builtin_trap();
    return 0;
}
