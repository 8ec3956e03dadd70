#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Hex.h"

#include <algorithm>

namespace vt
{

namespace
{

/// The engine has no window; reports speak of one on a screen of this size, at the position it was last moved to.
constexpr int ScreenWidth = 1920;
constexpr int ScreenHeight = 1080;

} // namespace

/// The user's own size is not undone by an application that gives an earlier one back.
void Emulation::resizeByEmbedder(int newColumns, int newRows)
{
    if (newColumns != columns() || newRows != rows()) {
        m_window.restoreColumns = 0;
    }
    resize(newColumns, newRows);
}

/// The application wants another size. It gets it if the embedder allows that.
void Emulation::requestSize(int wantedColumns, int wantedRows)
{
    if (!m_options.allowResize) {
        return;
    }
    const int newColumns = std::clamp(wantedColumns, 1, m_options.mostColumns);
    const int newRows = std::clamp(wantedRows, 1, m_options.mostRows);
    if (newColumns == columns() && newRows == rows()) {
        return;
    }
    resize(newColumns, newRows);
    emitEvent({Event::Kind::Resized, {}, {}, newColumns, newRows});
}

void Emulation::maximize(bool on, bool horizontal, bool vertical)
{
    if (on) {
        if (m_window.restoreColumns == 0) {
            m_window.restoreColumns = columns();
            m_window.restoreRows = rows();
        }
        requestSize(horizontal ? ScreenWidth / m_options.cellWidth : columns(),
                    vertical ? ScreenHeight / m_options.cellHeight : rows());
    } else if (m_window.restoreColumns != 0) {
        requestSize(m_window.restoreColumns, m_window.restoreRows);
        m_window.restoreColumns = 0;
    }
}

/// XTWINOPS.
void Emulation::windowOperation(const Sequence &s)
{
    const int operation = s.value(0);
    const int cellWidth = m_options.cellWidth;
    const int cellHeight = m_options.cellHeight;
    if (operation >= 1 && operation <= 10) {
        emitEvent({Event::Kind::Window, {}, {}, operation, s.value(1, -1), s.value(2, -1)});
    }
    switch (operation) {
    case 1:
        m_window.iconified = false;
        break;
    case 2:
        m_window.iconified = true;
        break;
    case 3:
        m_window.x = s.value(1);
        m_window.y = s.value(2);
        break;
    case 4: {
        // Left out: as it is; 0: as large as the screen.
        const auto cells = [](int pixels, int cell, int now, int full) {
            return pixels < 0 ? now : (pixels == 0 ? full : pixels) / cell;
        };
        requestSize(cells(s.value(2, -1), cellWidth, columns(), ScreenWidth),
                    cells(s.value(1, -1), cellHeight, rows(), ScreenHeight));
        break;
    }
    case 8: {
        const auto cells = [](int given, int now, int full) { return given < 0 ? now : given == 0 ? full : given; };
        requestSize(cells(s.value(2, -1), columns(), ScreenWidth / cellWidth),
                    cells(s.value(1, -1), rows(), ScreenHeight / cellHeight));
        break;
    }
    case 9:
        if (s.value(1) <= 3) {
            maximize(s.value(1) != 0, s.value(1) != 2, s.value(1) != 3);
        }
        break;
    case 10:
        m_window.fullScreen = s.value(1) == 2 ? !m_window.fullScreen : s.value(1) == 1;
        maximize(m_window.fullScreen, true, true);
        break;
    case 22:
        pushTitle(s.value(1), s.value(2));
        break;
    case 23:
        popTitle(s.value(1), s.value(2));
        break;
    default:
        if (operation >= 24) {
            requestSize(columns(), operation);
        } else {
            geometryReport(operation);
        }
    }
}

void Emulation::geometryReport(int operation)
{
    const auto pair = [this](int kind, int first, int second) {
        replyCsi(std::to_string(kind) + ';' + std::to_string(first) + ';' + std::to_string(second) + 't');
    };
    switch (operation) {
    case 11:
        replyCsi(m_window.iconified ? "2t" : "1t");
        break;
    case 13:
        pair(3, m_window.x, m_window.y);
        break;
    case 14:
        pair(4, rows() * m_options.cellHeight, columns() * m_options.cellWidth);
        break;
    case 15:
        pair(5, ScreenHeight, ScreenWidth);
        break;
    case 16:
        pair(6, m_options.cellHeight, m_options.cellWidth);
        break;
    case 18:
        pair(8, rows(), columns());
        break;
    case 19:
        pair(9, ScreenHeight / m_options.cellHeight, ScreenWidth / m_options.cellWidth);
        break;
    case 20:
        titleReport('L', m_iconName);
        break;
    case 21:
        titleReport('l', m_title);
        break;
    default:
        break;
    }
}

void Emulation::titleReport(char kind, const std::string &text)
{
    if (!m_options.allowTitleReports) {
        replyOsc(std::string(1, kind), false);
        return;
    }
    std::string body(1, kind);
    body += (m_titleModes & 2) != 0 ? toHex(text) : text;
    replyOsc(body, false);
}

/// `which`: 0 both, 1 icon name, 2 title. `place`: 0 for the top of the stack, or the number of an entry, which is
/// written or read where it is.
void Emulation::pushTitle(int which, int place)
{
    if (which > 2 || place > static_cast<int>(m_titleStack.size())) {
        return;
    }
    if (place == 0 && m_titleDepth == m_titleStack.size()) {
        std::rotate(m_titleStack.begin(), m_titleStack.begin() + 1, m_titleStack.end());
        --m_titleDepth;
    }
    SavedTitles &saved = m_titleStack[place > 0 ? static_cast<size_t>(place) - 1 : m_titleDepth++];
    saved = {};
    if (which != 1) {
        saved.title = m_title;
    }
    if (which != 2) {
        saved.iconName = m_iconName;
    }
}

/// What the entry does not have comes from the one below that has it: the two may have been saved one by one.
void Emulation::popTitle(int which, int place)
{
    if (which > 2 || place > static_cast<int>(m_titleStack.size()) || (place == 0 && m_titleDepth == 0)) {
        return;
    }
    const size_t entry = place > 0 ? static_cast<size_t>(place) - 1 : --m_titleDepth;
    const auto find = [&](std::optional<std::string> SavedTitles::*part) {
        size_t at = entry;
        while (place == 0 && at > 0 && !(m_titleStack[at].*part)) {
            --at;
        }
        return m_titleStack[at].*part;
    };
    if (const auto saved = find(&SavedTitles::iconName); saved && which != 2) {
        m_iconName = *saved;
        emitEvent({Event::Kind::IconName, m_iconName, {}});
    }
    if (const auto saved = find(&SavedTitles::title); saved && which != 1) {
        m_title = *saved;
        emitEvent({Event::Kind::Title, m_title, {}});
    }
    if (place == 0) {
        m_titleStack[entry] = {};
    }
}

/// XTSMTITLE: 0 titles are set in hexadecimal, 1 told in it; 2 and 3 are UTF-8, which they always are.
void Emulation::titleModes(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        m_titleModes |= s.value(at) <= 3 ? 1 << s.value(at) : 0;
    }
}

