#include "device_tab.h"

#include "controls.h"
#include "device/device_view.h"
#include "device/timing_presets.h"
#include "frm_main.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>

namespace veltrako::ui {

namespace {

void set_text(QWidget* w, const QString& text) {
    // Writing the same text again would only drop the user's selection.
    if (auto* line = qobject_cast<QLineEdit*>(w)) {
        if (line->text() != text)
            line->setText(text);
    } else if (auto* plain = qobject_cast<QPlainTextEdit*>(w))
        plain->setPlainText(text);
    else if (auto* rich = qobject_cast<QTextEdit*>(w))
        rich->setPlainText(text);
    else if (auto* label = qobject_cast<QLabel*>(w))
        label->setText(text);
}

void paint(QWidget* w, const QColor& colour) {
    if (!w)
        return;
    QPalette p = w->palette();
    if (p.color(QPalette::Window) == colour)
        return;
    p.setColor(QPalette::Window, colour);
    // The text keeps its contrast whatever the desktop's colours are.
    p.setColor(QPalette::WindowText, lamp_text_colour(colour));
    w->setPalette(p);
}

void set_position(QWidget* w, int position) {
    if (auto* box = qobject_cast<QComboBox*>(w))
        box->setCurrentIndex(position >= 0 && position < box->count() ? position : -1);
}

void show_if(QWidget* w, bool shown) {
    if (w)
        w->setVisible(shown);
}

void blank(FrmMain& form) {
    // Lock first: a selector moved while locked sends nothing. Deliberately
    // empty rather than at the first entry: without a device there is no
    // value, and "0" or "0.00" would read as one.
    for (const QString& name : {QStringLiteral("cb_t"), QStringLiteral("cb_vs")}) {
        for (QWidget* w : form.controls_named(name)) {
            set_locked(w, true);
            set_position(w, -1);
        }
    }
    // The inspection report's boxes share the "t_" prefix but not the device
    // record: what the technician typed there survives a lost connection.
    const QWidget* report_page = form.control(QStringLiteral("page_protokoll"));
    for (QWidget* w : form.controls_with_prefix(QStringLiteral("t_")))
        if (!report_page || !report_page->isAncestorOf(w))
            set_text(w, QString());
    const QColor white = shade_colour(device::Shade::white);
    for (const QString& prefix :
         {QStringLiteral("lbl_Ventil"), QStringLiteral("lbl_Alarm"), QStringLiteral("pic_")}) {
        for (QWidget* w : form.controls_with_prefix(prefix))
            paint(w, white);
    }
    // Whether an alarm sounds is not known without a device either.
    for (QWidget* w : form.controls_with_prefix(QStringLiteral("pic_")))
        set_text(w, QString());
    // Nor a valve phase (deliberately emptied too: it is a value like the boxes).
    set_text(form.control(QStringLiteral("lbl_Phase")), QString());
    if (QWidget* setsn = form.control(QStringLiteral("cmd_setsn")))
        setsn->hide();
    set_text(form.control(QStringLiteral("sysstatout")), QString());
}

// The user is typing a new serial number, or has typed one and not yet set
// it: the device's number must not overwrite it.
bool serial_being_edited(const FrmMain& form) {
    const QWidget* t_sn = form.control(QStringLiteral("t_sn"));
    const QWidget* setsn = form.control(QStringLiteral("cmd_setsn"));
    return (t_sn && t_sn->hasFocus()) || (setsn && !setsn->isHidden());
}

// A picture shows a note while its alarm sounds.
void show_acoustic(FrmMain& form, const std::array<bool, 3>& on) {
    const char* names[] = {"pic_akustO21", "pic_akustO22", "pic_akustvollo"};
    for (std::size_t i = 0; i < on.size(); ++i)
        set_text(form.control(QLatin1String(names[i])),
                 on[i] ? QStringLiteral("\u266A") : QString());
}

void show_model_controls(FrmMain& form, const device::ModelControls& m) {
    show_if(form.control(QStringLiteral("lbl_VentilSP")), m.valve_sp);
    show_if(form.control(QStringLiteral("lbl_AlarmRest")), m.alarm_rest);
    show_if(form.control(QStringLiteral("lbl_Alarmlow")), m.alarm_low);
    show_if(form.control(QStringLiteral("pic_akustO21")), m.acoustic);
    show_if(form.control(QStringLiteral("pic_akustvollo")), m.acoustic);
    show_if(form.control(QStringLiteral("pic_akustO22")), m.acoustic_o22);
    for (int i = 0; i < device::flow_selector_count; ++i) {
        show_if(form.control(QStringLiteral("cb_vs"), i), m.flow_selectors);
        show_if(form.control(QStringLiteral("lbl_vs"), i), m.flow_selectors);
    }
    for (int i = 7; i < device::timing_count; ++i)
        show_if(form.control(QStringLiteral("cb_t"), i), m.extra_timings);
}

} // namespace

QColor shade_colour(device::Shade shade) {
    switch (shade) {
    case device::Shade::red:
        return QColor(255, 0, 0);
    case device::Shade::green:
        return QColor(0, 255, 0);
    case device::Shade::white:
        return QColor(255, 255, 255);
    case device::Shade::unchanged:
        break;
    }
    return {};
}

void refresh_device_tab(FrmMain& form, const device::DeviceTabView& view) {
    if (view.blank) {
        blank(form);
        return;
    }
    for (const device::TextRow& row : view.texts) {
        if (row.control == QLatin1String("t_sn") && serial_being_edited(form))
            continue;
        set_text(form.control(row.control), row.text);
    }
    if (QWidget* toggle = form.control(QStringLiteral("cmd_togglelp")))
        toggle->setEnabled(view.togglelp_enabled);
    for (int i = 0; i < device::timing_count; ++i)
        set_position(form.control(QStringLiteral("cb_t"), i),
                     view.timing_positions[static_cast<std::size_t>(i)]);
    for (int i = 0; i < device::flow_selector_count; ++i)
        set_position(form.control(QStringLiteral("cb_vs"), i),
                     view.flow_positions[static_cast<std::size_t>(i)]);
    for (const device::ShadeRow& row : view.shades) {
        if (row.shade != device::Shade::unchanged)
            paint(form.control(row.control), shade_colour(row.shade));
    }
    show_acoustic(form, view.acoustic_on);
    show_model_controls(form, view.model);
}

void apply_preset_buttons(FrmMain& form, const device::PresetTable& table) {
    // A model without presets shows no presets box at all, not two lonely
    // captions.
    if (QWidget* frame = form.control(QStringLiteral("frm_zeiten_preset")))
        frame->setVisible(table.shown);
    for (int n = 1; n <= device::preset_count; ++n) {
        auto* button = form.control_as<QPushButton>(QStringLiteral("cmdPresetZeiten"), n);
        if (!button)
            continue;
        const device::PresetButton& b = table.buttons[static_cast<std::size_t>(n - 1)];
        button->setVisible(table.shown);
        button->setEnabled(b.enabled);
        // The two title lines, one below the other.
        QString caption = b.caption;
        button->setText(caption.replace(QLatin1String("\r\n"), QLatin1String("\n")));
    }
}

} // namespace veltrako::ui
