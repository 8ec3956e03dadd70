#include "Views/Components/ProgressLine.h"

#include "Views/Components/Motion.h"
#include "Views/Theme/Theme.h"

#include <QPainter>

namespace
{

constexpr int kPeriodMs = 1400;

} // namespace

ProgressLine::ProgressLine(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_motion(new Motion(*this))
{
    setFixedHeight(2);
}

void ProgressLine::setActive(bool isActive)
{
    if (m_motion->setActive(isActive)) {
        setAccessibleName(isActive ? tr("Refreshing") : QString());
    }
}

bool ProgressLine::isActive() const
{
    return m_motion->isActive();
}

void ProgressLine::paintEvent(QPaintEvent *)
{
    if (!isActive()) {
        return;
    }
    QPainter painter(this);
    const double length = width() * 0.3;
    const double start = m_motion->phase(kPeriodMs) * (width() + length) - length;
    painter.fillRect(QRectF(start, 0, length, height()), m_theme.tokens().accent.color);
}
