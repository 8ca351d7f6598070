#pragma once
// Puts the archive behind the features' hooks: every finished readout,
// report, visit, update and confirmed write becomes an event in the archive,
// from the window and the command line alike. The events of a visit are
// kept until it ends and written in one transaction.
//
// A failing archive (locked, full disk, corrupt or unreadable file) never
// stops the job: the job has ended as it would without an archive, and one
// message says what was not archived and why.

#include <QString>

namespace veltrako {
class AppContext;
}

namespace veltrako::archive {

class ArchiveService;

void install_archive(AppContext& ctx, ArchiveService& service);

// The message of a failed write: what was not archived, why, and where the
// archive is.
QString not_archived_text(const AppContext& ctx, const QStringList& what, const QString& why,
                          const QString& path);

} // namespace veltrako::archive
