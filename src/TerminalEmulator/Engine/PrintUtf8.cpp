#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <cstring>

namespace vt
{

namespace
{

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

} // namespace vt
