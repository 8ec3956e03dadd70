#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <bit>
#include <cstring>

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

struct Decoded {
    char32_t codePoint = 0;
    int length = 0; ///< 0: malformed, cut by the end, or a C1 control
};

/// The character beyond ASCII at `at`.
[[gnu::always_inline]] inline Decoded decodeWhole(const uint8_t *at, const uint8_t *end)
{
    const auto rest = [at](int index) { return at[index] & 0x3fu; };
    const auto follows = [at](int index) { return (at[index] & 0xc0) == 0x80; };
    const uint8_t lead = *at;
    if ((lead & 0xf0) == 0xe0 && end - at >= 3 && follows(1) && follows(2)) {
        const char32_t code = (lead & 0xfu) << 12 | rest(1) << 6 | rest(2);
        return code >= 0x800 && (code & 0xf800) != 0xd800 ? Decoded{code, 3} : Decoded{};
    }
    if ((lead & 0xe0) == 0xc0 && end - at >= 2 && follows(1)) {
        const char32_t code = (lead & 0x1fu) << 6 | rest(1);
        return code >= 0xa0 ? Decoded{code, 2} : Decoded{};
    }
    if ((lead & 0xf8) == 0xf0 && end - at >= 4 && follows(1) && follows(2) && follows(3)) {
        const char32_t code = (lead & 7u) << 18 | rest(1) << 12 | rest(2) << 6 | rest(3);
        return code >= 0x10000 && code <= 0x10ffff ? Decoded{code, 4} : Decoded{};
    }
    return {};
}

/// Whether the eight bytes at `at` are all ASCII.
bool isLongAscii(const uint8_t *at, const uint8_t *end)
{
    uint64_t bytes = 0;
    if (end - at < 8) {
        return false;
    }
    std::memcpy(&bytes, at, 8);
    return (bytes & 0x8080808080808080u) == 0;
}

/// Whether a character of this class has a cell of its own wherever a cluster ends before it.
bool standsAlone(unicode::Break kind)
{
    return kind == unicode::Pictograph || kind == unicode::RegionalIndicator || kind >= unicode::HangulLV ||
           kind == unicode::HangulL;
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

/// Goes on with a character whose bytes were cut by the end of a block. An unfit byte ends it as U+FFFD and is looked
/// at anew (Unicode, 3.9, "U+FFFD substitution of maximal subparts").
const uint8_t *Emulation::resumeUtf8(const uint8_t *at, const uint8_t *end)
{
    while (at < end && m_decodeNeed != 0) {
        if (*at < m_decodeLow || *at > m_decodeHigh) {
            m_decodeNeed = 0;
            printCodePoint(0xfffd);
            return at;
        }
        m_decoded = m_decoded << 6 | (*at++ & 0x3fu);
        m_decodeLow = 0x80;
        m_decodeHigh = 0xbf;
        if (--m_decodeNeed == 0) {
            finishDecode(m_decoded);
        }
    }
    return at;
}

void Emulation::finishDecode(char32_t codePoint)
{
    if (codePoint < 0xa0) {
        m_controlSeen = true;
        m_parser.control1(static_cast<uint8_t>(codePoint));
    } else {
        printCodePoint(codePoint);
    }
}

/// Text of all kinds, a row at a time, so that what a row needs is done once. Ends before a control, a malformed or
/// cut character, and a longer stretch of ASCII, for which there is a faster way.
[[gnu::noinline]] const uint8_t *Emulation::printRun(const uint8_t *at, const uint8_t *const end)
{
    const StyleId style = pen();
    Row *row = nullptr; // the one being written, up to column x
    int right = 0;
    int x = 0;
    uint32_t code = 0;
    bool wide = false;
    bool plain = false; // the segmenter has not heard of the last character
    const auto tellSegmenter = [&] {
        if (plain) {
            m_segmenter.afterPlain();
            plain = false;
        }
    };
    const auto closeRow = [&] {
        if (row == nullptr) {
            return;
        }
        if (x < row->length && row->cells[x].isTail()) {
            row->cells[x].code = 0; // of a wide character whose first half is gone
        }
        m_lastPrinted = code;
        row->length = static_cast<uint16_t>(std::max<int>(row->length, x));
        row->set(Row::Dirty);
        if (wide) {
            row->set(Row::HasWide);
        }
        m_pendingWrap = x > right;
        m_x = std::min(x, right);
        row = nullptr;
    };
    while (at < end) {
        Decoded next{*at, 1};
        int columnCount = 1;
        if (*at < 0x80) {
            if (*at < 0x20 || *at == 0x7f || isLongAscii(at, end)) {
                break;
            }
            plain = true;
        } else {
            next = decodeWhole(at, end);
            if (next.length == 0) {
                break;
            }
            const unicode::Property property = unicode::property(next.codePoint);
            columnCount = property.columns();
            if (property.breakClass() == unicode::Other && columnCount > 0) {
                plain = true;
            } else {
                tellSegmenter();
                unicode::Segmenter after = m_segmenter;
                if (!standsAlone(property.breakClass()) || !after.breaksBefore(property.breakClass())) {
                    closeRow();
                    printCodePoint(next.codePoint);
                    at += next.length;
                    if (m_afterPrepend) {
                        return at;
                    }
                    continue;
                }
                m_segmenter = after;
                columnCount = std::max(columnCount, 1);
            }
        }
        at += next.length;
        if (row == nullptr || x + columnCount - 1 > right) {
            closeRow();
            if (m_pendingWrap) {
                wrap();
            }
            row = &m_grid->row(m_y);
            right = rightLimit(*row);
            x = std::min(m_x, right);
            if (x + columnCount - 1 > right) {
                row = nullptr;
                putCharacter(next.codePoint, columnCount);
                continue;
            }
            m_grid->split(*row, x);
            Grid::extend(*row, x);
            wide = false;
        }
        code = next.codePoint;
        row->cells[x] = {columnCount == 2 ? code | Cell::Wide : code, style};
        if (columnCount == 2) {
            row->cells[x + 1] = {Cell::Tail, style};
            wide = true;
        }
        x += columnCount;
    }
    tellSegmenter();
    closeRow();
    return at;
}

/// Prints characters beyond ASCII until the next byte is ASCII, a C1 control came or the block ends.
[[gnu::noinline]] const uint8_t *Emulation::printUtf8(const uint8_t *at, const uint8_t *end)
{
    while (at < end && *at >= 0x80) {
        if (m_plainText && !m_afterPrepend) {
            const uint8_t *const after = printRun(at, end);
            if (after != at) {
                at = after;
                continue;
            }
        }
        const uint8_t lead = *at;
        if (lead < 0xc2 || lead > 0xf4) {
            ++at;
            if (lead < 0xa0 && m_parser.takesEightBitControls()) {
                m_controlSeen = true;
                m_parser.control1(lead);
                return at;
            }
            printCodePoint(0xfffd);
            continue;
        }
        if (const Decoded whole = decodeWhole(at, end); whole.length > 0) {
            printCodePoint(whole.codePoint);
            at += whole.length;
            continue;
        }
        m_decodeLow = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
        m_decodeHigh = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
        m_decodeNeed = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : 1;
        m_decoded = lead & (0x3fu >> m_decodeNeed);
        at = resumeUtf8(at + 1, end);
        if (m_controlSeen || m_decodeNeed != 0) {
            return at;
        }
    }
    return at;
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
