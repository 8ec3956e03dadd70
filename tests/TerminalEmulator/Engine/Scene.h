#pragma once

#include "TerminalEmulator/Engine/Terminal.h"

#include <QByteArray>
#include <QTest>

#include <string>
#include <string_view>

/// A terminal for transcripts: bytes go in with feed(), and the screen, the cursor and the answers are compared as
/// text. Rows and columns are counted from 1, as the sequences count them.
class Scene
{
public:
    explicit Scene(int columns = 20, int rows = 5, int scrollback = 100)
        : Scene(options(columns, rows, scrollback))
    {
    }

    explicit Scene(const vt::Options &given)
        : terminal(given)
    {
    }

    static vt::Options options(int columns, int rows, int scrollback)
    {
        vt::Options made;
        made.columns = columns;
        made.rows = rows;
        made.scrollback = scrollback;
        return made;
    }

    Scene &feed(std::string_view bytes)
    {
        terminal.feed(bytes);
        return *this;
    }

    /// A row's text without the blanks at its end; never written cells show as '.', if `dots` is given.
    QByteArray row(int number, bool dots = false) const { return lineText(terminal.screenTop() + number - 1, dots); }

    QByteArray lineText(int64_t number, bool dots = false) const
    {
        vt::Line line;
        std::string out;
        if (terminal.line(number, line)) {
            for (const vt::Cell &cell : line.cells) {
                dots &&cell.isEmpty() ? out += '.' : (terminal.appendText(cell, out), "");
            }
        }
        while (!out.empty() && (out.back() == ' ' || (dots && out.back() == '.'))) {
            out.pop_back();
        }
        return QByteArray::fromStdString(out);
    }

    /// All rows, joined with '|', without the empty ones at the end.
    QByteArray screen() const
    {
        QByteArray out;
        for (int number = 1; number <= terminal.rows(); ++number) {
            out += (number > 1 ? "|" : "") + row(number);
        }
        while (out.endsWith('|')) {
            out.chop(1);
        }
        return out;
    }

    /// "row;column" of the cursor.
    QByteArray cursor() const
    {
        const vt::CursorState state = terminal.cursor();
        return QByteArray::number(state.row + 1) + ';' + QByteArray::number(state.column + 1);
    }

    /// The answers so far, with ESC written as "^[" and other controls as \xNN.
    QByteArray replies() { return visible(terminal.takeReplies()); }

    /// What the terminal answers to `bytes`.
    QByteArray ask(std::string_view bytes)
    {
        terminal.takeReplies();
        feed(bytes);
        return replies();
    }

    static QByteArray visible(std::string_view bytes)
    {
        QByteArray out;
        for (const char each : bytes) {
            const auto byte = static_cast<unsigned char>(each);
            if (byte == 0x1b) {
                out += "^[";
            } else if (byte < 0x20 || byte >= 0x7f) {
                out += "\\x" + QByteArray::number(byte, 16).rightJustified(2, '0');
            } else {
                out += each;
            }
        }
        return out;
    }

    const vt::Style &style(int row, int column) const
    {
        return terminal.style(terminal.cell(row - 1, column - 1).style);
    }

    vt::Terminal terminal;
};
