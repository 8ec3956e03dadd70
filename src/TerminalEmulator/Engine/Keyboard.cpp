#include "TerminalEmulator/Engine/Cell.h"
#include "TerminalEmulator/Engine/Input.h"

#include <algorithm>
#include <iterator>

namespace vt
{

namespace
{

constexpr unsigned Chords = Shift | Alt | Control | Super | Hyper | Meta;

/// How a key is sent: CSI number final, where number 1 is left out without modifiers; or number and "~".
struct Function {
    Key key;
    int number;
    char final;
    bool ss3;       ///< SS3 instead of CSI without modifiers
    bool cursorKey; ///< SS3 only in application cursor mode
};

constexpr Function Functions[] = {
    {Key::Up, 1, 'A', true, true},          {Key::Down, 1, 'B', true, true},
    {Key::Right, 1, 'C', true, true},       {Key::Left, 1, 'D', true, true},
    {Key::Home, 1, 'H', true, true},        {Key::End, 1, 'F', true, true},
    {Key::KeypadBegin, 1, 'E', true, true}, {Key::Insert, 2, '~', false, false},
    {Key::Delete, 3, '~', false, false},    {Key::PageUp, 5, '~', false, false},
    {Key::PageDown, 6, '~', false, false},  {Key::F1, 1, 'P', true, false},
    {Key::F2, 1, 'Q', true, false},         {Key::F3, 1, 'R', true, false},
    {Key::F4, 1, 'S', true, false},         {Key::F5, 15, '~', false, false},
    {Key::F6, 17, '~', false, false},       {Key::F7, 18, '~', false, false},
    {Key::F8, 19, '~', false, false},       {Key::F9, 20, '~', false, false},
    {Key::F10, 21, '~', false, false},      {Key::F11, 23, '~', false, false},
    {Key::F12, 24, '~', false, false},      {Key::F13, 25, '~', false, false},
    {Key::F14, 26, '~', false, false},      {Key::F15, 28, '~', false, false},
    {Key::F16, 29, '~', false, false},      {Key::F17, 31, '~', false, false},
    {Key::F18, 32, '~', false, false},      {Key::F19, 33, '~', false, false},
    {Key::F20, 34, '~', false, false},      {Key::F21, 42, '~', false, false},
    {Key::F22, 43, '~', false, false},      {Key::F23, 44, '~', false, false},
    {Key::F24, 45, '~', false, false},      {Key::Menu, 29, '~', false, false},
};

/// The keypad: what it sends in application mode, what it types, and which key it is without the number lock.
struct Keypad {
    Key key;
    char application;
    char typed;
    Key navigation;
};

constexpr Keypad Keypads[] = {
    {Key::Keypad0, 'p', '0', Key::Insert},       {Key::Keypad1, 'q', '1', Key::End},
    {Key::Keypad2, 'r', '2', Key::Down},         {Key::Keypad3, 's', '3', Key::PageDown},
    {Key::Keypad4, 't', '4', Key::Left},         {Key::Keypad5, 'u', '5', Key::KeypadBegin},
    {Key::Keypad6, 'v', '6', Key::Right},        {Key::Keypad7, 'w', '7', Key::Home},
    {Key::Keypad8, 'x', '8', Key::Up},           {Key::Keypad9, 'y', '9', Key::PageUp},
    {Key::KeypadDecimal, 'n', '.', Key::Delete}, {Key::KeypadDivide, 'o', '/', Key::None},
    {Key::KeypadMultiply, 'j', '*', Key::None},  {Key::KeypadSubtract, 'm', '-', Key::None},
    {Key::KeypadAdd, 'k', '+', Key::None},       {Key::KeypadEnter, 'M', '\r', Key::None},
    {Key::KeypadEqual, 'X', '=', Key::None},
};

template<class Table>
auto find(const Table &table, Key key)
{
    return std::find_if(std::begin(table), std::end(table), [key](const auto &each) { return each.key == key; });
}

std::string number(int value)
{
    return std::to_string(value);
}

std::string function(const Function &each, unsigned modifiers, const KeyboardState &state)
{
    if (state.vt52 && each.ss3) {
        return std::string("\x1b") + each.final;
    }
    const int level = state.options.modify[each.cursorKey ? KeyOptions::CursorKeys : KeyOptions::FunctionKeys];
    if (modifiers != 0 && level >= 0) {
        // From 1 on CSI replaces SS3, from 2 on a number always precedes the modifiers, and 3 marks it as private.
        const bool ss3 = level == 0 && each.ss3 && (!each.cursorKey || state.cursorKeys);
        std::string out = ss3 ? "\x1bO" : level > 2 ? "\x1b[>" : "\x1b[";
        out += each.number > 1 || level > 1 ? number(each.number) + ';' : std::string();
        return out + number(static_cast<int>(modifiers) + 1) + each.final;
    }
    if (each.number > 1) {
        return "\x1b[" + number(each.number) + each.final;
    }
    const bool ss3 = each.ss3 && (!each.cursorKey || state.cursorKeys);
    return std::string(ss3 ? "\x1bO" : "\x1b[") + each.final;
}

/// What Control makes of a character on a terminal, or -1 if nothing.
int controlCode(char32_t character)
{
    if (character >= 'a' && character <= 'z') {
        return static_cast<int>(character - 'a' + 1);
    }
    if (character >= '@' && character <= '_') {
        return static_cast<int>(character - '@');
    }
    switch (character) {
    case ' ':
    case '2':
        return 0;
    case '3':
        return 0x1b;
    case '4':
        return 0x1c;
    case '5':
        return 0x1d;
    case '6':
    case '~':
        return 0x1e;
    case '7':
    case '/':
        return 0x1f;
    case '8':
    case '?':
        return 0x7f;
    default:
        return -1;
    }
}

std::string otherKey(unsigned modifiers, int code, const KeyboardState &state)
{
    if (state.options.format[KeyOptions::OtherKeys] == 1) {
        return "\x1b[" + number(code) + ';' + number(static_cast<int>(modifiers) + 1) + 'u';
    }
    return "\x1b[27;" + number(static_cast<int>(modifiers) + 1) + ';' + number(code) + '~';
}

std::string escaped(std::string text, bool alt)
{
    return alt ? '\x1b' + text : text;
}

std::string character(const KeyEvent &event, unsigned modifiers, const KeyboardState &state)
{
    const bool control = (modifiers & Control) != 0;
    const bool alt = (modifiers & (Alt | Meta)) != 0;
    const bool plain = (modifiers & ~unsigned{Shift}) == 0;
    const int code = control ? controlCode(event.character) : -1;
    // Level 1 leaves alone what the terminal has always been able to send; level 2 only plain typing.
    const bool ambiguous = control && (code < 0 || (modifiers & Shift) != 0);
    const int level = state.options.modify[KeyOptions::OtherKeys];
    if (!plain && event.character != 0 && (level >= 2 || (level == 1 && ambiguous))) {
        return otherKey(modifiers, static_cast<int>(event.character), state);
    }
    if (code >= 0) {
        return escaped(std::string(1, static_cast<char>(code)), alt && state.altSendsEscape);
    }
    std::string text = event.text;
    if (text.empty() && event.character != 0) {
        appendUtf8(text, event.character);
    }
    return escaped(text, alt && state.altSendsEscape && !text.empty());
}

std::string special(const KeyEvent &event, unsigned modifiers, const KeyboardState &state)
{
    const bool alt = (modifiers & (Alt | Meta)) != 0;
    const bool control = (modifiers & Control) != 0;
    const bool other = state.options.modify[KeyOptions::OtherKeys] >= 2 && modifiers != 0;
    switch (event.key) {
    case Key::Backspace:
        if (other) {
            return otherKey(modifiers, 127, state);
        }
        return escaped(state.backarrowSendsBs != control ? "\b" : "\x7f", alt);
    case Key::Tab:
        if ((modifiers & Shift) != 0 && !other) {
            return escaped("\x1b[Z", alt);
        }
        return other ? otherKey(modifiers, 9, state) : escaped("\t", alt);
    case Key::Enter:
        return other ? otherKey(modifiers, 13, state) : escaped(state.newLine ? "\r\n" : "\r", alt);
    case Key::Escape:
        return other ? otherKey(modifiers, 27, state) : escaped("\x1b", alt);
    case Key::Delete:
        if (state.deleteSendsDel && modifiers == 0) {
            return "\x7f";
        }
        break;
    default:
        break;
    }
    const auto *each = find(Functions, event.key);
    return each != std::end(Functions) ? function(*each, modifiers, state) : std::string();
}

// Codes of the progressive protocol for keys that have no ASCII or CSI number form.
struct Private {
    Key key;
    int code;
};

constexpr Private Privates[] = {
    {Key::Escape, 27},
    {Key::Enter, 13},
    {Key::Tab, 9},
    {Key::Backspace, 127},
    {Key::CapsLock, 57358},
    {Key::ScrollLock, 57359},
    {Key::NumLock, 57360},
    {Key::PrintScreen, 57361},
    {Key::Pause, 57362},
    {Key::Menu, 57363},
    {Key::F13, 57376},
    {Key::F14, 57377},
    {Key::F15, 57378},
    {Key::F16, 57379},
    {Key::F17, 57380},
    {Key::F18, 57381},
    {Key::F19, 57382},
    {Key::F20, 57383},
    {Key::F21, 57384},
    {Key::F22, 57385},
    {Key::F23, 57386},
    {Key::F24, 57387},
    {Key::Keypad0, 57399},
    {Key::Keypad1, 57400},
    {Key::Keypad2, 57401},
    {Key::Keypad3, 57402},
    {Key::Keypad4, 57403},
    {Key::Keypad5, 57404},
    {Key::Keypad6, 57405},
    {Key::Keypad7, 57406},
    {Key::Keypad8, 57407},
    {Key::Keypad9, 57408},
    {Key::KeypadDecimal, 57409},
    {Key::KeypadDivide, 57410},
    {Key::KeypadMultiply, 57411},
    {Key::KeypadSubtract, 57412},
    {Key::KeypadAdd, 57413},
    {Key::KeypadEnter, 57414},
    {Key::KeypadEqual, 57415},
    {Key::LeftShift, 57441},
    {Key::LeftControl, 57442},
    {Key::LeftAlt, 57443},
    {Key::LeftSuper, 57444},
    {Key::RightShift, 57447},
    {Key::RightControl, 57448},
    {Key::RightAlt, 57449},
    {Key::RightSuper, 57450},
};

bool isModifierKey(Key key)
{
    return key >= Key::LeftShift || key == Key::CapsLock || key == Key::NumLock || key == Key::ScrollLock;
}

std::string codePoints(std::string_view utf8)
{
    std::string out;
    for (size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[at]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
        char32_t value = length == 1 ? lead : lead & (0x7fu >> length);
        for (size_t next = 1; next < length && at + next < utf8.size(); ++next) {
            value = value << 6 | (static_cast<unsigned char>(utf8[at + next]) & 0x3fu);
        }
        at += length;
        if (value >= 0x20 && value != 0x7f) {
            out += (out.empty() ? "" : ":") + std::to_string(static_cast<uint32_t>(value));
        }
    }
    return out;
}

} // namespace

std::string encodeProgressiveKey(const KeyEvent &event, const KeyboardState &state)
{
    enum : int { EventTypes = 2, Alternates = 4, AllKeys = 8, Text = 16 };

    const int flags = state.progressive;
    const bool all = (flags & AllKeys) != 0;
    const bool isText = event.key == Key::None;
    const bool isControl = event.key == Key::Enter || event.key == Key::Tab || event.key == Key::Backspace;
    const unsigned chord = event.modifiers & Chords;
    const bool release = event.action == KeyEvent::Action::Release;
    if (release && ((flags & EventTypes) == 0 || (!all && isControl))) {
        return {};
    }
    if (isModifierKey(event.key) && !all) {
        return {};
    }
    if (!all && isText && (chord & ~unsigned{Shift}) == 0) {
        return release ? std::string() : event.text;
    }
    if (!all && isControl && chord == 0) {
        return special(event, 0, state);
    }
    // The locks are told for keys that type nothing, or when everything is.
    const unsigned modifiers = all || !isText ? event.modifiers : chord;
    const bool tellsEvent = (flags & EventTypes) != 0 && event.action != KeyEvent::Action::Press;
    std::string tail;
    if (modifiers != 0 || tellsEvent) {
        tail = ';' + number(static_cast<int>(modifiers) + 1);
        tail += tellsEvent ? ':' + number(static_cast<int>(event.action)) : "";
    }
    if (!isText) {
        const auto *named = find(Privates, event.key);
        const auto *numbered = find(Functions, event.key);
        if (named != std::end(Privates)) {
            return "\x1b[" + number(named->code) + tail + 'u';
        }
        if (numbered == std::end(Functions)) {
            return {};
        }
        // F3's old form is that of a cursor report.
        const bool isF3 = event.key == Key::F3;
        const int code = isF3 ? 13 : numbered->number;
        const char final = isF3 ? '~' : numbered->final;
        return "\x1b[" + (code == 1 && tail.empty() ? "" : number(code)) + tail + final;
    }
    const char32_t upper = event.character;
    char32_t base = event.base;
    if (base == 0) {
        base = upper >= 'A' && upper <= 'Z' ? upper + 32 : upper;
    }
    std::string code = number(static_cast<int>(base));
    if ((flags & Alternates) != 0 && (chord & Shift) != 0 && upper != base) {
        code += ':' + number(static_cast<int>(upper));
    }
    const std::string text = (flags & Text) != 0 && all && !release ? codePoints(event.text) : std::string();
    if (!text.empty()) {
        tail = (tail.empty() ? ";" : tail) + ';' + text;
    }
    return "\x1b[" + code + tail + 'u';
}

std::string encodeKey(const KeyEvent &event, const KeyboardState &state)
{
    if (state.progressive != 0) {
        return encodeProgressiveKey(event, state);
    }
    if (event.action == KeyEvent::Action::Release || isModifierKey(event.key)) {
        return {};
    }
    const unsigned modifiers = event.modifiers & (Shift | Alt | Control | Meta);
    if (event.key == Key::None) {
        return character(event, modifiers, state);
    }
    const auto *keypad = find(Keypads, event.key);
    if (keypad == std::end(Keypads)) {
        return special(event, modifiers, state);
    }
    const bool types = (event.modifiers & NumLocked) != 0 || keypad->navigation == Key::None;
    if (state.keypad && (event.modifiers & NumLocked) == 0 && modifiers == 0) {
        return std::string(state.vt52 ? "\x1b?" : "\x1bO") + keypad->application;
    }
    if (types) {
        const bool enter = keypad->key == Key::KeypadEnter;
        return escaped(enter && state.newLine ? "\r\n" : std::string(1, keypad->typed), (modifiers & Alt) != 0);
    }
    KeyEvent moved = event;
    moved.key = keypad->navigation;
    return special(moved, modifiers, state);
}

} // namespace vt
