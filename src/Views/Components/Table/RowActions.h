#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

class AlertDialog;
class QMenu;
class QWidget;
class TableModel;
class Theme;
struct RowQuestion;

/// What can be done with a table's rows, its buttons aside: their menu, the question before an action, the clipboard.
class RowActions : public QObject
{
    Q_OBJECT

public:
    /// Menus and questions are the table's children.
    RowActions(const Theme &theme, TableModel &model, QWidget &table);
    ~RowActions() override;

    /// Does a row's action, after its question if it has one. What the row does not offer now is not done.
    void perform(int row, int action);

    /// What Return and a double click do, if there is such a thing.
    void performDefault(int row);

    /// As lines of text with tabs.
    void copy(const QList<int> &rows);

    /// The menu of these selected rows. With more than one it has no actions: they are about single rows.
    void popUp(const QList<int> &rows, const QPoint &globalPosition);

    /// A menu or a question is open.
    bool isOpen() const;

Q_SIGNALS:
    void openChanged();

private:
    void addActions(QMenu &menu, int row);
    void addAction(QMenu &menu, int row, int action);
    void addSortMenu(QMenu &menu);
    void withdraw();
    void ask(const RowQuestion &question, bool isDestructive, const std::function<void()> &run);

    const Theme &m_theme;
    TableModel &m_model;
    QWidget &m_table;
    QPointer<QWidget> m_menu;
    bool m_isMenuOpen = false;
    QPointer<AlertDialog> m_question;
};
