#pragma once

#include <QSize>

class QPainter;
class QStyleOptionMenuItem;
struct Tokens;

/// How the menu bar and menus are painted.
namespace MenuStyle
{

inline constexpr int kBarHeight = 28;

/// `size` is that of the text with its "&" taken out.
QSize barItemSize(const QSize &size);
void drawBarItem(QPainter &painter, const QStyleOptionMenuItem &option, const Tokens &tokens);
void drawBarGround(QPainter &painter, const QRect &rect, const Tokens &tokens);

QSize itemSize(const QStyleOptionMenuItem &option);
void drawItem(QPainter &painter, const QStyleOptionMenuItem &option, const Tokens &tokens, qreal pixelRatio);
void drawGround(QPainter &painter, const QRect &rect, const Tokens &tokens);

} // namespace MenuStyle
