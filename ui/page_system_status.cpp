// The "System Status" page: the status memory table and its two buttons,
// which stretch with the window.

#include "controls.h"
#include "pages.h"

#include <QFontDatabase>
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
    table->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    layout->addWidget(table, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(
        make_button(QStringLiteral("cmd_sysstatread"), 11104, QStringLiteral("Auslesen")), 1);
    buttons->addWidget(
        make_button(QStringLiteral("cmd_sysstatsave"), 11105, QStringLiteral("Speichern")), 1);
    layout->addLayout(buttons);
    return page;
}

} // namespace veltrako::ui