void Emulation::titleModesReset(const Sequence &s)
{
    for (int at = 0; at < s.count; ++at) {
        m_titleModes &= s.value(at) <= 3 ? ~(1 << s.value(at)) : ~0;
    }
    if (s.count == 0) {
        m_titleModes = 0;
    }
}

void Emulation::decscpp(const Sequence &s)
{
    const int wanted = s.value(0);
    if (wanted == 0 || wanted == 80 || wanted == 132) {
        requestSize(wanted == 132 ? 132 : 80, rows());
        store(Mode::Columns132, wanted == 132);
    }
}

void Emulation::decsnls(const Sequence &s)
{
    if (s.value(0) >= 1 && s.value(0) <= 255) {
        requestSize(columns(), s.value(0));
    }
}

/// DECSASD: with 1, text and everything that moves or changes it goes to the status line, which is not shown.
void Emulation::decsasd(const Sequence &s)
{
    activateStatusDisplay(s.value(0) == 1 && m_statusDisplay == 2);
}

void Emulation::activateStatusDisplay(bool on)
{
    if (on != m_statusDisplayActive) {
        m_statusDisplayActive = on;
        buildDirect();
        updateTextPath();
    }
}

void Emulation::decssdt(const Sequence &s)
{
    if (s.value(0) <= 2) {
        m_statusDisplay = s.value(0);
        activateStatusDisplay(m_statusDisplayActive && m_statusDisplay == 2);
    }
}

} // namespace vt
