#pragma once

#include "TerminalEmulator/Engine/Cell.h"

#include <algorithm>
#include <vector>

namespace vt
{

/// One row of a grid. Cells at and beyond `length` were never touched: they read as blank in the default style,
/// and their memory holds rubbish.
struct Row {
    enum Flag : uint8_t {
        Wrapped = 1, ///< the text goes on in the next row: autowrap ended this one
        HasWide = 2, ///< a wide character may be in it
        Newline = 4, ///< a line feed ended it
        Dirty = 8,   ///< changed since damage was last taken
    };

    Cell *cells = nullptr;
    uint16_t length = 0;
    uint8_t flags = 0;
    LineSize size = LineSize::Normal;

    bool has(Flag flag) const { return (flags & flag) != 0; }

    void set(Flag flag, bool on = true) { flags = static_cast<uint8_t>(on ? flags | flag : flags & ~flag); }
};

/// Rectangle of cells, zero-based, all four sides inside.
struct Area {
    int top;
    int left;
    int bottom;
    int right;
};

/// The visible rows of one screen buffer: a ring, so that scrolling the whole of it moves only its head. All
/// coordinates are zero-based and must lie inside; every operation keeps wide characters whole or blanks both halves.
class Grid
{
public:
    Grid(int columns, int rows);

    int columns() const { return m_columns; }

    int rows() const { return m_rowCount; }

    Row &row(int y) { return m_rows[physical(y)]; }

    const Row &row(int y) const { return m_rows[physical(y)]; }

    Cell cell(int y, int x) const;

    /// Fills with blanks up to `length`, so that cells below it can be written one by one.
    static void extend(Row &row, int length)
    {
        if (row.length < length) {
            std::fill(row.cells + row.length, row.cells + length, Cell{});
            row.length = static_cast<uint16_t>(length);
        }
    }

    /// Blanks both halves of a wide character that straddles the boundary before column `x`.
    void split(Row &row, int x) const;

    /// Puts `blank` on columns from `left` to `right` of a row.
    void erase(int y, int left, int right, Cell blank);
    /// The same, but cells in a style with Style::Protected stay (`isProtected` tells by style).
    template<class Protected>
    void eraseUnprotected(int y, int left, int right, Cell blank, Protected isProtected);
    /// Makes a row blank and forgets its flags.
    void clearRow(int y, Cell blank);

    void insertCells(int y, int x, int right, int count, Cell blank);
    void deleteCells(int y, int x, int right, int count, Cell blank);

    /// Moves the rows (or, if `area` is narrower than the grid, its cells) up or down, bringing in blank ones.
    void scrollUp(const Area &area, int count, Cell blank);
    void scrollDown(const Area &area, int count, Cell blank);

    /// Copies cells to another place of this grid, overlap allowed; the target is clipped to the grid.
    void copy(const Area &from, int top, int left);

    void touch(int y) { row(y).set(Row::Dirty); }

    void touchAll();

    /// A plain change of size: rows and columns are cut off at the bottom and the right or added blank.
    void resize(int columns, int rows);

private:
    size_t physical(int y) const
    {
        const int at = m_head + y;
        return static_cast<size_t>(at >= m_rowCount ? at - m_rowCount : at);
    }

    bool isFullWidth(const Area &area) const { return area.left == 0 && area.right == m_columns - 1; }

    void moveCells(int fromRow, int toRow, int left, int right);

    int m_columns;
    int m_rowCount;
    int m_head = 0;
    std::vector<Row> m_rows;
    std::vector<Cell> m_storage;
};

template<class Protected>
void Grid::eraseUnprotected(int y, int left, int right, Cell blank, Protected isProtected)
{
    Row &target = row(y);
    for (int x = left; x <= right;) {
        int end = x;
        const bool keep = x < target.length && isProtected(target.cells[x].style);
        while (end <= right && (end < target.length && isProtected(target.cells[end].style)) == keep) {
            ++end;
        }
        if (!keep) {
            erase(y, x, end - 1, blank);
        }
        x = end;
    }
}

} // namespace vt
