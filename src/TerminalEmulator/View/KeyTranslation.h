#pragma once

#include "TerminalEmulator/Engine/Keys.h"

#include <Qt>

class QKeyEvent;

namespace vt
{

/// What a key event of the window system is to a terminal.
KeyEvent toKeyEvent(const QKeyEvent &event);

uint8_t toModifiers(Qt::KeyboardModifiers modifiers);

/// What a key does to the view itself instead of going to the application.
enum class ViewCommand : uint8_t {
    None,
    Copy,
    Paste,
    PasteSelection,
    Find,
    ZoomIn,
    ZoomOut,
    ZoomReset,
    PageUp,
    PageDown,
    LineUp,
    LineDown,
    Top,
    Bottom,
};

ViewCommand commandOf(const QKeyEvent &event);

/// Whether a key belongs to the application before any shortcut of the window: characters, Control with a letter or
/// with what makes a control code, function and cursor keys. Control with digits or with Shift stays with the window.
bool isShellKey(const QKeyEvent &event);

} // namespace vt
