// The "Entwickler" page: the message box `out`, hand-typed commands, the
// communication log and opening/closing the device by hand.

#include "controls.h"
#include "pages.h"

#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

QWidget* build_page_entwickler() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_entwickler"));
    auto* layout = new QVBoxLayout(page);

    layout->addWidget(make_label(QStringLiteral("lbl_info"), 11106, QStringLiteral("Info")));
    auto* out = new QPlainTextEdit;
    out->setObjectName(QStringLiteral("out"));
    out->setReadOnly(true);
    out->setFont(fixed_pitch_font());
    layout->addWidget(out, 1);

    auto* command = new QHBoxLayout;
    command->addWidget(make_label(QStringLiteral("lbl_command"), 11107, QStringLiteral("Befehl")));
    QLineEdit* typed = make_box(QStringLiteral("tb_command"), false);
    command->addWidget(typed, 1);
    command->addWidget(
        make_button(QStringLiteral("cmd_sendcommand"), 11108, QStringLiteral("Senden")));
    layout->addLayout(command);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(make_button(QStringLiteral("cmd_clear"), 11109, QStringLiteral("Löschen")));
    buttons->addWidget(make_button(QStringLiteral("cmd_saveprotokoll"), 11110,
                                   QStringLiteral("Protokoll speichern")));
    buttons->addStretch(1);
    buttons->addWidget(make_button(QStringLiteral("Command1"), 11111, QStringLiteral("Öffnen")));
    buttons->addWidget(make_button(QStringLiteral("Command2"), 11112, QStringLiteral("Schließen")));
    layout->addLayout(buttons);
    return page;
}

} // namespace veltrako::ui
