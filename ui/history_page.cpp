#include "history_page.h"

#include "app_context.h"
#include "archive/archive_fleet.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "compliance/compliance_chart.h"
#include "compliance/compliance_month.h"
#include "controls.h"
#include "device/device_view.h"
#include "frm_main.h"
#include "history_sync.h"
#include "pages.h"
#include "painter_surface.h"
#include "report/report_measurements.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace veltrako::ui {

namespace {

constexpr int text_device_columns = 8820;
constexpr int text_visit_columns = 8821;
constexpr int text_visit = 8822;
constexpr int text_report = 8823;
constexpr int text_no_archive = 8824;
constexpr int text_unreadable = 8825;
constexpr int text_software = 8826;
constexpr int text_empty = 8827;
constexpr int text_usage = 8828;
constexpr int text_due = 8967;
constexpr int text_bad_rules = 8966;
constexpr int text_reason_first = 8959; // visit, hours, adherence, (8962) o2
// The columns of what each visit's report measured, before "Änderungen".
constexpr int text_result_column = 8904;
constexpr int text_o2_measured_column = 8918;
constexpr int text_o2_device_column = 8919;

QTableWidget* make_table(const QString& name, int columns) {
    auto* table = new QTableWidget(0, columns);
    table->setObjectName(name);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setWordWrap(false);
    return table;
}

void set_row(QTableWidget* table, int row, const QStringList& cells) {
    for (int c = 0; c < cells.size() && c < table->columnCount(); ++c) {
        auto* item = new QTableWidgetItem(cells[c]);
        // A long list of changes is read whole under the pointer.
        item->setToolTip(cells[c]);
        table->setItem(row, c, item);
    }
}

// What the page holds between the archive's answers.
struct PageState {
    archive::MaintenanceRules rules;
    std::vector<archive::FleetRow> devices;
    std::vector<std::size_t> shown; // the rows of the table, as indices of `devices`
    bool due_only = false;
    QString sn; // the device shown
    archive::Periods periods;
    std::unique_ptr<archive::ChartMonth> month;
    int request = 0; // answers to older requests are dropped
};

} // namespace

HistoryChartWidget::HistoryChartWidget(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("p_verlauf"));
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, Qt::white);
    setPalette(p);
    setMinimumSize(300, 180);
}

void HistoryChartWidget::show_month(const archive::ChartMonth* month, const AppContext* ctx) {
    month_ = month;
    ctx_ = ctx;
    update();
}

void HistoryChartWidget::paintEvent(QPaintEvent*) {
    if (!month_ || !ctx_ || !month_->state.has_data)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    paint::PainterSurface surface(painter);
    // The chart's own pass over a copy: drawing changes nothing of the page.
    compliance::ComplianceState state = month_->state;
    compliance::compliance_draw(surface, 0, 0, surface.scale_width(), surface.scale_height(), 8,
                                state, *month_->table.records,
                                compliance::chart_texts(ctx_->language, QLocale()),
                                compliance::to_stamp(ctx_->clock.now()));
}

