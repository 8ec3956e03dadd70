#pragma once

#include <QHeaderView>

class TableModel;
class Theme;

/// The heads of a table's columns. A click sorts, an arrow shows by what and which way; edges can be dragged. One
/// column takes what room the others leave until its own edge is dragged.
class TableHeader : public QHeaderView
{
    Q_OBJECT

public:
    TableHeader(const Theme &theme, TableModel &model, int actionsWidth, QWidget *parent);

    /// The widths in device-independent pixels, in the columns' order, for as long as the program runs.
    QList<int> widths() const;
    void setWidths(const QList<int> &widths);

    /// Gives the stretching column what the others leave of the table's width.
    void fill(int width);

    /// Sizes of the declaration, once the model is the view's.
    void start();

    QSize sizeHint() const override;

Q_SIGNALS:
    void widthsChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void resized(int column);

    const Theme &m_theme;
    TableModel &m_model;
    int m_actionsWidth;
    int m_width = 0; // of the table
    int m_stretching = -1;
    int m_hovered = -1;
    bool m_isFilling = false;
};
