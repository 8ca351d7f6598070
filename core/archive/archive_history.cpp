#include "archive/archive_history.h"

#include "archive/archive_event.h"
#include "config/language.h"
#include "report/report_measurements.h"

#include <algorithm>
#include <set>

namespace veltrako::archive {

namespace {

// Summaries of the history's events.
constexpr int text_periods = 8810;   // "%1 periods, %2 new"
constexpr int text_entries = 8811;   // "%1 entries, %2 new"
constexpr int text_saved = 8812;     // "saved"
constexpr int text_printed = 8813;   // "printed"
constexpr int text_inspector = 8814; // "inspector"
constexpr int text_written = 8815;   // a visit: "complete"
constexpr int text_failed = 8816;
constexpr int text_cancelled = 8817;
constexpr int text_ok = 8818;     // an update: "successful"
constexpr int text_result = 8916; // a report: "result" and its machine word
constexpr int text_o2 = 8917;     // "O2 measured %1 %, device %2 %"

// The settings and timings a visit compares with the one before.
const QStringList setting_keys = [] {
    QStringList keys{QStringLiteral("LP"),
                     QStringLiteral("SOLL_VOLUMENSTROM"),
                     QStringLiteral("MIN_VOLUMENSTROM"),
                     QStringLiteral("MAX_VOLUMENSTROM"),
                     QStringLiteral("ALARMSIGNAL"),
                     QStringLiteral("REST")};
    for (int i = 0; i <= 13; ++i)
        keys << QStringLiteral("ZEITEN%1").arg(i);
    return keys;
}();

QString day_text(compliance::Stamp s) {
    return s == 0 ? QString() : compliance::from_stamp(s).toString(QStringLiteral("yyyy-MM-dd"));
}

QString iso(compliance::Stamp s) {
    return compliance::from_stamp(s).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

QString one_field(QString text) {
    text.replace(QLatin1Char('|'), QLatin1Char('/'));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text;
}

// A report's result in its machine word and the O2 it measured beside the
// device's own reading; nothing for a report of an older program.
QString measured(const EventRow& e, const config::LanguageTables& language, const QLocale& locale) {
    if (e.report_result.isEmpty())
        return {};
    QString s =
        QStringLiteral(", ") + language.text(text_result) + QLatin1Char(' ') + e.report_result;
    if (e.o2_measured) {
        const QString device =
            e.o2_device ? report::measurement_text(*e.o2_device, locale) : QStringLiteral("\u2013");
        s += QStringLiteral(", ") +
             language.text(text_o2).arg(report::measurement_text(*e.o2_measured, locale), device);
    }
    return s;
}

} // namespace

QString device_line(const DeviceRow& d) {
    const QString last_visit =
        d.last_visit_at == 0
            ? QString()
            : QDateTime::fromSecsSinceEpoch(d.last_visit_at).toString(QStringLiteral("yyyy-MM-dd"));
    return QStringList{d.sn,
                       d.lp,
                       last_visit,
                       d.last_visit_bstd,
                       QString::number(d.periods),
                       day_text(d.first_period),
                       day_text(d.last_period)}
        .join(QLatin1Char('|'));
}

QString event_summary(const EventRow& e, const config::LanguageTables& language,
                      const QLocale& locale) {
    const auto inspector = [&](const QString& name) {
        return name.isEmpty()
                   ? QString()
                   : QStringLiteral(", ") + language.text(text_inspector) + QLatin1Char(' ') + name;
    };
    const auto with_reason = [&](QString text) {
        return e.reason.isEmpty() ? text : text + QStringLiteral(": ") + e.reason;
    };
    QString s;
    if (e.kind == QLatin1String(kind_usage))
        s = language.text(text_periods).arg(e.count).arg(e.new_count);
    else if (e.kind == QLatin1String(kind_status))
        s = language.text(text_entries).arg(e.count).arg(e.new_count);
    else if (e.kind == QLatin1String(kind_report))
        s = language.text(e.printed ? text_printed : text_saved) +
            (e.path.isEmpty() ? QString() : QLatin1Char(' ') + e.path) + inspector(e.inspector) +
            measured(e, language, locale);
    else if (e.kind == QLatin1String(kind_visit))
        s = with_reason(language.text(e.result == QLatin1String("written")  ? text_written
                                      : e.result == QLatin1String("failed") ? text_failed
                                                                            : text_cancelled) +
                        (e.path.isEmpty() ? QString() : QLatin1Char(' ') + e.path));
    else if (e.kind == QLatin1String(kind_firmware))
        s = with_reason(e.old_value + QStringLiteral(" → ") + e.new_value + QStringLiteral(", ") +
                        language.text(e.result == QLatin1String("ok") ? text_ok : text_failed));
    else if (e.kind == QLatin1String(kind_write))
        s = e.setting + QStringLiteral(": ") + e.old_value + QStringLiteral(" → ") + e.new_value +
            QStringLiteral(" (") + e.pc_user + inspector(e.inspector) + QLatin1Char(')');
    return one_field(s);
}

QString event_line(const EventRow& e, const config::LanguageTables& language,
                   const QLocale& locale) {
    return QDateTime::fromSecsSinceEpoch(e.at).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
           QLatin1Char('|') + e.kind + QLatin1Char('|') + event_summary(e, language, locale);
}

QStringList csv_lines(const Periods& periods) {
    QStringList lines{QStringLiteral("start,end,hours")};
    for (const compliance::ComplianceRecord& p : periods)
        lines << iso(p.start) + QLatin1Char(',') + iso(p.end) + QLatin1Char(',') +
                     QString::number(static_cast<double>(p.end - p.start) / 3600.0, 'f', 2);
    return lines;
}

MonthTable month_table(const Periods& periods, compliance::Stamp month) {
    MonthTable t;
    const compliance::Stamp start = compliance::month_start_of(month);
    const compliance::Stamp end = compliance::add_months(start, 1);
    compliance::ComplianceRecords& r = *t.records;
    for (const compliance::ComplianceRecord& p : periods) {
        if (p.start >= end)
            break; // sorted by start: nothing later touches the month
        if (p.end < start || t.last_index + 2 >= compliance::table_upper)
            continue;
        r[static_cast<std::size_t>(++t.last_index)] = p;
    }
    // The device's first period and the one with the latest end, wherever
    // they lie: the days counted against a prescription begin with the one
    // and end with the other. Outside the month they add nothing to the
    // month's figures, and a period already in the table counts once.
    if (!periods.empty())
        r[static_cast<std::size_t>(++t.last_index)] = periods.front(); // sorted by start
    const auto latest = std::max_element(
        periods.begin(), periods.end(), [](const auto& a, const auto& b) { return a.end < b.end; });
    if (latest != periods.end())
        r[static_cast<std::size_t>(++t.last_index)] = *latest;
    return t;
}

std::vector<compliance::Stamp> archive_months(const Periods& periods) {
    std::set<compliance::Stamp> months;
    // The compliance code's own rule, a table's worth of periods at a time.
    for (std::size_t from = 0; from < periods.size(); from += compliance::table_upper) {
        compliance::ComplianceRecords chunk{};
        const std::size_t n = std::min<std::size_t>(compliance::table_upper, periods.size() - from);
        std::copy_n(periods.begin() + static_cast<long>(from), n, chunk.begin());
        for (const compliance::Stamp m :
             compliance::months_with_use(chunk, static_cast<int>(n) - 1))
            months.insert(m);
    }
    return {months.begin(), months.end()};
}

QStringList usage_lines(const Periods& periods, double prescribed_hours, double adherence_share,
                        const QLocale& locale, compliance::Stamp running_end) {
    QStringList lines;
    for (const compliance::Stamp month : archive_months(periods)) {
        const MonthTable t = month_table(periods, month);
        compliance::ComplianceState state;
        state.last_index = t.last_index;
        // The period with the latest end closes the table: when it was still
        // running, the table ends as a readout's does.
        if (running_end != 0 && t.last_index >= 0 &&
            (*t.records)[static_cast<std::size_t>(t.last_index)].end == running_end) {
            state.from_device = true;
            state.record_count = t.last_index;
        }
        lines << compliance::month_usage_line(*t.records, state, month, prescribed_hours, locale);
    }
    std::vector<compliance::Period> all;
    for (const compliance::ComplianceRecord& p : periods)
        if (p.start != 0 && p.end != 0 && p.start < p.end)
            all.push_back({p.start, p.end});
    if (const auto window = compliance::best_window(all, compliance::counted_days(all, running_end),
                                                    prescribed_hours, adherence_share))
        lines << compliance::adherence_line(*window);
    return lines;
}

ChartMonth chart_month(const Periods& periods, compliance::Stamp shown_month,
                       compliance::Stamp now) {
    ChartMonth c;
    compliance::Stamp month = shown_month;
    if (month == 0) {
        compliance::Stamp latest = 0;
        for (const compliance::ComplianceRecord& p : periods)
            latest = std::max(latest, p.end);
        month = latest != 0 ? latest : now;
    }
    month = compliance::month_start_of(month);
    c.table = month_table(periods, month);
    compliance::ComplianceState& s = c.state;
    s.shown_month = month;
    s.last_index = c.table.last_index;
    s.has_data = !periods.empty();
    compliance::compliance_month_pass(s, *c.table.records, now);
    // Whether the buttons lead anywhere is judged on every period, not on
    // the month's share of them.
    const compliance::Stamp month_end = compliance::add_months(month, 1);
    s.has_prev_month =
        std::any_of(periods.begin(), periods.end(), [&](const auto& p) { return p.start < month; });
    s.has_next_month = std::any_of(periods.begin(), periods.end(),
                                   [&](const auto& p) { return p.end >= month_end; });
    return c;
}

std::optional<double> operating_hours(const QString& bstd) {
    const QString t = bstd.trimmed();
    const qsizetype colon = t.indexOf(QLatin1Char(':'));
    if (colon <= 0)
        return std::nullopt;
    bool ok_h = false, ok_m = false;
    const int hours = t.left(colon).toInt(&ok_h);
    const int minutes = t.mid(colon + 1).toInt(&ok_m);
    if (!ok_h || !ok_m || minutes < 0 || minutes > 59)
        return std::nullopt;
    return hours + minutes / 60.0;
}

std::vector<VisitChange> compare_visits(const std::vector<VisitRow>& visits,
                                        const std::vector<qint64>& status_first_seen) {
    std::vector<VisitChange> changes;
    for (std::size_t i = 0; i < visits.size(); ++i) {
        VisitChange c;
        c.visit = visits[i];
        const qint64 from = i == 0 ? std::numeric_limits<qint64>::min() : visits[i - 1].at;
        c.new_status_entries = static_cast<int>(
            std::count_if(status_first_seen.begin(), status_first_seen.end(),
                          [&](qint64 at) { return at > from && at <= c.visit.at; }));
        if (i > 0) {
            const VisitRow& before = visits[i - 1];
            c.has_previous = true;
            const auto now_h = operating_hours(c.visit.values.value(QStringLiteral("BSTD")));
            const auto then_h = operating_hours(before.values.value(QStringLiteral("BSTD")));
            if (now_h && then_h) {
                c.hours_run = *now_h - *then_h;
                const double days = static_cast<double>(c.visit.at - before.at) / 86400.0;
                if (days > 0)
                    c.hours_per_day = *c.hours_run / days;
            }
            for (const QString& key : setting_keys) {
                const QString a = before.values.value(key);
                const QString b = c.visit.values.value(key);
                if (a != b && before.values.contains(key) && c.visit.values.contains(key))
                    c.settings_changed
                        << key + QStringLiteral(": ") + a + QStringLiteral(" → ") + b;
            }
            const QString sw_a = before.values.value(QStringLiteral("SW"));
            const QString sw_b = c.visit.values.value(QStringLiteral("SW"));
            if (sw_a != sw_b)
                c.firmware_changed = sw_a + QStringLiteral(" → ") + sw_b;
        }
        changes.push_back(std::move(c));
    }
    return changes;
}

} // namespace veltrako::archive