QWidget* build_page_verlauf() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_verlauf"));
    auto* layout = new QVBoxLayout(page);

    auto* top = new QHBoxLayout;
    QLabel* where = make_label(QStringLiteral("l_verlaufarchiv"), 0, QString());
    where->setTextInteractionFlags(Qt::TextSelectableByMouse);
    top->addWidget(where, 1);
    top->addWidget(
        make_button(QStringLiteral("cmd_verlaufrefresh"), 11201, QStringLiteral("Aktualisieren")));
    layout->addLayout(top);

    // The team archive: sync, its progress and its result.
    auto* sync = new QHBoxLayout;
    sync->addWidget(
        make_button(QStringLiteral("cmd_abgleichen"), 11280, QStringLiteral("Abgleichen")));
    auto* bar = new QProgressBar;
    bar->setObjectName(QStringLiteral("prg_abgleich"));
    bar->setMaximumWidth(200);
    sync->addWidget(bar);
    QLabel* result = make_label(QStringLiteral("l_abgleich"), 0, QString());
    result->setWordWrap(true);
    result->setTextInteractionFlags(Qt::TextSelectableByMouse);
    sync->addWidget(result, 1);
    layout->addLayout(sync);

    auto* tables = new QHBoxLayout;
    QGroupBox* devices = make_frame(QStringLiteral("frm_geraete"), 11202, QStringLiteral("Geräte"));
    auto* devices_layout = new QVBoxLayout(devices);
    devices_layout->addWidget(
        make_check(QStringLiteral("chk_nurfaellige"), 11281, QStringLiteral("nur fällige")));
    devices_layout->addWidget(make_table(QStringLiteral("tbl_geraete"), 6));
    tables->addWidget(devices, 2);
    QGroupBox* visits =
        make_frame(QStringLiteral("frm_besuche"), 11203, QStringLiteral("Besuche und Änderungen"));
    auto* visits_layout = new QVBoxLayout(visits);
    visits_layout->addWidget(make_table(QStringLiteral("tbl_besuche"), 10));
    tables->addWidget(visits, 3);
    layout->addLayout(tables, 2);

    auto* chart_row = new QHBoxLayout;
    auto* months = new QVBoxLayout;
    months->addWidget(make_label(QStringLiteral("l_verlaufnutzung"), 0, QString()));
    months->addWidget(make_button(QStringLiteral("cmd_verlaufprev"), 0, QStringLiteral("<<")));
    months->addWidget(make_button(QStringLiteral("cmd_verlaufnext"), 0, QStringLiteral(">>")));
    months->addStretch(1);
    chart_row->addLayout(months);
    auto* right = new QVBoxLayout;
    right->addWidget(new HistoryChartWidget, 1);
    right->addWidget(make_label(QStringLiteral("l_verlaufsummary"), 0, QString()));
    chart_row->addLayout(right, 1);
    layout->addLayout(chart_row, 3);
    return page;
}

