#include "TerminalEmulator/Engine/Base64.h"
#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Hex.h"
#include "TerminalEmulator/Engine/Utf32.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace vt
{

namespace
{

constexpr size_t MaxTitle = 4096;
constexpr size_t MaxMarks = 20'000;

int number(std::string_view text, int fallback)
{
    int value = fallback;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// Cuts the text before the first `separator` off `rest`.
std::string_view take(std::string_view &rest, char separator)
{
    const size_t end = rest.find(separator);
    const std::string_view field = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return field;
}

std::string colorText(DeepColor color)
{
    char text[32];
    // Displays have eight bits a colour: that is what a colour that was set has become.
    const auto shown = [](uint16_t part) { return (part >> 8) * 0x101u; };
    std::snprintf(text, sizeof text, "rgb:%04x/%04x/%04x", shown(color.red), shown(color.green), shown(color.blue));
    return text;
}

} // namespace

void Emulation::operatingSystemCommand(std::string_view text, bool bell)
{
    m_segmenter.reset();
    std::string_view rest = text;
    const std::string_view head = take(rest, ';');
    const int command = number(head, -1);
    switch (command) {
    case 0:
    case 1:
    case 2:
        setTitle(command, rest);
        break;
    case 4:
        indexedColors(rest, false, bell);
        break;
    case 5:
        indexedColors(rest, true, bell);
        break;
    case 7:
        m_workingDirectory = cleanText(rest, MaxTitle);
        emitEvent({Event::Kind::WorkingDirectory, m_workingDirectory, {}});
        break;
    case 8:
        hyperlink(rest);
        break;
    case 9:
    case 777:
        notification(command, rest);
        break;
    case 22:
        emitEvent({Event::Kind::PointerShape, cleanText(rest, 64), {}});
        break;
    case 52:
        clipboard(rest, bell);
        break;
    case 104:
        resetIndexedColors(rest, false);
        break;
    case 105:
        resetIndexedColors(rest, true);
        break;
    case 133:
        shellMark(rest);
        break;
    default:
        if (command >= 10 && command <= 19) {
            dynamicColors(command - 10, rest, bell);
        } else if (command >= 110 && command <= 119) {
            m_palette.resetDynamic(static_cast<Palette::Dynamic>(command - 110));
            emitEvent({Event::Kind::PaletteChanged, {}, {}});
        } else if (!head.empty() && (head[0] == 'l' || head[0] == 'L') && text.size() > 1) {
            // Sun's form, without a separator.
            setTitle(head[0] == 'l' ? 2 : 1, text.substr(1));
        }
    }
}

/// `which`: 0 both, 1 icon name, 2 title.
void Emulation::setTitle(int which, std::string_view text)
{
    std::string decoded;
    if ((m_titleModes & 1) != 0) {
        std::optional<std::string> bytes = fromHex(text.substr(0, 2 * MaxTitle));
        if (!bytes) {
            return;
        }
        decoded = std::move(*bytes);
        text = decoded;
    }
    const std::string value = cleanText(text, MaxTitle);
    if (which != 2) {
        m_iconName = value;
        emitEvent({Event::Kind::IconName, value, {}});
    }
    if (which != 1) {
        m_title = value;
        emitEvent({Event::Kind::Title, value, {}});
    }
}

/// OSC 4 and 5: pairs of an index and a colour or "?". Indexes from 256 are the special colours.
void Emulation::indexedColors(std::string_view rest, bool special, bool bell)
{
    while (!rest.empty()) {
        const std::string_view field = take(rest, ';');
        const int given = number(field, -1);
        const std::string_view spec = take(rest, ';');
        const bool isSpecial = special || given >= 256;
        const int index = !special && given >= 256 ? given - 256 : given;
        if (index < 0 || index >= (isSpecial ? Palette::Specials : 256)) {
            continue;
        }
        if (spec == "?") {
            const DeepColor color = isSpecial ? m_palette.special(index) : m_palette.indexed(index);
            replyOsc((special ? "5;" : "4;") + std::to_string(given) + ';' + colorText(color), bell);
        } else if (const std::optional<DeepColor> color = parseColor(spec)) {
            isSpecial ? m_palette.setSpecial(index, *color) : m_palette.setIndexed(index, *color);
            emitEvent({Event::Kind::PaletteChanged, {}, {}});
            m_allDamaged = true;
        }
    }
}

void Emulation::resetIndexedColors(std::string_view rest, bool special)
{
    const auto resetOne = [&](int given) {
        const bool isSpecial = special || given >= 256;
        const int index = !special && given >= 256 ? given - 256 : given;
        if (index >= 0 && index < (isSpecial ? Palette::Specials : 256)) {
            isSpecial ? m_palette.resetSpecial(index) : m_palette.resetIndexed(index);
        }
    };
    if (rest.empty()) {
        for (int index = 0; index < (special ? Palette::Specials : 256 + Palette::Specials); ++index) {
            resetOne(index);
        }
    }
    while (!rest.empty()) {
        resetOne(number(take(rest, ';'), -1));
    }
    emitEvent({Event::Kind::PaletteChanged, {}, {}});
    m_allDamaged = true;
}

/// OSC 10 to 19: each further field belongs to the next colour.
void Emulation::dynamicColors(int first, std::string_view rest, bool bell)
{
    for (int which = first; which < Palette::DynamicCount && !rest.empty(); ++which) {
        const std::string_view spec = take(rest, ';');
        const auto dynamic = static_cast<Palette::Dynamic>(which);
        if (spec == "?") {
            replyOsc(std::to_string(which + 10) + ';' + colorText(m_palette.dynamic(dynamic)), bell);
        } else if (const std::optional<DeepColor> color = parseColor(spec)) {
            m_palette.setDynamic(dynamic, *color);
            emitEvent({Event::Kind::PaletteChanged, {}, {}});
            m_allDamaged = true;
        }
    }
}

/// OSC 8: "key=value:..." and the address; an empty address ends the link.
void Emulation::hyperlink(std::string_view rest)
{
    std::string_view parameters = take(rest, ';');
    std::string_view id;
    while (!parameters.empty()) {
        const std::string_view pair = take(parameters, ':');
        if (pair.starts_with("id=")) {
            id = pair.substr(3, 256);
        }
    }
    if (m_links.wantsSweep()) {
        sweepStyles();
    }
    m_currentLink = rest.empty() || rest.size() > Links::MaxLength ? 0 : m_links.intern(id, rest);
    m_pen.link = m_currentLink;
    penChanged();
}

/// OSC 52: selections, then base64 text or "?"; anything that is not base64 empties the selection.
void Emulation::clipboard(std::string_view rest, bool bell)
{
    const std::string_view selections = take(rest, ';').substr(0, 16);
    if (selections.find_first_not_of("cpqs01234567") != std::string_view::npos) {
        return;
    }
    const std::string target(selections.empty() ? "s0" : selections);
    if (rest == "?") {
        if (m_options.allowClipboardRead) {
            replyOsc("52;" + target + ';' + encodeBase64(m_clipboard), bell);
        }
    } else if (m_options.allowClipboardWrite) {
        m_clipboard = decodeBase64(rest).value_or(std::string());
        emitEvent({Event::Kind::ClipboardWrite, m_clipboard, target});
    }
}

/// A second mark of a kind in a line (a prompt drawn again) replaces the first: only so many are on the screen.
void Emulation::addMark(const Mark &mark)
{
    const int64_t line = mark.position.line;
    auto after = m_marks.end();
    while (after != m_marks.begin() && (after - 1)->position.line >= line) {
        --after;
        if (after->position.line == line && after->kind == mark.kind) {
            *after = mark;
            return;
        }
    }
    while (after != m_marks.end() && after->position.line == line) {
        ++after;
    }
    m_marks.insert(after, mark);
    if (m_marks.size() > MaxMarks) {
        m_marks.pop_front();
    }
    dropLostMarks();
}

/// Forgets the marks of lines that are no more.
void Emulation::dropLostMarks()
{
    while (!m_marks.empty() && m_marks.front().position.line < m_firstLine) {
        m_marks.pop_front();
    }
}

/// OSC 133: A prompt, B command line, C output, D end with an exit status.
void Emulation::shellMark(std::string_view rest)
{
    if (rest.empty() || rest[0] < 'A' || rest[0] > 'D') {
        return;
    }
    const int status = rest[0] == 'D' && rest.size() > 2 ? number(rest.substr(2), -1) : -1;
    if (!isAlternate() && !m_statusDisplayActive) {
        addMark({{screenTop() + m_y, m_x}, rest[0], status});
    }
    emitEvent({Event::Kind::Mark, {}, {}, rest[0], status});
}

void Emulation::notification(int command, std::string_view rest)
{
    std::string title;
    if (command == 777) {
        if (take(rest, ';') != "notify") {
            return;
        }
        title = cleanText(take(rest, ';'), 256);
    } else if (rest.starts_with("4;")) {
        return; // a progress bar, not a message
    }
    emitEvent({Event::Kind::Notification, cleanText(rest, 1024), title});
}

} // namespace vt
