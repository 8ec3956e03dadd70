#pragma once

#include <QString>

class QFontMetrics;
class QPainter;
class QRect;

/// Figures whose digits are equally wide, so that they stand below one another, with any font.
namespace TabularText
{

int width(const QFontMetrics &metrics, const QString &text);

/// One line in the painter's font and pen, in the middle of `rect`'s height and at its left or right edge. Text that
/// doesn't fit is elided at its end.
void draw(QPainter &painter, const QRect &rect, bool isAtRight, const QString &text);

} // namespace TabularText
