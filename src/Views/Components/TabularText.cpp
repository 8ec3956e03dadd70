#include "Views/Components/TabularText.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

namespace
{

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

int digitWidth(const QFontMetrics &metrics)
{
    int widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    }
    return widest;
}

} // namespace

int TabularText::width(const QFontMetrics &metrics, const QString &text)
{
    const int digit = digitWidth(metrics);
    int width = 0;
    for (const QChar c : text) {
        width += isDigit(c) ? digit : metrics.horizontalAdvance(c);
    }
    return width;
}

void TabularText::draw(QPainter &painter, const QRect &rect, bool isAtRight, const QString &text)
{
    const QFontMetrics metrics = painter.fontMetrics();
    const int digit = digitWidth(metrics);
    const int wanted = width(metrics, text);
    const bool isPlain = std::ranges::all_of(text, [](QChar c) { return c >= u' ' && c < u'\u007F'; });
    if (!isPlain || wanted > rect.width()) {
        const auto edge = isAtRight ? Qt::AlignRight : Qt::AlignLeft;
        painter.drawText(rect, static_cast<int>(Qt::AlignVCenter | edge | Qt::TextSingleLine),
                         metrics.elidedText(text, Qt::ElideRight, rect.width()));
        return;
    }
    const int baseline = rect.top() + (rect.height() - metrics.height()) / 2 + metrics.ascent();
    int left = isAtRight ? rect.right() + 1 - wanted : rect.left();
    for (const QChar c : text) {
        const int own = metrics.horizontalAdvance(c);
        const int advance = isDigit(c) ? digit : own;
        painter.drawText(QPointF(left + (advance - own) / 2.0, baseline), c);
        left += advance;
    }
}
