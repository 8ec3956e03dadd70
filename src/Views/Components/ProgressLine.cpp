#include "Views/Components/ProgressLine.h"

#include "Views/Theme/Theme.h"

#include <QPainter>

namespace
{

constexpr int kFrameMs = 33;
constexpr int kPeriodMs = 1400;

} // namespace

ProgressLine::ProgressLine(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setFixedHeight(2);
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, this, qOverload<>(&QWidget::update));
}

void ProgressLine::setActive(bool isActive)
{
    if (std::exchange(m_isActive, isActive) == isActive) {
        return;
    }
    setAccessibleName(isActive ? tr("Refreshing") : QString());
    if (isActive) {
        m_clock.start();
        if (isVisible()) {
            m_frames.start();
        }
    } else {
        m_frames.stop();
    }
    update();
}

void ProgressLine::showEvent(QShowEvent *)
{
    if (m_isActive) {
        m_frames.start();
    }
}

void ProgressLine::hideEvent(QHideEvent *)
{
    m_frames.stop();
}

void ProgressLine::paintEvent(QPaintEvent *)
{
    if (!m_isActive) {
        return;
    }
    QPainter painter(this);
    const double phase = static_cast<double>(m_clock.elapsed() % kPeriodMs) / kPeriodMs;
    const double length = width() * 0.3;
    const double start = phase * (width() + length) - length;
    painter.fillRect(QRectF(start, 0, length, height()), m_theme.tokens().accent.color);
}
