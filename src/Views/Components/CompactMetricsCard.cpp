#include "Views/Components/CompactMetricsCard.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"

#include <QGridLayout>
#include <QPainter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kLegendGap = 6;
constexpr int kLegendColumns = 2;

} // namespace

/// A large figure in a place of constant size, which it keeps without one as well, so that the titles of cards stand
/// at one height: a new figure is painted, and nothing is laid out anew.
class CompactMetricsCard::Figure : public QWidget
{
public:
    Figure(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
    {
        setFont(theme.font(TextStyle::Number));
        setFixedSize(fontMetrics().horizontalAdvance(u"100.0%"_s) + 2, fontMetrics().height());
    }

    void set(const QString &text, bool isWarning)
    {
        if (m_text != text || m_isWarning != isWarning) {
            m_text = text;
            m_isWarning = isWarning;
            setAccessibleName(text);
            update();
        }
    }

    const QString &text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(m_isWarning ? m_theme.tone(ToneName::Orange).text : m_theme.tokens().text);
        painter.drawText(rect(), Qt::AlignRight | Qt::AlignVCenter, m_text);
    }

private:
    const Theme &m_theme;
    QString m_text;
    bool m_isWarning = false;
};

/// The dot and the name of a curve, and its figure; painted for the same reason.
class CompactMetricsCard::LegendEntry : public QWidget
{
public:
    LegendEntry(const Theme &theme, LegendStyle style, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
        , m_lineHeight(0)
        , m_lines(style == LegendStyle::TwoLines ? 2 : 1)
    {
        setFont(theme.font(TextStyle::Detail));
        m_lineHeight = fontMetrics().height();
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        setFixedHeight(m_lines * m_lineHeight);
    }

    void set(const LegendItem &item)
    {
        if (m_item != item) {
            m_item = item;
            setAccessibleName(text());
            update();
        }
    }

    QString text() const { return m_item.name + u' ' + m_item.figure; }

    QSize sizeHint() const override { return {dotRoom() + fontMetrics().horizontalAdvance(text()), height()}; }

    QSize minimumSizeHint() const override { return {dotRoom(), height()}; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        StateDot::paint(painter, QPointF(StateDot::kDiameter / 2.0 + 1, m_lineHeight / 2.0),
                        m_theme.tone(m_item.tone).color);
        QRect rest(dotRoom(), 0, width() - dotRoom(), m_lineHeight);
        const int figureWidth = m_lines == 1 ? fontMetrics().horizontalAdvance(u' ' + m_item.figure) : 0;
        const QString name = fontMetrics().elidedText(m_item.name, Qt::ElideRight, rest.width() - figureWidth);
        painter.setPen(m_theme.tokens().dim);
        painter.drawText(rest, Qt::AlignLeft | Qt::AlignVCenter, name);
        if (m_lines == 1) {
            rest.adjust(fontMetrics().horizontalAdvance(name + u' '), 0, 0, 0);
        } else {
            rest.moveTop(m_lineHeight);
        }
        painter.setPen(m_item.isWarning ? m_theme.tone(ToneName::Orange).text : m_theme.tokens().text);
        painter.drawText(rest, Qt::AlignLeft | Qt::AlignVCenter, m_item.figure);
    }

private:
    static int dotRoom() { return StateDot::kDiameter + 2 + kLegendGap; }

    const Theme &m_theme;
    int m_lineHeight;
    int m_lines;
    LegendItem m_item;
};

CompactMetricsCard::CompactMetricsCard(const Theme &theme, const QString &title, LegendStyle legendStyle,
                                       QWidget *parent)
    : Card(theme, title, parent)
    , m_theme(theme)
    , m_legendStyle(legendStyle)
    , m_figure(new Figure(theme, this))
    , m_legend(new QGridLayout)
    , m_chart(new MetricChart(theme, title, this))
    , m_footnote(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this))
{
    addToTitle(m_figure);
    m_figure->set({}, false);
    m_legend->setHorizontalSpacing(12);
    m_legend->setVerticalSpacing(3);
    content().addLayout(m_legend);
    content().addStretch();
    content().addWidget(m_chart);
    content().addWidget(m_footnote);
    m_footnote->hide();
}

void CompactMetricsCard::setFigure(const QString &figure, bool isWarning)
{
    m_figure->set(figure, isWarning);
}

QString CompactMetricsCard::figure() const
{
    return m_figure->text();
}

void CompactMetricsCard::setLegend(const QList<LegendItem> &items)
{
    while (m_entries.size() > items.size()) {
        delete m_entries.takeLast();
    }
    while (m_entries.size() < items.size()) {
        const auto place = static_cast<int>(m_entries.size());
        m_entries.append(new LegendEntry(m_theme, m_legendStyle, this));
        m_legend->addWidget(m_entries.constLast(), place / kLegendColumns, place % kLegendColumns);
        m_legend->setColumnStretch(place % kLegendColumns, 1);
    }
    for (qsizetype i = 0; i < items.size(); ++i) {
        m_entries.at(i)->set(items.at(i));
    }
}

QStringList CompactMetricsCard::legend() const
{
    QStringList texts;
    for (const LegendEntry *entry : m_entries) {
        texts.append(entry->text());
    }
    return texts;
}

void CompactMetricsCard::setFootnote(const QString &footnote)
{
    if (m_footnote->text() != footnote) {
        m_footnote->setText(footnote);
        m_footnote->setVisible(!footnote.isEmpty());
    }
}

QString CompactMetricsCard::footnote() const
{
    return m_footnote->text();
}
