#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>

namespace vt
{

namespace
{

Options checked(Options options)
{
    options.columns = std::clamp(options.columns, 1, Options::MaxColumns);
    options.rows = std::clamp(options.rows, 1, Options::MaxRows);
    options.mostColumns = std::clamp(options.mostColumns, 1, Options::MaxColumns);
    options.mostRows = std::clamp(options.mostRows, 1, Options::MaxRows);
    options.scrollback = std::clamp(options.scrollback, 0, Options::MaxScrollback);
    options.cellWidth = std::max(options.cellWidth, 1);
    options.cellHeight = std::max(options.cellHeight, 1);
    return options;
}

} // namespace

Emulation::Emulation(const Options &options)
    : m_options(checked(options))
    , m_history(static_cast<size_t>(m_options.scrollback), m_styles, m_clusters)
    , m_parser(*this)
    , m_main{Grid(m_options.columns, m_options.rows), {}, {0}}
    , m_alternate{Grid(m_options.columns, m_options.rows), {}, {0}}
    , m_grid(&m_main.grid)
{
    buildDirect();
    fullReset();
    m_events.clear();
}

void Emulation::feed(std::string_view bytes)
{
    const auto *start = reinterpret_cast<const uint8_t *>(bytes.data());
    m_parser.feed(start, start + bytes.size());
}

bool Emulation::readLine(int64_t line, Line &out) const
{
    const int64_t onScreen = line - screenTop();
    if (onScreen >= 0 && onScreen < rows()) {
        const Row &row = m_grid->row(static_cast<int>(onScreen));
        out.cells.assign(row.cells, row.cells + row.length);
        out.wrapped = row.has(Row::Wrapped);
        out.size = row.size;
        return true;
    }
    const int64_t index = line - m_firstLine;
    if (isAlternate() || index < 0 || index >= static_cast<int64_t>(m_history.size())) {
        return false;
    }
    RowCopy row;
    row.cells.swap(out.cells);
    m_history.read(static_cast<size_t>(index), row);
    out.cells.swap(row.cells);
    out.wrapped = row.isWrapped();
    out.size = row.size;
    return true;
}

void Emulation::hardReset()
{
    m_parser.reset();
    fullReset();
}

void Emulation::clearHistory()
{
    m_firstLine += static_cast<int64_t>(m_history.size());
    m_history.clear();
    dropLostMarks();
    m_naturalTop.reset();
    m_allDamaged = true;
}

/// No row of the history is made of those above: they are gone with it, but the rows below keep their numbers.
void Emulation::clearAbove()
{
    const int above = isAlternate() ? 0 : m_y;
    if (above > 0) {
        m_grid->scrollUp({0, 0, rows() - 1, columns() - 1}, above, Cell{});
        m_firstLine += above;
        m_y = 0;
    }
    clearHistory();
}

void Emulation::setScrollback(size_t rows)
{
    const size_t before = m_history.size();
    m_history.setLimit(rows);
    m_firstLine += static_cast<int64_t>(before - m_history.size());
    m_allDamaged = true;
}

size_t Emulation::memoryUse() const
{
    const auto cells = static_cast<size_t>(columns()) * static_cast<size_t>(rows()) * sizeof(Cell);
    return m_history.bytes() + 2 * cells + m_styles.size() * sizeof(Style) + m_clusters.size() * 12 + m_links.bytes();
}

CursorState Emulation::cursor() const
{
    CursorState state;
    state.row = m_y;
    state.column = m_x;
    state.visible = mode(Mode::CursorVisible);
    state.pendingWrap = m_pendingWrap;
    state.blinking = mode(Mode::CursorBlink);
    state.shape = m_cursorStyle <= 2   ? CursorShape::Block
                  : m_cursorStyle <= 4 ? CursorShape::Underline
                                       : CursorShape::Bar;
    return state;
}

} // namespace vt
