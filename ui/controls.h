#pragma once
// Small helpers shared by the page builders: every control gets its object
// name as the system knows it, a "Tag" (the number of its text in the
// language file) when it shows translatable text, and an "Index" when it is
// an element of a control array (several controls sharing one name).

#include <QColor>
#include <QString>

class QCheckBox;
class QFont;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QObject;
class QPushButton;
class QWidget;

namespace veltrako::ui {

inline constexpr char tag_property[] = "Tag";
inline constexpr char index_property[] = "Index";
// A selector that is locked ignores nothing by itself: the handlers read the
// flag so that only a choice the user makes sends anything.
inline constexpr char locked_property[] = "Locked";

void set_tag(QObject* object, int tag);
// The Tag number, or 0 when the object has none.
int tag_of(const QObject* object);

void set_index(QObject* object, int index);
// The array index, or -1 for a control that is not part of an array.
int index_of(const QObject* object);

void set_locked(QWidget* widget, bool locked);
bool is_locked(const QWidget* widget);

// Element `index` of the control array `name` below `root`, or nullptr.
QWidget* find_element(const QObject& root, const QString& name, int index);

// Builders for the common kinds. A tag of 0 means "no translatable text".
QLabel* make_label(const QString& name, int tag, const QString& text);
// A coloured status label (valves, alarms): framed and filled, so that its
// background colour shows.
QLabel* make_lamp(const QString& name, int tag, const QString& text);
QPushButton* make_button(const QString& name, int tag, const QString& text);
QCheckBox* make_check(const QString& name, int tag, const QString& text);
QGroupBox* make_frame(const QString& name, int tag, const QString& title);
QLineEdit* make_box(const QString& name, bool read_only);
QComboBox* make_selector(const QString& name, int index);

// At least wide enough to show `widest` whole in the control's own font,
// frame and inner margins included: a value box never cuts off a leading
// digit.
void fit_to_text(QLineEdit* box, const QString& widest);
void fit_to_text(QLabel* label, const QString& widest);

// The font of fixed-width text (tables, the message log): the desktop's
// fixed font, asked for as fixed pitch by family and style hint as well, so
// that a desktop whose fixed font is not marked fixed still lines up columns.
QFont fixed_pitch_font();

// Text colour on a lamp of `background`: black, which stands out from both
// lamp colours (contrast 5.3:1 on red, 15.3:1 on green, 21:1 on white).
QColor lamp_text_colour(const QColor& background);

} // namespace veltrako::ui
