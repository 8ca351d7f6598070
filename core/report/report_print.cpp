#include "report/report_print.h"

#include "config/language.h"
#include "device/device_view.h"
#include "device/parameter_values.h"
#include "print/drawing_surface.h"
#include "print/markup.h"
#include "report/measurement_print.h"
#include "report/print_layout.h"

#include <algorithm>
#include <optional>

namespace veltrako::report {

namespace {

using namespace layout;
using print::Alignment;
using print::DrawingSurface;
using print::fitted_text;

// The device keys of the data block with the language text of their caption
// (the captions of the "Gerät" page, units included).
struct KeyCaption {
    const char* key;
    int text;
};
constexpr KeyCaption device_rows[] = {
    {"SN", 11011},
    {"LP", 11013},
    {"SW", 11015},
    {"BSTD", 11016},
    {"REST", 11019},
    {"O2", 11026},
    {"VOLUMENSTROM", 11027},
    {"SOLL_VOLUMENSTROM", 11028},
    {"GASTEMP", 11031},
    {"KOMPRESSORTEMP", 11032},
    {"MIN_VOLUMENSTROM", 11023},
    {"MAX_VOLUMENSTROM", 11024},
    {"ALARMSIGNAL", 7015},
};

// Device steps of the valve timings, in seconds.
constexpr double timing_step = 0.04;

} // namespace

CaptionRows device_data_rows(const ReportRecord& report, const config::LanguageTables& language,
                             const QLocale& locale) {
    const device::DeviceRecord& d = report.report_device;
    const device::ModelControls model = device::model_controls(d);
    CaptionRows rows;
    for (const KeyCaption& row : device_rows) {
        const QString key = QLatin1String(row.key);
        if ((key.endsWith(QLatin1String("_VOLUMENSTROM")) &&
             key != QLatin1String("SOLL_VOLUMENSTROM") && !model.flow_selectors) ||
            (key == QLatin1String("ALARMSIGNAL") && !model.acoustic))
            continue;
        const QString value = key == QLatin1String("REST")
                                  ? d.rest_text
                                  : device::parameter_value(d, key, locale).trimmed();
        rows.emplace_back(language.text(row.text), value);
    }
    return rows;
}

namespace {

// The device data as the printout lists them: the identity stands in the
// band at the top of the page already.
CaptionRows printed_data_rows(const ReportRecord& report, const config::LanguageTables& language,
                              const QLocale& locale) {
    CaptionRows rows = device_data_rows(report, language, locale);
    const QStringList identity{language.text(11011), language.text(11013), language.text(11015),
                               language.text(11016)};
    std::erase_if(rows, [&](const auto& row) { return identity.contains(row.first); });
    return rows;
}

} // namespace

CaptionRows timing_rows(const ReportRecord& report, const config::LanguageTables& language,
                        const QLocale& locale) {
    const device::DeviceRecord& d = report.report_device;
    const int count = device::model_controls(d).extra_timings ? device::timing_count : 7;
    CaptionRows rows;
    for (int i = 0; i < count; ++i) {
        const QString caption = i < 7 ? language.text(11058 + i)
                                      : language.text(7017) + QLatin1Char(' ') + QString::number(i);
        rows.emplace_back(
            caption,
            device::format_value(d.zeiten[static_cast<std::size_t>(i)] * timing_step, 2, locale));
    }
    return rows;
}

double draw_device_data(DrawingSurface& surface, const ReportRecord& report,
                        const config::LanguageTables& language, const QLocale& locale, double left,
                        double top, double width) {
    if (!report.device_valid())
        return top;
    const double points = surface.font().points;
    PageLayout page(surface, language);
    double y =
        page.rows(device_data_rows(report, language, locale), left, left + width, top, points);
    y += 150;
    surface.move_to(left + 40, y);
    surface.set_bold(true);
    print::print_markup(surface, markup_safe(language.text(7016)));
    surface.set_bold(false);
    y += surface.text_height(QStringLiteral("X")) + 30;
    return page.rows(timing_rows(report, language, locale), left, left + width, y, points);
}

void print_report(DrawingSurface& s, const ReportRecord& report,
                  const config::LanguageTables& language, const QLocale& locale) {
    PageLayout page(s, language);
    const device::DeviceRecord& d = report.report_device;
    const double left = page.left;
    const double right = page.right;
    const double mid = (left + right) / 2;
    const auto value = [&](const char* key) { return report.value(QLatin1String(key)); };

    // Header: title, the date and time of the inspection, then the device
    // identity as a band.
    use_font(s, 16, true);
    page.markup(QStringLiteral("'b'") + markup_safe(language.text(7010)), {left});
    use_font(s, 10);
    const QString when = language.text(7018) + QLatin1Char(' ') + one_line(value("t_Datum")) +
                         QStringLiteral("  ") + one_line(value("t_Uhrzeit"));
    plain(s, left, page.y + 20, when);
    page.y += s.text_height(QStringLiteral("X")) + 60;
    s.fill_box(left, page.y, right, page.y + 40, print::black);
    page.y += 140;

    use_font(s, 8);
    const double caption_h = s.text_height(QStringLiteral("X"));
    use_font(s, 10.5, true);
    const double value_h = s.text_height(QStringLiteral("X"));
    const double band_h = caption_h + value_h + 140;
    s.fill_box(left, page.y, right, page.y + band_h, band_grey);
    const int id_captions[] = {11011, 11013, 11015, 11016};
    const QString id_values[] = {d.SN.trimmed(), d.LP.trimmed(), d.SW, d.BSTD};
    const double column = (right - left) / 4;
    for (int i = 0; i < 4; ++i) {
        const double x = left + 80 + i * column;
        use_font(s, 8);
        s.move_to(x, page.y + 50);
        print::print_markup(s, markup_safe(language.text(id_captions[i])));
        use_font(s, 10.5, true);
        plain(s, x, page.y + 70 + caption_h, fitted_text(s, one_line(id_values[i]), column - 160));
    }
    page.y += band_h;
    page.continuation = language.text(7010) + QStringLiteral(" \u2013 ") + d.SN.trimmed() +
                        QStringLiteral(" \u2013 ") + one_line(value("t_Datum"));

    // Patient and insurer.
    page.heading(language.text(7011));
    use_font(s, 10.5);
    const double row = s.text_height(QStringLiteral("X")) + 170;
    page.field(left, 1500, mid - 250, 11074, value("t_Patient"));
    page.field(mid, 1500, right, 11073, value("t_Krankenkasse"));
    page.y += row;
    page.field(left, 1500, mid - 250, 11075, value("t_Strasse"));
    page.field(mid, 1500, right, 11077, value("t_Telefon"));
    page.y += row;
    page.field(left, 1500, mid - 250, 11076, value("t_Ort"));
    page.y += row;

    // The inspection: who, when.
    page.heading(language.text(7012));
    page.field(left, 1500, mid - 250, 11078, value("t_Pruefer"));
    page.field(mid, 1100, mid + 2500, 11079, value("t_Datum"));
    page.field(mid + 2700, 900, right, 11080, value("t_Uhrzeit"));
    page.y += row;

    // The checks: the functional test in two columns, then the maker's part.
    const auto checked = [&](const char* key) { return check_state(value(key)).value_or(false); };
    page.heading(language.text(11071));
    const std::pair<const char*, int> tests[] = {
        {"ck_Selbsttest", 11081}, {"ck_Ansaugtest", 11082}, {"ck_Maxflow", 11083},
        {"ck_Minflow", 11084},    {"ck_Visuell", 11087},    {"ck_Leistung", 11085},
    };
    use_font(s, 10);
    const double check_row = s.text_height(QStringLiteral("X")) + 110;
    for (int i = 0; i < 6; ++i) {
        const double x = i % 2 == 0 ? left + 80 : mid;
        page.check(x, page.y + (i / 2) * check_row, language.text(tests[i].second),
                   checked(tests[i].first));
    }
    page.y += 3 * check_row;
    // The maker's part on a line of its own under its caption, without a
    // band: the room goes to the measured values.
    use_font(s, 9, true);
    plain(s, left + 80, page.y + 20, language.text(11072));
    const double maker_x =
        std::max(left + 1800, left + 80 + s.text_width(language.text(11072)) + 300);
    page.check(maker_x, page.y, language.text(11086), checked("ck_Typenschild"));
    page.check(mid, page.y, language.text(11088), checked("ck_stk"));
    page.y += check_row;

    // What was measured, judged against the report's limits.
    const Judgement judgement = judge_report(report, report.limits);
    print_measurements(page, report, judgement, locale);

    // Remarks and accessories, as typed.
    // Side by side while both are short, as on the page; one under the
    // other, over pages if need be, when either is long.
    if (!page.text_boxes_side_by_side(language.text(11089), value("t_Bemerkungen"),
                                      language.text(11090), value("t_Zubehoer"), 3, 6)) {
        page.heading(language.text(11089));
        page.text_box(value("t_Bemerkungen"), 3);
        page.heading(language.text(11090));
        page.text_box(value("t_Zubehoer"), 2);
    }

    // The device data of the snapshot: values left, valve timings right;
    // the caption goes on with a few rows under it.
    use_font(s, 9);
    const double signature_h = s.text_height(QStringLiteral("X"));
    // Above the signatures: the framed result, then room to sign in.
    const double frame_h = result_frame_height(s, judgement);
    constexpr double signing_room = 800;
    const double signature_room = 200 + frame_h + signing_room + 60 + signature_h + 40;
    page.heading(language.text(11070), 2600);
    page.paired_rows(printed_data_rows(report, language, locale), mid - 250, language.text(7016),
                     timing_rows(report, language, locale), mid, signature_room);

    // Result and signature, at the foot of the page of the last rows: they
    // kept room for them, so neither is ever alone on a page.
    page.need(signature_room, page.bottom);
    use_font(s, 9);
    const double line_y =
        std::max(page.y + 200 + frame_h + signing_room, page.bottom - signature_h - 100);
    print_result_frame(page, line_y - signing_room - frame_h, judgement, locale);
    use_font(s, 9);
    s.draw_line(left, line_y, left + 4200, line_y, print::black);
    s.draw_line(right - 5000, line_y, right, line_y, print::black);
    s.move_to(left, line_y + 60);
    print::print_markup(s, markup_safe(language.text(7014)));
    s.move_to(right - 5000, line_y + 60);
    print::print_markup(s, markup_safe(language.text(7013)));
}

} // namespace veltrako::report
