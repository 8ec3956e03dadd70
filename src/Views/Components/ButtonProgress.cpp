#include "Views/Components/ButtonProgress.h"

#include "Views/Components/Motion.h"
#include "Views/Components/Spinner.h"
#include "Views/Theme/Theme.h"

#include <QPainter>
#include <QPushButton>

namespace
{

constexpr int kTurnMs = 900;
constexpr int kCircle = 12;
constexpr int kGap = 6; // as the style puts it between icon and words

} // namespace

ButtonProgress::ButtonProgress(const Theme &theme, QPushButton &button)
    : QObject(&button)
    , m_theme(theme)
    , m_button(button)
    , m_motion(new Motion(button))
{
    button.setMinimumWidth(button.sizeHint().width() + Metrics::kIconSize + kGap);
    connect(m_motion, &Motion::frame, this, &ButtonProgress::showFrame);
}

void ButtonProgress::setActive(bool isActive)
{
    if (!m_motion->setActive(isActive)) {
        return;
    }
    m_button.setAccessibleDescription(isActive ? tr("Under way") : QString());
    if (isActive) {
        showFrame();
    } else {
        m_button.setIcon({});
    }
}

bool ButtonProgress::isActive() const
{
    return m_motion->isActive();
}

void ButtonProgress::showFrame()
{
    const qreal ratio = m_button.devicePixelRatioF();
    QPixmap picture(QSize(Metrics::kIconSize, Metrics::kIconSize) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    constexpr qreal kInset = (Metrics::kIconSize - kCircle) / 2.0;
    const QColor &color = m_theme.tokens().onAccent;
    QColor ring = color;
    ring.setAlphaF(0.35F);
    Spinner::paint(painter, QRectF(kInset, kInset, kCircle, kCircle), 2, ring, color, m_motion->phase(kTurnMs));
    painter.end();
    m_button.setIcon(picture);
}