namespace {

QString visit_changes(const archive::VisitChange& c, const config::LanguageTables& language) {
    QStringList parts = c.settings_changed;
    if (!c.firmware_changed.isEmpty())
        parts.prepend(language.text(text_software) + QLatin1Char(' ') + c.firmware_changed);
    return parts.join(QStringLiteral("; "));
}

void show_visits(FrmMain& form, const AppContext& ctx,
                 const std::vector<archive::VisitChange>& changes) {
    auto* table = form.control_as<QTableWidget>(QStringLiteral("tbl_besuche"));
    QStringList headers = ctx.language.text(text_visit_columns).split(QLatin1Char('/'));
    // The measured O2 beside the device's own reading: a slow fall across
    // visits is the sign of worn sieve beds.
    // Beside the hours: the analyser's O2, the device's own and the result.
    const qsizetype at = std::min<qsizetype>(3, headers.size());
    headers.insert(at, ctx.language.text(text_result_column));
    headers.insert(at, ctx.language.text(text_o2_device_column));
    headers.insert(at, ctx.language.text(text_o2_measured_column));
    table->setHorizontalHeaderLabels(headers);
    table->setRowCount(static_cast<int>(changes.size()));
    const QLocale locale;
    int row = 0;
    // Newest first: the visit before this one is what a technician asks about.
    for (auto it = changes.rbegin(); it != changes.rend(); ++it, ++row) {
        const archive::VisitChange& c = *it;
        const auto number = [&](const std::optional<double>& v, int decimals) {
            return v ? device::format_value(*v, decimals, locale) : QString();
        };
        set_row(
            table, row,
            {QDateTime::fromSecsSinceEpoch(c.visit.at).toString(QStringLiteral("yyyy-MM-dd HH:mm")),
             ctx.language.text(c.visit.kind == QLatin1String("visit") ? text_visit : text_report),
             c.visit.values.value(QStringLiteral("BSTD")),
             c.visit.o2_measured ? report::measurement_text(*c.visit.o2_measured, locale)
                                 : QString(),
             c.visit.o2_device ? report::measurement_text(*c.visit.o2_device, locale)
                               : c.visit.values.value(QStringLiteral("O2")),
             report::result_text_of(c.visit.report_result, ctx.language), number(c.hours_run, 1),
             number(c.hours_per_day, 1),
             c.has_previous || c.new_status_entries > 0
                 ? device::format_value(c.new_status_entries, 0, locale)
                 : QString(),
             visit_changes(c, ctx.language)});
    }
    table->resizeColumnsToContents();
}

void show_month(FrmMain& form, AppContext& ctx, PageState& state, compliance::Stamp month) {
    state.month = std::make_unique<archive::ChartMonth>(
        archive::chart_month(state.periods, month, compliance::to_stamp(ctx.clock.now())));
    const archive::ChartMonth& m = *state.month;
    form.findChild<HistoryChartWidget*>(QStringLiteral("p_verlauf"))->show_month(&m, &ctx);
    form.control(QStringLiteral("cmd_verlaufprev"))->setEnabled(m.state.has_prev_month);
    form.control(QStringLiteral("cmd_verlaufnext"))->setEnabled(m.state.has_next_month);
    QString summary;
    if (m.state.has_data) {
        const compliance::Month shown =
            compliance::month_periods(*m.table.records, m.table.last_index, m.state.shown_month);
        summary = compliance::month_summary_line(shown, *m.table.records, m.state,
                                                 ctx.compliance.prescribed_hours, ctx.language,
                                                 QLocale());
    }
    form.control_as<QLabel>(QStringLiteral("l_verlaufsummary"))->setText(summary);
}

void show_device(FrmMain& form, AppContext& ctx, archive::ArchiveService& service,
                 const std::shared_ptr<PageState>& state, const QString& sn) {
    state->sn = sn;
    const int request = ++state->request;
    struct Answer {
        bool ok = false;
        QString error;
        std::vector<archive::VisitChange> changes;
        archive::Periods periods;
    };
    auto answer = std::make_shared<Answer>();
    service.post(
        [answer, sn](archive::ArchiveStore& store) {
            const auto visits = store.visits(sn, &answer->error);
            const auto seen = visits ? store.status_first_seen(sn, &answer->error) : std::nullopt;
            auto periods = seen ? store.periods(sn, &answer->error) : std::nullopt;
            if (!periods)
                return;
            answer->changes = archive::compare_visits(*visits, *seen);
            answer->periods = std::move(*periods);
            answer->ok = true;
        },
        [&form, &ctx, state, answer, request] {
            if (request != state->request)
                return;
            if (!answer->ok) {
                form.control_as<QLabel>(QStringLiteral("l_verlaufarchiv"))
                    ->setText(ctx.language.text(text_unreadable) + QLatin1Char(' ') +
                              answer->error);
                return;
            }
            show_visits(form, ctx, answer->changes);
            state->periods = std::move(answer->periods);
            show_month(form, ctx, *state, 0);
        });
}

// The reasons in the program's language.
QString reasons_text(const QStringList& reasons, const config::LanguageTables& language) {
    static const QStringList codes{QStringLiteral("visit"), QStringLiteral("hours"),
                                   QStringLiteral("adherence"), QStringLiteral("o2")};
    QStringList words;
    for (const QString& r : reasons)
        words << (codes.contains(r) ? language.text(text_reason_first + codes.indexOf(r)) : r);
    return words.join(QStringLiteral(", "));
}

// The devices as the table shows them: all, or the due ones only.
void show_devices(FrmMain& form, AppContext& ctx, archive::ArchiveService& service,
                  const std::shared_ptr<PageState>& state) {
    auto* table = form.control_as<QTableWidget>(QStringLiteral("tbl_geraete"));
    // Why a device is due comes right after which one it is: that is what
    // the list is read for.
    QStringList headers = ctx.language.text(text_device_columns).split(QLatin1Char('/'));
    headers.insert(1, ctx.language.text(text_due));
    table->setHorizontalHeaderLabels(headers);
    state->shown.clear();
    for (std::size_t i = 0; i < state->devices.size(); ++i)
        if (!state->due_only || !state->devices[i].reasons.isEmpty())
            state->shown.push_back(i);
    table->setRowCount(static_cast<int>(state->shown.size()));
    int row = 0, selected = 0;
    for (const std::size_t i : state->shown) {
        const archive::FleetRow& f = state->devices[i];
        const archive::DeviceRow& d = f.device;
        if (d.sn == state->sn)
            selected = row;
        set_row(table, row++,
                {d.sn, reasons_text(f.reasons, ctx.language), d.lp,
                 d.last_visit_at == 0 ? QString()
                                      : QDateTime::fromSecsSinceEpoch(d.last_visit_at)
                                            .toString(QStringLiteral("yyyy-MM-dd")),
                 d.last_visit_bstd, QString::number(d.periods)});
    }
    table->resizeColumnsToContents();
    if (state->shown.empty())
        return;
    // The device shown before stays shown, else the first.
    table->selectRow(selected);
    show_device(form, ctx, service, state,
                state->devices[state->shown[static_cast<std::size_t>(selected)]].device.sn);
}

void refresh_devices(FrmMain& form, AppContext& ctx, archive::ArchiveService& service,
                     const std::shared_ptr<PageState>& state) {
    struct Answer {
        std::optional<std::vector<archive::FleetRow>> devices;
        QString error;
    };
    auto answer = std::make_shared<Answer>();
    const int request = ++state->request;
    service.post(
        [answer, rules = state->rules,
         today = ctx.clock.now().date()](archive::ArchiveStore& store) {
            answer->devices = archive::read_fleet(store, rules, today, &answer->error);
        },
        [&form, &ctx, &service, state, answer, request] {
            if (request != state->request)
                return;
            auto* where = form.control_as<QLabel>(QStringLiteral("l_verlaufarchiv"));
            where->setText(ctx.language.text(8808) + QLatin1Char(' ') +
                           QDir::toNativeSeparators(service.path()));
            if (!answer->devices) {
                where->setText(ctx.language.text(text_unreadable) + QLatin1Char(' ') +
                               answer->error);
                return;
            }
            state->devices = std::move(*answer->devices);
            if (state->devices.empty())
                where->setText(ctx.language.text(text_empty) + QStringLiteral("  ") +
                               where->text());
            show_devices(form, ctx, service, state);
        });
}

} // namespace

