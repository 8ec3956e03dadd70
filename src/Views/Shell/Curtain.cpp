#include "Views/Shell/Curtain.h"

#include <QStyle>

Curtain::Curtain(QWidget *content, Qt::Orientation orientation, QWidget *parent)
    : QWidget(parent)
    , m_content(content)
    , m_orientation(orientation)
{
    content->setParent(this);
    if (orientation == Qt::Vertical) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    m_animation.setDuration(kDurationMs);
    m_animation.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &value) { setExtent(value.toInt()); });
    connect(&m_animation, &QVariantAnimation::finished, this, &Curtain::settle);
}

QSize Curtain::sizeHint() const
{
    return m_content->sizeHint();
}

QSize Curtain::minimumSizeHint() const
{
    return m_content->minimumSizeHint().expandedTo(m_content->minimumSize());
}

int Curtain::extent() const
{
    return m_orientation == Qt::Horizontal ? width() : height();
}

// A window that has become narrow is not held open by what is going away.
void Curtain::setExtent(int extent)
{
    const int least = m_isOpen ? extent : 0;
    if (m_orientation == Qt::Horizontal) {
        setMinimumWidth(least);
        setMaximumWidth(extent);
    } else {
        setMinimumHeight(least);
        setMaximumHeight(extent);
    }
}

void Curtain::setOpen(bool isOpen, bool isAnimated)
{
    if (std::exchange(m_isOpen, isOpen) == isOpen) {
        return;
    }
    const bool canMove = isAnimated && parentWidget() && parentWidget()->isVisible() &&
                         style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (!canMove) {
        m_animation.stop();
        settle();
        return;
    }
    if (!isMoving()) {
        const bool isHorizontal = m_orientation == Qt::Horizontal;
        if (!isOpen) {
            m_fullExtent = extent();
        } else if (m_fullExtent == 0) {
            m_fullExtent = isHorizontal ? sizeHint().width() : sizeHint().height();
        }
    }
    const int from = isMoving() || !isOpen ? extent() : 0;
    m_animation.stop();
    m_animation.setStartValue(from);
    m_animation.setEndValue(isOpen ? m_fullExtent : 0);
    setExtent(from);
    show();
    m_animation.start();
}

// Leaves the size to the layout again.
void Curtain::settle()
{
    setVisible(m_isOpen);
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    m_content->setGeometry(rect());
}

void Curtain::resizeEvent(QResizeEvent *)
{
    QRect place = rect();
    if (isMoving() && m_orientation == Qt::Horizontal) {
        place.setLeft(place.right() + 1 - m_fullExtent);
    } else if (isMoving()) {
        place.setTop(place.bottom() + 1 - m_fullExtent);
    }
    m_content->setGeometry(place);
}
