#include "TerminalEmulator/Engine/SelectionModel.h"

#include "TerminalEmulator/Engine/LogicalLine.h"
#include "TerminalEmulator/Engine/Utf32.h"

#include <algorithm>

namespace vt
{

SelectionModel::SelectionModel(Emulation &emulation)
    : m_emulation(emulation)
{
    for (Position *each : {&m_anchorFirst, &m_anchorLast, &m_headFirst, &m_headLast}) {
        emulation.m_tracked.push_back(each);
    }
}

void SelectionModel::setWordCharacters(std::string_view utf8)
{
    m_wordCharacters = toUtf32(utf8);
}

int SelectionModel::wordClass(char32_t character) const
{
    if (unicode::property(character).isWord() || m_wordCharacters.find(character) != std::u32string::npos) {
        return 1;
    }
    return character == ' ' || character == '\t' ? 2 : 0;
}

/// The smallest piece a selection of this kind can consist of, at a place.
Selection SelectionModel::unit(Position at) const
{
    Selection result{at, at, m_kind};
    if (m_kind == SelectionKind::Character || m_kind == SelectionKind::Block) {
        return result;
    }
    const LogicalLine line = logicalLine(m_emulation, at.line);
    if (m_kind == SelectionKind::Line) {
        return {{line.first, 0}, {std::max(line.last, line.first), m_emulation.columns() - 1}, m_kind};
    }
    size_t index = line.indexOf(at);
    // The second column of a wide character belongs to the first.
    if (index > 0 && (index == line.places.size() || line.places[index] != at) && line.endOf(index - 1) >= at) {
        --index;
    }
    if (index >= line.text.size() || line.endOf(index) < at || line.places[index].line != at.line) {
        return result;
    }
    const int kind = wordClass(line.text[index]);
    size_t first = index;
    size_t last = index;
    const auto joins = [&](size_t one, size_t other) {
        return line.places[one] == line.places[other] || (kind != 0 && wordClass(line.text[one]) == kind);
    };
    while (first > 0 && joins(first - 1, first)) {
        --first;
    }
    while (last + 1 < line.text.size() && joins(last + 1, last)) {
        ++last;
    }
    return {line.places[first], line.endOf(last), m_kind};
}

void SelectionModel::start(Position at, SelectionKind kind)
{
    m_kind = kind;
    m_active = true;
    m_emulation.m_lineObserver = this;
    m_extended = kind == SelectionKind::Word || kind == SelectionKind::Line;
    m_alternate = m_emulation.isAlternate();
    const Selection begin = unit(at);
    m_anchorFirst = m_headFirst = begin.first;
    m_anchorLast = m_headLast = begin.last;
}

void SelectionModel::clear()
{
    m_active = false;
    m_emulation.m_lineObserver = nullptr;
}

void SelectionModel::linesMoved(int64_t first, int64_t last, int by)
{
    if (m_alternate != m_emulation.isAlternate()) {
        return;
    }
    const int64_t begin = std::min(m_anchorFirst.line, m_headFirst.line);
    const int64_t end = std::max(m_anchorLast.line, m_headLast.line);
    if (begin >= first && end <= last && (end + by < first || begin + by > last)) {
        clear();
        return;
    }
    const int edge = m_emulation.columns() - 1;
    const auto move = [&](Position &at, bool isFirst) {
        if (at.line < first || at.line > last) {
            return;
        }
        at.line += by;
        // An end that left lies at the border, where nothing more is selected on its account.
        if (at.line < first || at.line > last) {
            at.line = at.line < first ? first - (isFirst ? 0 : 1) : last + (isFirst ? 1 : 0);
            at.column = m_kind == SelectionKind::Block ? at.column : isFirst ? 0 : edge;
        }
    };
    move(m_anchorFirst, true);
    move(m_headFirst, true);
    move(m_anchorLast, false);
    move(m_headLast, false);
}

void SelectionModel::extend(Position to)
{
    if (!m_active) {
        return;
    }
    const Selection end = unit(to);
    m_headFirst = end.first;
    m_headLast = end.last;
    m_extended = true;
}

void SelectionModel::selectAll()
{
    start({m_emulation.firstLine(), 0}, SelectionKind::Line);
    extend({m_emulation.screenTop() + m_emulation.rows() - 1, 0});
}

std::optional<Selection> SelectionModel::selection() const
{
    if (!m_active || !m_extended || m_alternate != m_emulation.isAlternate()) {
        return std::nullopt;
    }
    Selection result{std::min(m_anchorFirst, m_headFirst), std::max(m_anchorLast, m_headLast), m_kind};
    if (m_kind == SelectionKind::Block) {
        const auto [left, right] = std::minmax(m_anchorFirst.column, m_headFirst.column);
        result.first.column = left;
        result.last.column = right;
    }
    const int64_t oldest = m_emulation.firstLine();
    if (result.last.line < oldest) {
        return std::nullopt;
    }
    if (result.first.line < oldest) {
        result.first = {oldest, m_kind == SelectionKind::Block ? result.first.column : 0};
    }
    return result;
}

void SelectionModel::appendRow(const Line &row, int left, int right, std::string &out) const
{
    // What was never written at the end of a row is not text; what was erased between characters reads as blank.
    const int end = std::min<int>(right + 1, static_cast<int>(row.cells.size()));
    int last = end;
    while (last > left && row.cells[static_cast<size_t>(last - 1)].isEmpty()) {
        --last;
    }
    char32_t points[Clusters::MaxLength];
    for (int x = left; x < last; ++x) {
        const Cell cell = row.cells[static_cast<size_t>(x)];
        if (cell.isTail()) {
            continue;
        }
        const int count = cell.isEmpty() ? 1 : m_emulation.m_clusters.expand(cell.code, points);
        for (int at = 0; at < count; ++at) {
            appendUtf8(out, cell.isEmpty() ? U' ' : points[at]);
        }
    }
}

std::string SelectionModel::text(Position first, Position last, bool block) const
{
    std::string out;
    Line row;
    const int edge = m_emulation.columns() - 1;
    first.line = std::max(first.line, m_emulation.firstLine());
    last.line = std::min(last.line, m_emulation.screenTop() + m_emulation.rows() - 1);
    for (int64_t number = first.line; number <= last.line; ++number) {
        if (!m_emulation.readLine(number, row)) {
            break;
        }
        const int left = block || number == first.line ? std::max(first.column, 0) : 0;
        const int right = block || number == last.line ? last.column : edge;
        const size_t begin = out.size();
        appendRow(row, left, right, out);
        const bool joined = row.wrapped && !block;
        if (number == last.line) {
            break;
        }
        if (!joined) {
            while (out.size() > begin && out.back() == ' ') {
                out.pop_back();
            }
            out += '\n';
        }
    }
    return out;
}

} // namespace vt
