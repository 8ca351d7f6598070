// The "Compliance" page: readout buttons, the monthly usage chart and the
// month's compliance duration, with the handlers of its buttons.

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "compliance_chart_widget.h"
#include "controls.h"
#include "frm_main.h"
#include "pages.h"
#include "printing.h"
#include "progress_row.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

namespace veltrako::ui {

QWidget* build_page_compliance() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_compliance"));
    auto* layout = new QHBoxLayout(page);

    auto* buttons = new QVBoxLayout;
    struct Button {
        const char* name;
        int tag;
        const char* caption;
    };
    static const Button all[] = {
        {"cmd_complianceread", 11095, "Speicher auslesen"},
        {"cmd_compliancedelete", 11096, "Speicher löschen"},
        {"cmd_compliancesave", 11097, "Speichern"},
        {"cmd_complianceload", 11098, "Laden"},
        {"cmd_complianceprint", 11099, "Drucken"},
        {"cmd_compliance_test", 11100, "Testdaten"},
    };
    for (const Button& b : all)
        buttons->addWidget(make_button(QLatin1String(b.name), b.tag, QString::fromUtf8(b.caption)));
    buttons->addSpacing(12);
    buttons->addWidget(make_label(QStringLiteral("lbl_compliancedauer"), 11101,
                                  QStringLiteral("Compliance-Dauer (h)")));
    QLineEdit* hours = make_box(QStringLiteral("t_compliancedauer"), true);
    hours->setAlignment(Qt::AlignRight);
    buttons->addWidget(hours);
    auto* months = new QHBoxLayout;
    months->addWidget(make_button(QStringLiteral("cmd_prevmonth"), 0, QStringLiteral("<<")));
    months->addWidget(make_button(QStringLiteral("cmd_nextmonth"), 0, QStringLiteral(">>")));
    buttons->addLayout(months);
    QLabel* record =
        make_label(QStringLiteral("l_recordnumber"), 11102, QStringLiteral("Record Nr.:"));
    record->hide(); // visible only while a readout runs
    buttons->addWidget(record);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    // Picture box of the monthly chart, growing with the window, and the
    // month's summary under it.
    auto* right = new QVBoxLayout;
    right->addWidget(new ComplianceChartWidget, 1);
    right->addWidget(make_label(QStringLiteral("l_compliancesummary"), 0, QString()));
    right->addWidget(make_label(QStringLiteral("l_complianceadherence"), 0, QString()));
    right->addWidget(new ProgressRow(QStringLiteral("compliance"), true));
    layout->addLayout(right, 1);
    return page;
}

namespace {

// `repaint_chart`: the chart is shown, or was until now. An empty chart is
// not repainted for every record a readout brings in.
void refresh_page(FrmMain& form, const compliance::CompliancePage& p, bool repaint_chart) {
    const auto enable = [&](const char* name, bool on) {
        form.control(QLatin1String(name))->setEnabled(on);
    };
    enable("cmd_complianceread", p.read_enabled);
    enable("cmd_compliancedelete", p.delete_enabled);
    enable("cmd_compliancesave", p.save_enabled);
    enable("cmd_complianceprint", p.print_enabled);
    enable("cmd_prevmonth", p.prev_enabled);
    enable("cmd_nextmonth", p.next_enabled);
    enable("cmd_complianceload", p.replace_enabled);
    enable("cmd_compliance_test", p.replace_enabled);
    form.control_as<QLineEdit>(QStringLiteral("t_compliancedauer"))->setText(p.dauer_text);
    auto* record = form.control_as<QLabel>(QStringLiteral("l_recordnumber"));
    if (!p.record_caption.isEmpty())
        record->setText(p.record_caption);
    record->setVisible(p.record_visible);
    form.control_as<QLabel>(QStringLiteral("l_compliancesummary"))
        ->setText(p.chart_shown ? p.summary_text : QString());
    auto* adherence = form.control_as<QLabel>(QStringLiteral("l_complianceadherence"));
    adherence->setText(p.chart_shown ? p.adherence_text : QString());
    adherence->setVisible(!adherence->text().isEmpty());
    if (repaint_chart)
        form.control(QStringLiteral("p_compliance"))->update();
}

// Prints the shown month on the printer the technician chooses. The
// patient comes from the report form, when one was typed there.
void compliance_print(FrmMain& form, AppContext& ctx) {
    compliance::ComplianceMemory& m = ctx.compliance;
    const compliance::Stamp now = compliance::to_stamp(ctx.clock.now());
    QPrinter printer(QPrinter::HighResolution);
    if (!choose_printer(ctx, printer, &form,
                        compliance::compliance_pdf_name(m.state, m.records, now)))
        return;
    const compliance::PrintedFor printed_for = compliance_printed_for(form, ctx);
    QString error;
    const bool printed = print_on_printer(
        printer,
        [&](print::DrawingSurface& surface) {
            compliance::compliance_print_page(surface, m.state, m.records, ctx.language, QLocale(),
                                              now, printed_for);
        },
        ctx.language, &error);
    if (!printed)
        show_msg(ctx, error);
}

} // namespace

