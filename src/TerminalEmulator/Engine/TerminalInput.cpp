#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Input.h"
#include "TerminalEmulator/Engine/Terminal.h"

namespace vt
{

namespace
{

MouseTracking trackingOf(const Emulation &emulation)
{
    return emulation.mode(Mode::Mouse1003)                                      ? MouseTracking::Any
           : emulation.mode(Mode::Mouse1002)                                    ? MouseTracking::Drag
           : emulation.mode(Mode::Mouse1000) || emulation.mode(Mode::Mouse1001) ? MouseTracking::PressRelease
           : emulation.mode(Mode::MouseX10)                                     ? MouseTracking::PressOnly
                                                                                : MouseTracking::None;
}

MouseEncoding encodingOf(const Emulation &emulation)
{
    return emulation.mode(Mode::MousePixels)  ? MouseEncoding::Pixels
           : emulation.mode(Mode::MouseSgr)   ? MouseEncoding::Sgr
           : emulation.mode(Mode::MouseUrxvt) ? MouseEncoding::Urxvt
           : emulation.mode(Mode::MouseUtf8)  ? MouseEncoding::Utf8
                                              : MouseEncoding::Legacy;
}

} // namespace

std::string Terminal::encodeKey(const KeyEvent &event) const
{
    if (m_emulation->mode(Mode::KeyboardLocked)) {
        return {};
    }
    KeyboardState state;
    state.cursorKeys = m_emulation->mode(Mode::CursorKeys);
    state.keypad = m_emulation->isKeypadApplication();
    state.newLine = m_emulation->mode(Mode::NewLine);
    state.backarrowSendsBs = m_emulation->mode(Mode::BackarrowSendsBs);
    state.deleteSendsDel = m_emulation->mode(Mode::DeleteSendsDel);
    state.altSendsEscape = m_emulation->mode(Mode::MetaSendsEscape) || m_emulation->mode(Mode::AltSendsEscape);
    state.options = m_emulation->m_keyOptions;
    state.progressive = m_emulation->keyboardFlags();
    state.vt52 = !m_emulation->mode(Mode::Ansi);
    return vt::encodeKey(event, state);
}

std::string Terminal::encodeMouse(const MouseEvent &event)
{
    const MouseTracking tracking = trackingOf(*m_emulation);
    if (tracking != MouseTracking::None) {
        return vt::encodeMouse(event, tracking, encodingOf(*m_emulation));
    }
    if (m_emulation->m_locator.isEnabled()) {
        const std::string report = m_emulation->m_locator.event(event);
        return report.empty() ? report : "\x1b[" + report;
    }
    const bool wheel = event.button == MouseButton::WheelUp || event.button == MouseButton::WheelDown;
    if (wheel && isAlternateScreen() && m_emulation->mode(Mode::AlternateScroll)) {
        KeyEvent key;
        key.key = event.button == MouseButton::WheelUp ? Key::Up : Key::Down;
        return encodeKey(key);
    }
    return {};
}

bool Terminal::wantsMouse() const
{
    return trackingOf(*m_emulation) != MouseTracking::None || m_emulation->m_locator.isEnabled();
}

bool Terminal::wantsMouseMotion() const
{
    return trackingOf(*m_emulation) == MouseTracking::Any || m_emulation->m_locator.isEnabled();
}

std::string Terminal::encodePaste(std::string_view text) const
{
    return vt::encodePaste(text, isBracketedPaste());
}

bool Terminal::isBracketedPaste() const
{
    return m_emulation->mode(Mode::BracketedPaste);
}

std::string Terminal::encodeFocus(bool focused) const
{
    if (!m_emulation->mode(Mode::FocusEvents)) {
        return {};
    }
    return focused ? "\x1b[I" : "\x1b[O";
}

} // namespace vt
