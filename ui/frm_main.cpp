#include "frm_main.h"

#include "app_context.h"
#include "compliance/compliance_readout.h"
#include "controls.h"
#include "device/device_clock.h"
#include "device/device_view.h"
#include "device/settings.h"
#include "device/timing_presets.h"
#include "device_tab.h"
#include "dialogs.h"
#include "firmware/firmware_update.h"
#include "frm_firmware_progress.h"
#include "frm_visit.h"
#include "frm_wait.h"
#include "geraet_handlers.h"
#include "link/connection_state.h"
#include "link/device_connection.h"
#include "live_chart.h"
#include "pages.h"
#include "pdf_output.h"
#include "protocol/poll_cycle.h"
#include "report/report_file.h"
#include "report_page.h"
#include "status/status_readout.h"
#include "visit/visit.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QStatusBar>
#include <QTabWidget>

namespace veltrako::ui {

namespace {
// "PC-Zeit übernehmen" puts it right: said on the page beside the button.
constexpr int text_clock_fix = 8262;
} // namespace

FrmMain::FrmMain(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frm_main"));
    set_tag(this, 11500);
    setWindowTitle(QStringLiteral("veltrako2"));

    tab1_ = new QTabWidget;
    tab1_->setObjectName(QStringLiteral("tab1"));
    set_tag(tab1_, 11000);
    // A page that does not fit the window scrolls instead of squeezing its
    // controls over each other (a 1024 x 768 screen).
    const auto scrolled = [](QWidget* page) {
        auto* area = new QScrollArea;
        area->setObjectName(page->objectName() + QStringLiteral("_scroll"));
        area->setWidget(page);
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        return area;
    };
    tab1_->addTab(scrolled(build_page_geraet()), QStringLiteral("Gerät"));
    tab1_->addTab(scrolled(build_page_protokoll()), QStringLiteral("Protokoll"));
    tab1_->addTab(scrolled(build_page_compliance()), QStringLiteral("Compliance"));
    tab1_->addTab(scrolled(build_page_system_status()), QStringLiteral("System Status"));
    tab1_->addTab(scrolled(build_page_entwickler()), QStringLiteral("Entwickler"));
    // The history's tab has a text of its own: tab1's text names the five before it.
    QWidget* verlauf = scrolled(build_page_verlauf());
    set_tag(verlauf, 11200);
    tab1_->addTab(verlauf, QStringLiteral("Verlauf"));
    setCentralWidget(tab1_);

    build_menu();
    // The state on the left; the note takes the room that is left.
    connection_label_ = new QLabel;
    connection_label_->setObjectName(QStringLiteral("lbl_connection"));
    note_label_ = new QLabel;
    note_label_->setObjectName(QStringLiteral("lbl_note"));
    // The device clock's own place: a write's note does not hide it.
    clock_label_ = new QLabel;
    clock_label_->setObjectName(QStringLiteral("lbl_clock_note"));
    clock_label_->setStyleSheet(QStringLiteral("color: #b00000; font-weight: bold;"));
    clock_label_->hide();
    statusBar()->addWidget(connection_label_);
    statusBar()->addWidget(clock_label_);
    statusBar()->addWidget(note_label_, 1);
    index_controls();
    chart_ = findChild<LiveChart*>(QStringLiteral("Chart"));
    resize(1280, 860);
}

FrmMain::~FrmMain() {
    if (busy_)
        QGuiApplication::restoreOverrideCursor();
}

void FrmMain::build_menu() {
    const auto add_action = [this](const QString& name, int tag, const QString& text) {
        auto* action = new QAction(text, this);
        action->setObjectName(name);
        set_tag(action, tag);
        actions_.insert(name, action);
        return action;
    };
    const auto add_menu = [this](const QString& name, int tag, const QString& title) {
        QMenu* menu = menuBar()->addMenu(title);
        menu->setObjectName(name);
        set_tag(menu, tag);
        return menu;
    };

    QMenu* datei = add_menu(QStringLiteral("men_datei"), 11001, QStringLiteral("Datei"));
    datei->addAction(
        add_action(QStringLiteral("men_Softwareupdate"), 11002, QStringLiteral("Softwareupdate")));
    datei->addAction(
        add_action(QStringLiteral("men_Servicebesuch"), 8402, QStringLiteral("Servicebesuch…")));
    datei->addAction(add_action(QStringLiteral("men_Info"), 11003, QStringLiteral("Info")));
    datei->addSeparator();
    QAction* beenden = add_action(QStringLiteral("men_beenden"), 11004, QStringLiteral("Beenden"));
    datei->addAction(beenden);
    connect(beenden, &QAction::triggered, this, &QWidget::close);

    QMenu* diagramm = add_menu(QStringLiteral("men_diagramm"), 11005, QStringLiteral("Diagramm"));
    QAction* nur_druck =
        add_action(QStringLiteral("men_nurdruck"), 11006, QStringLiteral("Nur Druck"));
    nur_druck->setCheckable(true);
    diagramm->addAction(nur_druck);
    connect(nur_druck, &QAction::toggled, this, [this](bool on) { chart_->set_pressure_only(on); });

    menuBar()->addAction(add_action(QStringLiteral("men_verbindung"), 11007,
                                    QStringLiteral("Verbindung initialisieren")));
}

void FrmMain::index_controls() {
    const auto widgets = findChildren<QWidget*>();
    for (QWidget* w : widgets) {
        if (!w->objectName().isEmpty())
            controls_.insert(w->objectName(), w);
    }
}

QWidget* FrmMain::control(const QString& name, int index) const {
    for (auto it = controls_.constFind(name); it != controls_.cend() && it.key() == name; ++it) {
        if (index_of(it.value()) == index)
            return it.value();
    }
    return nullptr;
}

QList<QWidget*> FrmMain::controls_with_prefix(const QString& prefix) const {
    QList<QWidget*> found;
    for (auto it = controls_.cbegin(); it != controls_.cend(); ++it) {
        if (it.key().startsWith(prefix))
            found << it.value();
    }
    return found;
}

QAction* FrmMain::menu_action(const QString& name) const {
    return actions_.value(name);
}

void FrmMain::bind(AppContext& ctx) {
    ctx_ = &ctx;
    chart_->set_source(&ctx.live_history, &ctx.language);
    ctx.timer1.on_tick = [&ctx] { protocol::timer1_tick(ctx); };

    connect(control_as<QPushButton>(QStringLiteral("Command1")), &QPushButton::clicked, this,
            [&ctx] { link::open_device(ctx, false); });
    connect(control_as<QPushButton>(QStringLiteral("Command2")), &QPushButton::clicked, this,
            [&ctx] { link::close_device(ctx); });
    connect(menu_action(QStringLiteral("men_verbindung")), &QAction::triggered, this, [this, &ctx] {
        refresh_report(*this, ctx);
        protocol::connect_routine(ctx);
    });
    connect(menu_action(QStringLiteral("men_Info")), &QAction::triggered, this,
            [this] { show_wait(QStringLiteral("info")); });
    connect(menu_action(QStringLiteral("men_Softwareupdate")), &QAction::triggered, this,
            [this, &ctx] { men_Softwareupdate_Click(ctx); });
    connect(menu_action(QStringLiteral("men_Servicebesuch")), &QAction::triggered, this,
            [this, &ctx] { men_Servicebesuch_Click(ctx); });
    bind_entwickler_page(ctx);
    connect(control_as<QPushButton>(QStringLiteral("cmd_sysstatread")), &QPushButton::clicked, this,
            [&ctx] { status::cmd_sysstatread_Click(ctx); });
    connect(control_as<QPushButton>(QStringLiteral("cmd_sysstatsave")), &QPushButton::clicked, this,
            [&ctx] { status::cmd_sysstatsave_Click(ctx); });
    bind_geraet_page(*this, ctx);
    bind_page_compliance(*this, ctx);
    bind_status_progress(*this, ctx);
    bind_protokoll_page(*this, ctx);

    connection_changed(ctx.link.connection, ctx.link.connection_text);
    device_record_changed();
}

void FrmMain::bind_entwickler_page(AppContext& ctx) {
    connect(control_as<QPushButton>(QStringLiteral("cmd_clear")), &QPushButton::clicked, this,
            [&ctx] { protocol::cmd_clear(ctx); });
    connect(control_as<QPushButton>(QStringLiteral("cmd_saveprotokoll")), &QPushButton::clicked,
            this, [&ctx] { protocol::cmd_saveprotokoll(ctx); });
    auto* typed = control_as<QLineEdit>(QStringLiteral("tb_command"));
    connect(control_as<QPushButton>(QStringLiteral("cmd_sendcommand")), &QPushButton::clicked, this,
            [&ctx, typed] {
                // Typed as it stands, one byte per character.
                protocol::cmd_sendcommand(ctx, typed->text().toLatin1());
            });
}

void FrmMain::men_Softwareupdate_Click(AppContext& ctx) {
    FrmFirmwareProgress progress(ctx.language, this);
    firmware::firmware_update(ctx, progress);
}

void FrmMain::men_Servicebesuch_Click(AppContext& ctx) {
    collect_report(*this, ctx);
    visit::VisitRequest request;
    request.base_dir = ctx.config.INITDIR;
    request.report = ctx.report;
    request.write_pdf = [](const QString& path, int pages, const visit::PageDrawer& draw,
                           QString* error) {
        return paint::print_pages_to_pdf(path, pages, draw, error);
    };
    visit::Visit visit(ctx, std::move(request));
    FrmVisit dialog(ctx.language, visit, this);
    // The poll timer drives the visit as it drives the readouts it starts.
    const auto tick = std::move(ctx.timer1.on_tick);
    ctx.timer1.on_tick = [&] {
        protocol::timer1_tick(ctx);
        visit.poll();
        dialog.refresh();
    };
    visit.start();
    if (visit.running())
        dialog.exec();
    ctx.timer1.on_tick = tick;
    show_msg(visit.result_text(),
             visit.outcome() == visit::Outcome::written ? MsgIcon::information : MsgIcon::critical);
}

void FrmMain::show_wait(const QString& command, const QString& text) {
    if (!ctx_)
        return;
    FrmWait wait(ctx_->language, this);
    if (apply_language_)
        apply_language_(wait);
    wait.docommand(command, text);
}

void FrmMain::closeEvent(QCloseEvent* event) {
    if (ctx_) {
        // An unsaved report is offered for saving while the device data it
        // holds is still there; Cancel keeps the program running.
        if (!report::checksaved(*ctx_, [this] { return cmd_save_click(*this, *ctx_); })) {
            event->ignore();
            return;
        }
        // No reconnection while the program ends.
        ctx_->timer1.set_enabled(false);
        link::close_device(*ctx_);
    }
    QMainWindow::closeEvent(event);
}

void FrmMain::show_msg(const QString& text, MsgIcon icon, const QString& title) {
    message_box(this, text, icon, title);
}

bool FrmMain::ask_yes_no(const QString& text, const QString& title) {
    return question_yes_no(this, text, title);
}

bool FrmMain::ask_ok_cancel(const QString& text, const QString& title) {
    return question_ok_cancel(this, text, title);
}

bool FrmMain::confirm_change(const QString& text) {
    return question_yes_no(this, text, QString(), true);
}

SaveAnswer FrmMain::ask_save_discard_cancel(const QString& text) {
    return question_save_discard_cancel(this, text);
}

std::optional<QString> FrmMain::input_box(const QString& prompt, const QString& title,
                                          const QString& initial) {
    return input_text(this, prompt, title, initial);
}

QString FrmMain::choose_open_file(const FileDialogRequest& request) {
    return file_dialog(this, request, false);
}

QString FrmMain::choose_save_file(const FileDialogRequest& request) {
    return file_dialog(this, request, true);
}

void FrmMain::set_busy(bool busy) {
    // The pointer is a state, not a stack: setting it twice needs one reset.
    if (busy == busy_)
        return;
    busy_ = busy;
    if (busy)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

Page FrmMain::current_page() const {
    return static_cast<Page>(tab1_->currentIndex());
}

void FrmMain::select_page(Page page) {
    tab1_->setCurrentIndex(static_cast<int>(page));
}

void FrmMain::append_out(const QString& text) {
    auto* out = control_as<QPlainTextEdit>(QStringLiteral("out"));
    QString plain = text;
    plain.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\r'), QLatin1Char('\n'));
    out->moveCursor(QTextCursor::End);
    out->insertPlainText(plain);
    out->ensureCursorVisible();
}

void FrmMain::clear_out() {
    control_as<QPlainTextEdit>(QStringLiteral("out"))->clear();
}

void FrmMain::set_info_caption(const QString& text) {
    control_as<QLabel>(QStringLiteral("lbl_info"))->setText(text);
}

void FrmMain::connection_changed(ConnectionState state, const QString& text) {
    // A note speaks of the connection it was made in.
    if (state != shown_state_)
        show_note(QString(), MsgIcon::none);
    shown_state_ = state;
    connection_label_->setText(text);
    follow_device_controls();
}

void FrmMain::show_note(const QString& text, MsgIcon icon) {
    const bool problem = icon == MsgIcon::exclamation || icon == MsgIcon::critical;
    note_label_->setStyleSheet(problem ? QStringLiteral("color: #b00000; font-weight: bold;")
                                       : QString());
    note_label_->setText(text);
}

void FrmMain::device_record_changed() {
    if (!ctx_)
        return;
    refresh_device_tab(*this,
                       device::make_device_tab_view(ctx_->device, QLocale(), ctx_->language.words));
    apply_preset_buttons(*this, ctx_->presets);
    chart_->set_data_valid(ctx_->device.live_valid);
    follow_device_controls();
    show_clock_note();
}

void FrmMain::show_clock_note() {
    const QString note = device::clock_offset_note(*ctx_);
    auto* page = control_as<QLabel>(QStringLiteral("lbl_uhrabweichung"));
    page->setText(note.isEmpty() ? QString()
                                 : note + QLatin1Char(' ') + ctx_->language.text(text_clock_fix));
    page->setVisible(!note.isEmpty());
    clock_label_->setText(note);
    clock_label_->setVisible(!note.isEmpty());
}

void FrmMain::follow_device_controls() {
    if (!ctx_)
        return;
    const bool on = link::device_controls_enabled(*ctx_);
    for (const char* name :
         {"cmd_setsn", "cmd_resetbstd", "cmd_setbstd", "cmd_setdatetime", "cmd_Restzeit",
          "cmd_t_reset", "pic_akustO21", "pic_akustO22", "pic_akustvollo"})
        control(QLatin1String(name))->setEnabled(on);
    // A status readout runs once: its button stays off until it has ended.
    control(QStringLiteral("cmd_sysstatread"))->setEnabled(on && !ctx_->status.readout.running());
    for (QWidget* w :
         controls_named(QStringLiteral("cb_vs")) + controls_named(QStringLiteral("cb_t")))
        w->setEnabled(on);
    // Those with a condition of their own keep it.
    control(QStringLiteral("cmd_togglelp"))
        ->setEnabled(on && device::toggled_low_power(ctx_->device).has_value());
    for (int n = 1; n <= device::preset_count; ++n)
        control(QStringLiteral("cmdPresetZeiten"), n)
            ->setEnabled(on && ctx_->presets.buttons[static_cast<std::size_t>(n - 1)].enabled);
    // A device left in its boot loader can be programmed again at once.
    menu_action(QStringLiteral("men_Softwareupdate"))->setEnabled(on || ctx_->link.boot_loader);
    menu_action(QStringLiteral("men_Servicebesuch"))->setEnabled(on);
    compliance::follow_link_state(*ctx_);
    show_other_device_note(*this, *ctx_);
}

void FrmMain::show_status_table(const QString& text) {
    QString plain = text;
    plain.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    control_as<QPlainTextEdit>(QStringLiteral("sysstatout"))->setPlainText(plain);
}

} // namespace veltrako::ui

// The meta-object code lives with its class, so that using one class of
// the library does not pull in all the others.
#include "moc_frm_main.cpp"
