#pragma once
// The desktop's message boxes and file dialogs behind the UserInterface
// calls of the window.

#include "user_interface.h"

#include <QStringList>

class QWidget;

namespace veltrako::ui {

// "Text (*.txt)|*.txt|All (*.*)|*.*" (description and pattern in turns) as
// Qt name filters: "Text (*.txt)", "All (*.*)". A description that does not
// name its pattern gets it added in brackets; several patterns may be
// separated by ";".
QStringList qt_name_filters(const QString& filter);

void message_box(QWidget* parent, const QString& text, MsgIcon icon, const QString& title);
// `default_no`: No is the default button (a change that cannot be undone).
bool question_yes_no(QWidget* parent, const QString& text, const QString& title,
                     bool default_no = false);
bool question_ok_cancel(QWidget* parent, const QString& text, const QString& title);
// Save / Discard / Cancel; Cancel is the default and the answer to Escape.
SaveAnswer question_save_discard_cancel(QWidget* parent, const QString& text);
std::optional<QString> input_text(QWidget* parent, const QString& prompt, const QString& title,
                                  const QString& initial);
// An empty result means cancelled.
QString file_dialog(QWidget* parent, const FileDialogRequest& request, bool save);

} // namespace veltrako::ui
