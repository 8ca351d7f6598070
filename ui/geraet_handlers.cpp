#include "geraet_handlers.h"

#include "app_context.h"
#include "controls.h"
#include "device/settings.h"
#include "device/timing_presets.h"
#include "frm_main.h"

#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <functional>

namespace veltrako::ui {

namespace {

// Focus and mouse events the controls do not turn into signals: the
// selectors unlock while they have the focus (cb_*_GotFocus / _LostFocus),
// t_sn hides its button on leaving (t_sn_LostFocus), and the acoustic-alarm
// pictures are clicked.
class GeraetEvents final : public QObject {
public:
    GeraetEvents(FrmMain& form, AppContext& ctx) : QObject(&form), form_(form), ctx_(ctx) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* w = qobject_cast<QWidget*>(watched);
        if (!w)
            return false;
        if (qobject_cast<QComboBox*>(w))
            return selector_event(w, event);
        if (w->objectName() == QLatin1String("t_sn") && event->type() == QEvent::FocusOut)
            t_sn_LostFocus(static_cast<QLineEdit*>(w));
        else if (event->type() == QEvent::MouseButtonRelease)
            picture_clicked(w);
        return false;
    }

private:
    bool selector_event(QWidget* box, QEvent* event) {
        switch (event->type()) {
        case QEvent::FocusIn:
            set_locked(box, false);
            break;
        case QEvent::FocusOut:
            // The open list takes the focus for a moment; the choice made in
            // it is still the user's.
            if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
                set_locked(box, true);
            break;
        case QEvent::Wheel:
            // Turning the wheel over a selector in passing must not change a
            // device setting.
            return !box->hasFocus();
        default:
            break;
        }
        return false;
    }

    void t_sn_LostFocus(QLineEdit* t_sn) {
        if (device::setsn_hidden_after_focus_loss(ctx_.device, t_sn->text()))
            form_.control(QStringLiteral("cmd_setsn"))->hide();
    }

    void picture_clicked(QWidget* w) {
        const QString name = w->objectName();
        if (name == QLatin1String("pic_akustO21"))
            device::pic_akust_Click(ctx_, device::AcousticAlarm::o21);
        else if (name == QLatin1String("pic_akustO22"))
            device::pic_akust_Click(ctx_, device::AcousticAlarm::o22);
        else if (name == QLatin1String("pic_akustvollo"))
            device::pic_akust_Click(ctx_, device::AcousticAlarm::vollo);
    }

    FrmMain& form_;
    AppContext& ctx_;
};

void on_click(FrmMain& form, const QString& name, int index, std::function<void()> handler) {
    QObject::connect(form.control_as<QPushButton>(name, index), &QPushButton::clicked, &form,
                     std::move(handler));
}

void bind_selectors(FrmMain& form, AppContext& ctx, GeraetEvents* events) {
    for (QWidget* w : form.controls_named(QStringLiteral("cb_vs"))) {
        auto* box = static_cast<QComboBox*>(w);
        box->installEventFilter(events);
        // `activated` comes only from a choice the user makes, never from the
        // refresh setting the position.
        QObject::connect(box, &QComboBox::activated, &form, [&ctx, box](int position) {
            device::cb_vs_Click(ctx, index_of(box), position, is_locked(box));
        });
    }
    for (QWidget* w : form.controls_named(QStringLiteral("cb_t"))) {
        auto* box = static_cast<QComboBox*>(w);
        box->installEventFilter(events);
        QObject::connect(box, &QComboBox::activated, &form, [&ctx, box](int position) {
            device::cb_t_Click(ctx, index_of(box), position, is_locked(box));
        });
    }
}

void bind_identity(FrmMain& form, AppContext& ctx, GeraetEvents* events) {
    auto* t_sn = form.control_as<QLineEdit>(QStringLiteral("t_sn"));
    QWidget* setsn = form.control(QStringLiteral("cmd_setsn"));
    t_sn->installEventFilter(events);
    QObject::connect(t_sn, &QLineEdit::textChanged, &form, [&ctx, setsn](const QString& text) {
        if (device::setsn_shown_after_change(ctx.device, text))
            setsn->show();
    });
    on_click(form, QStringLiteral("cmd_setsn"), -1, [&ctx, t_sn, setsn] {
        const QString text = t_sn->text();
        setsn->hide();
        device::cmd_setsn_Click(ctx, text);
    });
    on_click(form, QStringLiteral("cmd_resetbstd"), -1,
             [&ctx] { device::cmd_resetbstd_Click(ctx); });
    on_click(form, QStringLiteral("cmd_setbstd"), -1, [&ctx] { device::cmd_setbstd_Click(ctx); });
    on_click(form, QStringLiteral("cmd_setdatetime"), -1,
             [&ctx] { device::cmd_setdatetime_Click(ctx); });
    QWidget* togglelp = form.control(QStringLiteral("cmd_togglelp"));
    on_click(form, QStringLiteral("cmd_togglelp"), -1, [&ctx, togglelp] {
        // Off until the device's answer is shown: one click, one toggle.
        togglelp->setEnabled(false);
        device::cmd_togglelp_Click(ctx);
    });
    on_click(form, QStringLiteral("cmd_Restzeit"), -1, [&ctx] { device::cmd_Restzeit_Click(ctx); });
}

void bind_timings(FrmMain& form, AppContext& ctx) {
    // The selectors take the factory values from the record once the
    // question is answered Yes.
    on_click(form, QStringLiteral("cmd_t_reset"), -1, [&ctx] { device::cmd_t_reset_Click(ctx); });
    for (int n = 1; n <= device::preset_count; ++n)
        on_click(form, QStringLiteral("cmdPresetZeiten"), n,
                 [&ctx, n] { device::cmdPresetZeiten_Click(ctx, n); });
}

} // namespace

void bind_geraet_page(FrmMain& form, AppContext& ctx) {
    auto* events = new GeraetEvents(form, ctx);
    bind_selectors(form, ctx, events);
    bind_identity(form, ctx, events);
    bind_timings(form, ctx);
    for (const char* name : {"pic_akustO21", "pic_akustO22", "pic_akustvollo"})
        form.control(QLatin1String(name))->installEventFilter(events);
}

} // namespace veltrako::ui
