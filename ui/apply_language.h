#pragma once
// Puts the language texts on a form: every widget and menu action that
// carries a dynamic property "Tag" with a text number gets that text as its
// caption, and the number's font size when one is given.

#include "config/language.h"

class QWidget;

namespace veltrako::ui {

// A tab widget takes the text split at "/", one piece per tab in tab order;
// labels, buttons, group boxes, menus and actions take it as their caption;
// other widgets keep what they show. A size above 0 becomes the point size of
// that control alone (for a tab widget: of its tab captions). Finally the
// form's own Tag gives its window title. Tags that are not numbers 0..20000
// are passed over.
void apply_language(QWidget& form, const config::LanguageTables& tables);

} // namespace veltrako::ui
