#include "TerminalEmulator/Engine/Terminal.h"

#include "TerminalEmulator/Engine/TerminalExtra.h"

#include <algorithm>
#include <utility>

namespace vt
{

Terminal::Terminal(const Options &options)
    : m_emulation(std::make_unique<Emulation>(options))
    , m_extra(std::make_unique<Extra>(*m_emulation))
{
}

Terminal::~Terminal() = default;

void Terminal::feed(std::string_view bytes)
{
    m_emulation->feed(bytes);
}

std::string Terminal::takeReplies()
{
    return std::exchange(m_emulation->m_replies, {});
}

bool Terminal::hasReplies() const
{
    return !m_emulation->m_replies.empty();
}

std::vector<Event> Terminal::takeEvents()
{
    return std::exchange(m_emulation->m_events, {});
}

int Terminal::columns() const
{
    return m_emulation->columns();
}

int Terminal::rows() const
{
    return m_emulation->rows();
}

void Terminal::resize(int columns, int rows)
{
    m_emulation->resizeByEmbedder(columns, rows);
}

void Terminal::setCellSize(int width, int height)
{
    m_emulation->m_options.cellWidth = std::max(width, 1);
    m_emulation->m_options.cellHeight = std::max(height, 1);
}

void Terminal::setScrollback(int rows)
{
    m_emulation->setScrollback(static_cast<size_t>(std::clamp(rows, 0, Options::MaxScrollback)));
}

int Terminal::historySize() const
{
    return static_cast<int>(screenTop() - firstLine());
}

int Terminal::savedLines() const
{
    return static_cast<int>(m_emulation->m_history.size());
}

bool Terminal::isAlternateScreen() const
{
    return m_emulation->isAlternate();
}

int64_t Terminal::firstLine() const
{
    return m_emulation->firstLine();
}

int64_t Terminal::screenTop() const
{
    return m_emulation->screenTop();
}

int64_t Terminal::lastLine() const
{
    return m_emulation->screenTop() + rows() - 1;
}

uint32_t Terminal::reflowCount() const
{
    return m_emulation->m_reflows;
}

bool Terminal::line(int64_t line, Line &out) const
{
    return m_emulation->readLine(line, out);
}

Cell Terminal::cell(int row, int column) const
{
    if (row < 0 || row >= rows() || column < 0 || column >= columns()) {
        return {};
    }
    return std::as_const(*m_emulation).grid().cell(row, column);
}

const Style &Terminal::style(StyleId id) const
{
    return m_emulation->m_styles[id];
}

void Terminal::appendText(const Cell &cell, std::string &out) const
{
    if (cell.isTail()) {
        return;
    }
    if (!cell.isCluster()) {
        appendUtf8(out, cell.isEmpty() ? U' ' : cell.code & Cell::CodePoint);
        return;
    }
    char32_t points[Clusters::MaxLength];
    const int count = m_emulation->m_clusters.expand(cell.code, points);
    for (int at = 0; at < count; ++at) {
        appendUtf8(out, points[at]);
    }
}

char32_t Terminal::firstCodePoint(const Cell &cell) const
{
    return cell.isTail() ? 0 : m_emulation->m_clusters.first(cell.code);
}

const Link *Terminal::link(uint32_t number) const
{
    return m_emulation->m_links.find(number);
}

CursorState Terminal::cursor() const
{
    return m_emulation->cursor();
}

Damage Terminal::takeDamage()
{
    Damage damage;
    damage.all = std::exchange(m_emulation->m_allDamaged, false);
    damage.scrolled = std::exchange(m_emulation->m_scrolled, 0);
    Grid &grid = m_emulation->grid();
    for (int y = 0; y < grid.rows(); ++y) {
        if (grid.row(y).has(Row::Dirty)) {
            grid.row(y).set(Row::Dirty, false);
            damage.rows.push_back(y);
        }
    }
    const CursorState now = cursor();
    CursorState &before = m_extra->lastCursor;
    damage.cursorMoved = now.row != before.row || now.column != before.column || now.visible != before.visible ||
                         now.shape != before.shape || now.blinking != before.blinking;
    before = now;
    return damage;
}

bool Terminal::isSynchronizing() const
{
    return m_emulation->mode(Mode::Synchronized);
}

bool Terminal::isReverseScreen() const
{
    return m_emulation->mode(Mode::ReverseScreen);
}

Rgb Terminal::indexedColor(int index) const
{
    return m_emulation->m_palette.indexed(std::clamp(index, 0, 255)).rgb();
}

Rgb Terminal::foreground() const
{
    return m_emulation->m_palette.dynamic(Palette::Foreground).rgb();
}

Rgb Terminal::background() const
{
    return m_emulation->m_palette.dynamic(Palette::Background).rgb();
}

Rgb Terminal::cursorColor() const
{
    return m_emulation->m_palette.dynamic(Palette::CursorColor).rgb();
}

Rgb Terminal::resolve(const Color &color, Rgb fallback) const
{
    switch (color.kind) {
    case Color::Kind::Indexed:
        return indexedColor(color.red);
    case Color::Kind::Rgb:
        return {color.red, color.green, color.blue};
    case Color::Kind::Default:
        break;
    }
    return fallback;
}

void Terminal::setDefaultColors(Rgb foreground, Rgb background, Rgb cursor)
{
    Palette &palette = m_emulation->m_palette;
    palette.setDefaultDynamic(Palette::Foreground, foreground);
    palette.setDefaultDynamic(Palette::Background, background);
    palette.setDefaultDynamic(Palette::CursorColor, cursor);
    m_emulation->m_allDamaged = true;
}

void Terminal::setDefaultIndexedColor(int index, Rgb color)
{
    if (index >= 0 && index < 256) {
        m_emulation->m_palette.setDefaultIndexed(index, color);
        m_emulation->m_allDamaged = true;
    }
}

const std::string &Terminal::title() const
{
    return m_emulation->m_title;
}

const std::string &Terminal::iconName() const
{
    return m_emulation->m_iconName;
}

const std::string &Terminal::workingDirectory() const
{
    return m_emulation->m_workingDirectory;
}

std::vector<Mark> Terminal::marks() const
{
    return {m_emulation->m_marks.begin(), m_emulation->m_marks.end()};
}

void Terminal::reset()
{
    m_emulation->hardReset();
}

void Terminal::clearHistory()
{
    m_emulation->clearHistory();
}

void Terminal::clearAbove()
{
    m_emulation->clearAbove();
}

size_t Terminal::memoryUse() const
{
    return m_emulation->memoryUse();
}

} // namespace vt
