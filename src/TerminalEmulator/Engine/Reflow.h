#pragma once

#include "TerminalEmulator/Engine/History.h"

#include <cstdint>
#include <vector>

namespace vt
{

/// Lays rows of one width out in another: rows that autowrap joined are one line of text, cut anew. Rows go in one by
/// one, oldest first, and come out in order; going to another width and back gives the same rows.
class Reflow
{
public:
    /// A place to be carried along, as a row's number (counting from 0 as rows go in) and a column.
    struct Point {
        int64_t row = 0;
        int column = 0;
        bool keepsColumn = false; ///< blanks up to it count as text (the cursor)
    };

    Reflow(int oldColumns, int newColumns, std::vector<Point> points);

    /// Takes the next row; finished rows are appended to `out`.
    void add(const RowCopy &row, std::vector<RowCopy> &out);
    /// Finishes the last line.
    void finish(std::vector<RowCopy> &out);

    /// The points, in the new layout. A keepsColumn point just behind a full row gets that width as its column.
    const std::vector<Point> &points() const { return m_points; }

private:
    static constexpr size_t LongLine = 1 << 16; ///< cells of one line that are worth to be laid before its end

    void cut(std::vector<RowCopy> &out);
    void layFinished(std::vector<RowCopy> &out);
    size_t lay(size_t length, bool isEnd, Cell fill, std::vector<RowCopy> &out);
    size_t trimmed(size_t keep, Cell &fill) const;

    int m_oldColumns;
    int m_newColumns;
    std::vector<Point> m_points;
    std::vector<Point> m_source;
    std::vector<std::pair<size_t, size_t>> m_inLine; ///< point and its offset in the line
    std::vector<Cell> m_line;                        ///< of the line, what is not laid yet
    size_t m_longAt = LongLine;
    size_t m_lineRows = 0;
    uint8_t m_lastFlags = 0;
    LineSize m_size = LineSize::Normal;
    size_t m_rowStart = 0; ///< where the last row begins in the line
    int64_t m_rowsIn = 0;
    int64_t m_rowsOut = 0;
    size_t m_next = 0; ///< first point, in order of rows, not yet met
    std::vector<size_t> m_order;
};

} // namespace vt
