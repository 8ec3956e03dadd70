#include "TerminalEmulator/Engine/Grid.h"

#include <algorithm>
#include <cstring>

namespace vt
{

namespace
{

void move(Cell *to, const Cell *from, int count)
{
    std::memmove(to, from, static_cast<size_t>(count) * sizeof(Cell));
}

} // namespace

Grid::Grid(int columns, int rows)
    : m_columns(columns)
    , m_rowCount(rows)
    , m_rows(static_cast<size_t>(rows))
    , m_storage(static_cast<size_t>(columns) * static_cast<size_t>(rows))
{
    for (size_t y = 0; y < m_rows.size(); ++y) {
        m_rows[y].cells = m_storage.data() + y * static_cast<size_t>(columns);
    }
}

Cell Grid::cell(int y, int x) const
{
    const Row &source = row(y);
    return x < source.length ? source.cells[x] : Cell{};
}

void Grid::split(Row &row, int x) const
{
    if (!row.has(Row::HasWide) || x <= 0 || x >= row.length || !row.cells[x].isTail()) {
        return;
    }
    row.cells[x].code = 0;
    row.cells[x - 1].code = 0;
}

void Grid::erase(int y, int left, int right, Cell blank)
{
    Row &target = row(y);
    target.set(Row::Dirty);
    split(target, left);
    split(target, right + 1);
    if (blank == Cell{}) {
        if (right + 1 >= target.length) {
            target.length = static_cast<uint16_t>(std::min<int>(target.length, left));
        } else if (left <= right) {
            std::fill(target.cells + left, target.cells + right + 1, blank);
        }
        return;
    }
    extend(target, left);
    std::fill(target.cells + left, target.cells + right + 1, blank);
    target.length = static_cast<uint16_t>(std::max<int>(target.length, right + 1));
}

void Grid::clearRow(int y, Cell blank)
{
    Row &target = row(y);
    target.length = 0;
    target.flags = Row::Dirty;
    target.size = LineSize::Normal;
    if (blank != Cell{}) {
        std::fill(target.cells, target.cells + m_columns, blank);
        target.length = static_cast<uint16_t>(m_columns);
    }
}

void Grid::insertCells(int y, int x, int right, int count, Cell blank)
{
    Row &target = row(y);
    count = std::min(count, right - x + 1);
    split(target, x);
    split(target, right + 1);
    split(target, right + 1 - count);
    if (target.length > x) {
        const int end = std::min<int>(target.length, right + 1 - count);
        if (end > x) {
            extend(target, std::max<int>(target.length, end + count));
            move(target.cells + x + count, target.cells + x, end - x);
        }
    }
    erase(y, x, x + count - 1, blank);
}

void Grid::deleteCells(int y, int x, int right, int count, Cell blank)
{
    Row &target = row(y);
    count = std::min(count, right - x + 1);
    split(target, x);
    split(target, x + count);
    split(target, right + 1);
    const int kept = std::min<int>(target.length, right + 1) - (x + count);
    if (kept > 0) {
        move(target.cells + x, target.cells + x + count, kept);
        std::fill(target.cells + x + kept, target.cells + std::min<int>(target.length, right + 1), Cell{});
    } else if (x < target.length) {
        const int end = std::min<int>(target.length, right + 1);
        std::fill(target.cells + x, target.cells + end, Cell{});
    }
    erase(y, right + 1 - count, right, blank);
    target.set(Row::Dirty);
}

void Grid::moveCells(int fromRow, int toRow, int left, int right)
{
    Row &from = row(fromRow);
    Row &to = row(toRow);
    split(to, left);
    split(to, right + 1);
    const int end = std::min<int>(from.length, right + 1);
    extend(to, end);
    if (end > left) {
        move(to.cells + left, from.cells + left, end - left);
    }
    const int begin = std::max(end, left);
    const int stale = std::min<int>(to.length, right + 1);
    if (begin < stale) {
        std::fill(to.cells + begin, to.cells + stale, Cell{});
    }
    if (from.has(Row::HasWide)) {
        to.set(Row::HasWide);
    }
    to.set(Row::Dirty);
}

void Grid::scrollUp(const Area &area, int count, Cell blank)
{
    count = std::min(count, area.bottom - area.top + 1);
    if (isFullWidth(area)) {
        if (area.top == 0 && area.bottom == m_rowCount - 1) {
            m_head = static_cast<int>(physical(count % m_rowCount));
        } else if (count == 1) {
            const Row lost = row(area.top);
            for (int y = area.top; y < area.bottom; ++y) {
                row(y) = row(y + 1);
            }
            row(area.bottom) = lost;
        } else {
            for (int y = area.top; y + count <= area.bottom; ++y) {
                std::swap(row(y), row(y + count));
            }
        }
        for (int y = area.bottom - count + 1; y <= area.bottom; ++y) {
            clearRow(y, blank);
        }
        return;
    }
    for (int y = area.top; y <= area.bottom; ++y) {
        split(row(y), area.left);
        split(row(y), area.right + 1);
    }
    for (int y = area.top; y + count <= area.bottom; ++y) {
        moveCells(y + count, y, area.left, area.right);
    }
    for (int y = area.bottom - count + 1; y <= area.bottom; ++y) {
        erase(y, area.left, area.right, blank);
    }
}

void Grid::scrollDown(const Area &area, int count, Cell blank)
{
    count = std::min(count, area.bottom - area.top + 1);
    if (isFullWidth(area)) {
        if (area.top == 0 && area.bottom == m_rowCount - 1) {
            m_head = static_cast<int>(physical((m_rowCount - count) % m_rowCount));
        } else {
            for (int y = area.bottom; y - count >= area.top; --y) {
                std::swap(row(y), row(y - count));
            }
        }
        for (int y = area.top; y < area.top + count; ++y) {
            clearRow(y, blank);
        }
        return;
    }
    for (int y = area.top; y <= area.bottom; ++y) {
        split(row(y), area.left);
        split(row(y), area.right + 1);
    }
    for (int y = area.bottom; y - count >= area.top; --y) {
        moveCells(y - count, y, area.left, area.right);
    }
    for (int y = area.top; y < area.top + count; ++y) {
        erase(y, area.left, area.right, blank);
    }
}

void Grid::copy(const Area &from, int top, int left)
{
    const int height = std::min(from.bottom - from.top + 1, m_rowCount - top);
    const int width = std::min(from.right - from.left + 1, m_columns - left);
    if (height <= 0 || width <= 0) {
        return;
    }
    std::vector<Cell> buffer(static_cast<size_t>(height) * static_cast<size_t>(width));
    bool wide = false;
    for (int y = 0; y < height; ++y) {
        Cell *out = buffer.data() + y * width;
        wide = wide || row(from.top + y).has(Row::HasWide);
        for (int x = 0; x < width; ++x) {
            out[x] = cell(from.top + y, from.left + x);
        }
        // A half of a wide character does not travel alone.
        if (out[0].isTail()) {
            out[0].code = 0;
        }
        if (out[width - 1].isWide()) {
            out[width - 1].code = 0;
        }
    }
    for (int y = 0; y < height; ++y) {
        Row &to = row(top + y);
        split(to, left);
        split(to, left + width);
        extend(to, left + width);
        move(to.cells + left, buffer.data() + y * width, width);
        to.set(Row::Dirty);
        if (wide) {
            to.set(Row::HasWide);
        }
    }
}

void Grid::touchAll()
{
    for (Row &each : m_rows) {
        each.set(Row::Dirty);
    }
}

void Grid::resize(int columns, int rows)
{
    Grid changed(columns, rows);
    for (int y = 0; y < std::min(rows, m_rowCount); ++y) {
        Row &from = row(y);
        split(from, columns);
        Row &to = changed.row(y);
        Cell *cells = to.cells;
        to = from;
        to.cells = cells;
        to.length = static_cast<uint16_t>(std::min<int>(from.length, columns));
        to.set(Row::Wrapped, false);
        move(to.cells, from.cells, to.length);
    }
    changed.touchAll();
    *this = std::move(changed);
}

} // namespace vt
