#include "compliance/compliance_print.h"

#include "config/file_names.h"
#include "config/language.h"
#include "device/device_view.h"
#include "print/markup.h"

#include <algorithm>

namespace veltrako::compliance {

namespace {

// The page's left offset of the printout, in twips.
constexpr int print_page_left = 15;

constexpr int text_title = 6003;
constexpr int text_serial = 11011;
constexpr int text_lp = 11013;
constexpr int text_hours = 11101;
constexpr int text_test_data = 11100;
constexpr int text_patient = 11074;
constexpr int text_place_date = 7014;
constexpr int text_month = 8101;
constexpr int text_printed = 8102;
constexpr int text_file = 8103;
constexpr int text_signature = 8104;

const QString tall = QStringLiteral("Xg");

// A language text inside a markup line: a single quote would open a tag.
QString markup_safe(QString text) {
    return text.replace(QLatin1Char('\''), QChar(0x2019))
        .replace(QLatin1Char('\t'), QLatin1Char(' '));
}

// The month the page shows, chosen as the chart chooses it, without touching
// the state.
Stamp shown_month(const ComplianceState& state, const ComplianceRecords& records, Stamp now) {
    ComplianceState copy = state;
    return compliance_month_pass(copy, records, now).start;
}

} // namespace

QString print_title(const ComplianceState& state, const config::LanguageTables& language) {
    QString title = language.text(text_title);
    if (state.test_data)
        title += QStringLiteral(" \u2013 ") + language.text(text_test_data);
    return title;
}

std::vector<std::pair<QString, QString>> identity_lines(const ComplianceState& state,
                                                        const config::LanguageTables& language,
                                                        const QLocale& locale,
                                                        const PrintedFor& printed_for) {
    std::vector<std::pair<QString, QString>> lines;
    const auto add_known = [&](int caption, const QString& value) {
        if (!value.trimmed().isEmpty())
            lines.emplace_back(language.text(caption), value.trimmed());
    };
    add_known(text_serial, state.serial_number);
    add_known(text_lp, state.lp_number);
    add_known(text_file, state.file_name);
    lines.emplace_back(language.text(text_month),
                       month_title(month_start_of(state.shown_month), language.words));
    lines.emplace_back(language.text(text_hours),
                       device::format_value(state.total_hours, 1, locale));
    lines.emplace_back(language.text(text_printed),
                       device::format_device_time(from_stamp(printed_for.printed), language.words));
    add_known(text_patient, printed_for.patient);
    return lines;
}

void compliance_print_page(print::DrawingSurface& surface, ComplianceState& state,
                           const ComplianceRecords& records, const config::LanguageTables& language,
                           const QLocale& locale, Stamp now, const PrintedFor& printed_for) {
    surface.set_font_name(QStringLiteral("Arial"));
    surface.set_font_size(11);
    const double page_width = surface.scale_width();
    // Column 1 starts in the middle of the page, so the title centres there.
    const print::TabStops stops{0, page_width / 2};
    // The closing 'center' is no tag the markup knows; it is ignored.
    print::print_line(surface,
                      QStringLiteral("\t'center''size") + QStringLiteral("13") +
                          QStringLiteral("''b'") + markup_safe(print_title(state, language)) +
                          QStringLiteral("'/b''size") + QStringLiteral("11") +
                          QStringLiteral("''/center'"),
                      stops, print_page_left);
    print::print_line(surface, QString(), stops, print_page_left);

    const double margin = 0.03 * page_width;
    const double top = surface.current_y();
    const double width = page_width - 2 * margin;
    const double height = width * 0.75;
    const Month month = compliance_draw(surface, margin, top, width, height, 10, state, records,
                                        chart_texts(language, locale), now);

    surface.set_font_size(11);
    surface.set_bold(false);
    surface.move_to(0, top + height + surface.text_height(tall));
    // The summary, the prescription's days and the best 30 days on lines of
    // their own: together they are wider than the page.
    QStringList summary{summary_text(summarise(month), language, locale)};
    const double hours = printed_for.prescribed_hours;
    if (hours > 0)
        summary << prescription_text(prescription_days(records, state, month.start, hours), hours,
                                     language, locale);
    if (const auto window = best_window(records, state, hours, printed_for.adherence_share))
        summary << adherence_text(*window, hours, printed_for.adherence_share, language, locale);
    for (const QString& line : summary)
        print::print_line(surface, markup_safe(line), {margin}, print_page_left);

    // Whose usage: one line each, captions in a column and values after
    // them, printed as they stand (a patient's name may hold a quote, which
    // the markup would take for a tag) and cut with "…" at the page's edge.
    const auto lines = identity_lines(state, language, locale, printed_for);
    const double line_height = surface.text_height(tall);
    const double caption_x = margin + print_page_left;
    double value_x = caption_x;
    for (const auto& line : lines)
        value_x =
            std::max(value_x, caption_x + surface.text_width(line.first + QStringLiteral(": ")));
    double y = surface.current_y() + line_height / 2;
    for (const auto& [caption, value] : lines) {
        surface.set_bold(false);
        surface.move_to(caption_x, y);
        surface.print(caption + QLatin1Char(':'), false);
        surface.set_bold(true);
        surface.move_to(value_x, y);
        surface.print(print::fitted_text(surface, value, page_width - margin - value_x), false);
        y += line_height;
    }
    surface.set_bold(false);

    // Place, date and signature at the foot of the page, as on the report.
    surface.set_font_size(9);
    const double foot = surface.scale_height() - 700 - surface.text_height(tall);
    const double line_y = std::max(y + 3 * line_height, foot);
    const double left = margin + print_page_left;
    const double right = page_width - margin;
    const double line_width = (right - left) * 0.4;
    surface.draw_line(left, line_y, left + line_width, line_y, print::black);
    surface.draw_line(right - line_width, line_y, right, line_y, print::black);
    surface.move_to(left, line_y + 60);
    surface.print(language.text(text_place_date), false);
    surface.move_to(right - line_width, line_y + 60);
    surface.print(language.text(text_signature), false);
}

QString compliance_pdf_name(const ComplianceState& state, const ComplianceRecords& records,
                            Stamp now) {
    const QString who = state.test_data ? QStringLiteral("Testdaten") : state.serial_number;
    const QString month =
        from_stamp(shown_month(state, records, now)).toString(QStringLiteral("yyyy-MM"));
    return config::proposed_file_name(QStringLiteral("Compliance"), {who, month},
                                      QStringLiteral(".pdf"));
}

} // namespace veltrako::compliance
