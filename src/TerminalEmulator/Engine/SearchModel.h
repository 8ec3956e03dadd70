#pragma once

#include "TerminalEmulator/Engine/LogicalLine.h"
#include "TerminalEmulator/Engine/Regex.h"
#include "TerminalEmulator/Engine/Terminal.h"

namespace vt
{

/// Looks for text in logical lines, so that what autowrap cut is found.
class SearchModel
{
public:
    explicit SearchModel(const Emulation &emulation)
        : m_emulation(emulation)
    {
    }

    bool set(const SearchQuery &query);
    std::optional<SearchHit> next(Position from, bool forward) const;
    std::vector<SearchHit> hits(int64_t first, int64_t last) const;

private:
    std::vector<SearchHit> hitsIn(const LogicalLine &line) const;
    std::optional<std::pair<size_t, size_t>> findIn(std::u32string_view text, std::u32string_view folded,
                                                    size_t from) const;

    const Emulation &m_emulation;
    SearchQuery m_query;
    std::u32string m_needle;
    std::optional<Regex> m_regex;
};

/// An address in a text: where it stands, and what to open.
struct PlainLink {
    size_t first;
    size_t last; ///< inside
    std::u32string uri;
};

/// The address around position `at` of a text, if one stands there: a known scheme and "//", "mailto:", or "www.".
std::optional<PlainLink> plainLinkAt(std::u32string_view text, size_t at);

} // namespace vt
