#include "Views/Components/Pill.h"

#include "Views/Components/PlainText.h"
#include "Views/Theme/LineText.h"

#include <QPainter>

namespace
{

constexpr int kPadding = 9;
constexpr int kTagPadding = 7;
constexpr int kDotGap = 5;

int paddingFor(Pill::Dot dot)
{
    return dot == Pill::Dot::With ? kPadding : kTagPadding;
}

} // namespace

void StateDot::paint(QPainter &painter, const QPointF &center, const QColor &color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(center, kDiameter / 2.0, kDiameter / 2.0);
    painter.restore();
}

Pill::Pill(const Theme &theme, Dot dot, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_dot(dot)
{
    setFont(theme.font(TextStyle::Caption));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Pill::setState(const QString &text, ToneName tone)
{
    const QString line = PlainText::oneLine(text);
    if (line == m_text && tone == m_tone) {
        return;
    }
    m_text = line;
    m_tone = tone;
    setAccessibleName(line);
    updateGeometry();
    update();
}

QSize Pill::sizeFor(const QString &text, const QFont &font, Dot dot)
{
    return sizeFor(LineText(text, font), dot);
}

QSize Pill::sizeFor(const LineText &text, Dot dot)
{
    const int dotWidth = dot == Dot::With ? StateDot::kDiameter + kDotGap : 0;
    return {text.width() + dotWidth + 2 * paddingFor(dot) + 1, text.height() + (dot == Dot::With ? 6 : 4)};
}

QSize Pill::sizeHint() const
{
    return sizeFor(m_text, font(), m_dot);
}

QSize Pill::minimumSizeHint() const
{
    return sizeHint();
}

void Pill::paint(QPainter &painter, const QRect &rect, const QString &text, const QFont &font, const Tone &tone,
                 Dot dot)
{
    paint(painter, rect, LineText(text, font), tone, dot);
}

void Pill::paint(QPainter &painter, const QRect &rect, const LineText &text, const Tone &tone, Dot dot)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tone.soft);
    painter.drawRoundedRect(QRectF(rect), rect.height() / 2.0, rect.height() / 2.0);
    QRect words = rect.adjusted(paddingFor(dot), 0, -paddingFor(dot), 0);
    if (dot == Dot::With) {
        StateDot::paint(painter, {words.left() + StateDot::kDiameter / 2.0, rect.center().y() + 0.5}, tone.color);
        words.setLeft(words.left() + StateDot::kDiameter + kDotGap);
    }
    painter.setPen(tone.text);
    text.paint(painter, words.adjusted(0, 0, 1, 0));
    painter.restore();
}

void Pill::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paint(painter, rect(), m_text, font(), m_theme.tone(m_tone), m_dot);
}
