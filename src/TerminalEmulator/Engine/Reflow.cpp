#include "TerminalEmulator/Engine/Reflow.h"

#include <algorithm>
#include <numeric>

namespace vt
{

Reflow::Reflow(int oldColumns, int newColumns, std::vector<Point> points)
    : m_oldColumns(oldColumns)
    , m_newColumns(newColumns)
    , m_points(std::move(points))
    , m_source(m_points)
    , m_order(m_points.size())
{
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    std::sort(m_order.begin(), m_order.end(),
              [this](size_t a, size_t b) { return m_source[a].row < m_source[b].row; });
}

void Reflow::add(const RowCopy &row, std::vector<RowCopy> &out)
{
    if (m_lineRows > 0) {
        // A wide character that did not fit left the last column of the row before it empty.
        const auto width = static_cast<size_t>(m_oldColumns);
        const size_t filled = m_line.size() - m_rowStart;
        const bool gap = filled + 1 == width && !row.cells.empty() && row.cells[0].isWide();
        if (filled < width && !gap) {
            m_line.resize(m_rowStart + width);
        }
    }
    m_rowStart = m_line.size();
    for (; m_next < m_order.size() && m_source[m_order[m_next]].row <= m_rowsIn; ++m_next) {
        const size_t point = m_order[m_next];
        m_inLine.emplace_back(point, m_line.size() + static_cast<size_t>(m_source[point].column));
    }
    m_line.insert(m_line.end(), row.cells.begin(), row.cells.end());
    m_lastFlags = row.flags;
    m_size = row.size;
    ++m_lineRows;
    ++m_rowsIn;
    if (!row.isWrapped() || row.size != LineSize::Normal) {
        cut(out);
    } else if (m_line.size() >= m_longAt && m_newColumns > 1) {
        layFinished(out);
    }
}

void Reflow::finish(std::vector<RowCopy> &out)
{
    if (m_lineRows > 0) {
        cut(out);
    }
    for (; m_next < m_order.size(); ++m_next) {
        Point &point = m_points[m_order[m_next]];
        point.row = m_rowsOut + (m_source[m_order[m_next]].row - m_rowsIn);
        point.column = std::min(point.column, m_newColumns - 1);
    }
}

/// The length of the line without blanks at its end. Coloured blanks that reach the edge are not text either: they
/// are told as `fill`, to be laid up to the new edge.
size_t Reflow::trimmed(size_t keep, Cell &fill) const
{
    size_t length = m_line.size();
    const bool reachesEdge = length - m_rowStart == static_cast<size_t>(m_oldColumns);
    if (length > keep && reachesEdge && m_line.back().code == 0 && m_line.back().style != 0) {
        fill = m_line.back();
        while (length > keep && m_line[length - 1] == fill) {
            --length;
        }
        return length;
    }
    while (length > keep && m_line[length - 1] == Cell{}) {
        --length;
    }
    return length;
}

void Reflow::cut(std::vector<RowCopy> &out)
{
    const auto width = static_cast<size_t>(m_newColumns);
    size_t keep = 0;
    for (const auto &[point, offset] : m_inLine) {
        keep = m_source[point].keepsColumn ? std::max(keep, offset) : keep;
    }
    if (m_line.size() < keep) {
        m_line.resize(keep);
    }
    if (width < 2) {
        // No place has two columns: what is wide stands in one.
        std::erase_if(m_line, [](const Cell &cell) { return cell.isTail(); });
        for (Cell &cell : m_line) {
            cell.code &= ~Cell::Wide;
        }
        m_line.resize(std::max(m_line.size(), keep));
        m_rowStart = std::min(m_rowStart, m_line.size());
    }
    Cell fill;
    const size_t length = trimmed(keep, fill);
    lay(length, true, fill, out);
    m_line.clear();
    m_inLine.clear();
    m_lineRows = 0;
    m_rowStart = 0;
    m_longAt = LongLine;
}

/// Lays the rows that nothing to come can change, so that a line without an end takes little memory.
void Reflow::layFinished(std::vector<RowCopy> &out)
{
    size_t length = m_rowStart;
    while (length > 0 && m_line[length - 1].code == 0) {
        --length; // blanks may turn out to be the line's end
    }
    const size_t done = lay(length, false, {}, out);
    m_line.erase(m_line.begin(), m_line.begin() + static_cast<std::ptrdiff_t>(done));
    m_rowStart -= done;
    for (auto &[point, offset] : m_inLine) {
        offset -= done;
    }
    m_longAt = std::max(LongLine, 2 * m_line.size());
}

/// Lays the first `length` cells of the line in rows: all of them at the line's end, whole rows before. Returns how
/// many are done.
size_t Reflow::lay(size_t length, bool isEnd, Cell fill, std::vector<RowCopy> &out)
{
    const auto width = static_cast<size_t>(m_newColumns);
    size_t start = 0;
    size_t waiting = 0;
    std::sort(m_inLine.begin(), m_inLine.end(), [](const auto &a, const auto &b) { return a.second < b.second; });
    do {
        if (!isEnd && start + width >= length) {
            break;
        }
        size_t end = std::min(start + width, length);
        if (m_size != LineSize::Normal) {
            end = length;
        } else if (end < length && end > start + 1 && m_line[end].isTail()) {
            --end;
        }
        RowCopy row;
        row.cells.assign(m_line.begin() + static_cast<std::ptrdiff_t>(start),
                         m_line.begin() + static_cast<std::ptrdiff_t>(end));
        row.size = m_size;
        const bool last = end >= length;
        row.flags = static_cast<uint8_t>(m_lastFlags & Row::HasWide);
        if (std::any_of(row.cells.begin(), row.cells.end(), [](const Cell &cell) { return cell.isTail(); })) {
            row.flags |= Row::HasWide;
        }
        if (!last) {
            row.flags |= Row::Wrapped;
        } else {
            row.flags |= static_cast<uint8_t>(m_lastFlags & (Row::Newline | Row::Wrapped));
            if (fill.style != 0) {
                row.cells.resize(std::max(width, row.cells.size()), fill);
            }
        }
        if (row.cells.size() > width) {
            row.cells.resize(width);
            if (row.cells.back().isWide()) {
                row.cells.back() = {};
            }
        }
        for (; waiting < m_inLine.size() && (last || m_inLine[waiting].second < end); ++waiting) {
            const auto &[point, offset] = m_inLine[waiting];
            const size_t column = offset - std::min(offset, start);
            const size_t most = m_points[point].keepsColumn ? width : width - 1;
            m_points[point].row = m_rowsOut;
            m_points[point].column = static_cast<int>(std::min(column, most));
        }
        out.push_back(std::move(row));
        ++m_rowsOut;
        start = end;
    } while (start < length);
    m_inLine.erase(m_inLine.begin(), m_inLine.begin() + static_cast<std::ptrdiff_t>(waiting));
    return start;
}

} // namespace vt
