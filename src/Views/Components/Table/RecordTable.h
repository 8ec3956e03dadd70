#pragma once

#include <QElapsedTimer>
#include <QTableView>
#include <QTimer>

class RecordDelegate;
class RowActions;
class TableHeader;
class TableModel;
class Theme;

/// A table of records as its model declares it: columns, row actions as buttons and as menu, sorting by the heads.
///
/// Keys: arrows, Home, End and the Page keys move; typing seeks; Ctrl+C copies the selected rows as lines with tabs;
/// Return does the row's default action; the menu key and Shift+F10 open the row's menu; Escape selects nothing.
/// Rows keep their place (TableModel::setHeld) while the pointer is on one, and while a menu or question of one is
/// open.
class RecordTable : public QTableView
{
    Q_OBJECT

public:
    /// `model` outlives the table.
    RecordTable(const Theme &theme, TableModel &model, QWidget *parent = nullptr);
    ~RecordTable() override;

    RowActions &rowActions() const { return *m_actions; }

    void keyboardSearch(const QString &search) override;

Q_SIGNALS:
    /// The last rows came into sight: where there are more of them, now is the time to ask for them.
    void endReached();

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    bool viewportEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void beginUpdate();
    void endUpdate();
    void select(int row);
    void setHovered(const QPoint &position);
    void followPointer();
    void updateHeld();
    void updateSpinners();
    void turnSpinners();
    void followSelection();
    QString toolTipAt(const QPoint &position) const;
    int actionAt(const QPoint &position) const;
    QList<int> selectedRows() const;
    void checkEnd();

    const Theme &m_theme;
    TableModel &m_model;
    RecordDelegate *m_delegate;
    TableHeader *m_header;
    RowActions *m_actions;
    QTimer m_frames;
    double m_turn = 0;
    QPoint m_pointer; // where it was last
    int m_pressedAction = -1;
    QString m_pressedIdentity;

    QString m_typed;
    QElapsedTimer m_typing;

    // While an update is under way.
    bool m_isUpdating = false;
    int m_scrolledTo = 0;

    QString m_currentIdentity;
    int m_currentRow = -1;
};
