#include "Views/Components/StatusLine.h"

#include "Views/Components/Labels.h"
#include "Views/Components/StatsView.h"
#include "Views/Theme/Icons.h"

#include <QHBoxLayout>
#include <QPainter>

namespace
{

constexpr int kGap = 16;
constexpr int kHeldIconSize = 12;

/// A pin and two words.
class HeldMark : public QWidget
{
public:
    HeldMark(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
    {
        setFont(theme.font(TextStyle::Small));
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        setAccessibleName(StatusLine::tr("Order held"));
        setToolTip(StatusLine::tr("Rows keep their place while the pointer is on them or their menu is open"));
    }

    QSize sizeHint() const override
    {
        return {kHeldIconSize + 5 + fontMetrics().horizontalAdvance(accessibleName()) + 1, fontMetrics().height()};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QColor &color = m_theme.tokens().accent.text;
        painter.drawPixmap(0, (height() - kHeldIconSize) / 2,
                           Icons::pixmap(IconName::Pin, color, kHeldIconSize, devicePixelRatioF()));
        painter.setPen(color);
        painter.drawText(rect().adjusted(kHeldIconSize + 5, 0, 0, 0), Qt::AlignVCenter | Qt::TextSingleLine,
                         accessibleName());
    }

private:
    const Theme &m_theme;
};

} // namespace

StatusLine::StatusLine(const Theme &theme, QWidget *parent)
    : Panel(theme, &Tokens::surface, Qt::TopEdge, parent)
    , m_theme(theme)
    , m_line(new QHBoxLayout(this))
    , m_figures(new QHBoxLayout)
    , m_held(new HeldMark(theme, this))
    , m_note(new ElidedLabel(theme, TextStyle::Small, TextLabel::Shade::Dim, Qt::ElideRight, this))
{
    m_line->setContentsMargins(Metrics::kPageMargin, 8, Metrics::kPageMargin, 8);
    m_line->setSpacing(kGap);
    m_figures->setSpacing(kGap);
    m_line->addLayout(m_figures);
    m_line->addWidget(m_held);
    m_line->addStretch();
    m_line->addWidget(m_note);
    m_held->hide();
}

void StatusLine::setStats(const QList<Stat> &stats)
{
    while (m_stats.size() > stats.size()) {
        delete m_stats.takeLast();
    }
    while (m_stats.size() < stats.size()) {
        m_stats.append(new StatsView(m_theme, this));
        m_figures->addWidget(m_stats.last());
    }
    for (qsizetype i = 0; i < stats.size(); ++i) {
        m_stats.at(i)->setStat(stats.at(i));
    }
}

QList<Stat> StatusLine::stats() const
{
    QList<Stat> stats;
    for (const StatsView *view : m_stats) {
        stats.append(view->stat());
    }
    return stats;
}

void StatusLine::setOrderHeld(bool isHeld)
{
    m_held->setVisible(isHeld);
}

bool StatusLine::isOrderHeld() const
{
    return !m_held->isHidden();
}

void StatusLine::setNote(const QString &note)
{
    m_note->setFullText(note);
}

void StatusLine::addWidget(QWidget *widget)
{
    m_line->addWidget(widget);
}
