#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vt
{

namespace
{

/// How many bytes from `at` are printable ASCII.
size_t asciiRun(const uint8_t *at, const uint8_t *end)
{
    const uint8_t *const start = at;
#if defined(__SSE2__)
    // As signed bytes, everything that is not printable ASCII is below 0x20, but for DEL.
    const __m128i space = _mm_set1_epi8(0x1f);
    const __m128i del = _mm_set1_epi8(0x7f);
    for (; end - at >= 16; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const __m128i good = _mm_andnot_si128(_mm_cmpeq_epi8(bytes, del), _mm_cmpgt_epi8(bytes, space));
        const auto bad = static_cast<unsigned>(_mm_movemask_epi8(good)) ^ 0xffffu;
        if (bad != 0) {
            return static_cast<size_t>(at - start) + static_cast<size_t>(std::countr_zero(bad));
        }
    }
#endif
    while (at < end && *at >= 0x20 && *at < 0x7f) {
        ++at;
    }
    return static_cast<size_t>(at - start);
}

/// Writes `count` cells from bytes.
void expand(Cell *out, const uint8_t *bytes, int count, StyleId style)
{
    int x = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i styles = _mm_set1_epi32(static_cast<int>(style));
    for (; x + 8 <= count; x += 8) {
        const __m128i raw = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(bytes + x));
        const __m128i words = _mm_unpacklo_epi8(raw, zero);
        const __m128i low = _mm_unpacklo_epi16(words, zero);
        const __m128i high = _mm_unpackhi_epi16(words, zero);
        auto *to = reinterpret_cast<__m128i *>(out + x);
        _mm_storeu_si128(to, _mm_unpacklo_epi32(low, styles));
        _mm_storeu_si128(to + 1, _mm_unpackhi_epi32(low, styles));
        _mm_storeu_si128(to + 2, _mm_unpacklo_epi32(high, styles));
        _mm_storeu_si128(to + 3, _mm_unpackhi_epi32(high, styles));
    }
#endif
    for (; x < count; ++x) {
        out[x] = {bytes[x], style};
    }
}

} // namespace

StyleId Emulation::pen()
{
    if (!m_penKnown) {
        if (m_styles.wantsSweep()) {
            sweepStyles();
        }
        m_penId = m_styles.intern(m_pen);
        m_penKnown = true;
    }
    return m_penId;
}

/// What erasing leaves: no character, on the current background colour.
Cell Emulation::blank()
{
    if (!m_blankKnown) {
        // No sweep here: callers in the middle of printing hold the pen's number.
        Style style;
        style.background = m_pen.background;
        m_blank = {0, m_styles.intern(style)};
        m_blankKnown = true;
    }
    return m_blank;
}

void Emulation::sweepStyles()
{
    std::vector<bool> used(m_styles.size(), false);
    std::unordered_set<uint32_t> links;
    const auto visit = [](Grid &grid, const auto &each) {
        for (int y = 0; y < grid.rows(); ++y) {
            Row &row = grid.row(y);
            for (int x = 0; x < row.length; ++x) {
                each(row.cells[x]);
            }
        }
    };
    for (Screen *screen : {&m_main, &m_alternate}) {
        visit(screen->grid, [&](const Cell &cell) { used[cell.style] = true; });
    }
    if (m_links.wantsSweep()) {
        for (StyleId id = 0; id < used.size(); ++id) {
            if (used[id] && m_styles[id].link != 0) {
                links.insert(m_styles[id].link);
            }
        }
        links.insert({m_currentLink, m_pen.link, m_main.saved.pen.link, m_alternate.saved.pen.link});
        m_history.forEachLink([&](uint32_t link) { links.insert(link); });
        m_links.sweep(links);
    }
    const std::vector<StyleId> renamed = m_styles.sweep(used);
    for (Screen *screen : {&m_main, &m_alternate}) {
        visit(screen->grid, [&](Cell &cell) { cell.style = renamed[cell.style]; });
    }
    m_history.stylesRenamed();
    penChanged();
}

void Emulation::sweepClusters()
{
    std::vector<bool> used(m_clusters.size(), false);
    for (Screen *screen : {&m_main, &m_alternate}) {
        for (int y = 0; y < screen->grid.rows(); ++y) {
            const Row &row = screen->grid.row(y);
            for (int x = 0; x < row.length; ++x) {
                m_clusters.mark(row.cells[x].code, used);
            }
        }
    }
    m_clusters.mark(m_lastPrinted, used);
    const std::vector<uint32_t> renamed = m_clusters.sweep(used);
    const auto rename = [&](uint32_t &code) {
        if ((code & Cell::Cluster) != 0) {
            code = (code & ~Cell::ClusterNumber) | renamed[code & Cell::ClusterNumber];
        }
    };
    for (Screen *screen : {&m_main, &m_alternate}) {
        for (int y = 0; y < screen->grid.rows(); ++y) {
            const Row &row = screen->grid.row(y);
            for (int x = 0; x < row.length; ++x) {
                rename(row.cells[x].code);
            }
        }
    }
    rename(m_lastPrinted);
}

