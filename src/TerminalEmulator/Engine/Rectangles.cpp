#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <cstdio>

namespace vt
{

/// The rectangle in parameters `first` to `first` + 3 (top, left, bottom, right), clipped to the page or, in origin
/// mode, counted from and clipped to the margins. Nothing if it is empty.
std::optional<Area> Emulation::area(const Sequence &s, int first) const
{
    const bool origin = mode(Mode::Origin);
    const Area limits = origin ? marginArea() : Area{0, 0, rows() - 1, columns() - 1};
    const auto place = [&](int index, int low, int high, int fallback) {
        const int given = s.value(first + index);
        return given <= 0 ? fallback : std::clamp(given - 1 + low, low, high);
    };
    const Area result{
        place(0, limits.top, limits.bottom, limits.top), place(1, limits.left, limits.right, limits.left),
        place(2, limits.top, limits.bottom, limits.bottom), place(3, limits.left, limits.right, limits.right)};
    if (result.top > result.bottom || result.left > result.right) {
        return std::nullopt;
    }
    return result;
}

void Emulation::decfra(const Sequence &s)
{
    const int code = s.value(0, ' ');
    const std::optional<Area> where = area(s, 1);
    if (!where || !((code >= 0x20 && code <= 0x7e) || (code >= 0xa0 && code <= 0xff))) {
        return;
    }
    const Charset set = m_charsets.designated[code < 0x80 ? m_charsets.left : m_charsets.right];
    const bool plain = set == Charset::Ascii || (isNational(set) && !mode(Mode::NationalSets));
    const char32_t character =
        plain ? static_cast<char32_t>(code) : translate(set, static_cast<char32_t>(code & 0x7f));
    const Cell fill{character, pen()};
    for (int y = where->top; y <= where->bottom; ++y) {
        m_grid->erase(y, where->left, where->right, fill);
    }
}

void Emulation::decera(const Sequence &s)
{
    const std::optional<Area> where = area(s, 0);
    for (int y = where ? where->top : 0; where && y <= where->bottom; ++y) {
        m_grid->erase(y, where->left, where->right, blank());
    }
}

void Emulation::decsera(const Sequence &s)
{
    const std::optional<Area> where = area(s, 0);
    const Protection saved = m_protection;
    if (saved != Protection::Dec) {
        m_protection = Protection::Off;
    }
    for (int y = where ? where->top : 0; where && y <= where->bottom; ++y) {
        eraseRow(y, where->left, where->right);
    }
    m_protection = saved;
}

void Emulation::deccra(const Sequence &s)
{
    const std::optional<Area> from = area(s, 0);
    if (!from) {
        return;
    }
    const bool origin = mode(Mode::Origin);
    const Area limits = origin ? marginArea() : Area{0, 0, rows() - 1, columns() - 1};
    const int top = limits.top + s.atLeastOne(5) - 1;
    const int left = limits.left + s.atLeastOne(6) - 1;
    if (top > limits.bottom || left > limits.right) {
        return;
    }
    Area clipped = *from;
    clipped.bottom = std::min(clipped.bottom, clipped.top + limits.bottom - top);
    clipped.right = std::min(clipped.right, clipped.left + limits.right - left);
    m_grid->copy(clipped, top, left);
}

/// Applies `change` to the style of each cell of the area: a rectangle, or the stream of positions from its first
/// to its last corner (DECSACE).
template<class Change>
void Emulation::changeAttributes(const Sequence &s, Change change)
{
    const std::optional<Area> where = area(s, 0);
    if (!where) {
        return;
    }
    for (int y = where->top; y <= where->bottom; ++y) {
        const bool rectangle = m_attributeExtent == 2;
        const int left = rectangle || y == where->top ? where->left : 0;
        const int right = rectangle || y == where->bottom ? where->right : columns() - 1;
        if (left > right) {
            continue;
        }
        Row &row = m_grid->row(y);
        Grid::extend(row, right + 1);
        row.set(Row::Dirty);
        StyleId before = 0;
        StyleId after = 0;
        bool known = false;
        for (int x = left; x <= right; ++x) {
            if (!known || row.cells[x].style != before) {
                if (m_styles.wantsSweep()) {
                    sweepStyles();
                }
                known = true;
                before = row.cells[x].style;
                Style style = m_styles[before];
                change(style);
                after = m_styles.intern(style);
            }
            row.cells[x].style = after;
        }
    }
    penChanged();
}

void Emulation::deccara(const Sequence &s)
{
    changeAttributes(s, [&](Style &style) {
        for (int at = 4; at < std::max(s.count, 5); ++at) {
            const int code = s.value(at);
            if (code == 0) {
                for (const int off : {22, 24, 25, 27, 28}) {
                    applySgr(style, off);
                }
            } else if (code == 1 || code == 4 || code == 5 || code == 7 || code == 8 || (code >= 22 && code <= 28)) {
                applySgr(style, code);
            }
        }
    });
}

void Emulation::decrara(const Sequence &s)
{
    changeAttributes(s, [&](Style &style) {
        const auto toggle = [&](int code) {
            switch (code) {
            case 1:
                style.flags ^= Style::Bold;
                break;
            case 4:
                style.underline = style.underline == Underline::None ? Underline::Single : Underline::None;
                break;
            case 5:
                style.flags ^= Style::Blink;
                break;
            case 7:
                style.flags ^= Style::Inverse;
                break;
            case 8:
                style.flags ^= Style::Invisible;
                break;
            default:
                break;
            }
        };
        for (int at = 4; at < std::max(s.count, 5); ++at) {
            if (s.value(at) == 0) {
                for (const int code : {1, 4, 5, 7}) {
                    toggle(code);
                }
            } else {
                toggle(s.value(at));
            }
        }
    });
}

void Emulation::decsace(const Sequence &s)
{
    if (s.value(0) <= 2) {
        m_attributeExtent = s.value(0);
    }
}

void Emulation::xtchecksum(const Sequence &s)
{
    m_checksumFlags = s.value(0);
}

/// The checksum of DECRQCRA with the extensions of XTCHECKSUM: the negated sum of the characters and, as weights from
/// 4 to 128, of the renditions DEC terminals had. A cell that was never written counts as a space, and spaces at the
/// end of a row do not count, except for the very first cell.
uint32_t Emulation::checksum(const Area &where) const
{
    enum : unsigned { Positive = 1, NoAttributes = 2, NoTrim = 4, DrawnOnly = 8, Whole = 16, EightBits = 32 };

    const auto flags = static_cast<unsigned>(m_checksumFlags);
    uint32_t total = 0;
    uint32_t trimmed = 0;
    uint32_t embedded = 0;
    bool first = true;
    for (int y = where.top; y <= where.bottom; ++y) {
        for (int x = where.left; x <= where.right; ++x) {
            const Cell cell = m_grid->cell(y, x);
            const bool drawn = cell.code != 0;
            if (cell.isTail() || (!drawn && (flags & DrawnOnly) != 0)) {
                continue;
            }
            uint32_t value = drawn ? m_clusters.first(cell.code) : ' ';
            if ((flags & Whole) == 0) {
                value &= (flags & EightBits) != 0 ? 0xff : value < 0x100 && value >= 0xa0 ? 0xff : 0x7f;
            } else if (cell.isCluster()) {
                char32_t points[Clusters::MaxLength];
                const int count = m_clusters.expand(cell.code, points);
                for (int at = 1; at < count; ++at) {
                    value += points[at];
                }
            }
            const bool isSpace = value == ' ';
            const Style &style = m_styles[cell.style];
            uint32_t weight = 0;
            if ((flags & NoAttributes) == 0) {
                weight += style.has(Style::Protected) ? 0x04 : 0;
                weight += style.has(Style::Invisible) ? 0x08 : 0;
                weight += style.underline != Underline::None ? 0x10 : 0;
                weight += style.has(Style::Inverse) ? 0x20 : 0;
                weight += style.has(Style::Blink) ? 0x40 : 0;
                weight += style.has(Style::Bold) ? 0x80 : 0;
            }
            value += weight;
            total += value;
            if (first || !isSpace || weight != 0) {
                trimmed += value + embedded;
                embedded = 0;
            } else {
                embedded += value;
            }
            first = (flags & NoTrim) != 0;
        }
        if ((flags & NoTrim) == 0) {
            embedded = 0;
            first = false;
        }
    }
    const uint32_t result = (flags & NoTrim) != 0 ? total : trimmed;
    return ((flags & Positive) != 0 ? result : 0 - result) & 0xffff;
}

void Emulation::decrqcra(const Sequence &s)
{
    const std::optional<Area> where = area(s, 2);
    char text[32];
    std::snprintf(text, sizeof text, "%d!~%04X", s.value(0), where ? checksum(*where) : 0u);
    replyDcs(text);
}

} // namespace vt
