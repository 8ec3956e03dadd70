#include "Views/Components/StatsView.h"

#include "Views/Components/Labels.h"
#include "Views/Components/PlainText.h"

#include <QEvent>
#include <QHBoxLayout>

StatsView::StatsView(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_label(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_value(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Text, this))
{
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(4);
    line->addWidget(m_label);
    line->addWidget(m_value);
}

void StatsView::setStat(const Stat &stat)
{
    if (stat == m_stat) {
        return;
    }
    m_stat = stat;
    m_label->setText(stat.label);
    m_value->setText(PlainText::oneLine(stat.value));
    m_value->setVisible(!stat.value.isEmpty());
    setAccessibleName(m_label->text() + u' ' + m_value->text());
    updateColor();
}

void StatsView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange) {
        updateColor();
    }
    QWidget::changeEvent(event);
}

void StatsView::updateColor()
{
    const QColor &wanted = m_stat.tone ? m_theme.tone(*m_stat.tone).text : m_theme.tokens().text;
    if (m_value->palette().color(QPalette::WindowText) != wanted) {
        QPalette palette = m_value->palette();
        palette.setColor(QPalette::WindowText, wanted);
        m_value->setPalette(palette);
    }
}
