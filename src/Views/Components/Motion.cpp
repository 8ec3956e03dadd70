#include "Views/Components/Motion.h"

#include <QEvent>
#include <QWidget>

namespace
{

constexpr int kFrameMs = 33;

} // namespace

Motion::Motion(QWidget &widget)
    : QObject(&widget)
    , m_widget(widget)
{
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, &widget, qOverload<>(&QWidget::update));
    connect(&m_frames, &QTimer::timeout, this, &Motion::frame);
    widget.installEventFilter(this);
}

bool Motion::setActive(bool isActive)
{
    if (std::exchange(m_isActive, isActive) == isActive) {
        return false;
    }
    m_clock.start();
    follow();
    m_widget.update();
    return true;
}

double Motion::phase(int periodMs) const
{
    return static_cast<double>(m_clock.elapsed() % periodMs) / periodMs;
}

bool Motion::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide) {
        follow();
    }
    return QObject::eventFilter(watched, event);
}

void Motion::follow()
{
    if (m_isActive && m_widget.isVisible()) {
        m_frames.start();
    } else {
        m_frames.stop();
    }
}
