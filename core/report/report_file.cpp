#include "report/report_file.h"

#include "app_context.h"
#include "config/config.h"
#include "config/dates.h"
#include "config/file_names.h"
#include "config/key_value_lines.h"
#include "config/text_file.h"
#include "device/parameter_values.h"
#include "protocol/response_interpreter.h"
#include "report/report_draft.h"
#include "report/report_measurements.h"

#include <QDir>
#include <QFileInfo>

namespace veltrako::report {

namespace {

// The device keys the reader knows. The serial-memory key is spelled
// "VEEPROMP" here while the writer writes "VEEPROM", so that value is never
// restored: a report file is read back as it was filed, and nothing in it
// names a field the snapshot has anyway.
const QStringList& reader_device_keys() {
    static const QStringList keys = [] {
        QStringList k = device::parameter_keys().mid(1);
        k.replace(k.indexOf(QStringLiteral("VEEPROM")), QStringLiteral("VEEPROMP"));
        k << QLatin1String(remaining_time_key);
        return k;
    }();
    return keys;
}

int exact_report_key_index(const QString& key) {
    const QStringList& keys = report_keys();
    const qsizetype i = key.isEmpty() ? -1 : keys.indexOf(key);
    return i < 1 ? 0 : static_cast<int>(i);
}

void store_device_value(device::DeviceRecord& d, const QString& key, const QString& value) {
    if (key == QLatin1String(remaining_time_key))
        d.rest_text = value;
    else
        device::set_parameter_value(d, key, value);
}

// Why a report without device data is not saved.
constexpr int text_no_device_data = 8552;

QString file_filter(const AppContext& ctx) {
    return ctx.language.text(7001) + QStringLiteral(" (*.txt)|*.txt");
}

} // namespace

QStringList report_file_lines(const ReportRecord& report, const QLocale& locale) {
    QStringList lines;
    const QStringList& keys = report_keys();
    const auto value_line = [&](qsizetype i) {
        return config::key_value_line(keys[i], report.report_values[static_cast<std::size_t>(i)]);
    };
    for (qsizetype i = 1; i < first_measurement_index; ++i)
        lines << value_line(i);
    const QStringList& device_keys = device::parameter_keys();
    for (qsizetype i = 1; i < device_keys.size(); ++i)
        lines << config::key_value_line(
            device_keys[i], device::parameter_value(report.report_device, device_keys[i], locale));
    lines << config::key_value_line(QLatin1String(remaining_time_key),
                                    report.report_device.rest_text);
    // The measured values come last, so that every line a file of an older
    // version held keeps its place; a reader that does not know them skips
    // them. The limits they were judged by and the result go with them.
    for (qsizetype i = first_measurement_index; i < keys.size(); ++i)
        lines << value_line(i);
    for (const QString& key : limit_keys())
        lines << config::key_value_line(key,
                                        measurement_text(limit_value(report.limits, key), locale));
    lines << config::key_value_line(QLatin1String(key_result),
                                    result_word(judge_report(report, report.limits).result));
    return lines;
}

void read_report_lines(ReportRecord& report, const QStringList& lines) {
    bool identity_read = false;
    for (const QString& line : lines) {
        const QStringList parts = line.split(QLatin1Char('|'));
        if (parts.size() != 2)
            continue;
        const QString& key = parts[0];
        if (const int i = exact_report_key_index(key)) {
            report.report_values[static_cast<std::size_t>(i)] =
                config::restore_line_breaks(parts[1]);
        } else if (reader_device_keys().contains(key)) {
            store_device_value(report.report_device, key, parts[1]);
            identity_read = identity_read || key == QLatin1String("SW_NUM");
        } else if (limit_keys().contains(key)) {
            if (const std::optional<double> limit = parse_limit(parts[1]))
                set_limit(report.limits, key, *limit);
        }
        // ERGEBNIS follows from the values and the limits; it is judged
        // again rather than read, so that the page and a printout never show
        // a result the values do not give.
    }
    if (identity_read) {
        // Which settings the device has follows from its family, as on a
        // live connection.
        device::DeviceRecord& d = report.report_device;
        d.family_code = protocol::map_family_code(d.sw_num);
        device::detect_device_type(d);
    }
}

QString default_report_name(const ReportRecord& report, const QDateTime& now) {
    return config::file_name_part(report.report_device.SN) + QLatin1Char('_') +
           now.toString(QStringLiteral("yyyyMMdd_HHmmss"));
}

QString report_pdf_name(const ReportRecord& report, const QDateTime& now) {
    QDate day = config::parse_date(report.value(QStringLiteral("t_Datum"))).date();
    if (!day.isValid())
        day = now.date();
    return config::proposed_file_name(
        QStringLiteral("Pruefprotokoll"),
        {report.report_device.SN, day.toString(QStringLiteral("yyyyMMdd"))},
        QStringLiteral(".pdf"));
}

void hand_on_report(AppContext& ctx, const QString& sn, const QStringList& lines,
                    const QString& path, bool printed) {
    if (ctx.hooks.report_filed)
        ctx.hooks.report_filed({sn.trimmed(), ctx.clock.now(), path, printed, lines});
}

void hand_on_report(AppContext& ctx, const ReportRecord& report, const QString& path,
                    bool printed) {
    hand_on_report(ctx, report.report_device.SN, report_file_lines(report, QLocale()), path,
                   printed);
}

bool load_report_file(ReportRecord& report, const QString& path, const Limits& limits) {
    report = ReportRecord{};
    report.limits = limits;
    const auto lines = config::read_text_lines(path);
    if (!lines)
        return false;
    read_report_lines(report, *lines);
    report.report_device.live_valid = true;
    return true;
}

bool save_report(AppContext& ctx) {
    ReportRecord& report = ctx.report;
    if (!report.device_valid()) {
        // Said, not silent: "Speichern" in the question before the program
        // ends must never do nothing; the draft keeps what was typed.
        ctx.ui.show_msg(ctx.language.text(text_no_device_data), MsgIcon::exclamation);
        return false;
    }
    FileDialogRequest request;
    request.title = ctx.language.text(7002);
    request.start_dir = ctx.config.INITDIR;
    request.filter = file_filter(ctx);
    request.default_suffix = QStringLiteral(".txt");
    request.proposed_name = default_report_name(report, ctx.clock.now());
    QString path;
    for (;;) {
        path = ctx.ui.choose_save_file(request);
        if (path.isEmpty())
            return false;
        if (!QFileInfo::exists(path) || ctx.ui.ask_yes_no(ctx.language.text(7004)))
            break;
        // Back to the dialog, where the user left it.
        request.start_dir = QFileInfo(path).absolutePath();
        request.proposed_name = QFileInfo(path).fileName();
    }
    remember_dialog_folder(ctx, path);
    if (!config::write_text_lines(path, report_file_lines(report, QLocale()))) {
        ctx.ui.show_msg(ctx.language.text(7006) + QLatin1Char(' ') + QDir::toNativeSeparators(path),
                        MsgIcon::critical);
        return false;
    }
    hand_on_report(ctx, report, path, false);
    // Saved: nothing is unsaved any more, so neither the question before the
    // program ends nor the one before a fresh report comes up for it, and
    // the draft has done its work.
    report.report_changed = false;
    ctx.report_draft.cancel();
    remove_draft(ctx);
    ctx.ui.show_msg(ctx.language.text(7005), MsgIcon::information);
    return true;
}

bool open_report(AppContext& ctx, const std::function<void()>& show) {
    // The report on the page stays as it is until a file has been read: a
    // cancelled dialog or an unreadable file must not cost the technician
    // what was typed, nor grey out the buttons.
    FileDialogRequest request;
    request.title = ctx.language.text(7003);
    request.start_dir = ctx.config.INITDIR;
    request.filter = file_filter(ctx);
    request.default_suffix = QStringLiteral(".txt");
    const QString path = ctx.ui.choose_open_file(request);
    if (path.isEmpty())
        return false;
    remember_dialog_folder(ctx, path);
    ReportRecord opened;
    if (!load_report_file(opened, path, configured_limits(ctx.config))) {
        ctx.ui.show_msg(ctx.language.text(7007) + QLatin1Char(' ') + QDir::toNativeSeparators(path),
                        MsgIcon::critical);
        return false;
    }
    ctx.report = std::move(opened);
    show();
    return true;
}

bool checksaved(AppContext& ctx, const std::function<bool()>& save_click) {
    if (!ctx.report.report_changed)
        return true;
    // Deliberately three answers instead of asking OK/Cancel until Cancel:
    // Cancel must keep the program, and the report, as they are.
    switch (ctx.ui.ask_save_discard_cancel(ctx.language.text(3))) {
    case SaveAnswer::save:
        return save_click();
    case SaveAnswer::discard:
        ctx.report_draft.cancel();
        remove_draft(ctx);
        return true;
    case SaveAnswer::cancel:
        break;
    }
    return false;
}

} // namespace veltrako::report
