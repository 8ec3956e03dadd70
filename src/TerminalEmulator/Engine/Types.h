#pragma once

#include "TerminalEmulator/Engine/Cell.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Values that pass between the engine and whoever embeds it.
namespace vt
{

/// How a terminal is set up. Sizes are in cells; every size is clamped to 1 to MaxColumns and MaxRows.
struct Options {
    static constexpr int MaxColumns = 4096;
    static constexpr int MaxRows = 4096;
    static constexpr int MaxScrollback = 1'000'000;

    int columns = 80;
    int rows = 24;
    int scrollback = 10'000;          ///< rows kept above the screen
    bool allowClipboardWrite = false; ///< OSC 52 raises an event
    bool allowClipboardRead = false;  ///< OSC 52 may ask; the answer is what was last written or given
    bool allowResize = false;         ///< applications may change the size (DECCOLM, XTWINOPS, DECSLPP): done at once
    int mostColumns = MaxColumns;     ///< the largest size they get
    int mostRows = MaxRows;
    bool allowTitleReports = false; ///< the title is told on request: text of one program typed into another
    int cellWidth = 8;              ///< pixels, for reports
    int cellHeight = 16;
    std::string name = "tarnwell"; ///< told by XTVERSION
    std::string version = "0.1";
};

/// What happened on the way that is not on the screen. Take them with Terminal::takeEvents; several changes of one
/// title in between come as one event with the last text.
struct Event {
    enum class Kind : uint8_t {
        Bell,
        Title,            ///< text
        IconName,         ///< text
        WorkingDirectory, ///< text: the URI of OSC 7
        ClipboardWrite,   ///< text: the bytes; target: which selections ("c", "p", "s0"...)
        Notification,     ///< text: the body; target: the title, perhaps empty (OSC 9, OSC 777)
        Mark,             ///< shell integration (OSC 133): number is the letter, value the exit status or -1
        Resized,          ///< the application changed the size: number columns, value rows
        Window,           ///< XTWINOPS 1 to 10: number is the operation, value and value2 its parameters
        PaletteChanged,
        ModesChanged, ///< mouse, cursor keys, screen colours...: what the embedder may have derived is void
        PointerShape, ///< text: the CSS name of OSC 22
    };

    Kind kind;
    std::string text;
    std::string target;
    int number = 0;
    int value = 0;
    int value2 = 0;
};

/// A place in the buffer. Lines are counted from the first line that ever was: a line keeps its number while it
/// moves into the scrollback; only a change of width renumbers (Terminal::reflowCount tells).
struct Position {
    int64_t line = 0;
    int column = 0;

    auto operator<=>(const Position &) const = default;
};

/// A row to be drawn. Columns at and beyond cells.size() are blank in the default style.
struct Line {
    std::vector<Cell> cells;
    bool wrapped = false; ///< its text goes on in the next line
    LineSize size = LineSize::Normal;
};

enum class CursorShape : uint8_t { Block, Underline, Bar };

struct CursorState {
    int row = 0; ///< on the screen, from 0
    int column = 0;
    bool visible = true;
    bool blinking = true;
    bool pendingWrap = false; ///< stands on the last column; the next character goes to the next line
    CursorShape shape = CursorShape::Block;
};

struct Rgb {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
    bool operator==(const Rgb &) const = default;
};

/// A mark of shell integration (OSC 133): where a prompt, a command's text or its output begins, or where it ended.
struct Mark {
    Position position;
    char kind = 'A';     ///< 'A' prompt, 'B' command line, 'C' output, 'D' end
    int exitStatus = -1; ///< of 'D', -1 if it was not told
};

} // namespace vt
