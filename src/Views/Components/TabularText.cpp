#include "Views/Components/TabularText.h"

#include "Views/Theme/Shaping.h"

#include <QFontMetrics>
#include <QGlyphRun>
#include <QPainter>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isLatin(const QString &text)
{
    return std::ranges::all_of(text, [](QChar c) { return c >= u' ' && c < u'\u007F'; });
}

} // namespace

TabularText::TabularText(const QFont &font)
    : m_font(font)
    , m_glyphs(QRawFont::fromFont(font))
{
    for (const QPointF &advance : m_glyphs.advancesForGlyphIndexes(m_glyphs.glyphIndexesForString(u"0123456789"_s))) {
        m_digitWidth = std::max(m_digitWidth, advance.x());
    }
}

void TabularText::drawAtRight(QPainter &painter, const QRect &rect, const QString &text) const
{
    const QList<quint32> glyphs = isLatin(text) ? m_glyphs.glyphIndexesForString(text) : QList<quint32>();
    const QList<QPointF> advances = m_glyphs.advancesForGlyphIndexes(glyphs);
    QList<QPointF> places;
    qreal width = 0;
    for (qsizetype i = 0; i < advances.size() && i < text.size(); ++i) {
        const bool isFigure = isDigit(text.at(i));
        const qreal room = isFigure ? m_digitWidth : advances.at(i).x();
        places.append({width + (room - advances.at(i).x()) / 2, 0});
        width += room;
    }
    const QFontMetrics metrics(m_font);
    const bool isWhole = places.size() == text.size() && !glyphs.contains(0U); // the font itself has all of it
    if (!isWhole || width > rect.width()) {
        painter.setFont(Shaping::fit(m_font, text));
        painter.drawText(rect, Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, rect.width()));
        return;
    }
    QGlyphRun run;
    run.setRawFont(m_glyphs);
    run.setGlyphIndexes(glyphs);
    run.setPositions(places);
    const int baseline = rect.top() + (rect.height() - metrics.height()) / 2 + metrics.ascent();
    painter.drawGlyphRun({rect.right() + 1 - width, qreal(baseline)}, run);
}
