#pragma once

#include "Views/Components/Table/TableLook.h"
#include "Views/Components/TabularText.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

class TableModel;
class Theme;

/// Paints the cells of a RecordTable and knows where in a row its buttons and marks are.
class RecordDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int kPadding = 12;

    RecordDelegate(const Theme &theme, TableModel &model, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    int actionsWidth() const; ///< of the column with the buttons

    /// The action whose button is at `position` in the row's actions cell; -1 for none.
    int actionAt(const QPoint &position, const QRect &cell, int row) const;

    /// Where a row's spinner or error mark is, in the last column's cell.
    QRect markRect(const QRect &cell) const;

    /// Whether the cell's text is cut.
    bool isCut(const QRect &cell, int row, int column) const;

    /// The row and the button below the pointer; -1 for none.
    void setHovered(int row, int action);

    int hoveredRow() const { return m_hoveredRow; }

    int hoveredAction() const { return m_hoveredAction; }

    void setTurn(double degrees) { m_turn = degrees; } ///< of the spinners

private:
    struct Button {
        int action;
        QRect rect;
    };

    QList<Button> buttons(const QRect &cell, int row) const;
    QRect wordsRect(const QRect &cell, int row, int column, bool hasIcon) const;
    const QFont &fontOf(CellStyle style) const;
    void paintActions(QPainter &painter, const QRect &cell, int row, bool isLit) const;
    void paintMark(QPainter &painter, const QRect &cell, int row) const;
    void paintSpinner(QPainter &painter, const QPointF &middle) const;
    void paintWords(QPainter &painter, const QRect &cell, int row, int column) const;
    bool isLastColumn(int column) const;

    const Theme &m_theme;
    TableModel &m_model;
    QFont m_plainFont;
    QFont m_emphasisFont;
    QFont m_monoFont;
    QFont m_pillFont;
    TabularText m_figures;
    TabularText m_strongFigures; // those with a tone
    int m_hoveredRow = -1;
    int m_hoveredAction = -1;
    double m_turn = 0;
};
