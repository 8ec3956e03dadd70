#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>

namespace vt
{

void Emulation::moveTo(int x, int y)
{
    m_x = std::clamp(x, 0, columns() - 1);
    m_y = std::clamp(y, 0, rows() - 1);
    m_pendingWrap = false;
}

void Emulation::address(int row, int column)
{
    if (mode(Mode::Origin)) {
        moveTo(std::clamp(column + m_left, m_left, m_right), std::clamp(row + m_top, m_top, m_bottom));
    } else {
        moveTo(column, row);
    }
}

int Emulation::originRow() const
{
    return mode(Mode::Origin) ? m_y - m_top : m_y;
}

int Emulation::originColumn() const
{
    return mode(Mode::Origin) ? m_x - m_left : m_x;
}

void Emulation::index()
{
    if (m_y == m_bottom) {
        if (inColumnMargins()) {
            scrollUp(1);
        }
    } else if (m_y < rows() - 1) {
        ++m_y;
    }
}

void Emulation::reverseIndex()
{
    m_pendingWrap = false;
    if (m_y == m_top) {
        if (inColumnMargins()) {
            scrollDown(1);
        }
    } else if (m_y > 0) {
        --m_y;
    }
}

void Emulation::carriageReturn()
{
    m_x = mode(Mode::Origin) || m_x >= m_left ? m_left : 0;
    m_pendingWrap = false;
}

void Emulation::lineFeed()
{
    Row &row = m_grid->row(m_y);
    if (!row.has(Row::Wrapped)) {
        row.set(Row::Newline);
    }
    m_pendingWrap = false;
    index();
    if (mode(Mode::NewLine)) {
        carriageReturn();
    }
}

/// Tells of rows that scrolled inside the screen; columns that scroll alone take nothing along.
void Emulation::tellMoved(const Area &area, int by)
{
    if (area.left == 0 && area.right == columns() - 1) {
        linesMoved(screenTop() + area.top, screenTop() + area.bottom, by);
    }
}

/// Marks and the selection go with their lines; what leaves `first` to `last` is gone.
void Emulation::linesMoved(int64_t first, int64_t last, int by)
{
    if (!isAlternate()) {
        auto begin = m_marks.end();
        while (begin != m_marks.begin() && (begin - 1)->position.line >= first) {
            --begin;
        }
        const auto kept = std::remove_if(begin, m_marks.end(), [&](Mark &mark) {
            int64_t &line = mark.position.line;
            if (line > last) {
                return false;
            }
            line += by;
            return line < first || line > last;
        });
        m_marks.erase(kept, m_marks.end());
    }
    if (m_lineObserver) {
        m_lineObserver->linesMoved(first, last, by);
    }
}

/// Moves the text inside the margins up. What leaves the top of the main screen goes to the history.
void Emulation::scrollUp(int count)
{
    const Area area = marginArea();
    count = std::min(count, area.bottom - area.top + 1);
    const Cell empty = blank();
    if (area.top == 0 && !isAlternate() && area.left == 0 && area.right == columns() - 1) {
        for (int y = 0; y < count; ++y) {
            m_firstLine += m_history.push(m_grid->row(y)) ? 1 : 0;
        }
        m_naturalTop.reset();
        if (area.bottom < rows() - 1) {
            // The rows below stay where they are, which is further from the first line now.
            const int64_t below = screenTop() - count + area.bottom + 1;
            linesMoved(below, below + rows() + count, count);
        }
    } else {
        tellMoved(area, -count);
    }
    if (area.top == 0 && area.bottom == rows() - 1) {
        m_scrolled += count;
    } else {
        m_allDamaged = true;
    }
    m_grid->scrollUp(area, count, empty);
}

void Emulation::scrollDown(int count)
{
    const Cell empty = blank();
    m_allDamaged = true;
    tellMoved(marginArea(), std::min(count, rows()));
    m_grid->scrollDown(marginArea(), count, empty);
}

void Emulation::cursorUp(int count)
{
    const int top = m_y >= m_top ? m_top : 0;
    m_y = std::max(m_y - std::min(count, rows()), top);
    m_pendingWrap = false;
}

void Emulation::cursorDown(int count)
{
    const int bottom = m_y <= m_bottom ? m_bottom : rows() - 1;
    m_y = std::min(m_y + std::min(count, rows()), bottom);
    m_pendingWrap = false;
}

void Emulation::cursorForward(int count)
{
    const int right = rightLimit(m_grid->row(m_y));
    m_x = std::min(m_x + std::min(count, columns()), std::max(right, m_x));
    m_pendingWrap = false;
}

/// Whether the cursor, which is at the left edge, is in a line that begins a text rather than goes on with the one
/// before.
bool Emulation::beginsText(bool isTop) const
{
    if (!isTop && m_grid->row(m_y - 1).has(Row::Newline)) {
        return true;
    }
    // Wrapping inside column margins leaves no trace in the row.
    const bool wholeRows = m_left == 0 && m_right == columns() - 1;
    if (!wholeRows || (!isTop && m_grid->row(m_y - 1).has(Row::Wrapped))) {
        return false;
    }
    const Row &row = m_grid->row(m_y);
    return std::any_of(row.cells, row.cells + row.length, [](const Cell &cell) { return !cell.isEmpty(); });
}

/// With reverse wraparound (45) the cursor goes back over the left edge to the line before, but not over the
/// beginning of a text: a line feed ended the line before, or there is text in this one that is not the rest of it.
/// With the extended form (1045) it always does. From the top it goes to the bottom.
void Emulation::cursorBack(int count)
{
    int left = m_x < m_left ? 0 : m_left;
    const bool extended = mode(Mode::Autowrap) && mode(Mode::ReverseWrapExtended);
    if (!extended && !(mode(Mode::Autowrap) && mode(Mode::ReverseWrap))) {
        m_x = std::max(m_x - std::min(count, columns()), left);
        m_pendingWrap = false;
        return;
    }
    count = std::min(count, columns() * rows()) - (m_pendingWrap ? 1 : 0);
    m_pendingWrap = false;
    while (count > 0) {
        const int step = std::min(count, m_x - left);
        m_x -= step;
        count -= step;
        if (count == 0) {
            break;
        }
        const bool inside = inRowMargins();
        const bool isTop = m_y == (inside ? m_top : 0);
        if (!extended && beginsText(isTop)) {
            break;
        }
        if (isTop) {
            m_y = inside ? m_bottom : rows() - 1;
        } else {
            --m_y;
        }
        m_x = m_right;
        left = m_left;
        --count;
    }
}

void Emulation::tabForward(int count)
{
    // Inside or left of the margins a tab stops at the right one.
    const int right = rightLimit(m_grid->row(m_y));
    int x = m_x;
    for (; count > 0 && x < right; --count) {
        do {
            ++x;
        } while (x < right && !m_tabs[static_cast<size_t>(x)]);
    }
    m_x = std::max(m_x, x);
}

void Emulation::tabBack(int count)
{
    const int left = mode(Mode::Origin) ? m_left : 0;
    int x = m_x;
    for (; count > 0 && x > left; --count) {
        do {
            --x;
        } while (x > left && !m_tabs[static_cast<size_t>(x)]);
    }
    m_x = x;
    m_pendingWrap = false;
}

void Emulation::resetTabs()
{
    m_tabs.assign(Options::MaxColumns, false);
    for (size_t x = 0; x < m_tabs.size(); x += 8) {
        m_tabs[x] = true;
    }
}

void Emulation::saveCursor()
{
    SavedCursor &saved = (isAlternate() ? m_alternate : m_main).saved;
    saved = {m_x, m_y, m_pendingWrap, mode(Mode::Origin), m_pen, m_charsets, true};
    saved.pen.link = 0;
}

void Emulation::restoreCursor()
{
    const SavedCursor saved = (isAlternate() ? m_alternate : m_main).saved;
    Style pen = saved.pen;
    pen.link = m_currentLink;
    if (pen != m_pen) {
        m_pen = pen;
        penChanged();
    }
    m_charsets = saved.charsets;
    updateTextPath();
    store(Mode::Origin, saved.origin);
    if (saved.origin) {
        moveTo(std::clamp(saved.x, m_left, m_right), std::clamp(saved.y, m_top, m_bottom));
    } else {
        moveTo(saved.x, saved.y);
    }
    m_pendingWrap = saved.pendingWrap && m_x == saved.x;
}

void Emulation::resetMargins()
{
    m_top = 0;
    m_bottom = rows() - 1;
    m_left = 0;
    m_right = columns() - 1;
}

void Emulation::cuu(const Sequence &s)
{
    cursorUp(s.atLeastOne(0));
}

void Emulation::cud(const Sequence &s)
{
    cursorDown(s.atLeastOne(0));
}

void Emulation::cuf(const Sequence &s)
{
    cursorForward(s.atLeastOne(0));
}

void Emulation::cub(const Sequence &s)
{
    cursorBack(s.atLeastOne(0));
}

void Emulation::cnl(const Sequence &s)
{
    cursorDown(s.atLeastOne(0));
    carriageReturn();
}

void Emulation::cpl(const Sequence &s)
{
    cursorUp(s.atLeastOne(0));
    carriageReturn();
}

void Emulation::cha(const Sequence &s)
{
    address(originRow(), s.atLeastOne(0) - 1);
}

void Emulation::cup(const Sequence &s)
{
    address(s.atLeastOne(0) - 1, s.atLeastOne(1) - 1);
}

void Emulation::cht(const Sequence &s)
{
    tabForward(std::min(s.atLeastOne(0), columns()));
}

void Emulation::cbt(const Sequence &s)
{
    tabBack(std::min(s.atLeastOne(0), columns()));
}

void Emulation::vpa(const Sequence &s)
{
    address(s.atLeastOne(0) - 1, originColumn());
}

void Emulation::vpr(const Sequence &s)
{
    address(originRow() + std::min(s.atLeastOne(0), rows()), originColumn());
}

void Emulation::hpr(const Sequence &s)
{
    address(originRow(), originColumn() + std::min(s.atLeastOne(0), columns()));
}

void Emulation::tbc(const Sequence &s)
{
    switch (s.value(0)) {
    case 0:
        m_tabs[static_cast<size_t>(m_x)] = false;
        break;
    case 3:
        std::fill(m_tabs.begin(), m_tabs.end(), false);
        break;
    default:
        break;
    }
}

void Emulation::decst8c(const Sequence &s)
{
    if (s.value(0) == 5) {
        resetTabs();
    }
}

void Emulation::decstbm(const Sequence &s)
{
    const int top = s.atLeastOne(0);
    int bottom = s.value(1);
    if (bottom == 0 || bottom > rows()) {
        bottom = rows();
    }
    if (top < bottom) {
        m_top = top - 1;
        m_bottom = bottom - 1;
        address(0, 0);
    }
}

void Emulation::decslrm(const Sequence &s)
{
    if (!mode(Mode::LeftRightMargins)) {
        // Without margins the same sequence is the cursor save of the SCO console.
        if (s.count == 0) {
            saveCursor();
        }
        return;
    }
    const int left = s.atLeastOne(0);
    int right = s.value(1);
    if (right == 0 || right > columns()) {
        right = columns();
    }
    if (left < right) {
        m_left = left - 1;
        m_right = right - 1;
        address(0, 0);
    }
}

void Emulation::scorc(const Sequence & /*s*/)
{
    restoreCursor();
}

void Emulation::su(const Sequence &s)
{
    scrollUp(s.atLeastOne(0));
}

void Emulation::sd(const Sequence &s)
{
    // With five parameters it starts highlight tracking (mode 1001), which needs no answer here.
    if (s.count <= 1) {
        scrollDown(s.atLeastOne(0));
    }
}

void Emulation::hts(const Sequence & /*s*/)
{
    m_tabs[static_cast<size_t>(m_x)] = true;
}

void Emulation::ind(const Sequence & /*s*/)
{
    m_pendingWrap = false;
    index();
}

void Emulation::ri(const Sequence & /*s*/)
{
    reverseIndex();
}

void Emulation::nel(const Sequence & /*s*/)
{
    m_grid->row(m_y).set(Row::Newline);
    m_pendingWrap = false;
    index();
    carriageReturn();
}

void Emulation::decsc(const Sequence & /*s*/)
{
    saveCursor();
}

void Emulation::decrc(const Sequence & /*s*/)
{
    restoreCursor();
}

void Emulation::decbi(const Sequence & /*s*/)
{
    m_pendingWrap = false;
    if (m_x != m_left) {
        m_x = std::max(m_x - 1, 0);
    } else if (inRowMargins()) {
        shiftColumns(m_left, 1, true);
    }
}

void Emulation::decfi(const Sequence & /*s*/)
{
    m_pendingWrap = false;
    if (m_x != m_right) {
        m_x = std::min(m_x + 1, columns() - 1);
    } else if (inRowMargins()) {
        shiftColumns(m_left, 1, false);
    }
}

} // namespace vt
