#include "report_page.h"

#include "app_context.h"
#include "frm_main.h"
#include "measurement_box.h"
#include "painter_surface.h"
#include "printing.h"
#include "report/report_draft.h"
#include "report/report_file.h"
#include "report/report_measurements.h"
#include "report/report_print.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QTabWidget>

namespace veltrako::ui {

DeviceDataPicture::DeviceDataPicture(QWidget* parent) : QFrame(parent) {}

void DeviceDataPicture::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    if (!draw_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    paint::PainterSurface surface(painter);
    draw_(surface);
}

namespace {

// Opening the page with unsaved entries: discard them?
constexpr int text_discard_question = 8551;

// The control of a report key; its name is matched without regard to case.
QWidget* report_control(const FrmMain& form, const QString& key) {
    const QWidget* page = form.control(QStringLiteral("page_protokoll"));
    if (!page)
        return nullptr;
    for (QWidget* w : page->findChildren<QWidget*>())
        if (w->objectName().compare(key, Qt::CaseInsensitive) == 0)
            return w;
    return nullptr;
}

QString plain_breaks(QString text) {
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

void show_field(QWidget* control, const report::ShownField& field) {
    if (auto* box = qobject_cast<QLineEdit*>(control)) {
        box->setText(field.text);
    } else if (auto* area = qobject_cast<QPlainTextEdit*>(control)) {
        area->setPlainText(plain_breaks(field.text));
    } else if (auto* check = qobject_cast<QCheckBox*>(control)) {
        if (field.checked)
            check->setChecked(*field.checked);
    }
}

QString read_field(QWidget* control) {
    if (const auto* box = qobject_cast<QLineEdit*>(control))
        return box->text();
    if (const auto* area = qobject_cast<QPlainTextEdit*>(control))
        return area->toPlainText();
    if (const auto* check = qobject_cast<QCheckBox*>(control))
        return report::check_value(check->isChecked());
    return {};
}

void show_device_data(FrmMain& form, const AppContext& ctx) {
    const bool valid = ctx.report.device_valid();
    form.control(QStringLiteral("cmd_save"))->setEnabled(valid);
    form.control(QStringLiteral("frm_protokoll"))->setEnabled(valid);
    form.control(QStringLiteral("p_geraetedaten"))->update();
    show_other_device_note(form, ctx);
    // The set flow and the device's O2 reading are judged against.
    show_judgement(form, ctx);
}

} // namespace

QString read_report_control(const FrmMain& form, const QString& key) {
    return read_field(report_control(form, key));
}

void show_other_device_note(FrmMain& form, const AppContext& ctx) {
    auto* label = form.control_as<QLabel>(QStringLiteral("lbl_anderes_geraet"));
    const QString note = report::other_device_note(ctx.report, ctx.device, ctx.language);
    label->setText(note);
    label->setVisible(!note.isEmpty());
}

void show_report(FrmMain& form, AppContext& ctx) {
    for (const report::ShownField& field : report::report_view(ctx.report))
        show_field(report_control(form, field.key), field);
    show_device_data(form, ctx);
    ctx.report.report_changed = false;
}

void collect_report(FrmMain& form, AppContext& ctx) {
    report::collect_report(ctx.report,
                           [&](const QString& key) { return read_report_control(form, key); });
}

void refresh_report(FrmMain& form, AppContext& ctx) {
    report::refresh_report_device(ctx.report, ctx.device);
    show_device_data(form, ctx);
}

void start_fresh_report(FrmMain& form, AppContext& ctx) {
    report::take_snapshot(ctx.report, ctx.device, true);
    report::set_report_defaults(ctx.report, ctx.clock.now());
    ctx.report.limits = report::configured_limits(ctx.config);
    show_report(form, ctx);
}

bool restore_report_draft(FrmMain& form, AppContext& ctx) {
    std::optional<report::ReportRecord> draft = report::offer_draft(ctx);
    if (!draft)
        return false;
    // The page opens on a fresh report first, then shows the draft over it:
    // opening the page asks nothing about a report that is not there yet.
    form.select_page(Page::protokoll);
    ctx.report = std::move(*draft);
    show_report(form, ctx);
    ctx.report.report_changed = true; // restored, not saved
    return true;
}

bool cmd_save_click(FrmMain& form, AppContext& ctx) {
    collect_report(form, ctx);
    return report::save_report(ctx);
}

void cmd_print_click(FrmMain& form, AppContext& ctx) {
    collect_report(form, ctx);
    QPrinter printer;
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setPageOrientation(QPageLayout::Portrait);
    if (!choose_printer(ctx, printer, &form, report::report_pdf_name(ctx.report, ctx.clock.now())))
        return;
    QString error;
    if (!print_on_printer(
            printer,
            [&ctx](print::DrawingSurface& surface) {
                report::print_report(surface, ctx.report, ctx.language, QLocale());
            },
            ctx.language, &error)) {
        ctx.ui.show_msg(error, MsgIcon::critical);
        return;
    }
    report::hand_on_report(ctx, ctx.report, printer.outputFileName(), true);
}

void bind_protokoll_page(FrmMain& form, AppContext& ctx) {
    // Every edit marks the report, and a second later keeps it as a draft.
    const auto changed = [&ctx] {
        ctx.report.report_changed = true;
        ctx.report_draft.edited();
    };
    ctx.report_draft.collect = [&form, &ctx] { collect_report(form, ctx); };
    const QStringList& keys = report::report_keys();
    for (qsizetype i = 1; i < keys.size(); ++i) {
        QWidget* control = report_control(form, keys[i]);
        if (auto* box = qobject_cast<QLineEdit*>(control))
            QObject::connect(box, &QLineEdit::textChanged, &form, changed);
        else if (auto* area = qobject_cast<QPlainTextEdit*>(control))
            QObject::connect(area, &QPlainTextEdit::textChanged, &form, changed);
        else if (auto* check = qobject_cast<QCheckBox*>(control))
            QObject::connect(check, &QCheckBox::stateChanged, &form, changed);
    }
    // The inspector typed on the page is named with every confirmed write to
    // the device, before the report is saved.
    if (auto* inspector =
            qobject_cast<QLineEdit*>(report_control(form, QStringLiteral("t_Pruefer"))))
        QObject::connect(inspector, &QLineEdit::textChanged, &form, [&ctx](const QString& text) {
            ctx.report.set_value(QStringLiteral("t_Pruefer"), text);
        });

    // Every visit to the page starts a fresh report from the present device
    // state. Deliberately unlike the original, which dropped what was typed
    // without a word: a report with unsaved entries is discarded only when
    // the technician says so (No, the default, keeps it), since changing
    // pages must never cost a half-written report.
    QObject::connect(form.tab1(), &QTabWidget::currentChanged, &form, [&form, &ctx](int index) {
        if (index != static_cast<int>(Page::protokoll))
            return;
        collect_report(form, ctx);
        if (ctx.report.report_changed && report::has_typed_text(ctx.report)) {
            if (!ctx.ui.confirm_change(ctx.language.text(text_discard_question))) {
                // Kept as it is; only a report without device data takes
                // them from a device that has them now.
                if (!ctx.report.device_valid())
                    refresh_report(form, ctx);
                return;
            }
            ctx.report_draft.cancel();
            report::remove_draft(ctx);
        }
        start_fresh_report(form, ctx);
    });

    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_save")),
                     &QPushButton::clicked, &form, [&form, &ctx] { cmd_save_click(form, ctx); });
    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_open")),
                     &QPushButton::clicked, &form,
                     [&form, &ctx] { report::open_report(ctx, [&] { show_report(form, ctx); }); });

    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_print")),
                     &QPushButton::clicked, &form, [&form, &ctx] { cmd_print_click(form, ctx); });
    if (auto* picture =
            dynamic_cast<DeviceDataPicture*>(form.control(QStringLiteral("p_geraetedaten"))))
        picture->set_drawer([&ctx](print::DrawingSurface& surface) {
            print::FontSpec font;
            font.points = 8;
            surface.set_font(font);
            report::draw_device_data(surface, ctx.report, ctx.language, QLocale(), 100, 100,
                                     surface.scale_width() - 200);
        });

    bind_measurement_box(form, ctx);
    ctx.hooks.device_found = [&form, &ctx] { refresh_report(form, ctx); };
}

} // namespace veltrako::ui
