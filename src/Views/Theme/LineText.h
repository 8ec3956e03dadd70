#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>

class QPainter;

/// One line of text for a painted row. Its glyphs are chosen and placed once, for the width and for the painting;
/// QFontMetrics and QPainter::drawText do that anew in each call, which is most of what a row costs.
class LineText
{
public:
    LineText(const QString &text, const QFont &font);

    /// In pixels, as QFontMetrics::horizontalAdvance.
    int width() const;

    /// The height of the font's line.
    int height() const;

    /// Paints with the painter's pen in the middle of the height of `rect`, at its left or at its right (the other
    /// way round in a layout from right to left). What is wider is elided at its end.
    void paint(QPainter &painter, const QRect &rect, Qt::Alignment alignment = Qt::AlignLeft) const;

private:
    QFont m_font;
    QTextLayout m_layout;
};
