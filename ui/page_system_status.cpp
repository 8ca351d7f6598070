// The "System Status" page: the status memory table and its two buttons,
// which stretch with the window, and the progress of a readout.

#include "app_context.h"
#include "controls.h"
#include "frm_main.h"
#include "link/connection_state.h"
#include "pages.h"
#include "progress_row.h"

#include <QFont>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

QWidget* build_page_system_status() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_system_status"));
    auto* layout = new QVBoxLayout(page);

    // The table is fixed-width text of 122 columns: monospace and no wrapping.
    auto* table = new QPlainTextEdit;
    table->setObjectName(QStringLiteral("sysstatout"));
    table->setReadOnly(true);
    table->setLineWrapMode(QPlainTextEdit::NoWrap);
    table->setFont(fixed_pitch_font());
    layout->addWidget(table, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(
        make_button(QStringLiteral("cmd_sysstatread"), 11104, QStringLiteral("Auslesen")), 1);
    buttons->addWidget(
        make_button(QStringLiteral("cmd_sysstatsave"), 11105, QStringLiteral("Speichern")), 1);
    layout->addLayout(buttons);
    layout->addWidget(new ProgressRow(QStringLiteral("sysstat"), false));
    return page;
}

void bind_status_progress(FrmMain& form, AppContext& ctx) {
    auto* row = form.findChild<ProgressRow*>(QStringLiteral("sysstat_progress"));
    QWidget* read = form.control(QStringLiteral("cmd_sysstatread"));
    ctx.status.readout.changed = [row, read, &ctx] {
        // A readout runs once: its button stays off until it has ended.
        read->setEnabled(link::device_controls_enabled(ctx) && !ctx.status.readout.running());
        row->show_standing(ctx.status.readout.standing(), {QString(), ctx.language.text(8301),
                                                           QString(), ctx.language.text(8303)});
    };
}

} // namespace veltrako::ui
