#include "apply_language.h"
#include "controls.h"

#include <QAbstractButton>
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QList>
#include <QMenu>
#include <QPair>
#include <QSet>
#include <QTabBar>
#include <QTabWidget>
#include <QWidget>

#include <optional>

namespace veltrako::ui {

namespace {

std::optional<int> tag_of(const QObject& object) {
    const QVariant tag = object.property(tag_property);
    if (!tag.isValid())
        return std::nullopt;
    bool ok = false;
    const int n = tag.toString().trimmed().toInt(&ok);
    if (!ok || n < 0 || n >= config::language_entries)
        return std::nullopt;
    return n;
}

// Qt hands a widget's font down to its children, but a size from the language
// file is meant for the one control it names: a group box's title must not
// resize the fields inside it. So every descendant keeps the size it had.
void set_own_point_size(QWidget& widget, int size) {
    QList<QPair<QWidget*, QFont>> before;
    const QList<QWidget*> descendants = widget.findChildren<QWidget*>();
    for (QWidget* child : descendants)
        before.append({child, child->font()});

    QFont font = widget.font();
    font.setPointSize(size);
    widget.setFont(font);

    // Parents come before their children in the list, so a restored parent
    // already hands the old size on and its children need no own font.
    for (const auto& [child, old] : before) {
        QFont kept = child->font();
        if (kept.pointSizeF() == old.pointSizeF() && kept.pixelSize() == old.pixelSize())
            continue;
        if (old.pointSizeF() > 0)
            kept.setPointSizeF(old.pointSizeF());
        else
            kept.setPixelSize(old.pixelSize());
        child->setFont(kept);
    }
}

void apply_to_tabs(QTabWidget& tabs, const QString& text) {
    const QStringList pieces = text.split(QLatin1Char('/'));
    for (int i = 0; i < pieces.size() && i < tabs.count(); ++i)
        tabs.setTabText(i, pieces[i]);
}

// The tab strip `widget` is a page of, if it is one.
QTabWidget* tab_owner(QWidget& widget) {
    QWidget* stack = widget.parentWidget();
    auto* tabs = stack ? qobject_cast<QTabWidget*>(stack->parentWidget()) : nullptr;
    return tabs && tabs->indexOf(&widget) >= 0 ? tabs : nullptr;
}

void apply_to_widget(QWidget& widget, const config::LanguageTables& tables) {
    const std::optional<int> n = tag_of(widget);
    if (!n)
        return;
    const QString text = tables.text(*n);
    QWidget* sized = &widget;
    if (auto* tabs = qobject_cast<QTabWidget*>(&widget)) {
        apply_to_tabs(*tabs, text);
        sized = tabs->tabBar();
    } else if (auto* label = qobject_cast<QLabel*>(&widget)) {
        label->setText(text);
    } else if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        button->setText(text);
    } else if (auto* group = qobject_cast<QGroupBox*>(&widget)) {
        group->setTitle(text);
    } else if (auto* menu = qobject_cast<QMenu*>(&widget)) {
        menu->setTitle(text);
    } else if (QTabWidget* owner = tab_owner(widget)) {
        // A page with a text of its own, beyond those the tab strip's text lists.
        owner->setTabText(owner->indexOf(&widget), text);
    }
    if (const int size = tables.size(*n); size > 0)
        set_own_point_size(*sized, size);
}

void apply_to_action(QAction& action, const config::LanguageTables& tables) {
    const std::optional<int> n = tag_of(action);
    if (!n)
        return;
    action.setText(tables.text(*n));
    if (const int size = tables.size(*n); size > 0) {
        QFont font = action.font();
        font.setPointSize(size);
        action.setFont(font);
    }
}

} // namespace

void apply_language(QWidget& form, const config::LanguageTables& tables) {
    const QList<QWidget*> widgets = form.findChildren<QWidget*>();
    // Actions may be owned by the window rather than by the menu showing them;
    // collect both kinds, each once.
    QList<QAction*> actions = form.findChildren<QAction*>();
    for (QWidget* widget : widgets)
        actions += widget->actions();
    QSet<QAction*> seen;

    for (QWidget* widget : widgets)
        apply_to_widget(*widget, tables);
    for (QAction* action : actions)
        if (!seen.contains(action)) {
            seen.insert(action);
            apply_to_action(*action, tables);
        }

    if (const std::optional<int> n = tag_of(form))
        form.setWindowTitle(tables.text(*n));
}

} // namespace veltrako::ui
