#include "TerminalEmulator/View/KeyTranslation.h"

#include <QKeyEvent>

#include <algorithm>
#include <iterator>

namespace vt
{

namespace
{

struct Named {
    int key;
    Key named;
};

constexpr Named Names[] = {
    {Qt::Key_Up, Key::Up},
    {Qt::Key_Down, Key::Down},
    {Qt::Key_Right, Key::Right},
    {Qt::Key_Left, Key::Left},
    {Qt::Key_Home, Key::Home},
    {Qt::Key_End, Key::End},
    {Qt::Key_Insert, Key::Insert},
    {Qt::Key_Delete, Key::Delete},
    {Qt::Key_PageUp, Key::PageUp},
    {Qt::Key_PageDown, Key::PageDown},
    {Qt::Key_Backspace, Key::Backspace},
    {Qt::Key_Tab, Key::Tab},
    {Qt::Key_Backtab, Key::Tab},
    {Qt::Key_Return, Key::Enter},
    {Qt::Key_Enter, Key::Enter},
    {Qt::Key_Escape, Key::Escape},
    {Qt::Key_Menu, Key::Menu},
    {Qt::Key_Print, Key::PrintScreen},
    {Qt::Key_Pause, Key::Pause},
    {Qt::Key_CapsLock, Key::CapsLock},
    {Qt::Key_ScrollLock, Key::ScrollLock},
    {Qt::Key_NumLock, Key::NumLock},
    {Qt::Key_Clear, Key::KeypadBegin},
    {Qt::Key_Shift, Key::LeftShift},
    {Qt::Key_Control, Key::LeftControl},
    {Qt::Key_Alt, Key::LeftAlt},
    {Qt::Key_Meta, Key::LeftSuper},
    {Qt::Key_Super_L, Key::LeftSuper},
    {Qt::Key_Super_R, Key::RightSuper},
};

constexpr Named KeypadNames[] = {
    {Qt::Key_Slash, Key::KeypadDivide},   {Qt::Key_Asterisk, Key::KeypadMultiply},
    {Qt::Key_Minus, Key::KeypadSubtract}, {Qt::Key_Plus, Key::KeypadAdd},
    {Qt::Key_Enter, Key::KeypadEnter},    {Qt::Key_Equal, Key::KeypadEqual},
    {Qt::Key_Period, Key::KeypadDecimal}, {Qt::Key_Comma, Key::KeypadDecimal},
    {Qt::Key_Insert, Key::Keypad0},       {Qt::Key_End, Key::Keypad1},
    {Qt::Key_Down, Key::Keypad2},         {Qt::Key_PageDown, Key::Keypad3},
    {Qt::Key_Left, Key::Keypad4},         {Qt::Key_Clear, Key::Keypad5},
    {Qt::Key_Right, Key::Keypad6},        {Qt::Key_Home, Key::Keypad7},
    {Qt::Key_Up, Key::Keypad8},           {Qt::Key_PageUp, Key::Keypad9},
    {Qt::Key_Delete, Key::KeypadDecimal},
};

// X11 keysyms of the modifier keys on the right; Qt does not tell the sides apart.
constexpr Named RightSides[] = {
    {0xffe2, Key::RightShift}, {0xffe4, Key::RightControl}, {0xffea, Key::RightAlt}, {0xffec, Key::RightSuper}};

template<class Table>
Key lookUp(const Table &table, int key)
{
    const auto found =
        std::find_if(std::begin(table), std::end(table), [key](const Named &each) { return each.key == key; });
    return found != std::end(table) ? found->named : Key::None;
}

Key namedKey(const QKeyEvent &event)
{
    const int key = event.key();
    if (event.modifiers().testFlag(Qt::KeypadModifier)) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9) {
            return static_cast<Key>(static_cast<int>(Key::Keypad0) + key - Qt::Key_0);
        }
        if (const Key found = lookUp(KeypadNames, key); found != Key::None) {
            return found;
        }
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) {
        return static_cast<Key>(static_cast<int>(Key::F1) + key - Qt::Key_F1);
    }
    const Key right = lookUp(RightSides, static_cast<int>(event.nativeVirtualKey()));
    return right != Key::None ? right : lookUp(Names, key);
}

bool isDigitOrPoint(int key)
{
    return (key >= Qt::Key_0 && key <= Qt::Key_9) || key == Qt::Key_Period || key == Qt::Key_Comma;
}

} // namespace

