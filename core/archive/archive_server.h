#pragma once
// What only a team's server has: who may do what. Run by `archive
// init-server` as the login that owns the archive, after the same forward
// migrations every laptop's file runs.
//
// Two group roles, to be granted to the team's logins:
// - veltrako2_technician reads everything and adds events. A row another
//   login wrote is never changed or deleted, with the merge itself as the
//   only change: a period's end moving on to a later readout's, a device's
//   board number to a later event's. The server enforces this (grants and
//   one trigger), whatever program connects.
// - veltrako2_office reads everything and writes nothing.

#include <QString>

namespace veltrako::archive {

class ArchiveStore;

inline constexpr auto technician_role = "veltrako2_technician";
inline constexpr auto office_role = "veltrako2_office";

// Migrates the server's archive to the latest version and sets up the roles,
// their rights and the guard. Safe to run again.
bool init_server(ArchiveStore& server, QString* error);

} // namespace veltrako::archive
