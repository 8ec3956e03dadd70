#include "Views/Components/UsageBar.h"

#include "Views/Components/Labels.h"
#include "Views/Components/PlainText.h"

#include <QHBoxLayout>
#include <QPainter>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kBarHeight = 6;
constexpr int kGap = 5;
constexpr double kWarningPercent = 75;
constexpr double kCriticalPercent = 90;

} // namespace

UsageBar::UsageBar(const Theme &theme, QWidget *parent, Name name)
    : QWidget(parent)
    , m_theme(theme)
    , m_name(name == Name::Path
                 ? new ElidedLabel(theme, TextStyle::Mono, TextLabel::Shade::Text, Qt::ElideMiddle, this)
                 : new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Dim, Qt::ElideRight, this))
    , m_figures(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this))
    , m_emphasis(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Text, this))
{
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, kGap + kBarHeight);
    line->setSpacing(Metrics::kStep);
    line->addWidget(m_name, 1);
    line->addSpacing(2 * Metrics::kStep);
    line->addWidget(m_figures);
    line->addWidget(m_emphasis);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void UsageBar::setUsage(const QString &name, const QString &figures, const QString &emphasis, double percent)
{
    m_name->setFullText(name);
    m_figures->setText(PlainText::oneLine(figures));
    m_emphasis->setText(PlainText::oneLine(emphasis));
    m_percent = std::clamp(percent, 0.0, 100.0);
    setAccessibleName(m_name->text() + u": "_s + m_figures->text() + u' ' + m_emphasis->text());
    update();
}

QColor UsageBar::colorFor(const Theme &theme, double percent)
{
    return theme
        .tone(percent > kCriticalPercent  ? ToneName::Red
              : percent > kWarningPercent ? ToneName::Orange
                                          : ToneName::Accent)
        .color;
}

void UsageBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QRectF bar(0, height() - kBarHeight, width(), kBarHeight);
    painter.setBrush(m_theme.tokens().soft);
    painter.drawRoundedRect(bar, kBarHeight / 2.0, kBarHeight / 2.0);
    if (m_percent > 0) {
        bar.setWidth(std::max<double>(kBarHeight, bar.width() * m_percent / 100));
        painter.setBrush(colorFor(m_theme, m_percent));
        painter.drawRoundedRect(bar, kBarHeight / 2.0, kBarHeight / 2.0);
    }
}