void bind_page_verlauf(FrmMain& form, AppContext& ctx, archive::ArchiveService& service) {
    auto state = std::make_shared<PageState>();
    QString bad;
    if (const auto rules =
            archive::maintenance_rules(ctx.config.WARTUNG_MONATE, ctx.config.WARTUNG_STUNDEN, &bad))
        state->rules = *rules;
    else // said once; the defaults judge meanwhile
        show_msg(ctx, ctx.language.text(text_bad_rules) + QLatin1Char(' ') + bad);
    form.control_as<QLabel>(QStringLiteral("l_verlaufnutzung"))
        ->setText(ctx.language.text(text_usage));
    form.control(QStringLiteral("cmd_verlaufprev"))->setEnabled(false);
    form.control(QStringLiteral("cmd_verlaufnext"))->setEnabled(false);
    if (!service.enabled()) {
        form.control_as<QLabel>(QStringLiteral("l_verlaufarchiv"))
            ->setText(ctx.language.text(text_no_archive));
        form.control(QStringLiteral("cmd_verlaufrefresh"))->setEnabled(false);
        form.control(QStringLiteral("chk_nurfaellige"))->setEnabled(false);
        bind_history_sync(form, ctx, service, {});
        return;
    }
    const auto refresh = [&form, &ctx, &service, state] {
        refresh_devices(form, ctx, service, state);
    };
    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_verlaufrefresh")),
                     &QPushButton::clicked, &form, refresh);
    // Whatever lands in the archive shows when the page is next looked at,
    // or at once when it is on top.
    QObject::connect(&service, &archive::ArchiveService::written, &form, [&form, refresh] {
        if (form.current_page() == Page::verlauf)
            refresh();
    });
    QObject::connect(form.tab1(), &QTabWidget::currentChanged, &form, [refresh](int index) {
        if (index == static_cast<int>(Page::verlauf))
            refresh();
    });
    auto* devices = form.control_as<QTableWidget>(QStringLiteral("tbl_geraete"));
    QObject::connect(
        devices, &QTableWidget::cellClicked, &form, [&form, &ctx, &service, state](int row, int) {
            if (row >= 0 && row < static_cast<int>(state->shown.size()))
                show_device(form, ctx, service, state,
                            state->devices[state->shown[static_cast<std::size_t>(row)]].device.sn);
        });
    QObject::connect(form.control_as<QCheckBox>(QStringLiteral("chk_nurfaellige")),
                     &QCheckBox::toggled, &form, [&form, &ctx, &service, state](bool on) {
                         state->due_only = on;
                         show_devices(form, ctx, service, state);
                     });
    bind_history_sync(form, ctx, service, refresh);
    const auto step = [&form, &ctx, state](int months) {
        if (!state->month)
            return;
        show_month(form, ctx, *state,
                   compliance::add_months(state->month->state.shown_month, months));
    };
    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_verlaufprev")),
                     &QPushButton::clicked, &form, [step] { step(-1); });
    QObject::connect(form.control_as<QPushButton>(QStringLiteral("cmd_verlaufnext")),
                     &QPushButton::clicked, &form, [step] { step(1); });
}

} // namespace veltrako::ui

#include "moc_history_page.cpp"
