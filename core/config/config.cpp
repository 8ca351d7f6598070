#include "config/config.h"

#include "config/dates.h"
#include "config/text_file.h"
#include "user_interface.h"

#include <QLocale>
#include <QStringList>

namespace veltrako::config {

namespace {

constexpr QLatin1String key_timeout("TIMEOUT");
constexpr QLatin1String key_timerinterval("TIMERINTERVAL");
constexpr QLatin1String key_initdir("INITDIR");
constexpr QLatin1String key_autosave("AUTOSAVE");
constexpr QLatin1String key_autosavedir("AUTOSAVEDIR");
constexpr QLatin1String key_verordnung("VERORDNUNG");
constexpr QLatin1String key_adherenz("ADHERENZ_ANTEIL");
constexpr QLatin1String key_archiv("ARCHIV");
constexpr QLatin1String key_archiv_server("ARCHIV_SERVER");
constexpr QLatin1String key_wartung_monate("WARTUNG_MONATE");
constexpr QLatin1String key_wartung_stunden("WARTUNG_STUNDEN");

// The limits of the inspection's measured values: written back only when the
// file set them, as they were read.
struct LimitText {
    QLatin1String key;
    QString Config::*field;
};
constexpr LimitText limit_texts[] = {
    {QLatin1String("GRENZE_O2"), &Config::GRENZE_O2},
    {QLatin1String("GRENZE_FLOW"), &Config::GRENZE_FLOW},
    {QLatin1String("GRENZE_SCHUTZLEITER"), &Config::GRENZE_SCHUTZLEITER},
    {QLatin1String("GRENZE_ABLEITSTROM_I"), &Config::GRENZE_ABLEITSTROM_I},
    {QLatin1String("GRENZE_ABLEITSTROM_II"), &Config::GRENZE_ABLEITSTROM_II},
};

// One line applied to `config`; false when the line makes the file unusable.
bool apply_line(Config& config, const QString& line) {
    const QStringList fields = line.split(QLatin1Char('|'));
    const QString& key = fields[0];
    QString* text_value = key == key_initdir           ? &config.INITDIR
                          : key == key_autosave        ? &config.AUTOSAVE
                          : key == key_autosavedir     ? &config.AUTOSAVEDIR
                          : key == key_verordnung      ? &config.VERORDNUNG
                          : key == key_adherenz        ? &config.ADHERENZ_ANTEIL
                          : key == key_archiv          ? &config.ARCHIV
                          : key == key_archiv_server   ? &config.ARCHIV_SERVER
                          : key == key_wartung_monate  ? &config.WARTUNG_MONATE
                          : key == key_wartung_stunden ? &config.WARTUNG_STUNDEN
                                                       : nullptr;
    for (const LimitText& t : limit_texts)
        if (key == t.key)
            text_value = &(config.*t.field);
    const bool known = text_value || key == key_timeout || key == key_timerinterval;
    // A line whose key is unknown is ignored, "|" or not; a known key without
    // a value means the file is not ours to trust.
    if (!known)
        return true;
    if (fields.size() < 2)
        return false;
    const QString& value = fields[1];

    if (text_value) {
        *text_value = value;
    } else if (key == key_timeout) {
        config.TIMEOUT = text_to_number(value).value_or(0);
        config.timeout_second = config.TIMEOUT;
    } else {
        bool ok = false;
        const short interval = value.trimmed().toShort(&ok);
        if (!ok)
            return false;
        config.TIMERINTERVAL = interval;
    }
    return true;
}

} // namespace

QString program_folder(const QString& application_dir) {
    if (application_dir.endsWith(QLatin1Char('/')))
        return application_dir;
    return application_dir + QLatin1Char('/');
}

void set_config_defaults(Config& config, const QString& default_dir) {
    config = Config{};
    config.INITDIR = program_folder(default_dir);
}

namespace {

bool load_failed(Config& config, const QString& default_dir, UserInterface& ui) {
    set_config_defaults(config, default_dir);
    ui.show_msg(QStringLiteral("unable to load configuration"));
    return false;
}

} // namespace

bool load_config(Config& config, const QString& path, const QString& default_dir,
                 UserInterface& ui) {
    const std::optional<QStringList> lines = read_text_lines(path);
    if (!lines)
        return load_failed(config, default_dir, ui);
    return load_config_lines(config, *lines, default_dir, ui);
}

bool load_config_lines(Config& config, const QStringList& lines, const QString& default_dir,
                       UserInterface& ui) {
    for (const QString& line : lines) {
        if (line.isEmpty())
            continue;
        if (!apply_line(config, line))
            return load_failed(config, default_dir, ui);
    }
    return true;
}

bool save_config(const Config& config, const QString& path) {
    // General number form: no thousands grouping, shortest digits that read
    // back to the same value, the locale's decimal separator.
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() | QLocale::OmitGroupSeparator);
    const QString timeout = locale.toString(config.TIMEOUT, 'g', QLocale::FloatingPointShortest);

    const auto line = [](QLatin1String key, const QString& value) {
        return QString(key) + QLatin1Char('|') + value;
    };
    QStringList lines{line(key_timeout, timeout),
                      line(key_timerinterval, QString::number(config.TIMERINTERVAL)),
                      line(key_initdir, config.INITDIR), line(key_autosave, config.AUTOSAVE),
                      line(key_autosavedir, config.AUTOSAVEDIR)};
    // The file is rewritten whenever a dialog remembers its folder; a
    // prescription the technician put there must not vanish with that. It is
    // written back as it was read, even when it is no valid number, so that
    // the person who typed it sees it again; a file without it stays without.
    if (!config.VERORDNUNG.isEmpty())
        lines << line(key_verordnung, config.VERORDNUNG);
    if (!config.ADHERENZ_ANTEIL.isEmpty())
        lines << line(key_adherenz, config.ADHERENZ_ANTEIL);
    if (!config.ARCHIV.isEmpty())
        lines << line(key_archiv, config.ARCHIV);
    if (!config.ARCHIV_SERVER.isEmpty())
        lines << line(key_archiv_server, config.ARCHIV_SERVER);
    if (!config.WARTUNG_MONATE.isEmpty())
        lines << line(key_wartung_monate, config.WARTUNG_MONATE);
    if (!config.WARTUNG_STUNDEN.isEmpty())
        lines << line(key_wartung_stunden, config.WARTUNG_STUNDEN);
    for (const LimitText& t : limit_texts)
        if (!(config.*t.field).isEmpty())
            lines << line(t.key, config.*t.field);
    return write_text_lines(path, lines);
}

namespace {

// A number from `low` to `high`, "15.5" as on every system or "15,5" where
// that is the form.
std::optional<double> number_within(const QString& t, double low, double high) {
    QLocale c = QLocale::c();
    c.setNumberOptions(QLocale::RejectGroupSeparator);
    bool ok = false;
    double value = c.toDouble(t, &ok);
    if (!ok) {
        const std::optional<double> local = text_to_number(t);
        ok = local.has_value();
        value = local.value_or(0);
    }
    if (!ok || !(value >= low && value <= high))
        return std::nullopt;
    return value;
}

} // namespace

std::optional<double> prescribed_hours(const QString& text) {
    const QString t = text.trimmed();
    return t.isEmpty() ? 0.0 : number_within(t, 0, 24);
}

std::optional<double> adherence_share(const QString& text) {
    const QString t = text.trimmed();
    return t.isEmpty() ? default_adherence_share : number_within(t, 0, 100);
}

} // namespace veltrako::config
