#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Reflow.h"

#include <algorithm>

namespace vt
{

namespace
{

RowCopy copyOf(const Row &row)
{
    RowCopy copy;
    copy.cells.assign(row.cells, row.cells + row.length);
    copy.flags = row.flags;
    copy.size = row.size;
    return copy;
}

void put(Grid &grid, int y, const RowCopy &copy)
{
    Row &row = grid.row(y);
    const size_t length = std::min<size_t>(copy.cells.size(), static_cast<size_t>(grid.columns()));
    std::copy_n(copy.cells.begin(), length, row.cells);
    row.length = static_cast<uint16_t>(length);
    row.flags = static_cast<uint8_t>(copy.flags | Row::Dirty);
    row.size = copy.size;
}

} // namespace

void Emulation::resize(int newColumns, int newRows)
{
    newColumns = std::clamp(newColumns, 1, Options::MaxColumns);
    newRows = std::clamp(newRows, 1, Options::MaxRows);
    if (newColumns == columns() && newRows == rows()) {
        return;
    }
    const bool alternate = isAlternate();
    const int oldX = m_x;
    const int oldY = m_y;
    if (alternate) {
        // The main screen's cursor is the one it will get back.
        m_x = m_main.saved.isSet ? m_main.saved.x : m_x;
        m_y = m_main.saved.isSet ? m_main.saved.y : m_y;
        m_pendingWrap = m_main.saved.isSet && m_main.saved.pendingWrap;
    }
    reflow(newColumns, newRows);
    m_alternate.grid.resize(newColumns, newRows);
    m_alternate.saved.x = std::min(m_alternate.saved.x, newColumns - 1);
    m_alternate.saved.y = std::min(m_alternate.saved.y, newRows - 1);
    if (alternate) {
        if (m_main.saved.isSet) {
            m_main.saved.x = m_x;
            m_main.saved.y = m_y;
            m_main.saved.pendingWrap = m_pendingWrap;
        }
        m_x = std::min(oldX, newColumns - 1);
        m_y = std::min(oldY, newRows - 1);
        m_pendingWrap = false;
    }
    resetMargins();
    m_allDamaged = true;
    if (mode(Mode::SizeReports)) {
        replyCsi("48;" + std::to_string(newRows) + ';' + std::to_string(newColumns) + ';' +
                 std::to_string(newRows * m_options.cellHeight) + ';' +
                 std::to_string(newColumns * m_options.cellWidth) + 't');
    }
}

/// Lays the main screen and its history out anew. The line at the top of the screen stays there if the text below
/// it fits; what does not fit goes into the history and comes back when there is room again.
void Emulation::reflow(int newColumns, int newRows)
{
    Grid &grid = m_main.grid;
    const int oldColumns = grid.columns();
    const int oldRows = grid.rows();
    const auto historyRows = static_cast<int64_t>(m_history.size());
    const int64_t base = m_firstLine;
    m_y = std::min(m_y, oldRows - 1);
    int content = m_y;
    for (int y = content + 1; y < oldRows; ++y) {
        content = grid.row(y).length > 0 ? y : content;
    }
    if (!m_naturalTop) {
        m_naturalTop = base + historyRows;
        m_naturalFull = content == oldRows - 1;
    }

    // The points that move along: cursor, saved cursor, natural top, marks and whatever others asked for.
    std::vector<Reflow::Point> points;
    points.push_back({historyRows + m_y, m_x + (m_pendingWrap ? 1 : 0), true});
    points.push_back({historyRows + m_main.saved.y, m_main.saved.x, false});
    points.push_back({std::max<int64_t>(*m_naturalTop - base, 0), 0, false});
    const size_t firstMark = points.size();
    for (const Mark &mark : m_marks) {
        points.push_back({std::max<int64_t>(mark.position.line - base, 0), mark.position.column, false});
    }
    const size_t firstTracked = points.size();
    for (const Position *position : m_tracked) {
        points.push_back({std::max<int64_t>(position->line - base, 0), position->column, false});
    }

    std::vector<RowCopy> rowsOut;
    const bool sameWidth = newColumns == oldColumns;
    Reflow layout(oldColumns, newColumns, points);
    History history(0, m_styles, m_clusters);
    if (!sameWidth) {
        RowCopy row;
        for (int64_t at = 0; at < historyRows; ++at) {
            m_history.read(static_cast<size_t>(at), row);
            layout.add(row, rowsOut);
            for (const RowCopy &each : rowsOut) {
                history.pushUnlimited(each);
            }
            rowsOut.clear();
        }
        for (int y = 0; y <= content; ++y) {
            layout.add(copyOf(grid.row(y)), rowsOut);
        }
        layout.finish(rowsOut);
        points = layout.points();
        m_history.swapRows(history);
        ++m_reflows;
    } else {
        for (int y = 0; y <= content; ++y) {
            rowsOut.push_back(copyOf(grid.row(y)));
        }
    }

    // Where the screen begins in the whole.
    const auto kept = static_cast<int64_t>(m_history.size());
    const int64_t total = kept + static_cast<int64_t>(rowsOut.size());
    const int64_t lowest = std::max<int64_t>(total - newRows, 0);
    const int64_t natural = std::min(points[2].row, total);
    int64_t top = total - natural > newRows || m_naturalFull ? lowest : natural;
    top = std::min(top, points[0].row);
    top = m_history.limit() == 0 ? std::max(top, kept) : top;

    std::vector<RowCopy> above;
    while (static_cast<int64_t>(m_history.size()) > top) {
        RowCopy row;
        m_history.read(m_history.size() - 1, row);
        m_history.popNewest();
        above.push_back(std::move(row));
    }
    for (int64_t at = kept; at < top; ++at) {
        m_history.pushUnlimited(rowsOut[static_cast<size_t>(at - kept)]);
    }
    Grid fresh(newColumns, newRows);
    for (int y = 0; y < newRows && top + y < total; ++y) {
        const int64_t at = top + y;
        put(fresh, y,
            at < kept ? above[static_cast<size_t>(kept - 1 - at)] : rowsOut[static_cast<size_t>(at - kept)]);
    }
    fresh.touchAll();
    grid = std::move(fresh);

    m_naturalTop = base + points[2].row;
    const auto place = [&](const Reflow::Point &point) { return Position{base + point.row, point.column}; };
    for (size_t at = 0; at < m_marks.size(); ++at) {
        m_marks[at].position = place(points[firstMark + at]);
    }
    for (size_t at = 0; at < m_tracked.size(); ++at) {
        *m_tracked[at] = place(points[firstTracked + at]);
    }
    m_pendingWrap = points[0].column >= newColumns;
    m_x = std::min(points[0].column, newColumns - 1);
    m_y = static_cast<int>(std::clamp<int64_t>(points[0].row - top, 0, newRows - 1));
    m_main.saved.x = std::min(points[1].column, newColumns - 1);
    m_main.saved.y = static_cast<int>(std::clamp<int64_t>(points[1].row - top, 0, newRows - 1));

    const size_t before = m_history.size();
    m_history.setLimit(m_history.limit());
    m_firstLine += static_cast<int64_t>(before - m_history.size());
}

} // namespace vt
