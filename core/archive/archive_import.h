#pragma once
// Reading what exists into archive events: visit folders (Besuch.txt and the
// files beside it), compliance files, saved status tables and report files,
// the older program's files included, each through the reader its feature
// already has. Nothing here writes; each file's events are written in one
// transaction by the caller, so that no file is ever half imported.
//
// The events get the identities a live job gives the same content, so that
// importing files the program wrote itself, or importing twice, adds nothing.

#include "archive/archive_event.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace veltrako::archive {

struct ImportedFile {
    QString path;
    std::vector<ArchiveEvent> events;
    QString error; // why the file was refused; events empty then
};

struct ImportRequest {
    QStringList paths; // files and folders (searched to the bottom)
    QString sn;        // --sn: for compliance files that name no device
    QString writer;    // user@host
};

// Every file found, in a stable order (folders sorted by name). Files inside
// a folder that are none of the kinds known are passed over; a file named
// itself that is none of them is refused.
std::vector<ImportedFile> read_import(const ImportRequest& request);

// The same for one file's lines: `folder_sn` and `visit_id` come from the
// folder's Besuch.txt when there is one. Used by read_import and the fuzz
// target.
ImportedFile read_import_lines(const QString& path, const QStringList& lines,
                               const QString& folder_sn, const QString& visit_id,
                               const QString& sn_option, const QString& writer, bool named);

} // namespace veltrako::archive
