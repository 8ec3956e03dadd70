#include "TerminalEmulator/Engine/TerminalExtra.h"

namespace vt
{

void Terminal::startSelection(Position at, SelectionKind kind)
{
    m_extra->selection.start(at, kind);
}

void Terminal::extendSelection(Position to)
{
    m_extra->selection.extend(to);
}

void Terminal::clearSelection()
{
    m_extra->selection.clear();
}

void Terminal::selectAll()
{
    m_extra->selection.selectAll();
}

std::optional<Selection> Terminal::selection() const
{
    return m_extra->selection.selection();
}

bool Terminal::isSelected(Position at) const
{
    const std::optional<Selection> selected = selection();
    if (!selected) {
        return false;
    }
    if (selected->kind == SelectionKind::Block) {
        return at.line >= selected->first.line && at.line <= selected->last.line &&
               at.column >= selected->first.column && at.column <= selected->last.column;
    }
    return at >= selected->first && at <= selected->last;
}

std::string Terminal::selectedText() const
{
    const std::optional<Selection> selected = selection();
    return selected ? text(selected->first, selected->last, selected->kind == SelectionKind::Block) : std::string();
}

std::string Terminal::text(Position first, Position last, bool block) const
{
    return m_extra->selection.text(first, last, block);
}

void Terminal::setWordCharacters(std::string_view characters)
{
    m_extra->selection.setWordCharacters(characters);
}

bool Terminal::setSearch(const SearchQuery &query)
{
    return m_extra->search.set(query);
}

std::optional<SearchHit> Terminal::findNext(Position from, bool forward) const
{
    return m_extra->search.next(from, forward);
}

std::vector<SearchHit> Terminal::hits(int64_t first, int64_t last) const
{
    return m_extra->search.hits(first, last);
}

std::optional<Terminal::FoundLink> Terminal::linkAt(Position at) const
{
    const LogicalLine line = logicalLine(*m_emulation, at.line);
    const size_t index = line.indexOf(at);
    const size_t here = index < line.places.size() && line.places[index] == at ? index : index - 1;
    if (here >= line.places.size() || line.endOf(here) < at) {
        return std::nullopt;
    }
    const auto linkOf = [this](Position place) {
        Line row;
        const bool there =
            m_emulation->readLine(place.line, row) && place.column < static_cast<int>(row.cells.size());
        return there ? m_emulation->m_styles[row.cells[static_cast<size_t>(place.column)].style].link : 0u;
    };
    if (const uint32_t number = linkOf(line.places[here]); const Link *found = link(number)) {
        size_t first = here;
        size_t last = here;
        while (first > 0 && linkOf(line.places[first - 1]) == number) {
            --first;
        }
        while (last + 1 < line.places.size() && linkOf(line.places[last + 1]) == number) {
            ++last;
        }
        return FoundLink{found->uri, line.places[first], line.endOf(last)};
    }
    const std::optional<PlainLink> plain = plainLinkAt(line.text, here);
    if (!plain) {
        return std::nullopt;
    }
    std::string uri;
    for (const char32_t each : plain->uri) {
        appendUtf8(uri, each);
    }
    return FoundLink{uri, line.places[plain->first], line.endOf(plain->last)};
}

} // namespace vt
