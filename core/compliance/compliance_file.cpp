#include "compliance/compliance_file.h"

#include "app_context.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_readout.h"
#include "config/config.h"
#include "config/file_names.h"
#include "config/key_value_lines.h"
#include "config/text_file.h"
#include "device/device_view.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace veltrako::compliance {

namespace {

const QString file_time_format = QStringLiteral("dd.MM.yyyy HH:mm:ss");

QString filter(const AppContext& ctx, int text) {
    return ctx.language.text(text) + QStringLiteral(" (*.txt)|*.txt");
}

FileDialogRequest dialog_request(const AppContext& ctx, int filter_text) {
    FileDialogRequest r;
    r.start_dir = ctx.config.INITDIR;
    r.filter = filter(ctx, filter_text);
    r.default_suffix = QStringLiteral(".txt");
    return r;
}

// The index field: a number in the user's locale or plainly written, taken
// as a whole number (halves to even) that must lie in the table.
std::optional<int> parse_index(const QString& text, const QLocale& locale) {
    const QString t = text.trimmed();
    bool ok = false;
    double v = locale.toDouble(t, &ok);
    if (!ok)
        v = QLocale::c().toDouble(t, &ok);
    if (!ok || !std::isfinite(v) || std::fabs(v) > 2147483647.0)
        return std::nullopt;
    const double whole = std::nearbyint(v);
    if (whole < 0 || whole > table_upper)
        return std::nullopt;
    return static_cast<int>(whole);
}

} // namespace

QString file_time_text(Stamp s) {
    return from_stamp(s).toString(file_time_format);
}

std::optional<Stamp> parse_file_time(const QString& text) {
    static const QRegularExpression form(QStringLiteral(
        R"(^(\d{1,2})\.(\d{1,2})\.(\d{4})(?:\s+(\d{1,2}):(\d{1,2})(?::(\d{1,2}))?)?$)"));
    const QRegularExpressionMatch m = form.match(text.trimmed());
    if (!m.hasMatch())
        return std::nullopt;
    const QDate date(m.captured(3).toInt(), m.captured(2).toInt(), m.captured(1).toInt());
    const QTime time(m.captured(4).toInt(), m.captured(5).toInt(), m.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return to_stamp(QDateTime(date, time, Qt::UTC));
}

QString compliance_file_line(int index, const ComplianceRecord& r, const QLocale& locale) {
    return config::key_value_line(device::format_value(index, 0, locale),
                                  file_time_text(r.start) + QLatin1Char('-') +
                                      file_time_text(r.end));
}

QStringList compliance_file_lines(const ComplianceMemory& memory, const QLocale& locale) {
    QStringList lines;
    const int last = std::min(memory.state.last_index, table_upper);
    for (int i = 0; i <= last; ++i) {
        const ComplianceRecord& r = memory.records[static_cast<std::size_t>(i)];
        if (r.start != 0 && r.end != 0)
            lines << compliance_file_line(i, r, locale);
    }
    return lines;
}

LoadedLines read_compliance_lines(const QStringList& lines, ComplianceRecords& records,
                                  const QLocale& locale) {
    LoadedLines result;
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty())
            continue;
        const auto fail = [&] {
            result.bad_line = line;
            return result;
        };
        const QStringList fields = line.split(QLatin1Char('|'));
        if (fields.size() != 2)
            return fail();
        const auto index = parse_index(fields[0], locale);
        if (!index)
            return fail();
        const QStringList times = fields[1].split(QLatin1Char('-'));
        if (times.size() != 2)
            return fail();
        const auto start = parse_file_time(times[0]);
        const auto end = parse_file_time(times[1]);
        if (!start || !end || *start == 0 || *end == 0)
            return fail();
        records[static_cast<std::size_t>(*index)] = {*start, *end};
        result.last_index = *index;
    }
    result.ok = true;
    return result;
}

QString serial_from_file_name(const QString& name) {
    static const QRegularExpression form(QStringLiteral(R"(^Compliance_(.+)_\d{8}_\d{6}\.txt$)"),
                                         QRegularExpression::CaseInsensitiveOption);
    return form.match(name).captured(1);
}

QString default_file_name(const AppContext& ctx) {
    return QStringLiteral("Compliance_") + config::file_name_part(ctx.device.SN) +
           QLatin1Char('_') + ctx.clock.now().toString(QStringLiteral("yyyyMMdd_HHmmss")) +
           QStringLiteral(".txt");
}

bool write_compliance_file(const QString& path, const ComplianceMemory& memory,
                           const QLocale& locale) {
    return config::write_text_lines(path, compliance_file_lines(memory, locale));
}

bool compliance_save(AppContext& ctx) {
    const ComplianceState& s = ctx.compliance.state;
    if (ctx.link.device_handle == 0 || !s.has_data || !s.from_device) {
        ctx.ui.show_msg(ctx.language.text(6006), MsgIcon::information);
        return false;
    }
    FileDialogRequest request = dialog_request(ctx, 6007);
    request.proposed_name = default_file_name(ctx);
    QString path;
    for (;;) {
        path = ctx.ui.choose_save_file(request);
        if (path.isEmpty())
            return false;
        if (!QFileInfo::exists(path) || ctx.ui.ask_yes_no(ctx.language.text(6008)))
            break;
    }
    remember_dialog_folder(ctx, path);
    if (!write_compliance_file(path, ctx.compliance, QLocale())) {
        show_msg(ctx, ctx.language.text(6015) + QLatin1Char(' ') + QDir::toNativeSeparators(path));
        return false;
    }
    return true;
}

bool compliance_load(AppContext& ctx) {
    compliance_clear(ctx.compliance);
    compliance_buttons(ctx, link_enabled(ctx));
    const QString path = ctx.ui.choose_open_file(dialog_request(ctx, 6003));
    if (path.isEmpty())
        return false;
    remember_dialog_folder(ctx, path);
    return load_compliance_file(ctx, path);
}

namespace {

// Lines read, or nothing when the file could not be read at all. `path`
// names the file they came from, when they came from one: its name is all
// a loaded file tells of its device.
bool load_lines(AppContext& ctx, const std::optional<QStringList>& lines, const QString& path) {
    ComplianceMemory& m = ctx.compliance;
    compliance_clear(m);
    const LoadedLines loaded =
        lines ? read_compliance_lines(*lines, m.records, QLocale()) : LoadedLines{};
    if (!loaded.ok) {
        // A file that cannot be read at all is reported like its first line.
        show_msg(ctx, ctx.language.text(6009) + QStringLiteral("\r\n") + ctx.language.text(6010) +
                          QStringLiteral(" (") + loaded.bad_line + QLatin1Char(')'));
        compliance_buttons(ctx, link_enabled(ctx));
        return false;
    }
    ComplianceState& s = m.state;
    s.last_index = loaded.last_index;
    s.read_index = 0;
    s.has_data = true;
    s.from_device = false;
    s.shown_month = 0;
    s.file_name = QFileInfo(path).fileName();
    s.serial_number = serial_from_file_name(s.file_name);
    compliance_show(ctx);
    return true;
}

} // namespace

bool load_compliance_file(AppContext& ctx, const QString& path) {
    return load_lines(ctx, config::read_text_lines(path), path);
}

bool load_compliance_lines(AppContext& ctx, const QStringList& lines) {
    return load_lines(ctx, lines, {});
}

} // namespace veltrako::compliance
