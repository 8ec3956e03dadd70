// The engine with everything an embedder may do in between: the input is cut into pieces, and the byte 0xff before a
// piece is a command (resize, select, search, keys, reading all lines) with the next byte as its argument.

#include "TerminalEmulator/Engine/Terminal.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace
{

void readEverything(vt::Terminal &terminal)
{
    vt::Line line;
    std::string text;
    for (int64_t number = terminal.firstLine(); number <= terminal.lastLine(); ++number) {
        if (!terminal.line(number, line)) {
            __builtin_trap();
        }
        text.clear();
        for (const vt::Cell &cell : line.cells) {
            terminal.appendText(cell, text);
            terminal.link(terminal.style(cell.style).link);
        }
    }
    const vt::CursorState cursor = terminal.cursor();
    if (cursor.row < 0 || cursor.row >= terminal.rows() || cursor.column < 0 || cursor.column >= terminal.columns()) {
        __builtin_trap();
    }
    // Both halves of a wide character, or none.
    for (int row = 0; row < terminal.rows(); ++row) {
        for (int column = 0; column < terminal.columns(); ++column) {
            const bool wide = terminal.cell(row, column).isWide();
            if (wide != terminal.cell(row, column + 1).isTail()) {
                __builtin_trap();
            }
        }
    }
}

void command(vt::Terminal &terminal, uint8_t argument)
{
    const vt::Position place{terminal.firstLine() + argument % 50, argument % 90};
    switch (argument % 12) {
    case 0:
        terminal.resize(1 + argument % 100, 1 + argument / 8);
        break;
    case 1:
        terminal.resize(1 + argument / 3, terminal.rows());
        break;
    case 2:
        terminal.startSelection(place, static_cast<vt::SelectionKind>(argument / 12 % 4));
        break;
    case 3:
        terminal.extendSelection(place);
        terminal.selectedText();
        break;
    case 4:
        terminal.setSearch({"a+(b|c)*.", true, false, argument > 128});
        terminal.findNext(place, argument > 100);
        break;
    case 5:
        terminal.setSearch({"e", false, argument > 128, false});
        terminal.hits(terminal.firstLine(), terminal.lastLine());
        break;
    case 6:
        terminal.linkAt(place);
        break;
    case 7:
        readEverything(terminal);
        break;
    case 8:
        terminal.setScrollback(argument % 40);
        break;
    case 9:
        terminal.encodeKey({static_cast<vt::Key>(argument % 60), 'a', 0, "a", argument});
        break;
    case 10:
        terminal.takeDamage();
        terminal.takeReplies();
        terminal.takeEvents();
        break;
    default:
        terminal.reset();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    vt::Options options;
    options.columns = 20;
    options.rows = 6;
    options.scrollback = 30;
    options.allowClipboardRead = true;
    options.allowClipboardWrite = true;
    options.allowTitleReports = true;
    options.allowResize = true;
    // Larger ones only make it slow.
    options.mostColumns = 200;
    options.mostRows = 100;
    vt::Terminal terminal(options);
    std::string_view rest(reinterpret_cast<const char *>(data), size);
    while (!rest.empty()) {
        const size_t end = rest.find('\xff');
        terminal.feed(rest.substr(0, end));
        if (end == std::string_view::npos || end + 1 >= rest.size()) {
            break;
        }
        command(terminal, static_cast<uint8_t>(rest[end + 1]));
        rest.remove_prefix(end + 2);
    }
    readEverything(terminal);
    return 0;
}
