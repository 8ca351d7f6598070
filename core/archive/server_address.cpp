#include "archive/server_address.h"

#include <QRegularExpression>
#include <QUrl>

namespace veltrako::archive {

namespace {

QString decoded(const QString& s) {
    return QUrl::fromPercentEncoding(s.toUtf8());
}

QString encoded(const QString& s, const QByteArray& keep = {}) {
    return QString::fromUtf8(QUrl::toPercentEncoding(s, keep));
}

bool has_key(const ServerAddress& a, const QString& key) {
    for (const auto& [k, v] : a.parameters)
        if (k == key)
            return true;
    return false;
}

} // namespace

ParsedAddress parse_server_address(const QString& uri) {
    ParsedAddress parsed;
    const QString text = uri.trimmed();
    qsizetype rest_at = -1;
    for (const QLatin1String scheme :
         {QLatin1String("postgresql://"), QLatin1String("postgres://")})
        if (text.startsWith(scheme, Qt::CaseInsensitive))
            rest_at = scheme.size();
    if (rest_at < 0)
        return parsed;
    QString rest = text.mid(rest_at);
    QString query;
    if (const qsizetype q = rest.indexOf(QLatin1Char('?')); q >= 0) {
        query = rest.mid(q + 1);
        rest = rest.left(q);
    }
    QString path;
    if (const qsizetype slash = rest.indexOf(QLatin1Char('/')); slash >= 0) {
        path = rest.mid(slash + 1);
        rest = rest.left(slash);
    }
    ServerAddress a;
    if (const qsizetype at = rest.lastIndexOf(QLatin1Char('@')); at >= 0) {
        const QString user_info = rest.left(at);
        rest = rest.mid(at + 1);
        const qsizetype colon = user_info.indexOf(QLatin1Char(':'));
        if (colon >= 0 && colon + 1 < user_info.size()) {
            parsed.problem = AddressProblem::holds_password;
            return parsed;
        }
        a.user = decoded(colon >= 0 ? user_info.left(colon) : user_info);
    }
    // host, host:port, [v6 address]:port; a percent-encoded socket folder.
    QString port;
    if (rest.startsWith(QLatin1Char('['))) {
        const qsizetype close = rest.indexOf(QLatin1Char(']'));
        if (close < 0)
            return parsed;
        a.host = rest.mid(1, close - 1);
        const QString after = rest.mid(close + 1);
        if (!after.isEmpty() && !after.startsWith(QLatin1Char(':')))
            return parsed;
        port = after.mid(1);
    } else {
        const qsizetype colon = rest.lastIndexOf(QLatin1Char(':'));
        a.host = decoded(colon >= 0 ? rest.left(colon) : rest);
        port = colon >= 0 ? rest.mid(colon + 1) : QString();
    }
    if (!port.isEmpty()) {
        bool ok = false;
        a.port = port.toInt(&ok);
        if (!ok || a.port <= 0 || a.port > 65535)
            return parsed;
    }
    a.database = decoded(path);
    static const QRegularExpression keyword(QStringLiteral("^[a-z_]+$"));
    for (const QString& pair : query.split(QLatin1Char('&'), Qt::SkipEmptyParts)) {
        const qsizetype eq = pair.indexOf(QLatin1Char('='));
        const QString key = decoded(eq < 0 ? pair : pair.left(eq));
        const QString value = eq < 0 ? QString() : decoded(pair.mid(eq + 1));
        if (key == QLatin1String("password") || key == QLatin1String("passfile_password")) {
            parsed.problem = AddressProblem::holds_password;
            return parsed;
        }
        // The driver separates its options with ";".
        if (!keyword.match(key).hasMatch() || value.contains(QLatin1Char(';'))) {
            parsed.problem = AddressProblem::bad_parameter;
            return parsed;
        }
        if (key == QLatin1String("host"))
            a.host = value;
        else if (key == QLatin1String("port")) {
            bool ok = false;
            a.port = value.toInt(&ok);
            if (!ok || a.port <= 0 || a.port > 65535) {
                parsed.problem = AddressProblem::bad_parameter;
                return parsed;
            }
        } else if (key == QLatin1String("user"))
            a.user = value;
        else if (key == QLatin1String("dbname"))
            a.database = value;
        else
            a.parameters.append({key, value});
    }
    // Several hosts are not one archive; brackets belong around an address.
    for (const QChar c : {QLatin1Char(','), QLatin1Char('['), QLatin1Char(']')})
        if (a.host.contains(c)) {
            parsed.problem = AddressProblem::not_a_uri;
            return parsed;
        }
    parsed.address = a;
    return parsed;
}

int address_problem_text(AddressProblem problem) {
    switch (problem) {
    case AddressProblem::holds_password:
        return 8963;
    case AddressProblem::not_a_uri:
        return 8964;
    case AddressProblem::bad_parameter:
        return 8965;
    }
    return 8964;
}

QString ServerAddress::shown() const {
    QString s = QStringLiteral("postgresql://");
    if (!user.isEmpty())
        s += encoded(user) + QLatin1Char('@');
    // An IPv6 address in brackets, as written; any other host encoded.
    static const QRegularExpression v6(QStringLiteral("^[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*$"));
    s += v6.match(host).hasMatch() ? QLatin1Char('[') + host + QLatin1Char(']')
                                   : encoded(host, "-.");
    if (port > 0)
        s += QLatin1Char(':') + QString::number(port);
    if (!database.isEmpty())
        s += QLatin1Char('/') + encoded(database);
    QStringList query;
    for (const auto& [k, v] : parameters)
        query << k + QLatin1Char('=') + encoded(v, "/-._~");
    if (!query.isEmpty())
        s += QLatin1Char('?') + query.join(QLatin1Char('&'));
    return s;
}

QString ServerAddress::connect_options() const {
    QList<std::pair<QString, QString>> all = parameters;
    // A server that does not answer is said within seconds, not minutes.
    if (!has_key(*this, QStringLiteral("connect_timeout")))
        all.append({QStringLiteral("connect_timeout"), QStringLiteral("10")});
    if (!has_key(*this, QStringLiteral("application_name")))
        all.append({QStringLiteral("application_name"), QStringLiteral("veltrako2")});
    QStringList options;
    for (auto [k, v] : all) {
        v.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
        v.replace(QLatin1Char('\''), QStringLiteral("\\'"));
        options << k + QStringLiteral("='") + v + QLatin1Char('\'');
    }
    return options.join(QLatin1Char(';'));
}

} // namespace veltrako::archive
