#include "Views/Components/HeaderLayout.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <numeric>

namespace
{

using Items = QList<QLayoutItem *>;

int widthOf(const Items &items)
{
    const int words = std::accumulate(items.begin(), items.end(), 0,
                                      [](int sum, QLayoutItem *item) { return sum + item->sizeHint().width(); });
    return words + static_cast<int>(std::max<qsizetype>(items.size() - 1, 0)) * HeaderLayout::kGap;
}

int heightOf(const Items &items)
{
    return std::accumulate(items.begin(), items.end(), 0,
                           [](int most, QLayoutItem *item) { return std::max(most, item->sizeHint().height()); });
}

/// Puts things side by side into one line, each in the line's middle.
struct Line {
    QRect rect;
    bool isReal;
    Qt::LayoutDirection direction;

    int put(QLayoutItem *item, int left, int width) const
    {
        if (isReal) {
            const int height = std::min(item->sizeHint().height(), rect.height());
            const QRect place(left, rect.top() + (rect.height() - height) / 2, width, height);
            item->setGeometry(QStyle::visualRect(direction, rect, place));
        }
        return left + width + HeaderLayout::kGap;
    }
};

} // namespace

HeaderLayout::HeaderLayout(QWidget *parent)
    : QLayout(parent)
{
}

HeaderLayout::~HeaderLayout()
{
    for (const Entry &entry : m_entries) {
        delete entry.item;
    }
}

void HeaderLayout::add(QWidget *widget, Role role, const QWidget *before)
{
    addChildWidget(widget);
    const auto isIt = [before](const Entry &entry) { return before && entry.item->widget() == before; };
    m_entries.insert(std::ranges::find_if(m_entries, isIt), {new QWidgetItem(widget), role});
    invalidate();
}

void HeaderLayout::addItem(QLayoutItem *item)
{
    m_entries.append({item, Role::Control});
}

int HeaderLayout::count() const
{
    return static_cast<int>(m_entries.size());
}

QLayoutItem *HeaderLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_entries.at(index).item : nullptr;
}

QLayoutItem *HeaderLayout::takeAt(int index)
{
    return index >= 0 && index < count() ? m_entries.takeAt(index).item : nullptr;
}

Items HeaderLayout::shown(Role role) const
{
    Items items;
    for (const Entry &entry : m_entries) {
        if (entry.role == role && !entry.item->isEmpty()) {
            items.append(entry.item);
        }
    }
    return items;
}

QSize HeaderLayout::sizeHint() const
{
    return minimumSize();
}

QSize HeaderLayout::minimumSize() const
{
    const QMargins margins = contentsMargins();
    const Items controls = shown(Role::Control);
    const int width = kLeastSearchWidth + (controls.isEmpty() ? 0 : kGap + widthOf(controls));
    return {width + margins.left() + margins.right(), heightForWidth(width)};
}

bool HeaderLayout::hasHeightForWidth() const
{
    return true;
}

int HeaderLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

void HeaderLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int HeaderLayout::arrange(const QRect &rect, bool isReal) const
{
    const QRect inside = rect.marginsRemoved(contentsMargins());
    const Items titles = shown(Role::Title);
    const Items searches = shown(Role::Search);
    const Items filters = shown(Role::Filter);
    const Items controls = shown(Role::Control);
    const auto direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    const int searchCount = static_cast<int>(searches.size());
    const auto withGap = [](const Items &items) { return items.isEmpty() ? 0 : widthOf(items) + kGap; };

    const int room = inside.width() - withGap(titles) - widthOf(controls) - (controls.isEmpty() ? 0 : kGap);
    const int least = searchCount * (kLeastSearchWidth + kGap) + withGap(filters);
    const bool isOneLine = searches.isEmpty() && filters.isEmpty() ? true : room >= least - kGap;

    // The first line.
    int height = std::max(heightOf(titles), heightOf(controls));
    if (isOneLine) {
        height = std::max({height, heightOf(searches), heightOf(filters)});
    }
    Line line{QRect(inside.left(), inside.top(), inside.width(), height), isReal, direction};
    const int controlsLeft = inside.right() + 1 - widthOf(controls);
    int left = controlsLeft;
    for (QLayoutItem *control : controls) {
        left = line.put(control, left, control->sizeHint().width());
    }
    int middle = controlsLeft - (controls.isEmpty() ? 0 : kGap);
    if (isOneLine && !(searches.isEmpty() && filters.isEmpty())) {
        const int spare = room - (least - kGap);
        const int search = std::min(kSearchWidth, kLeastSearchWidth + (searchCount > 0 ? spare / searchCount : 0));
        middle -= searchCount * (search + kGap) + withGap(filters) - kGap;
        left = middle;
        for (QLayoutItem *item : searches) {
            left = line.put(item, left, search);
        }
        for (QLayoutItem *item : filters) {
            left = line.put(item, left, item->sizeHint().width());
        }
        middle -= kGap;
    }
    left = inside.left();
    for (QLayoutItem *title : titles) {
        left = line.put(title, left, std::max(0, std::min(title->sizeHint().width(), middle - left)));
    }
    int bottom = line.rect.bottom() + 1;
    if (isOneLine) {
        return bottom - rect.top() + contentsMargins().bottom();
    }

    // Search and filters in lines of their own.
    const Items narrowing = searches + filters;
    left = inside.left();
    line.rect = QRect(left, bottom + kLineGap, inside.width(), heightOf(narrowing));
    for (QLayoutItem *item : narrowing) {
        const bool isSearch = searches.contains(item);
        const int rest = inside.right() + 1 - left;
        const int others = isSearch ? withGap(filters) : 0;
        const bool isShared = rest - others >= kLeastSearchWidth; // else the filters have a line of their own
        int width = !isSearch  ? item->sizeHint().width()
                    : isShared ? std::min(rest - others, kSearchWidth)
                               : kSearchWidth;
        if (left > inside.left() && width > rest) {
            left = inside.left();
            line.rect.translate(0, line.rect.height() + kLineGap);
        }
        width = std::min(width, inside.right() + 1 - left);
        left = line.put(item, left, width);
    }
    bottom = line.rect.bottom() + 1;
    return bottom - rect.top() + contentsMargins().bottom();
}
