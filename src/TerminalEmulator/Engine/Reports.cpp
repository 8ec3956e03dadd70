#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Hex.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vt
{

namespace
{

/// What the host has not taken by then is lost: it does not read, and memory is finite.
constexpr size_t MaxReplies = 1 << 20;

/// Percentages as DEC's hue (blue is 0), lightness and saturation.
std::array<int, 3> hls(int red, int green, int blue)
{
    const int high = std::max({red, green, blue});
    const int low = std::min({red, green, blue});
    const int spread = high - low;
    int hue = 0;
    if (spread > 0) {
        hue = high == red     ? 120 + 60 * (green - blue) / spread
              : high == green ? 240 + 60 * (blue - red) / spread
                              : 60 * (red - green) / spread;
    }
    const int sum = high + low;
    const int saturation = spread == 0 ? 0 : 100 * spread / (sum <= 100 ? sum : 200 - sum);
    return {(hue + 360) % 360, sum / 2, saturation};
}

} // namespace

void Emulation::reply(std::string_view text)
{
    if (m_replies.size() + text.size() <= MaxReplies) {
        m_replies += text;
    }
}

void Emulation::replyCsi(std::string_view body)
{
    reply(m_eightBitReplies ? "\x9b" : "\x1b[");
    reply(body);
}

void Emulation::replyDcs(std::string_view body)
{
    reply(m_eightBitReplies ? "\x90" : "\x1bP");
    reply(body);
    reply(m_eightBitReplies ? "\x9c" : "\x1b\\");
}

void Emulation::replyOsc(std::string_view body, bool bell)
{
    reply(m_eightBitReplies ? "\x9d" : "\x1b]");
    reply(body);
    reply(bell ? "\a" : m_eightBitReplies ? "\x9c" : "\x1b\\");
}

/// VT520 class: 132 columns, printer, selective erase, national sets, technical characters, locator port, terminal
/// state interrogation, user windows, horizontal scrolling, colour, rectangles, text locator.
void Emulation::da1(const Sequence &s)
{
    if (s.value(0) == 0) {
        replyCsi("?65;1;2;6;9;15;16;17;18;21;22;28;29c");
    }
}

void Emulation::da2(const Sequence &s)
{
    if (s.value(0) == 0) {
        replyCsi(">64;390;0c");
    }
}

void Emulation::da3(const Sequence &s)
{
    if (s.value(0) == 0) {
        replyDcs("!|00000000");
    }
}

void Emulation::decid(const Sequence & /*s*/)
{
    da1({});
}

void Emulation::dsr(const Sequence &s)
{
    switch (s.value(0)) {
    case 5:
        replyCsi("0n");
        break;
    case 6:
        replyCsi(std::to_string(originRow() + 1) + ';' + std::to_string(originColumn() + 1) + 'R');
        break;
    default:
        break;
    }
}

/// DEC's status reports (VT510 programmer information, DSR).
void Emulation::decdsr(const Sequence &s)
{
    switch (s.value(0)) {
    case 6:
        replyCsi("?" + std::to_string(originRow() + 1) + ';' + std::to_string(originColumn() + 1) +
                 (m_level >= 4 ? ";1R" : "R"));
        break;
    case 15: // printer: none
        replyCsi("?13n");
        break;
    case 25: // user-defined keys: unlocked
        replyCsi("?20n");
        break;
    case 26: // keyboard: North American, ready, LK450-type
        replyCsi(m_level >= 4 ? "?27;1;0;0n" : m_level >= 3 ? "?27;1;0n" : "?27;1n");
        break;
    case 53:
    case 55: // locator: ready
        replyCsi("?50n");
        break;
    case 56: // a mouse
        replyCsi("?57;1n");
        break;
    case 62: // macro space, in units of 16 bytes
        replyCsi("0*{");
        break;
    case 63: // memory checksum
        replyDcs(std::to_string(s.value(1)) + "!~0000");
        break;
    case 75: // data integrity: no errors
        replyCsi("?70n");
        break;
    case 85: // multiple sessions: not configured
        replyCsi("?83n");
        break;
    case 996: // colour scheme
        if (const Rgb back = m_palette.dynamic(Palette::Background).rgb(); true) {
            replyCsi(back.red * 299 + back.green * 587 + back.blue * 114 < 127500 ? "?997;1n" : "?997;2n");
        }
        break;
    default:
        break;
    }
}

void Emulation::xtversion(const Sequence &s)
{
    if (s.value(0) == 0) {
        replyDcs(">|" + m_options.name + '(' + m_options.version + ')');
    }
}

void Emulation::decreqtparm(const Sequence &s)
{
    if (s.value(0) <= 1) {
        replyCsi(std::to_string(s.value(0) + 2) + ";1;1;128;128;1;0x");
    }
}

/// DECCIR (VT510 programmer information): where the cursor is and everything DECSC saves.
std::string Emulation::cursorInformation() const
{
    const auto bits = [](unsigned value) { return std::string(1, static_cast<char>(0x40 + value)); };
    std::string out = std::to_string(m_y + 1) + ';' + std::to_string(m_x + 1) + ";1;";
    out += bits((m_pen.has(Style::Bold) ? 1u : 0u) | (m_pen.underline != Underline::None ? 2u : 0u) |
                (m_pen.has(Style::Blink) ? 4u : 0u) | (m_pen.has(Style::Inverse) ? 8u : 0u));
    out += ';' + bits(m_pen.has(Style::Protected) ? 1u : 0u);
    out += ';' + bits((mode(Mode::Origin) ? 1u : 0u) | (m_singleShift == 2 ? 2u : 0u) |
                      (m_singleShift == 3 ? 4u : 0u) | (m_pendingWrap ? 8u : 0u));
    out += ';' + std::to_string(m_charsets.left) + ';' + std::to_string(m_charsets.right) + ';';
    unsigned sizes = 0;
    std::string names;
    for (unsigned slot = 0; slot < 4; ++slot) {
        sizes |= has96(m_charsets.designated[slot]) ? 1u << slot : 0u;
        names += designatorOf(m_charsets.designated[slot]);
    }
    return out + bits(sizes) + ';' + names;
}

void Emulation::decrqpsr(const Sequence &s)
{
    if (s.value(0) == 1) {
        replyDcs("1$u" + cursorInformation());
    } else if (s.value(0) == 2) {
        std::string stops;
        for (int x = 0; x < columns(); ++x) {
            if (m_tabs[static_cast<size_t>(x)]) {
                stops += (stops.empty() ? "" : "/") + std::to_string(x + 1);
            }
        }
        replyDcs("2$u" + stops);
    }
}

/// DECRSPS: takes back what DECRQPSR told.
void Emulation::restorePresentation(int kind, std::string_view data)
{
    const auto take = [&](char separator) {
        const size_t end = data.find(separator);
        const std::string_view field = data.substr(0, end);
        data.remove_prefix(end == std::string_view::npos ? data.size() : end + 1);
        return field;
    };
    const auto number = [](std::string_view text) {
        int value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    };
    if (kind == 2) {
        std::fill(m_tabs.begin(), m_tabs.end(), false);
        while (!data.empty()) {
            const int column = number(take('/'));
            if (column >= 1 && column <= static_cast<int>(m_tabs.size())) {
                m_tabs[static_cast<size_t>(column - 1)] = true;
            }
        }
        return;
    }
    if (kind != 1 || std::count(data.begin(), data.end(), ';') < 9) {
        return;
    }
    const int row = number(take(';'));
    const int column = number(take(';'));
    take(';');
    const auto flags = [](std::string_view text) {
        return text.empty() ? 0u : static_cast<unsigned>(text[0]) & 0x1fu;
    };
    const unsigned rendition = flags(take(';'));
    const unsigned attributes = flags(take(';'));
    const unsigned state = flags(take(';'));
    applySgr(m_pen, 0);
    for (const auto &[bit, code] : {std::pair{1u, 1}, {2u, 4}, {4u, 5}, {8u, 7}}) {
        if ((rendition & bit) != 0) {
            applySgr(m_pen, code);
        }
    }
    m_pen.flags =
        static_cast<uint16_t>((m_pen.flags & ~Style::Protected) | ((attributes & 1) ? Style::Protected : 0));
    penChanged();
    m_charsets.left = static_cast<uint8_t>(std::clamp(number(take(';')), 0, 3));
    m_charsets.right = static_cast<uint8_t>(std::clamp(number(take(';')), 0, 3));
    const unsigned sizes = flags(take(';'));
    for (unsigned slot = 0; slot < 4 && !data.empty(); ++slot) {
        const size_t length = data[0] < 0x30 ? std::min<size_t>(2, data.size()) : 1;
        bool found = false;
        const Charset set = charsetFor(data.substr(0, length), (sizes >> slot & 1) != 0, found);
        if (found) {
            m_charsets.designated[slot] = set;
        }
        data.remove_prefix(length);
    }
    store(Mode::Origin, (state & 1) != 0);
    m_singleShift = (state & 2) != 0 ? 2 : (state & 4) != 0 ? 3 : 0;
    updateTextPath();
    moveTo(column - 1, row - 1);
    m_pendingWrap = (state & 8) != 0;
}

void Emulation::decrqde(const Sequence & /*s*/)
{
    replyCsi(std::to_string(rows()) + ';' + std::to_string(columns()) + ";1;1;1\"w");
}

void Emulation::decrqupss(const Sequence & /*s*/)
{
    replyDcs((has96(m_preferredSet) ? "1!u" : "0!u") + std::string(designatorOf(m_preferredSet)));
}

/// DECAUPSS: the set that "<" designates. `size` is 0 for one of 94 characters, 1 for one of 96.
void Emulation::assignPreferredSet(int size, std::string_view designator)
{
    bool found = false;
    const Charset set = charsetFor(designator, size == 1, found);
    if (found && size <= 1 && (set == Charset::DecSupplemental || set == Charset::Latin1)) {
        m_preferredSet = set;
    }
}

/// DECRQTSR: 2 asks for the colour table (DECCTR), as percentages of red, green and blue.
void Emulation::decrqtsr(const Sequence &s)
{
    if (s.value(0) != 2 || (s.value(1) != 1 && s.value(1) != 2)) {
        return;
    }
    std::string table;
    for (int index = 0; index < 256; ++index) {
        const Rgb color = m_palette.indexed(index).rgb();
        const int red = color.red * 100 / 255;
        const int green = color.green * 100 / 255;
        const int blue = color.blue * 100 / 255;
        std::array<int, 3> parts{red, green, blue};
        if (s.value(1) == 1) {
            parts = hls(red, green, blue);
        }
        table += (index > 0 ? "/" : "") + std::to_string(index) + ';' + std::to_string(s.value(1));
        for (const int part : parts) {
            table += ';' + std::to_string(part);
        }
    }
    replyDcs("2$s" + table);
}

void Emulation::bellVolume(const Sequence &s)
{
    if (s.value(0) <= 8) {
        m_bellVolumes[s.final == 't' ? 0 : 1] = s.value(0);
    }
}

/// XTPUSHCOLORS: without a number onto the stack, else into its entry of that number.
void Emulation::pushColors(const Sequence &s)
{
    constexpr size_t Most = 10;
    const auto number = static_cast<size_t>(s.value(0));
    const size_t entry = number > 0 ? number - 1 : m_paletteDepth;
    if (entry < Most) {
        m_paletteStack.resize(std::max(m_paletteStack.size(), entry + 1));
        m_paletteStack[entry] = m_palette;
        m_paletteDepth += number > 0 ? 0 : 1;
    }
}

void Emulation::popColors(const Sequence &s)
{
    const auto number = static_cast<size_t>(s.value(0));
    const size_t entry = (number > 0 ? number : m_paletteDepth) - 1;
    if (entry >= m_paletteStack.size() || !m_paletteStack[entry]) {
        return;
    }
    m_palette = *m_paletteStack[entry];
    if (number == 0) {
        m_paletteStack[entry].reset();
        --m_paletteDepth;
    }
    m_allDamaged = true;
    emitEvent({Event::Kind::PaletteChanged, {}, {}});
}

/// XTREPORTCOLORS: how deep the stack is, and how many of its entries hold something.
void Emulation::reportColors(const Sequence & /*s*/)
{
    const auto stored = std::count_if(m_paletteStack.begin(), m_paletteStack.end(),
                                      [](const std::optional<Palette> &each) { return each.has_value(); });
    replyCsi("?" + std::to_string(m_paletteDepth) + ';' + std::to_string(stored) + "#Q");
}

void Emulation::decelr(const Sequence &s)
{
    m_locator.enable(s.value(0), s.value(1));
    emitEvent({Event::Kind::ModesChanged, {}, {}});
}

void Emulation::decsle(const Sequence &s)
{
    for (int at = 0; at < std::max(s.count, 1); ++at) {
        m_locator.select(s.value(at));
    }
}

void Emulation::decefr(const Sequence &s)
{
    m_locator.filter({s.value(0), s.value(1), s.value(2), s.value(3)});
}

void Emulation::decrqlp(const Sequence & /*s*/)
{
    replyCsi(m_locator.request());
}

/// DECRQSS: the setting a control function would make, as that function's own parameters.
void Emulation::decrqss(std::string_view what)
{
    std::string value;
    if (what == "m") {
        value = sgrText(m_pen);
    } else if (what == "r") {
        value = std::to_string(m_top + 1) + ';' + std::to_string(m_bottom + 1);
    } else if (what == "s") {
        value = std::to_string(m_left + 1) + ';' + std::to_string(m_right + 1);
    } else if (what == " q") {
        const int shape = m_cursorStyle == 0 ? 1 : m_cursorStyle;
        value = std::to_string(mode(Mode::CursorBlink) ? (shape - 1) / 2 * 2 + 1 : (shape - 1) / 2 * 2 + 2);
    } else if (what == "\"q") {
        value = m_protection == Protection::Dec && m_pen.has(Style::Protected) ? "1" : "0";
    } else if (what == "\"p") {
        value = std::to_string(60 + m_level) + (m_level == 1 ? "" : m_eightBitReplies ? ";0" : ";1");
    } else if (what == "t") {
        value = std::to_string(std::max(rows(), 24));
    } else if (what == "$|") {
        value = mode(Mode::Columns132) || columns() >= 132 ? "132" : "80";
    } else if (what == "*|") {
        value = std::to_string(rows());
    } else if (what == "*x") {
        value = std::to_string(m_attributeExtent);
    } else if (what == "$}") {
        value = m_statusDisplayActive ? "1" : "0";
    } else if (what == "$~") {
        value = std::to_string(m_statusDisplay);
    } else if (what == " t" || what == " u") {
        value = std::to_string(m_bellVolumes[what == " t" ? 0 : 1]);
    } else if (what == "|") {
        value = "1";
    } else if (what == ">4m" || what == ">m") {
        replyDcs("1$r>4;" + std::to_string(std::max(m_keyOptions.modify[KeyOptions::OtherKeys], 0)) + 'm');
        return;
    } else {
        replyDcs("0$r");
        return;
    }
    replyDcs("1$r" + value + std::string(what));
}

/// XTGETTCAP: terminfo capabilities by name, both in hexadecimal.
void Emulation::xtgettcap(std::string_view names)
{
    struct Capability {
        std::string_view name;
        std::string_view value;
    };

    static constexpr Capability Capabilities[] = {
        {"Co", "256"},        {"colors", "256"},    {"TN", "xterm-256color"}, {"name", "xterm-256color"},
        {"RGB", "8/8/8"},     {"kbs", "\x7f"},      {"kcuu1", "\x1bOA"},      {"kcud1", "\x1bOB"},
        {"kcuf1", "\x1bOC"},  {"kcub1", "\x1bOD"},  {"khome", "\x1bOH"},      {"kend", "\x1bOF"},
        {"kich1", "\x1b[2~"}, {"kdch1", "\x1b[3~"}, {"kpp", "\x1b[5~"},       {"knp", "\x1b[6~"},
        {"kcbt", "\x1b[Z"},   {"kf1", "\x1bOP"},    {"kf2", "\x1bOQ"},        {"kf3", "\x1bOR"},
        {"kf4", "\x1bOS"},    {"kf5", "\x1b[15~"},  {"kf6", "\x1b[17~"},      {"kf7", "\x1b[18~"},
        {"kf8", "\x1b[19~"},  {"kf9", "\x1b[20~"},  {"kf10", "\x1b[21~"},     {"kf11", "\x1b[23~"},
        {"kf12", "\x1b[24~"},
    };
    while (true) {
        const size_t end = names.find(';');
        const std::string_view asked = names.substr(0, end);
        const std::optional<std::string> name = fromHex(asked);
        const auto *found = std::find_if(std::begin(Capabilities), std::end(Capabilities),
                                         [&](const Capability &each) { return name && each.name == *name; });
        if (found == std::end(Capabilities)) {
            // Only digits go back: what is not hexadecimal could be typed text to who reads the answer.
            replyDcs("0+r" + (name ? std::string(asked.substr(0, 64)) : std::string()));
            return;
        }
        replyDcs("1+r" + std::string(asked) + '=' + toHex(found->value));
        if (end == std::string_view::npos) {
            return;
        }
        names.remove_prefix(end + 1);
    }
}

void Emulation::deviceControl(const Sequence &s, std::string_view data)
{
    m_segmenter.reset();
    switch (s.key()) {
    case Sequence::key(0, '$', 0, 'q'):
        decrqss(data);
        break;
    case Sequence::key(0, '+', 0, 'q'):
        xtgettcap(data);
        break;
    case Sequence::key(0, '!', 0, 'u'):
        if (m_level >= 3) {
            assignPreferredSet(s.value(0), data);
        }
        break;
    case Sequence::key(0, '$', 0, 't'):
        if (!m_statusDisplayActive) {
            restorePresentation(s.value(0), data);
        }
        break;
    default:
        break;
    }
}

} // namespace vt