uint8_t toModifiers(Qt::KeyboardModifiers modifiers)
{
    return static_cast<uint8_t>(
        (modifiers.testFlag(Qt::ShiftModifier) ? Shift : 0) | (modifiers.testFlag(Qt::AltModifier) ? Alt : 0) |
        (modifiers.testFlag(Qt::ControlModifier) ? Control : 0) | (modifiers.testFlag(Qt::MetaModifier) ? Super : 0));
}

KeyEvent toKeyEvent(const QKeyEvent &event)
{
    KeyEvent result;
    result.modifiers = toModifiers(event.modifiers());
    result.action = event.type() == QEvent::KeyRelease ? KeyEvent::Action::Release
                    : event.isAutoRepeat()             ? KeyEvent::Action::Repeat
                                                       : KeyEvent::Action::Press;
    result.key = namedKey(event);
    if (event.key() == Qt::Key_Backtab) {
        result.modifiers |= Shift;
    }
    const QString typed = event.text();
    const bool prints = !typed.isEmpty() && typed.at(0).unicode() >= 0x20 && typed.at(0).unicode() != 0x7f;
    if (prints) {
        result.text = typed.toStdString();
    }
    if (result.key != Key::None) {
        const bool keypad = event.modifiers().testFlag(Qt::KeypadModifier);
        // The window system resolved the number lock already: a digit means it is on.
        result.modifiers |= keypad && isDigitOrPoint(event.key()) ? NumLocked : 0;
        return result;
    }
    const bool control = event.modifiers().testFlag(Qt::ControlModifier);
    const int key = event.key();
    if (prints && !control) {
        result.character = typed.toUcs4().constFirst();
    } else if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        const bool shift = event.modifiers().testFlag(Qt::ShiftModifier);
        result.character = static_cast<char32_t>(shift ? key : key - Qt::Key_A + 'a');
    } else if (key >= 0x20 && key < 0x01000000) {
        result.character = static_cast<char32_t>(key);
    } else if (prints) {
        result.character = typed.toUcs4().constFirst();
    }
    return result;
}

ViewCommand commandOf(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    const int key = event.key();
    if (modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) {
        switch (key) {
        case Qt::Key_C:
            return ViewCommand::Copy;
        case Qt::Key_V:
            return ViewCommand::Paste;
        case Qt::Key_F:
            return ViewCommand::Find;
        case Qt::Key_Plus: // on most keyboards plus takes Shift
            return ViewCommand::ZoomIn;
        case Qt::Key_Up:
            return ViewCommand::LineUp;
        case Qt::Key_Down:
            return ViewCommand::LineDown;
        default:
            return ViewCommand::None;
        }
    }
    if (modifiers == Qt::ControlModifier) {
        switch (key) {
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            return ViewCommand::ZoomIn;
        case Qt::Key_Minus:
            return ViewCommand::ZoomOut;
        case Qt::Key_0:
            return ViewCommand::ZoomReset;
        default:
            return ViewCommand::None;
        }
    }
    if (modifiers == Qt::ShiftModifier && !event.modifiers().testFlag(Qt::KeypadModifier)) {
        switch (key) {
        case Qt::Key_PageUp:
            return ViewCommand::PageUp;
        case Qt::Key_PageDown:
            return ViewCommand::PageDown;
        case Qt::Key_Home:
            return ViewCommand::Top;
        case Qt::Key_End:
            return ViewCommand::Bottom;
        case Qt::Key_Insert:
            return ViewCommand::PasteSelection;
        default:
            return ViewCommand::None;
        }
    }
    return ViewCommand::None;
}

bool isShellKey(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    const int key = event.key();
    if (modifiers.testFlag(Qt::MetaModifier)) {
        return false;
    }
    if (!modifiers.testFlag(Qt::ControlModifier)) {
        return true;
    }
    if (modifiers == Qt::ControlModifier) {
        const bool code = (key >= Qt::Key_A && key <= Qt::Key_Z) || key == Qt::Key_Space || key == Qt::Key_At ||
                          (key >= Qt::Key_BracketLeft && key <= Qt::Key_Underscore) || key == Qt::Key_Slash ||
                          key == Qt::Key_Question;
        const bool moves = key >= Qt::Key_Home && key <= Qt::Key_Down;
        return code || moves || key == Qt::Key_Backspace || key == Qt::Key_Delete || key == Qt::Key_Return;
    }
    // Underscore and others may take Shift where the key stands.
    return modifiers == (Qt::ControlModifier | Qt::ShiftModifier) &&
           (key == Qt::Key_Underscore || key == Qt::Key_AsciiCircum || key == Qt::Key_At || key == Qt::Key_Question);
}

} // namespace vt
