#include "Views/Components/InlineNotice.h"

#include "Views/Components/Labels.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

InlineNotice::InlineNotice(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_text(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Text, this))
    , m_detail(new TextLabel(theme, TextStyle::Mono, {}, TextLabel::Shade::Text, this))
    , m_button(new QPushButton(this))
{
    for (TextLabel *label : {m_text, m_detail}) {
        label->setWordWrap(true);
        label->setSelectable();
    }
    auto *words = new QVBoxLayout;
    words->setSpacing(4);
    words->addWidget(m_text);
    words->addWidget(m_detail);
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(12, 9, 12, 9);
    line->setSpacing(12);
    line->addLayout(words, 1);
    line->addWidget(m_button, 0, Qt::AlignTop);
    hide();
}

void InlineNotice::setNotice(ToneName tone, const QString &text, const QString &detail, const QString &buttonText)
{
    const bool isNews = !text.isEmpty() && (text != m_text->text() || isHidden());
    m_tone = tone;
    m_text->setText(text);
    m_detail->setText(detail);
    m_detail->setVisible(!detail.isEmpty());
    m_button->setText(buttonText);
    m_button->setVisible(!buttonText.isEmpty());
    setAccessibleName(text);
    setAccessibleDescription(detail);
    colorWords();
    setVisible(!text.isEmpty());
    update();
    if (isNews) {
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

QString InlineNotice::text() const
{
    return m_text->text();
}

QString InlineNotice::detail() const
{
    return m_detail->text();
}

void InlineNotice::colorWords()
{
    for (TextLabel *label : {m_text, m_detail}) {
        QPalette colors = label->palette();
        if (colors.color(label->foregroundRole()) != m_theme.tone(m_tone).text) {
            colors.setColor(label->foregroundRole(), m_theme.tone(m_tone).text);
            label->setPalette(colors);
        }
    }
}

void InlineNotice::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) {
        colorWords();
    }
    QWidget::changeEvent(event);
}

void InlineNotice::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.tone(m_tone).soft);
    painter.drawRoundedRect(rect(), Metrics::kControlRadius, Metrics::kControlRadius);
}
