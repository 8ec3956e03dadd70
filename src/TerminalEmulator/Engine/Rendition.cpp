#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <charconv>

namespace vt
{

/// SGR codes without arguments.
void Emulation::applySgr(Style &style, int code)
{
    const auto set = [&](unsigned flags) { style.flags = static_cast<uint16_t>(style.flags | flags); };
    const auto clear = [&](unsigned flags) { style.flags = static_cast<uint16_t>(style.flags & ~flags); };
    switch (code) {
    case 0: {
        const bool isProtected = style.has(Style::Protected);
        const uint32_t link = style.link;
        style = Style{};
        style.link = link;
        set(isProtected ? Style::Protected : 0u);
        break;
    }
    case 1:
        set(Style::Bold);
        break;
    case 2:
        set(Style::Faint);
        break;
    case 3:
        set(Style::Italic);
        break;
    case 4:
        style.underline = Underline::Single;
        break;
    case 5:
        set(Style::Blink);
        break;
    case 6:
        set(Style::RapidBlink);
        break;
    case 7:
        set(Style::Inverse);
        break;
    case 8:
        set(Style::Invisible);
        break;
    case 9:
        set(Style::Strike);
        break;
    case 21:
        style.underline = Underline::Double;
        break;
    case 22:
        clear(Style::Bold | Style::Faint);
        break;
    case 23:
        clear(Style::Italic);
        break;
    case 24:
        style.underline = Underline::None;
        break;
    case 25:
        clear(Style::Blink | Style::RapidBlink);
        break;
    case 27:
        clear(Style::Inverse);
        break;
    case 28:
        clear(Style::Invisible);
        break;
    case 29:
        clear(Style::Strike);
        break;
    case 39:
        style.foreground = {};
        break;
    case 49:
        style.background = {};
        break;
    case 53:
        set(Style::Overline);
        break;
    case 55:
        clear(Style::Overline);
        break;
    case 59:
        style.underlineColor = {};
        break;
    default:
        if (code >= 30 && code <= 37) {
            style.foreground = Color::indexed(static_cast<uint8_t>(code - 30));
        } else if (code >= 40 && code <= 47) {
            style.background = Color::indexed(static_cast<uint8_t>(code - 40));
        } else if (code >= 90 && code <= 97) {
            style.foreground = Color::indexed(static_cast<uint8_t>(code - 90 + 8));
        } else if (code >= 100 && code <= 107) {
            style.background = Color::indexed(static_cast<uint8_t>(code - 100 + 8));
        }
    }
}

/// The colour behind an SGR 38, 48 or 58 at parameter `at`: "5;n", "2;r;g;b", or with colons "5:n", "2:r:g:b" and
/// "2:space:r:g:b" (ITU T.416). Returns the last parameter that belonged to it.
int Emulation::extendedColor(const Sequence &s, int at, Color &color) const
{
    const auto byte = [&](int index) { return static_cast<uint8_t>(std::clamp(s.value(index), 0, 255)); };
    if (at + 1 < s.count && s.isSub(at + 1)) {
        int end = at + 1;
        while (end + 1 < s.count && s.isSub(end + 1)) {
            ++end;
        }
        const int kind = s.value(at + 1);
        if (kind == 5 && end >= at + 2) {
            color = Color::indexed(byte(at + 2));
        } else if (kind == 2 && end >= at + 4) {
            const int first = end >= at + 5 ? at + 3 : at + 2;
            color = Color::rgb(byte(first), byte(first + 1), byte(first + 2));
        }
        return end;
    }
    if (s.value(at + 1) == 5 && at + 2 < s.count) {
        color = Color::indexed(byte(at + 2));
        return at + 2;
    }
    if (s.value(at + 1) == 2 && at + 4 < s.count) {
        color = Color::rgb(byte(at + 2), byte(at + 3), byte(at + 4));
        return at + 4;
    }
    return s.count;
}

void Emulation::sgr(const Sequence &s)
{
    penChanged();
    if (s.count == 0) {
        applySgr(m_pen, 0);
        return;
    }
    for (int at = 0; at < s.count; ++at) {
        const int code = s.value(at);
        const bool hasSub = at + 1 < s.count && s.isSub(at + 1);
        switch (code) {
        case 38:
            at = extendedColor(s, at, m_pen.foreground);
            break;
        case 48:
            at = extendedColor(s, at, m_pen.background);
            break;
        case 58:
            at = extendedColor(s, at, m_pen.underlineColor);
            break;
        case 4:
            if (hasSub) {
                m_pen.underline = static_cast<Underline>(std::clamp(s.value(at + 1), 0, 5));
            } else {
                applySgr(m_pen, 4);
            }
            break;
        default:
            applySgr(m_pen, code);
        }
        while (at + 1 < s.count && s.isSub(at + 1)) {
            ++at;
        }
    }
}

/// The parameters of an SGR that makes `style` out of anything.
std::string Emulation::sgrText(const Style &style) const
{
    std::string out = "0";
    constexpr std::pair<Style::Flag, const char *> Flags[] = {
        {Style::Bold, ";1"},      {Style::Faint, ";2"},      {Style::Italic, ";3"},
        {Style::Blink, ";5"},     {Style::RapidBlink, ";6"}, {Style::Inverse, ";7"},
        {Style::Invisible, ";8"}, {Style::Strike, ";9"},     {Style::Overline, ";53"},
    };
    for (const auto &[flag, text] : Flags) {
        if (flag == Style::Blink && style.underline != Underline::None) {
            out += style.underline == Underline::Single   ? ";4"
                   : style.underline == Underline::Double ? ";21"
                                                          : ";4:" + std::to_string(static_cast<int>(style.underline));
        }
        if (style.has(flag)) {
            out += text;
        }
    }
    const auto color = [&](const Color &value, int base) {
        if (value.kind == Color::Kind::Rgb) {
            out += ';' + std::to_string(base + 8) + ":2::" + std::to_string(value.red) + ':' +
                   std::to_string(value.green) + ':' + std::to_string(value.blue);
        } else if (value.kind == Color::Kind::Indexed && base != 50 && value.red < 8) {
            out += ';' + std::to_string(base + value.red);
        } else if (value.kind == Color::Kind::Indexed && base != 50 && value.red < 16) {
            out += ';' + std::to_string(base + 60 + value.red - 8);
        } else if (value.kind == Color::Kind::Indexed) {
            out += ';' + std::to_string(base + 8) + ":5:" + std::to_string(value.red);
        }
    };
    color(style.foreground, 30);
    color(style.background, 40);
    color(style.underlineColor, 50);
    return out;
}

void Emulation::decscusr(const Sequence &s)
{
    const int style = s.value(0);
    if (style <= 6) {
        m_cursorStyle = style;
        store(Mode::CursorBlink, style == 0 || style % 2 == 1);
        m_grid->touch(m_y);
    }
}

/// XTPUSHSGR: saves what the parameters name, as SGR does and with 30 and 31 (once 10 and 11) for the two colours;
/// all of it without parameters.
void Emulation::pushSgr(const Sequence &s)
{
    if (m_penStack.size() >= 10) {
        return;
    }
    SavedPen saved{m_pen, 0, false, false, false};
    if (s.count == 0) {
        saved = {m_pen, static_cast<uint16_t>(~Style::Protected), true, true, true};
    }
    for (int at = 0; at < s.count; ++at) {
        const int code = s.value(at);
        Style named;
        applySgr(named, code);
        const unsigned rapid = code == 5 ? Style::RapidBlink : 0u;
        saved.flags = static_cast<uint16_t>(saved.flags | named.flags | rapid);
        saved.underline = saved.underline || code == 4 || code == 21;
        saved.foreground = saved.foreground || code == 30 || code == 10;
        saved.background = saved.background || code == 31 || code == 11;
    }
    m_penStack.push_back(saved);
}

/// XTPOPSGR: brings back what was saved and leaves the rest.
void Emulation::popSgr(const Sequence & /*s*/)
{
    if (m_penStack.empty()) {
        return;
    }
    const SavedPen saved = m_penStack.back();
    m_penStack.pop_back();
    m_pen.flags = static_cast<uint16_t>((m_pen.flags & ~saved.flags) | (saved.style.flags & saved.flags));
    if (saved.underline) {
        m_pen.underline = saved.style.underline;
        m_pen.underlineColor = saved.style.underlineColor;
    }
    if (saved.foreground) {
        m_pen.foreground = saved.style.foreground;
    }
    if (saved.background) {
        m_pen.background = saved.style.background;
    }
    penChanged();
}

/// XTREPORTSGR: the rendition all cells of a rectangle share.
void Emulation::reportSgr(const Sequence &s)
{
    const std::optional<Area> where = area(s, 0);
    if (!where) {
        return;
    }
    Style common = m_styles[m_grid->cell(where->top, where->left).style];
    for (int y = where->top; y <= where->bottom; ++y) {
        for (int x = where->left; x <= where->right; ++x) {
            const Style &style = m_styles[m_grid->cell(y, x).style];
            common.flags &= style.flags;
            common.underline = common.underline == style.underline ? common.underline : Underline::None;
            common.foreground = common.foreground == style.foreground ? common.foreground : Color{};
            common.background = common.background == style.background ? common.background : Color{};
            common.underlineColor = common.underlineColor == style.underlineColor ? common.underlineColor : Color{};
        }
    }
    replyCsi(sgrText(common) + 'm');
}

} // namespace vt
