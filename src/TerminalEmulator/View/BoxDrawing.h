#pragma once

#include <QColor>
#include <QRect>

class QPainter;

namespace vt
{

/// Whether drawBox() knows a code point: lines, blocks, quadrants, sextants, Braille dots and the separators of
/// prompts, which fonts draw with gaps between cells.
bool isBoxDrawing(char32_t codePoint);

/// Draws it into `cell` so that it meets its neighbours exactly. `lineWidth` is the thickness of a light line.
void drawBox(QPainter &painter, char32_t codePoint, const QRect &cell, const QColor &color, int lineWidth);

} // namespace vt
