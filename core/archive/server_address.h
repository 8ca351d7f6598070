#pragma once
// A team archive's server as the user names it: a libpq connection URI,
// postgresql://user@host:port/database?sslmode=require, from the ini key
// ARCHIV_SERVER or --server. A URI that holds a password is refused: the
// password belongs in ~/.pgpass, where libpq finds it, and so never lands in
// the ini, a log or a message. Every further parameter (sslmode,
// sslrootcert, connect_timeout, ...) is passed on to libpq as written.

#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace veltrako::archive {

enum class AddressProblem {
    not_a_uri,      // no postgresql:// URI, or one that cannot be read
    holds_password, // user:password@ or ?password=
    bad_parameter,  // a parameter without a name or with a ";" in it
};

struct ServerAddress {
    QString host; // a name, an address, or a socket folder; empty: libpq's default
    int port = -1;
    QString user;
    QString database;
    // Further libpq keywords in their order.
    QList<std::pair<QString, QString>> parameters;

    // The URI again, as safe to show as the one given (it has no password).
    QString shown() const;
    // The parameters as the Qt driver's connect options: key='value' pairs
    // separated by ";", with time-outs of our own where none was asked for.
    QString connect_options() const;
};

struct ParsedAddress {
    std::optional<ServerAddress> address;
    AddressProblem problem = AddressProblem::not_a_uri;
};

ParsedAddress parse_server_address(const QString& uri);

// The number of the language text that tells the user what is wrong (and,
// for a password, where it belongs). The text never repeats the address.
int address_problem_text(AddressProblem problem);

} // namespace veltrako::archive
