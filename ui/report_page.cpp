#include "report_page.h"

#include "app_context.h"
#include "frm_main.h"
#include "painter_surface.h"
#include "printing.h"
#include "report/report_file.h"
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
}

} // namespace

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
    report::collect_report(
        ctx.report, [&](const QString& key) { return read_field(report_control(form, key)); });
}

void refresh_report(FrmMain& form, AppContext& ctx) {
    report::refresh_report_device(ctx.report, ctx.device);
    show_device_data(form, ctx);
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
    // Every edit marks the report, and nothing else.
    const auto changed = [&ctx] { ctx.report.report_changed = true; };
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
    // state; what was typed on an earlier visit is dropped without a question.
    QObject::connect(form.tab1(), &QTabWidget::currentChanged, &form, [&form, &ctx](int index) {
        if (index != static_cast<int>(Page::protokoll))
            return;
        report::take_snapshot(ctx.report, ctx.device, true);
        report::set_report_defaults(ctx.report, ctx.clock.now());
        show_report(form, ctx);
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

    ctx.hooks.device_found = [&form, &ctx] { refresh_report(form, ctx); };
}

} // namespace veltrako::ui
