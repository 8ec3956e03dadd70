#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QLineEdit>
#include <QStringList>
#include <QWidget>

#include <algorithm>

/// Looks at a window as a screen reader does, and lists what a person cannot reach or cannot tell.
class AccessibilityWalk
{
public:
    /// Everything visible below `top`: controls need a name and a role, buttons a place in the tab order, and those
    /// with an icon only a tooltip as well.
    ///
    /// A line for each fault; empty where there is none, which is what a test compares it with.
    static QString faults(QWidget &top)
    {
        AccessibilityWalk walk;
        walk.visit(QAccessible::queryAccessibleInterface(&top), 0);
        for (const QWidget *widget : top.findChildren<QWidget *>()) {
            walk.checkWidget(*widget);
        }
        return walk.m_faults.join(u'\n');
    }

    /// How many controls a walk over `top` meets; for a test that wants to know that there were any.
    static int controls(QWidget &top)
    {
        AccessibilityWalk walk;
        walk.visit(QAccessible::queryAccessibleInterface(&top), 0);
        return walk.m_controls;
    }

private:
    static constexpr int kGreatestDepth = 40;
    static constexpr int kItemsOfAView = 20; // the first rows stand for all

    static bool isControl(const QAccessibleInterface &accessible)
    {
        switch (accessible.role()) {
        case QAccessible::PushButton:
        case QAccessible::ButtonMenu:
        case QAccessible::ButtonDropDown:
        case QAccessible::CheckBox:
        case QAccessible::RadioButton:
        case QAccessible::ComboBox:
        case QAccessible::EditableText:
        case QAccessible::SpinBox:
        case QAccessible::Slider:
        case QAccessible::List:
        case QAccessible::ListItem:
        case QAccessible::Table:
        case QAccessible::Tree:
        case QAccessible::TreeItem:
        case QAccessible::MenuItem:
        case QAccessible::PageTab:
        case QAccessible::Link:
        case QAccessible::Dialog:
        case QAccessible::Terminal:
            return true;
        default:
            return accessible.state().focusable;
        }
    }

    static bool isItemView(const QAccessibleInterface &accessible)
    {
        const auto role = accessible.role();
        return role == QAccessible::List || role == QAccessible::Table || role == QAccessible::Tree;
    }

    static QString describe(const QAccessibleInterface &accessible)
    {
        const QObject *object = accessible.object();
        return QStringLiteral("%1 (role %2)%3")
            .arg(object ? QString::fromLatin1(object->metaObject()->className()) : QStringLiteral("an item"))
            .arg(accessible.role())
            .arg(object && object->parent()
                     ? QStringLiteral(" in ") + QString::fromLatin1(object->parent()->metaObject()->className())
                     : QString());
    }

    void visit(QAccessibleInterface *accessible, int depth)
    {
        if (!accessible || !accessible->isValid() || accessible->state().invisible || depth > kGreatestDepth) {
            return;
        }
        if (isControl(*accessible)) {
            ++m_controls;
            if (accessible->role() == QAccessible::NoRole || accessible->role() == QAccessible::Client) {
                m_faults.append(describe(*accessible) + QStringLiteral(": no role"));
            }
            if (accessible->text(QAccessible::Name).trimmed().isEmpty() && depth > 0 &&
                !isPart(accessible->object())) {
                m_faults.append(describe(*accessible) + QStringLiteral(": no name"));
            }
        }
        const int limit = isItemView(*accessible) ? kItemsOfAView : accessible->childCount();
        for (int i = 0; i < std::min(limit, accessible->childCount()); ++i) {
            visit(accessible->child(i), depth + 1);
        }
    }

    // Parts that Qt makes for itself, such as the field in a spin box or the icons in a field, speak for the control
    // that they are part of.
    static bool isPart(const QObject *object)
    {
        return object && (object->objectName().startsWith(QStringLiteral("qt_")) ||
                          qobject_cast<const QLineEdit *>(object->parent()));
    }

    // Of buttons of which one is chosen, Tab reaches the chosen one, and the arrow keys the others.
    static bool isReachedByArrows(const QAbstractButton &button)
    {
        const auto siblings =
            button.parentWidget()->findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly);
        return button.isCheckable() && !button.isChecked() &&
               std::ranges::any_of(siblings, [](const QAbstractButton *other) {
                   return other->isChecked() && (other->focusPolicy() & Qt::TabFocus);
               });
    }

    void checkWidget(const QWidget &widget)
    {
        if (!widget.isVisible() || isPart(&widget)) {
            return;
        }
        const auto *button = qobject_cast<const QAbstractButton *>(&widget);
        const QString name = QString::fromLatin1(widget.metaObject()->className()) + u' ' + widget.accessibleName();
        if (button && button->text().isEmpty() && button->toolTip().isEmpty()) {
            m_faults.append(name + QStringLiteral(": an icon without a tooltip"));
        }
        if (button && button->isEnabled() && !isReachedByArrows(*button) && !(button->focusPolicy() & Qt::TabFocus)) {
            m_faults.append(name + QStringLiteral(": not in the tab order"));
        }
    }

    QStringList m_faults;
    int m_controls = 0;
};
