#include "dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace veltrako::ui {

QStringList qt_name_filters(const QString& filter) {
    QStringList result;
    const QStringList parts = filter.split(QLatin1Char('|'));
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QString description = parts[i].trimmed();
        const QString patterns =
            i + 1 < parts.size()
                ? parts[i + 1].trimmed().replace(QLatin1Char(';'), QLatin1Char(' '))
                : QString();
        if (description.isEmpty() && patterns.isEmpty())
            continue;
        if (patterns.isEmpty() ||
            description.contains(QLatin1Char('(') + patterns + QLatin1Char(')')))
            result << description;
        else
            result << description + QStringLiteral(" (") + patterns + QLatin1Char(')');
    }
    return result;
}

namespace {

QMessageBox::Icon qt_icon(MsgIcon icon) {
    switch (icon) {
    case MsgIcon::information:
        return QMessageBox::Information;
    case MsgIcon::question:
        return QMessageBox::Question;
    case MsgIcon::exclamation:
        return QMessageBox::Warning;
    case MsgIcon::critical:
        return QMessageBox::Critical;
    case MsgIcon::none:
        break;
    }
    return QMessageBox::NoIcon;
}

// An empty title shows the program's own caption, as message boxes of the
// main window always have.
QString caption(QWidget* parent, const QString& title) {
    if (!title.isEmpty() || !parent)
        return title;
    return parent->window()->windowTitle();
}

QMessageBox::StandardButton ask(QWidget* parent, const QString& text, const QString& title,
                                QMessageBox::StandardButtons buttons,
                                QMessageBox::StandardButton default_button) {
    QMessageBox box(QMessageBox::Question, caption(parent, title), text, buttons, parent);
    box.setDefaultButton(default_button);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace

void message_box(QWidget* parent, const QString& text, MsgIcon icon, const QString& title) {
    QMessageBox box(qt_icon(icon), caption(parent, title), text, QMessageBox::Ok, parent);
    box.exec();
}

bool question_yes_no(QWidget* parent, const QString& text, const QString& title, bool default_no) {
    return ask(parent, text, title, QMessageBox::Yes | QMessageBox::No,
               default_no ? QMessageBox::No : QMessageBox::Yes) == QMessageBox::Yes;
}

bool question_ok_cancel(QWidget* parent, const QString& text, const QString& title) {
    return ask(parent, text, title, QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok) ==
           QMessageBox::Ok;
}

SaveAnswer question_save_discard_cancel(QWidget* parent, const QString& text) {
    switch (ask(parent, text, QString(),
                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                QMessageBox::Cancel)) {
    case QMessageBox::Save:
        return SaveAnswer::save;
    case QMessageBox::Discard:
        return SaveAnswer::discard;
    default:
        return SaveAnswer::cancel;
    }
}

std::optional<QString> input_text(QWidget* parent, const QString& prompt, const QString& title,
                                  const QString& initial) {
    bool ok = false;
    const QString text = QInputDialog::getText(parent, caption(parent, title), prompt,
                                               QLineEdit::Normal, initial, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

QString file_dialog(QWidget* parent, const FileDialogRequest& request, bool save) {
    QFileDialog dialog(parent, request.title, request.start_dir);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    // The caller asks its own overwrite question, with its own words.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    const QStringList filters = qt_name_filters(request.filter);
    if (!filters.isEmpty())
        dialog.setNameFilters(filters);
    QString suffix = request.default_suffix;
    if (suffix.startsWith(QLatin1Char('.')))
        suffix.remove(0, 1);
    dialog.setDefaultSuffix(suffix);
    if (!request.proposed_name.isEmpty())
        dialog.selectFile(QDir(request.start_dir).filePath(request.proposed_name));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

} // namespace veltrako::ui
