#pragma once

class QColor;
class QPainter;
class QRectF;

/// A ring of which a quarter turns: something is under way.
namespace Spinner
{

/// Lines of `width` pixels on `circle`; `phase` is how much of a turn has passed.
void paint(QPainter &painter, const QRectF &circle, double width, const QColor &ring, const QColor &quarter,
           double phase);

} // namespace Spinner
