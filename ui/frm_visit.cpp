#include "frm_visit.h"

#include "config/language.h"
#include "controls.h"
#include "progress_row.h"
#include "visit/visit.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace veltrako::ui {

namespace {
constexpr int text_title = 8403;
constexpr int text_step = 8404; // "Schritt %1 von %2: %3"
} // namespace

FrmVisit::FrmVisit(const config::LanguageTables& language, visit::Visit& visit, QWidget* parent)
    : QDialog(parent), language_(language), visit_(visit),
      step_(make_label(QStringLiteral("lbl_visitstep"), 0, QString())),
      row_(new ProgressRow(QStringLiteral("visit"), false)),
      cancel_(make_button(QStringLiteral("cmd_visitcancel"), 0, language.text(8300))) {
    setObjectName(QStringLiteral("frm_visit"));
    setWindowTitle(language_.text(text_title));
    setWindowModality(Qt::ApplicationModal);
    setMinimumWidth(460);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(step_);
    layout->addWidget(row_);
    layout->addWidget(cancel_, 0, Qt::AlignRight);
    connect(cancel_, &QPushButton::clicked, this, &FrmVisit::reject);
    refresh();
}

QString FrmVisit::step_caption() const {
    return step_->text();
}

void FrmVisit::refresh() {
    step_->setText(language_.text(text_step).arg(
        QString::number(std::min(visit_.step_number(), visit::step_count)),
        QString::number(visit::step_count), visit::step_text(visit_.step(), language_)));
    row_->show_standing(visit_.standing(), {language_.text(8300), language_.text(8301), QString(),
                                            language_.text(8303)});
    if (!visit_.running() && isVisible())
        accept();
}

void FrmVisit::reject() {
    visit_.cancel();
    QDialog::reject();
}

} // namespace veltrako::ui

#include "moc_frm_visit.cpp"
