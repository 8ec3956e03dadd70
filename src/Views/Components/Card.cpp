#include "Views/Components/Card.h"

#include "Views/Components/Labels.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

Card::Card(const Theme &theme, const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_title(new TextLabel(theme, TextStyle::Emphasis, title, TextLabel::Shade::Text, this))
    , m_titleLine(new QHBoxLayout)
    , m_content(new QVBoxLayout(this))
{
    setAccessibleName(title);
    m_content->setContentsMargins(16 + kShadow, 14 + kShadow, 16 + kShadow, 14 + kShadow);
    m_content->setSpacing(10);
    m_titleLine->addWidget(m_title);
    m_titleLine->addStretch();
    m_content->addLayout(m_titleLine);
}

void Card::addToTitle(QWidget *widget)
{
    m_titleLine->addWidget(widget);
}

void Card::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintSurface(painter, rect(), m_theme);
}

void Card::paintSurface(QPainter &painter, const QRect &rect, const Theme &theme)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF edge = QRectF(rect).adjusted(kShadow, kShadow, -kShadow, -kShadow);
    const qreal radius = Metrics::kCardRadius;
    if (!theme.isDark()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(20, 30, 45, 8));
        painter.drawRoundedRect(edge.adjusted(-1, 0, 1, 2), radius + 1, radius + 1);
        painter.drawRoundedRect(edge.adjusted(0, 0, 0, 1), radius, radius);
    }
    painter.setBrush(theme.tokens().surface);
    painter.setPen(theme.tokens().line);
    painter.drawRoundedRect(edge.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}
