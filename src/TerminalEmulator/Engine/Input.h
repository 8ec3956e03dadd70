#pragma once

#include "TerminalEmulator/Engine/Keys.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// What keys, mouse and paste send to the application.
namespace vt
{

/// How modifiers show in what keys send (XTMODKEYS, XTFMTKEYS), for each resource.
struct KeyOptions {
    enum Resource : uint8_t { Keyboard, CursorKeys, FunctionKeys, KeypadKeys, OtherKeys, Count };

    std::array<int, Count> modify{0, 2, 2, 0, 0}; ///< 0 to 3, or -1 for not at all
    std::array<int, Count> format{};              ///< only that of the other keys has an effect
};

/// The state of the terminal that decides how keys are sent.
struct KeyboardState {
    bool cursorKeys = false;       ///< DECCKM
    bool keypad = false;           ///< DECKPAM
    bool newLine = false;          ///< LNM: Enter sends a line feed as well
    bool backarrowSendsBs = false; ///< DECBKM
    bool deleteSendsDel = false;   ///< mode 1037
    bool altSendsEscape = true;    ///< modes 1036 and 1039
    KeyOptions options;
    int progressive = 0; ///< flags of the progressive keyboard protocol, 0 is the legacy encoding
    bool vt52 = false;
};

/// The bytes of a key; empty if it sends none.
std::string encodeKey(const KeyEvent &event, const KeyboardState &state);

/// The same for the progressive keyboard protocol (CSI u), whose flags are 1 disambiguate, 2 event types,
/// 4 alternate keys, 8 all keys as escape codes, 16 associated text.
std::string encodeProgressiveKey(const KeyEvent &event, const KeyboardState &state);

enum class MouseTracking { None, PressOnly, PressRelease, Drag, Any };
enum class MouseEncoding { Legacy, Utf8, Sgr, Urxvt, Pixels };

/// The report of a mouse event (XTerm control sequences, "Mouse Tracking"); empty if this tracking leaves it out.
std::string encodeMouse(const MouseEvent &event, MouseTracking tracking, MouseEncoding encoding);

/// Text as it is pasted: line ends as carriage returns, control characters but tab left out.
std::string encodePaste(std::string_view text, bool bracketed);

} // namespace vt
