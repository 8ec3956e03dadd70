#pragma once

#include <QVariantAnimation>
#include <QWidget>

/// One widget that slides in and out of its place: to the left, or upwards. It keeps its full size while it moves, so
/// that nothing in it is laid out again.
class Curtain : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kDurationMs = 300;

    /// Open at first. Horizontal gives and takes width, vertical height.
    Curtain(QWidget *content, Qt::Orientation orientation, QWidget *parent = nullptr);

    bool isOpen() const { return m_isOpen; }

    bool isMoving() const { return m_animation.state() == QAbstractAnimation::Running; }

    /// Moves at once where `isAnimated` is false, where it is not visible, and on desktops without animations.
    void setOpen(bool isOpen, bool isAnimated);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int extent() const;
    void setExtent(int extent);
    void settle();

    QWidget *m_content;
    Qt::Orientation m_orientation;
    bool m_isOpen = true;
    int m_fullExtent = 0; // of the content while it moves
    QVariantAnimation m_animation;
};
