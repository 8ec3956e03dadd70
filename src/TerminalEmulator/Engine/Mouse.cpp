#include "TerminalEmulator/Engine/Cell.h"
#include "TerminalEmulator/Engine/Input.h"

namespace vt
{

namespace
{

int buttonCode(MouseButton button)
{
    switch (button) {
    case MouseButton::Left:
        return 0;
    case MouseButton::Middle:
        return 1;
    case MouseButton::Right:
        return 2;
    case MouseButton::None:
        return 3;
    case MouseButton::WheelUp:
        return 64;
    case MouseButton::WheelDown:
        return 65;
    case MouseButton::WheelLeft:
        return 66;
    case MouseButton::WheelRight:
        return 67;
    case MouseButton::Back:
        return 128;
    case MouseButton::Forward:
        return 129;
    }
    return 3;
}

bool wanted(const MouseEvent &event, MouseTracking tracking)
{
    const bool wheel = event.button >= MouseButton::WheelUp && event.button <= MouseButton::WheelRight;
    switch (tracking) {
    case MouseTracking::None:
        return false;
    case MouseTracking::PressOnly:
        return event.action == MouseEvent::Action::Press && event.button <= MouseButton::Right;
    case MouseTracking::PressRelease:
        return event.action == MouseEvent::Action::Press || (event.action == MouseEvent::Action::Release && !wheel);
    case MouseTracking::Drag:
        return event.action == MouseEvent::Action::Motion ? event.button != MouseButton::None
                                                          : event.action == MouseEvent::Action::Press || !wheel;
    case MouseTracking::Any:
        return event.action != MouseEvent::Action::Release || !wheel;
    }
    return false;
}

} // namespace

std::string encodeMouse(const MouseEvent &event, MouseTracking tracking, MouseEncoding encoding)
{
    if (!wanted(event, tracking) || event.column < 0 || event.row < 0) {
        return {};
    }
    int code = buttonCode(event.button);
    if (tracking != MouseTracking::PressOnly) {
        code += (event.modifiers & Shift) != 0 ? 4 : 0;
        code += (event.modifiers & (Alt | Meta)) != 0 ? 8 : 0;
        code += (event.modifiers & Control) != 0 ? 16 : 0;
    }
    code += event.action == MouseEvent::Action::Motion ? 32 : 0;
    const bool release = event.action == MouseEvent::Action::Release;
    const bool pixels = encoding == MouseEncoding::Pixels;
    const int x = (pixels ? event.pixelX : event.column) + 1;
    const int y = (pixels ? event.pixelY : event.row) + 1;
    const std::string place = std::to_string(x) + ';' + std::to_string(y);
    if (encoding == MouseEncoding::Sgr || pixels) {
        return "\x1b[<" + std::to_string(code) + ';' + place + (release ? 'm' : 'M');
    }
    // The older forms do not say which button was let go.
    const int old = release ? (code & ~0xc3) | 3 : code;
    if (encoding == MouseEncoding::Urxvt) {
        return "\x1b[" + std::to_string(old + 32) + ';' + place + 'M';
    }
    const int limit = encoding == MouseEncoding::Utf8 ? 2015 : 223;
    if (x > limit || y > limit) {
        return {};
    }
    std::string out = "\x1b[M";
    for (const int value : {old + 32, x + 32, y + 32}) {
        if (encoding == MouseEncoding::Utf8) {
            appendUtf8(out, static_cast<char32_t>(value));
        } else {
            out += static_cast<char>(value);
        }
    }
    return out;
}

std::string encodePaste(std::string_view text, bool bracketed)
{
    std::string out;
    out.reserve(text.size() + 12);
    if (bracketed) {
        out += "\x1b[200~";
    }
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte == '\r' || byte == '\n') {
            // Between brackets an application sees line ends as they are typed, too.
            out += '\r';
            at += byte == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 1 : 0;
        } else if (byte == 0xc2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xa0) {
            ++at; // a C1 control
        } else if (byte == '\t' || (byte >= 0x20 && byte != 0x7f)) {
            out += text[at];
        }
    }
    if (bracketed) {
        out += "\x1b[201~";
    }
    return out;
}

} // namespace vt
