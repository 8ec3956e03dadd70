#include "TerminalEmulator/View/OverlayScrollBar.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace vt
{

namespace
{

constexpr int Patience = 1200; ///< milliseconds it stays
constexpr int MinThumb = 24;

} // namespace

OverlayScrollBar::OverlayScrollBar(QWidget *parent)
    : QAbstractSlider(parent)
{
    setOrientation(Qt::Vertical);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    setAccessibleName(tr("Scrollback"));
    m_away.setSingleShot(true);
    m_away.setInterval(Patience);
    connect(&m_away, &QTimer::timeout, this, &QWidget::hide);
    hide();
}

void OverlayScrollBar::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void OverlayScrollBar::setPlace(int value, int maximum, int page)
{
    const QSignalBlocker quiet(this);
    if (value != this->value() || maximum != this->maximum() || page != pageStep()) {
        setRange(0, maximum);
        setPageStep(page);
        setValue(value);
        if (isVisible()) {
            update();
        }
    }
    if (maximum == 0) {
        hide();
    }
}

void OverlayScrollBar::reveal()
{
    if (maximum() > 0) {
        show();
        raise();
        m_away.start();
    }
}

QRect OverlayScrollBar::thumb() const
{
    const qint64 all = qint64{maximum()} + pageStep();
    const int length = std::clamp(static_cast<int>(height() * qint64{pageStep()} / std::max<qint64>(all, 1)),
                                  std::min(MinThumb, height()), height());
    const int room = height() - length;
    const int top = maximum() > 0 ? static_cast<int>(qint64{room} * value() / maximum()) : 0;
    return {0, top, width(), length};
}

void OverlayScrollBar::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor color = m_color;
    const bool strong = m_grip >= 0 || underMouse();
    color.setAlpha(strong ? 170 : 110);
    painter.setBrush(color);
    const int inset = strong ? 2 : 4;
    const QRectF place = QRectF(thumb()).adjusted(inset, 2, -2, -2);
    painter.drawRoundedRect(place, place.width() / 2, place.width() / 2);
}

void OverlayScrollBar::mousePressEvent(QMouseEvent *event)
{
    const int y = static_cast<int>(event->position().y());
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (!thumb().contains(1, y)) {
        triggerAction(y < thumb().top() ? SliderPageStepSub : SliderPageStepAdd);
        return;
    }
    m_grip = y - thumb().top();
    m_away.stop();
    update();
}

void OverlayScrollBar::mouseMoveEvent(QMouseEvent *event)
{
    const int room = height() - thumb().height();
    if (m_grip < 0 || room <= 0) {
        return;
    }
    const int top = std::clamp(static_cast<int>(event->position().y()) - m_grip, 0, room);
    setValue(static_cast<int>(qint64{maximum()} * top / room));
}

void OverlayScrollBar::mouseReleaseEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    m_grip = -1;
    m_away.start();
    update();
}

/// The terminal scrolls as if it were not there.
void OverlayScrollBar::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void OverlayScrollBar::enterEvent(QEnterEvent *event)
{
    QAbstractSlider::enterEvent(event);
    m_away.stop();
    update();
}

void OverlayScrollBar::leaveEvent(QEvent *event)
{
    QAbstractSlider::leaveEvent(event);
    if (m_grip < 0) {
        m_away.start();
    }
    update();
}

} // namespace vt
