#include "Views/Theme/LineText.h"

#include "Views/Theme/Shaping.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>

LineText::LineText(const QString &text, const QFont &font)
    : m_font(Shaping::fit(font, text))
    , m_layout(text, m_font)
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(QGuiApplication::layoutDirection());
    m_layout.setTextOption(option);
    m_layout.setCacheEnabled(true); // the glyphs stay for the painting
    m_layout.beginLayout();
    m_layout.createLine();
    m_layout.endLayout();
}

int LineText::width() const
{
    return m_layout.lineCount() > 0 ? qRound(m_layout.lineAt(0).horizontalAdvance()) : 0;
}

int LineText::height() const
{
    return QFontMetrics(m_font).height();
}

void LineText::paint(QPainter &painter, const QRect &rect, Qt::Alignment alignment) const
{
    if (m_layout.lineCount() == 0) {
        return;
    }
    const QTextLine line = m_layout.lineAt(0);
    const qreal advance = line.horizontalAdvance();
    if (advance > rect.width()) {
        const QString shown = QFontMetrics(m_font).elidedText(m_layout.text(), Qt::ElideRight, rect.width());
        if (shown != m_layout.text()) {
            LineText(shown, m_font).paint(painter, rect, alignment);
            return;
        }
    }
    const bool isAtTheRight = alignment.testFlag(Qt::AlignRight) != (painter.layoutDirection() == Qt::RightToLeft);
    const qreal left = isAtTheRight ? rect.x() + rect.width() - advance : rect.x();
    line.draw(&painter, {left, rect.y() + (rect.height() - line.height()) / 2});
}