void Emulation::updateTextPath()
{
    m_plainText = m_singleShift == 0 && !mode(Mode::Insert) && !m_statusDisplayActive &&
                  m_charsets.designated[m_charsets.left] == Charset::Ascii;
}

int Emulation::rightLimit(const Row &row) const
{
    const int last = row.size == LineSize::Normal ? columns() - 1 : columns() / 2 - 1;
    return m_x <= m_right ? std::min(m_right, std::max(last, 0)) : std::max(last, 0);
}

const uint8_t *Emulation::text(const uint8_t *at, const uint8_t *end)
{
    if (m_decodeNeed != 0) {
        at = resumeUtf8(at, end);
    }
    m_controlSeen = false;
    if (m_parser.isInSequence()) {
        return at;
    }
    while (at < end) {
        const uint8_t byte = *at;
        if (byte >= 0x20 && byte < 0x7f) {
            if (m_plainText && end - at > 1 && at[1] < 0x20 && printOne(byte)) {
                return at + 1;
            }
            const auto count = static_cast<int>(std::min<size_t>(asciiRun(at, end), 1 << 20));
            if (m_plainText && !m_afterPrepend) {
                printAscii(at, count);
                at += count;
            } else {
                for (int each = 0; each < count && !(m_plainText && !m_afterPrepend); ++each) {
                    printByte(*at++);
                }
            }
        } else if (byte < 0x20) {
            return at;
        } else if (byte == 0x7f) {
            ++at;
        } else if (m_parser.isUtf8()) {
            at = printUtf8(at, end);
            if (m_controlSeen) {
                m_controlSeen = false;
                return at;
            }
        } else if (byte < 0xa0) {
            m_parser.control1(byte);
            return at + 1;
        } else {
            printByte(byte);
            ++at;
        }
    }
    return at;
}

/// A single character, as full-screen programs place them. Returns false if its place is not an ordinary one.
bool Emulation::printOne(uint8_t byte)
{
    Row &row = m_grid->row(m_y);
    if (m_afterPrepend || m_x >= rightLimit(row) || row.has(Row::HasWide)) {
        return false;
    }
    const StyleId style = pen();
    m_segmenter.afterPlain();
    m_lastPrinted = byte;
    Grid::extend(row, m_x);
    row.cells[m_x++] = {byte, style};
    row.length = static_cast<uint16_t>(std::max<int>(row.length, m_x));
    row.set(Row::Dirty);
    return true;
}

void Emulation::printAscii(const uint8_t *at, int count)
{
    const StyleId style = pen();
    m_segmenter.afterPlain();
    m_lastPrinted = at[count - 1];
    while (count > 0) {
        if (m_pendingWrap) {
            wrap();
        }
        Row &row = m_grid->row(m_y);
        const int right = rightLimit(row);
        m_x = std::min(m_x, right);
        const int room = right - m_x + 1;
        int taken = std::min(count, room);
        if (count > room && !mode(Mode::Autowrap)) {
            // What does not fit overwrites the last column; only the last of it is seen.
            m_grid->split(row, right);
            taken = count;
            if (room > 1) {
                Grid::extend(row, m_x);
                m_grid->split(row, m_x);
                expand(row.cells + m_x, at, room - 1, style);
                row.length = static_cast<uint16_t>(std::max<int>(row.length, right));
            }
            Grid::extend(row, right);
            m_grid->split(row, right + 1);
            row.cells[right] = {at[count - 1], style};
            row.length = static_cast<uint16_t>(std::max<int>(row.length, right + 1));
            row.set(Row::Dirty);
            m_x = right + 1;
        } else {
            if (row.has(Row::HasWide)) {
                m_grid->split(row, m_x);
                m_grid->split(row, m_x + taken);
            }
            Grid::extend(row, m_x);
            expand(row.cells + m_x, at, taken, style);
            m_x += taken;
            row.length = static_cast<uint16_t>(std::max<int>(row.length, m_x));
            row.set(Row::Dirty);
        }
        if (m_x > right) {
            m_x = right;
            m_pendingWrap = true;
        }
        at += taken;
        count -= taken;
    }
}

void Emulation::wrap()
{
    m_pendingWrap = false;
    if (!mode(Mode::Autowrap)) {
        return;
    }
    Row &row = m_grid->row(m_y);
    if (m_left == 0 && m_right == columns() - 1) {
        row.set(Row::Wrapped);
    }
    row.set(Row::Newline, false);
    index();
    m_x = m_left;
}

/// A byte that a character set, a single shift or insert mode makes something else than itself.
void Emulation::printByte(uint8_t byte)
{
    const bool right = byte >= 0xa0;
    const uint8_t which = m_singleShift != 0 ? m_singleShift : right ? m_charsets.right : m_charsets.left;
    m_singleShift = 0;
    Charset set = m_charsets.designated[which];
    if (right && set == Charset::Ascii) {
        set = Charset::Latin1;
    }
    if (isNational(set) && !mode(Mode::NationalSets)) {
        set = Charset::Ascii;
    }
    updateTextPath();
    printCodePoint(translate(set, byte & 0x7fu));
}

