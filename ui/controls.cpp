#include "controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QVariant>

namespace veltrako::ui {

void set_tag(QObject* object, int tag) {
    if (tag > 0)
        object->setProperty(tag_property, tag);
}

int tag_of(const QObject* object) {
    bool ok = false;
    const int tag = object->property(tag_property).toInt(&ok);
    return ok ? tag : 0;
}

void set_index(QObject* object, int index) {
    object->setProperty(index_property, index);
}

int index_of(const QObject* object) {
    bool ok = false;
    const int index = object->property(index_property).toInt(&ok);
    return ok ? index : -1;
}

void set_locked(QWidget* widget, bool locked) {
    widget->setProperty(locked_property, locked);
}

bool is_locked(const QWidget* widget) {
    return widget->property(locked_property).toBool();
}

QWidget* find_element(const QObject& root, const QString& name, int index) {
    const auto candidates = root.findChildren<QWidget*>(name);
    for (QWidget* w : candidates) {
        if (index_of(w) == index)
            return w;
    }
    return nullptr;
}

QLabel* make_label(const QString& name, int tag, const QString& text) {
    auto* label = new QLabel(text);
    label->setObjectName(name);
    set_tag(label, tag);
    return label;
}

namespace {

// A lamp is never narrower than its caption, whatever the language, nor
// than a small square for the short ones ("E1"): a layout short of room
// squeezes other things first. A lamp without a caption (a picture) has the
// size it is given.
class Lamp final : public QLabel {
public:
    explicit Lamp(const QString& text) : QLabel(text), floor_(text.isEmpty() ? 0 : 28) {}
    QSize minimumSizeHint() const override {
        return QLabel::minimumSizeHint().expandedTo(QSize(floor_, 0));
    }

private:
    int floor_;
};

} // namespace

QLabel* make_lamp(const QString& name, int tag, const QString& text) {
    QLabel* label = new Lamp(text);
    label->setObjectName(name);
    set_tag(label, tag);
    label->setFrameShape(QFrame::Box);
    label->setAlignment(Qt::AlignCenter);
    label->setAutoFillBackground(true);
    QPalette p = label->palette();
    p.setColor(QPalette::Window, Qt::white);
    p.setColor(QPalette::WindowText, lamp_text_colour(Qt::white));
    label->setPalette(p);
    return label;
}

QPushButton* make_button(const QString& name, int tag, const QString& text) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    set_tag(button, tag);
    return button;
}

QCheckBox* make_check(const QString& name, int tag, const QString& text) {
    auto* check = new QCheckBox(text);
    check->setObjectName(name);
    set_tag(check, tag);
    return check;
}

QGroupBox* make_frame(const QString& name, int tag, const QString& title) {
    auto* frame = new QGroupBox(title);
    frame->setObjectName(name);
    set_tag(frame, tag);
    return frame;
}

QLineEdit* make_box(const QString& name, bool read_only) {
    auto* box = new QLineEdit;
    box->setObjectName(name);
    box->setReadOnly(read_only);
    return box;
}

QComboBox* make_selector(const QString& name, int index) {
    auto* box = new QComboBox;
    box->setObjectName(name);
    set_index(box, index);
    set_locked(box, true);
    return box;
}

void fit_to_text(QLineEdit* box, const QString& widest) {
    // What the style keeps of a box for its frame, measured on a wide one.
    QStyleOptionFrame option;
    option.initFrom(box);
    option.rect = QRect(0, 0, 1000, 100);
    option.lineWidth = box->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, box);
    const int frame =
        1000 - box->style()->subElementRect(QStyle::SE_LineEditContents, &option, box).width();
    const QMargins text = box->textMargins();
    // The line edit keeps 2 pixels on each side of its text, and one for
    // the cursor.
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(widest) + frame + text.left() +
                         text.right() + 2 * 2 + 1);
}

void fit_to_text(QLabel* label, const QString& widest) {
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(widest) +
                           2 * (label->frameWidth() + label->margin()) + label->indent() + 4);
}

QColor lamp_text_colour(const QColor&) {
    return Qt::black;
}

QFont fixed_pitch_font() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The generic family after the desktop's own: fontconfig then picks a
    // face it knows as monospaced should the first be missing.
    QStringList families = font.families();
    if (families.isEmpty())
        families << font.family();
    if (!families.contains(QStringLiteral("monospace")))
        families << QStringLiteral("monospace");
    font.setFamilies(families);
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

} // namespace veltrako::ui
