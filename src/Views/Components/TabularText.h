#pragma once

#include <QFont>
#include <QRawFont>
#include <QString>

class QPainter;
class QRect;

/// Figures whose digits are equally wide, so that they stand below one another, in any font.
class TabularText
{
public:
    explicit TabularText(const QFont &font);

    /// One line in the painter's pen, in the middle of `rect`'s height and at its right edge. Text that doesn't fit
    /// is elided at its end; text of other scripts is drawn as the font has it.
    void drawAtRight(QPainter &painter, const QRect &rect, const QString &text) const;

private:
    QFont m_font;
    QRawFont m_glyphs;
    qreal m_digitWidth = 0;
};