void Emulation::printCodePoint(char32_t codePoint)
{
    if (m_statusDisplayActive) {
        return;
    }
    const unicode::Property property = unicode::property(codePoint);
    const unicode::Break kind = property.breakClass();
    if (kind == unicode::Other && !m_afterPrepend) {
        m_segmenter.afterPlain();
        putCharacter(codePoint, property.columns());
        return;
    }
    const bool breaks = m_segmenter.breaksBefore(kind);
    m_afterPrepend = kind == unicode::Prepend;
    if (!breaks) {
        join(codePoint, property);
    } else if (kind == unicode::Extend || kind == unicode::Zwj || kind == unicode::SpacingMark) {
        standaloneMark(codePoint, property);
    } else if (kind != unicode::Control || property.columns() > 0) {
        putCharacter(codePoint, std::max(property.columns(), 1));
    }
}

/// The cell that holds the character before the cursor; false if the cursor is at the left edge.
bool Emulation::cellBefore(int &x) const
{
    x = m_pendingWrap ? m_x : m_x - 1;
    const Row &row = m_grid->row(m_y);
    if (x > 0 && x < row.length && row.cells[x].isTail()) {
        --x;
    }
    return x >= 0 && x < row.length && row.cells[x].code != 0;
}

void Emulation::standaloneMark(char32_t codePoint, unicode::Property property)
{
    int x = 0;
    if (property.columns() == 2) {
        putCharacter(codePoint, 2);
    } else if (cellBefore(x)) {
        join(codePoint, property);
    } else if (property.breakClass() != unicode::Zwj) {
        if (m_clusters.wantsSweep()) {
            sweepClusters();
        }
        putCharacter(m_clusters.extend(' ', codePoint), 1);
    }
}

void Emulation::join(char32_t codePoint, unicode::Property property)
{
    int x = 0;
    if (!cellBefore(x)) {
        return;
    }
    if (m_clusters.wantsSweep()) {
        sweepClusters();
    }
    Row &row = m_grid->row(m_y);
    Cell &cell = row.cells[x];
    const uint32_t width = cell.code & Cell::Wide;
    const bool isSelector = codePoint == 0xfe0f || codePoint == 0xfe0e;
    const char32_t before = isSelector ? m_clusters.last(cell.code) : 0;
    cell.code = m_clusters.extend(cell.code, codePoint) | width;
    m_lastPrinted = cell.code & ~Cell::Wide;
    row.set(Row::Dirty);
    const bool varies = isSelector && unicode::property(before).hasVariations();
    const bool isPair = property.breakClass() == unicode::RegionalIndicator;
    if (width == 0 && ((codePoint == 0xfe0f && varies) || isPair ||
                       (property.breakClass() == unicode::Pictograph && property.columns() == 2))) {
        widenOrNarrow(row, x, true);
    } else if (width != 0 && codePoint == 0xfe0e && varies) {
        widenOrNarrow(row, x, false);
    }
}

/// Changes the columns of the character before the cursor, which moves along.
void Emulation::widenOrNarrow(Row &row, int x, bool wide)
{
    const int right = rightLimit(row);
    if (wide) {
        if (x + 1 > right) {
            return;
        }
        m_grid->split(row, x + 2);
        Grid::extend(row, x + 2);
        row.cells[x].code |= Cell::Wide;
        row.cells[x + 1] = {Cell::Tail, row.cells[x].style};
        row.set(Row::HasWide);
        m_x = x + 2;
        m_pendingWrap = m_x > right;
        m_x = std::min(m_x, right);
        return;
    }
    row.cells[x].code &= ~Cell::Wide;
    row.cells[x + 1].code = 0;
    m_x = x + 1;
    m_pendingWrap = false;
}

void Emulation::putCharacter(uint32_t code, int columnCount)
{
    const StyleId style = pen();
    m_lastPrinted = code;
    if (m_pendingWrap) {
        wrap();
    }
    int right = rightLimit(m_grid->row(m_y));
    m_x = std::min(m_x, right);
    if (columnCount == 2 && m_x + 1 > right) {
        if (right < 1 || right <= m_left) {
            columnCount = 1; // no place has two columns
        } else if (mode(Mode::Autowrap)) {
            wrap();
            right = rightLimit(m_grid->row(m_y));
        } else {
            m_x = right - 1;
        }
    }
    if (mode(Mode::Insert)) {
        m_grid->insertCells(m_y, m_x, right, columnCount, Cell{});
    }
    Row &row = m_grid->row(m_y);
    if (row.has(Row::HasWide)) {
        m_grid->split(row, m_x);
        m_grid->split(row, m_x + columnCount);
    }
    Grid::extend(row, m_x);
    row.cells[m_x] = {code, style};
    if (columnCount == 2) {
        row.cells[m_x].code |= Cell::Wide;
        row.cells[m_x + 1] = {Cell::Tail, style};
        row.set(Row::HasWide);
    }
    m_x += columnCount;
    row.length = static_cast<uint16_t>(std::max<int>(row.length, m_x));
    row.set(Row::Dirty);
    if (m_x > right) {
        m_x = right;
        m_pendingWrap = true;
    }
}

} // namespace vt
