#pragma once

#include <QAbstractSlider>
#include <QTimer>

namespace vt
{

/// A thin bar over the right edge of a terminal, there while one scrolls or points at it. Its value is the row on
/// top, from the oldest on.
class OverlayScrollBar : public QAbstractSlider
{
    Q_OBJECT

public:
    static constexpr int Width = 12;

    explicit OverlayScrollBar(QWidget *parent);

    void setColor(const QColor &color);
    /// `value` of `maximum` rows above the last page of `page` rows.
    void setPlace(int value, int maximum, int page);
    /// Shows it for a while, if there is anything to scroll.
    void reveal();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    QRect thumb() const;

    QTimer m_away;
    QColor m_color;
    int m_grip = -1; ///< where in the thumb the button was pressed; -1: it is not
};

} // namespace vt
