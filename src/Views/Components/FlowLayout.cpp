#include "Views/Components/FlowLayout.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

FlowLayout::FlowLayout(int spacing, QWidget *parent)
    : QLayout(parent)
{
    setSpacing(spacing);
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

void FlowLayout::insertWidget(int index, QWidget *widget)
{
    addChildWidget(widget);
    m_items.insert(index, new QWidgetItem(widget));
    invalidate();
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_items) {
        size = size.expandedTo(item->minimumSize());
    }
    return size;
}

QSize FlowLayout::sizeHint() const
{
    QSize size(-spacing(), 0);
    for (const QLayoutItem *item : m_items) {
        if (!item->isEmpty()) {
            size = {size.width() + spacing() + item->sizeHint().width(),
                    std::max(size.height(), item->sizeHint().height())};
        }
    }
    return size.expandedTo({0, 0});
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

// The height that the items take in the rectangle's width.
int FlowLayout::arrange(const QRect &rect, bool moves) const
{
    const Qt::LayoutDirection direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    int x = rect.left();
    int y = rect.top();
    int lineHeight = 0;
    for (QLayoutItem *item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        const QSize size = item->sizeHint().boundedTo({rect.width(), QWIDGETSIZE_MAX});
        if (x > rect.left() && x + size.width() > rect.right() + 1) {
            x = rect.left();
            y += lineHeight + spacing();
            lineHeight = 0;
        }
        if (moves) {
            item->setGeometry(QStyle::visualRect(direction, rect, QRect({x, y}, size)));
        }
        x += size.width() + spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    return y + lineHeight - rect.top();
}
