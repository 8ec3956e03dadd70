#include "Views/Theme/MenuStyle.h"

#include "Views/Theme/Icons.h"
#include "Views/Theme/Tokens.h"

#include <QPainter>
#include <QStyleOptionMenuItem>

namespace
{

constexpr int kBarPadding = 9;
constexpr int kItemHeight = 28;
constexpr int kSeparatorHeight = 9;
constexpr int kInset = 4; // of the ground of an item
constexpr int kPadding = 10;
constexpr int kMarkWidth = Metrics::kIconSize + 8; // a check mark or an icon
constexpr int kShortcutGap = 28;
constexpr int kArrowSize = 10;
constexpr qreal kRadius = 5;

void drawHighlight(QPainter &painter, const QRectF &rect, const QColor &color)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect, kRadius, kRadius);
}

int textFlags(const QStyleOptionMenuItem &option)
{
    // Marks of keys show while Alt is down, as the desktop has it.
    const bool showsMnemonics = option.state.testFlag(QStyle::State_KeyboardFocusChange);
    return Qt::AlignVCenter | Qt::TextSingleLine | (showsMnemonics ? Qt::TextShowMnemonic : Qt::TextHideMnemonic);
}

QFont fontOf(const QStyleOptionMenuItem &option)
{
    QFont font = option.font;
    if (option.menuItemType == QStyleOptionMenuItem::DefaultItem) {
        font.setWeight(QFont::DemiBold);
    }
    return font;
}

void drawMark(QPainter &painter, const QStyleOptionMenuItem &option, const QRect &place, const QColor &color,
              qreal pixelRatio)
{
    const int top = place.center().y() + 1 - Metrics::kIconSize / 2;
    if (!option.icon.isNull()) {
        const auto mode = option.state.testFlag(QStyle::State_Enabled) ? QIcon::Normal : QIcon::Disabled;
        option.icon.paint(&painter, QRect(place.left(), top, Metrics::kIconSize, Metrics::kIconSize), Qt::AlignCenter,
                          mode);
    } else if (option.checked) {
        painter.drawPixmap(place.left(), top, Icons::pixmap(IconName::Check, color, Metrics::kIconSize, pixelRatio));
    }
}

} // namespace

QSize MenuStyle::barItemSize(const QSize &size)
{
    return {size.width() + 2 * kBarPadding, kBarHeight};
}

void MenuStyle::drawBarGround(QPainter &painter, const QRect &rect, const Tokens &tokens)
{
    painter.fillRect(rect, tokens.side);
    painter.fillRect(QRect(rect.left(), kBarHeight - 1, rect.width(), 1), tokens.line);
}

void MenuStyle::drawBarItem(QPainter &painter, const QStyleOptionMenuItem &option, const Tokens &tokens)
{
    painter.save();
    drawBarGround(painter, option.rect, tokens);
    const bool isOpen = option.state.testFlag(QStyle::State_Selected) && option.state.testFlag(QStyle::State_Enabled);
    if (isOpen) {
        drawHighlight(painter, QRectF(option.rect).adjusted(1, 3, -1, -4), tokens.soft);
    }
    painter.setPen(isOpen ? tokens.text : tokens.dim);
    painter.drawText(option.rect.adjusted(0, 0, 0, -1), textFlags(option) | Qt::AlignHCenter, option.text);
    painter.restore();
}

QSize MenuStyle::itemSize(const QStyleOptionMenuItem &option)
{
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        return {40, kSeparatorHeight};
    }
    const QFontMetrics metrics(fontOf(option));
    const QString text = option.text.section(u'\t', 0, 0);
    const QString shortcut = option.text.section(u'\t', 1);
    int width = 2 * (kInset + kPadding) + metrics.size(Qt::TextShowMnemonic | Qt::TextSingleLine, text).width();
    if (option.menuHasCheckableItems || option.maxIconWidth > 0) {
        width += kMarkWidth;
    }
    if (!shortcut.isEmpty()) {
        width += kShortcutGap + metrics.horizontalAdvance(shortcut);
    }
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        width += kShortcutGap;
    }
    return {width, kItemHeight};
}

void MenuStyle::drawItem(QPainter &painter, const QStyleOptionMenuItem &option, const Tokens &tokens,
                         qreal pixelRatio)
{
    painter.save();
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(
            QRect(option.rect.left() + kInset, option.rect.center().y(), option.rect.width() - 2 * kInset, 1),
            tokens.line);
        painter.restore();
        return;
    }
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    if (isEnabled && option.state.testFlag(QStyle::State_Selected)) {
        drawHighlight(painter, QRectF(option.rect).adjusted(kInset, 1, -kInset, -1), tokens.accent.soft);
    }
    QRect inside = option.rect.adjusted(kInset + kPadding, 0, -kInset - kPadding, 0);
    const QColor color = isEnabled ? tokens.text : tokens.faint;
    if (option.menuHasCheckableItems || option.maxIconWidth > 0) {
        drawMark(painter, option, inside, color, pixelRatio);
        inside.adjust(kMarkWidth, 0, 0, 0);
    }
    painter.setFont(fontOf(option));
    painter.setPen(color);
    painter.drawText(inside, textFlags(option), option.text.section(u'\t', 0, 0));
    painter.setPen(isEnabled ? tokens.dim : tokens.faint);
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        painter.drawPixmap(inside.right() + 1 - kArrowSize, inside.center().y() + 1 - kArrowSize / 2,
                           Icons::pixmap(IconName::Forward, tokens.dim, kArrowSize, pixelRatio));
    } else {
        painter.drawText(inside, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                         option.text.section(u'\t', 1));
    }
    painter.restore();
}

void MenuStyle::drawGround(QPainter &painter, const QRect &rect, const Tokens &tokens)
{
    painter.fillRect(rect, tokens.line);
    painter.fillRect(rect.adjusted(1, 1, -1, -1), tokens.raised);
}
