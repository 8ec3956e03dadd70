#include "Views/Components/RefreshButton.h"

#include "Views/Components/Motion.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/Theme.h"

#include <QPainter>
#include <QStyleOptionButton>

namespace
{

constexpr int kTurnMs = 1000;
constexpr int kWidth = 32;

} // namespace

RefreshButton::RefreshButton(const Theme &theme, const QString &help, QWidget *parent)
    : QPushButton(parent)
    , m_theme(theme)
    , m_motion(new Motion(*this))
{
    const QString name = help.isEmpty() ? tr("Refresh") : help;
    setAccessibleName(name);
    setToolTip(name);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QPushButton::clicked, this, [this] {
        if (!isRefreshing()) {
            Q_EMIT refreshRequested();
        }
    });
}

void RefreshButton::setRefreshing(bool isRefreshing)
{
    if (m_motion->setActive(isRefreshing)) {
        setAccessibleDescription(isRefreshing ? tr("Refreshing") : QString());
    }
}

bool RefreshButton::isRefreshing() const
{
    return m_motion->isActive();
}

QSize RefreshButton::sizeHint() const
{
    return {kWidth, Metrics::kControlHeight};
}

void RefreshButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QStyleOptionButton option;
    initStyleOption(&option);
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    const Tokens &t = m_theme.tokens();
    const QColor &color = !isEnabled() ? t.faint : isRefreshing() ? t.accent.color : t.text;
    const QPixmap picture = Icons::pixmap(IconName::Refresh, color, Metrics::kIconSize, devicePixelRatioF());
    const QPointF middle = QRectF(rect()).center();
    painter.translate(middle);
    if (isRefreshing()) {
        painter.rotate(360.0 * m_motion->phase(kTurnMs));
    }
    painter.drawPixmap(QPointF(-Metrics::kIconSize / 2.0, -Metrics::kIconSize / 2.0), picture);
}
