#include "Views/Components/RefreshButton.h"

#include "Views/Theme/Icons.h"
#include "Views/Theme/Theme.h"

#include <QPainter>
#include <QStyleOptionButton>

namespace
{

constexpr int kFrameMs = 33;
constexpr int kTurnMs = 1000;
constexpr int kWidth = 32;

} // namespace

RefreshButton::RefreshButton(const Theme &theme, const QString &help, QWidget *parent)
    : QPushButton(parent)
    , m_theme(theme)
{
    const QString name = help.isEmpty() ? tr("Refresh") : help;
    setAccessibleName(name);
    setToolTip(name);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    connect(this, &QPushButton::clicked, this, [this] {
        if (!m_isRefreshing) {
            Q_EMIT refreshRequested();
        }
    });
}

void RefreshButton::setRefreshing(bool isRefreshing)
{
    if (std::exchange(m_isRefreshing, isRefreshing) == isRefreshing) {
        return;
    }
    setAccessibleDescription(isRefreshing ? tr("Refreshing") : QString());
    if (isRefreshing) {
        m_clock.start();
        if (isVisible()) {
            m_frames.start();
        }
    } else {
        m_frames.stop();
    }
    update();
}

QSize RefreshButton::sizeHint() const
{
    return {kWidth, Metrics::kControlHeight};
}

void RefreshButton::showEvent(QShowEvent *event)
{
    QPushButton::showEvent(event);
    if (m_isRefreshing) {
        m_frames.start();
    }
}

void RefreshButton::hideEvent(QHideEvent *event)
{
    QPushButton::hideEvent(event);
    m_frames.stop();
}

void RefreshButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QStyleOptionButton option;
    initStyleOption(&option);
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    const Tokens &t = m_theme.tokens();
    const QColor &color = !isEnabled() ? t.faint : m_isRefreshing ? t.accent.color : t.text;
    const QPixmap picture = Icons::pixmap(IconName::Refresh, color, Metrics::kIconSize, devicePixelRatioF());
    const QPointF middle = QRectF(rect()).center();
    painter.translate(middle);
    if (m_isRefreshing) {
        painter.rotate(360.0 * static_cast<double>(m_clock.elapsed() % kTurnMs) / kTurnMs);
    }
    painter.drawPixmap(QPointF(-Metrics::kIconSize / 2.0, -Metrics::kIconSize / 2.0), picture);
}