compliance::PrintedFor compliance_printed_for(const FrmMain& form, const AppContext& ctx) {
    const auto* patient = form.control_as<QLineEdit>(QStringLiteral("t_patient"));
    return {patient ? patient->text() : QString(), compliance::to_stamp(ctx.clock.now()),
            ctx.compliance.prescribed_hours, ctx.compliance.adherence_share};
}

void bind_page_compliance(FrmMain& form, AppContext& ctx) {
    compliance::install_compliance(ctx);
    form.findChild<ComplianceChartWidget*>(QStringLiteral("p_compliance"))->set_source(&ctx);
    ctx.compliance.page_changed = [&form, &ctx, chart_was_shown = true]() mutable {
        const bool shown = ctx.compliance.page.chart_shown;
        refresh_page(form, ctx.compliance.page, shown || chart_was_shown);
        chart_was_shown = shown;
    };
    const auto on_click = [&form](const char* name, auto handler) {
        QObject::connect(form.control_as<QPushButton>(QLatin1String(name)), &QPushButton::clicked,
                         &form, handler);
    };
    on_click("cmd_complianceread", [&ctx] { compliance::cmd_complianceread_Click(ctx); });
    on_click("cmd_compliancedelete", [&ctx] { compliance::cmd_compliancedelete_Click(ctx); });
    on_click("cmd_compliancesave", [&ctx] { compliance::compliance_save(ctx); });
    on_click("cmd_complianceload", [&ctx] { compliance::compliance_load(ctx); });
    on_click("cmd_complianceprint", [&form, &ctx] { compliance_print(form, ctx); });
    on_click("cmd_compliance_test",
             [&ctx, random = QRandomGenerator(QRandomGenerator::system()->generate())]() mutable {
                 compliance::cmd_compliance_test_Click(ctx, random);
             });
    on_click("cmd_prevmonth", [&ctx] { compliance::cmd_prevmonth_Click(ctx); });
    on_click("cmd_nextmonth", [&ctx] { compliance::cmd_nextmonth_Click(ctx); });
    on_click("cmd_compliancecancel", [&ctx] { compliance::compliance_cancel(ctx); });
    auto* row = form.findChild<ProgressRow*>(QStringLiteral("compliance_progress"));
    ctx.compliance.readout.changed = [row, &ctx] {
        // While the records come in, the poll tick waits: no live status is
        // asked for until the readout ends.
        row->show_standing(ctx.compliance.readout.standing(),
                           {ctx.language.text(8300), ctx.language.text(8301),
                            ctx.language.text(8302), ctx.language.text(8303)});
    };
    compliance::compliance_buttons(ctx, compliance::link_enabled(ctx));
}

} // namespace veltrako::ui
