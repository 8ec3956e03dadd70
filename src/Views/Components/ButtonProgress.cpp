#include "Views/Components/ButtonProgress.h"

#include "Views/Theme/Theme.h"

#include <QPainter>
#include <QPushButton>

namespace
{

constexpr int kFrameMs = 33;
constexpr int kTurnMs = 900;
constexpr int kCircle = 12;
constexpr int kGap = 6; // as the style puts it between icon and words

} // namespace

ButtonProgress::ButtonProgress(const Theme &theme, QPushButton &button)
    : QObject(&button)
    , m_theme(theme)
    , m_button(button)
{
    button.setMinimumWidth(button.sizeHint().width() + Metrics::kIconSize + kGap);
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, this, &ButtonProgress::showFrame);
}

void ButtonProgress::setActive(bool isActive)
{
    if (isActive == m_frames.isActive()) {
        return;
    }
    m_button.setAccessibleDescription(isActive ? tr("Under way") : QString());
    if (isActive) {
        m_clock.start();
        m_frames.start();
        showFrame();
    } else {
        m_frames.stop();
        m_button.setIcon({});
    }
}

void ButtonProgress::showFrame()
{
    const qreal ratio = m_button.devicePixelRatioF();
    QPixmap picture(QSize(Metrics::kIconSize, Metrics::kIconSize) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr qreal kInset = (Metrics::kIconSize - kCircle) / 2.0;
    const QRectF circle(kInset, kInset, kCircle, kCircle);
    QColor color = m_theme.tokens().onAccent;
    color.setAlphaF(0.35F);
    painter.setPen(QPen(color, 2));
    painter.drawEllipse(circle);
    color.setAlphaF(1);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
    const auto turn = static_cast<int>(360 * 16 * (m_clock.elapsed() % kTurnMs) / kTurnMs);
    painter.drawArc(circle, 90 * 16 - turn, -90 * 16);
    painter.end();
    m_button.setIcon(picture);
}
