#include "server_option.h"

#include "app_context.h"
#include "cli_texts.h"
#include "console_ui.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {
const QString option_name = QStringLiteral("server");
// "no team archive named: ARCHIV_SERVER in veltrako2.ini or --server"
constexpr int text_no_server = 9750;
} // namespace

CliOption server_option() {
    // URI: archive init-server/sync, fleet: the team archive's server,
    // postgresql://user@host:port/database[?sslmode=...] (default:
    // ARCHIV_SERVER in veltrako2.ini); the password goes in ~/.pgpass
    return {option_name, 9760, 9761};
}

std::optional<archive::ServerAddress> take_server(const CommandEnv& env) {
    const QString uri = env.parser.isSet(option_name) ? env.parser.value(option_name)
                                                      : env.ctx.config.ARCHIV_SERVER;
    if (uri.trimmed().isEmpty()) {
        print_error(cli_text(env, text_no_server));
        return std::nullopt;
    }
    const archive::ParsedAddress parsed = archive::parse_server_address(uri);
    if (!parsed.address)
        print_error(env.ctx.language.text(archive::address_problem_text(parsed.problem)));
    return parsed.address;
}

} // namespace veltrako::cli
