#include "link/link_option.h"

namespace veltrako::link {

std::optional<LinkOption> parse_link_option(const QString& text, QString* error) {
    LinkOption option;
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    const QString kind = colon < 0 ? text : text.left(colon);
    const QString rest = colon < 0 ? QString() : text.mid(colon + 1);
    if (kind == QLatin1String("ftdi") && colon < 0) {
        option.kind = LinkOption::Kind::ftdi;
        return option;
    }
    if (kind == QLatin1String("serial") && !rest.isEmpty()) {
        option.kind = LinkOption::Kind::serial;
        option.path = rest;
        return option;
    }
    if (kind == QLatin1String("sim")) {
        option.kind = LinkOption::Kind::sim;
        option.scenario = rest;
        return option;
    }
    if (error) {
        *error = QStringLiteral("unknown link \"%1\": use ftdi, serial:PATH or sim[:SCENARIO]")
                     .arg(text);
    }
    return std::nullopt;
}

} // namespace veltrako::link
