#pragma once

#include <cstdint>
#include <string>

namespace vt
{

/// Keys without a character of their own. Keys with one are told by their character.
enum class Key : uint8_t {
    None,
    Up,
    Down,
    Right,
    Left,
    Home,
    End,
    Insert,
    Delete,
    PageUp,
    PageDown,
    Backspace,
    Tab,
    Enter,
    Escape,
    F1,
    F2,
    F3,
    F4,
    F5,
    F6,
    F7,
    F8,
    F9,
    F10,
    F11,
    F12,
    F13,
    F14,
    F15,
    F16,
    F17,
    F18,
    F19,
    F20,
    F21,
    F22,
    F23,
    F24,
    Menu,
    PrintScreen,
    Pause,
    CapsLock,
    ScrollLock,
    NumLock,
    Keypad0,
    Keypad1,
    Keypad2,
    Keypad3,
    Keypad4,
    Keypad5,
    Keypad6,
    Keypad7,
    Keypad8,
    Keypad9,
    KeypadDecimal,
    KeypadDivide,
    KeypadMultiply,
    KeypadSubtract,
    KeypadAdd,
    KeypadEnter,
    KeypadEqual,
    KeypadBegin,
    LeftShift,
    LeftControl,
    LeftAlt,
    LeftSuper,
    RightShift,
    RightControl,
    RightAlt,
    RightSuper,
};

enum Modifier : uint8_t {
    NoModifier = 0,
    Shift = 1,
    Alt = 2,
    Control = 4,
    Super = 8,
    Hyper = 16,
    Meta = 32,
    CapsLocked = 64,
    NumLocked = 128,
};

/// One key going down, repeating or up.
struct KeyEvent {
    enum class Action : uint8_t { Press = 1, Repeat = 2, Release = 3 };

    Key key = Key::None;
    char32_t character = 0; ///< Key::None: what the key stands for without Control and Alt, Shift applied ('A', ';')
    char32_t base = 0;      ///< Key::None: the same without Shift ('a'); 0: derived from `character`
    std::string text;       ///< UTF-8 the key would type, empty if none
    uint8_t modifiers = 0;  ///< Modifier
    Action action = Action::Press;
};

enum class MouseButton : uint8_t {
    Left,
    Middle,
    Right,
    None,
    WheelUp,
    WheelDown,
    WheelLeft,
    WheelRight,
    Back,
    Forward
};

/// What the mouse did, in cells and, for mode 1016, in pixels, both counted from 0 at the top left of the screen.
struct MouseEvent {
    enum class Action : uint8_t { Press, Release, Motion };

    Action action = Action::Press;
    MouseButton button = MouseButton::Left; ///< Motion: the button held down, or None
    int column = 0;
    int row = 0;
    int pixelX = 0;
    int pixelY = 0;
    uint8_t modifiers = 0; ///< Shift, Alt, Control
};

} // namespace vt
