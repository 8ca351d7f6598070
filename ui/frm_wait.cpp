#include "frm_wait.h"

#include "config/language.h"
#include "controls.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

QString program_version() {
    return QStringLiteral("%1.%2.%3")
        .arg(VELTRAKO_VERSION_MAJOR)
        .arg(VELTRAKO_VERSION_MINOR)
        .arg(VELTRAKO_VERSION_PATCH);
}

FrmWait::FrmWait(const config::LanguageTables& language, QWidget* parent)
    : QDialog(parent), language_(language) {
    setObjectName(QStringLiteral("frm_wait"));
    set_tag(this, 12000);
    setWindowTitle(QStringLiteral("veltrako2"));
    setModal(true);

    lbl_text_ = make_label(QStringLiteral("lbl_text"), 0, QString());
    lbl_text_->setAlignment(Qt::AlignCenter);
    lbl_text_->setMinimumWidth(280);
    cm_cancel_ = make_button(QStringLiteral("cm_cancel"), 12001, QStringLiteral("Abbrechen"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lbl_text_, 1);
    layout->addWidget(cm_cancel_, 0, Qt::AlignHCenter);

    connect(cm_cancel_, &QPushButton::clicked, this, [this] {
        cancelled_ = true;
        reject();
    });
}

void FrmWait::prepare(const QString& command, const QString& text) {
    cancelled_ = false;
    if (command == QLatin1String("info")) {
        lbl_text_->setText(language_.text(1100) + QLatin1Char('\n') + program_version() +
                           QLatin1Char('\n') + language_.text(1000));
        // The version window only closes: its button says so.
        cm_cancel_->setText(language_.text(8040));
    } else if (command == QLatin1String("readcompliance")) {
        lbl_text_->setText(text);
    }
    adjustSize();
}

void FrmWait::docommand(const QString& command, const QString& text) {
    prepare(command, text);
    exec();
}

QString FrmWait::text() const {
    return lbl_text_->text();
}

} // namespace veltrako::ui

// The meta-object code lives with its class, so that using one class of
// the library does not pull in all the others.
#include "moc_frm_wait.cpp"
