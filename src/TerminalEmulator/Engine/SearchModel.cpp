#include "TerminalEmulator/Engine/SearchModel.h"

#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Utf32.h"

#include <algorithm>

namespace vt
{

namespace
{

std::u32string folded(std::u32string text)
{
    std::transform(text.begin(), text.end(), text.begin(), unicode::fold);
    return text;
}

} // namespace

bool SearchModel::set(const SearchQuery &query)
{
    m_query = query;
    m_regex.reset();
    m_needle = toUtf32(query.text);
    if (query.isRegex && !m_needle.empty()) {
        m_regex = Regex::compile(m_needle, query.caseSensitive);
        if (!m_regex) {
            m_needle.clear();
            return false;
        }
    } else if (!query.caseSensitive) {
        m_needle = folded(m_needle);
    }
    return true;
}

std::optional<std::pair<size_t, size_t>> SearchModel::findIn(std::u32string_view text, std::u32string_view foldedText,
                                                             size_t from) const
{
    if (m_regex) {
        return m_regex->find(text, from);
    }
    const std::u32string_view where = m_query.caseSensitive ? text : foldedText;
    const size_t found = where.find(m_needle, from);
    if (found == std::u32string_view::npos) {
        return std::nullopt;
    }
    return std::pair{found, found + m_needle.size()};
}

std::vector<SearchHit> SearchModel::hitsIn(const LogicalLine &line) const
{
    std::vector<SearchHit> result;
    if (m_needle.empty() || line.text.empty()) {
        return result;
    }
    const std::u32string_view text = line.text;
    const std::u32string plain = m_query.caseSensitive || m_regex ? std::u32string() : folded(line.text);
    const auto isWord = [&](size_t at) { return at < text.size() && unicode::property(text[at]).isWord(); };
    size_t from = 0;
    while (const auto found = findIn(text, plain, from)) {
        const auto [begin, end] = *found;
        if (end == begin) {
            from = begin + 1; // an empty match marks nothing
        } else {
            const bool whole =
                !(begin > 0 && isWord(begin - 1) && isWord(begin)) && !(isWord(end - 1) && isWord(end));
            if (whole || !m_query.wholeWords) {
                result.push_back({line.places[begin], line.endOf(end - 1)});
            }
            from = whole || !m_query.wholeWords ? end : begin + 1;
        }
        if (from > text.size()) {
            break;
        }
    }
    return result;
}

std::optional<SearchHit> SearchModel::next(Position from, bool forward) const
{
    const int64_t first = m_emulation.firstLine();
    const int64_t last = m_emulation.screenTop() + m_emulation.rows() - 1;
    if (m_needle.empty()) {
        return std::nullopt;
    }
    from.line = std::clamp(from.line, first, last);
    LogicalLine line = logicalLine(m_emulation, from.line);
    // Once round, and the line it began on a second time for what lies on its other side.
    bool wrapped = false;
    for (int64_t visited = 0; visited <= last - first + 2;) {
        const std::vector<SearchHit> found = hitsIn(line);
        if (forward) {
            const auto hit = std::find_if(found.begin(), found.end(),
                                          [&](const SearchHit &each) { return each.first > from || visited > 0; });
            if (hit != found.end()) {
                return *hit;
            }
        } else {
            const auto hit = std::find_if(found.rbegin(), found.rend(),
                                          [&](const SearchHit &each) { return each.first < from || visited > 0; });
            if (hit != found.rend()) {
                return *hit;
            }
        }
        visited += std::max<int64_t>(line.last - line.first + 1, 1);
        int64_t target = forward ? line.last + 1 : line.first - 1;
        if (target < first || target > last) {
            if (wrapped) {
                break;
            }
            wrapped = true;
            target = forward ? first : last;
        }
        line = logicalLine(m_emulation, target);
    }
    return std::nullopt;
}

std::vector<SearchHit> SearchModel::hits(int64_t first, int64_t last) const
{
    std::vector<SearchHit> result;
    if (m_needle.empty()) {
        return result;
    }
    first = std::max(first, m_emulation.firstLine());
    last = std::min(last, m_emulation.screenTop() + m_emulation.rows() - 1);
    for (int64_t number = first; number <= last;) {
        const LogicalLine line = logicalLine(m_emulation, number);
        for (const SearchHit &each : hitsIn(line)) {
            if (each.last.line >= first && each.first.line <= last) {
                result.push_back(each);
            }
        }
        number = std::max(line.last, number) + 1;
    }
    return result;
}

std::optional<PlainLink> plainLinkAt(std::u32string_view text, size_t at)
{
    static constexpr std::u32string_view Schemes[] = {U"https://", U"http://", U"ftp://", U"ftps://", U"sftp://",
                                                      U"ssh://",   U"file://", U"git://", U"mailto:", U"www."};
    const auto isPart = [](char32_t each) {
        return each > 0x20 && each != 0x7f &&
               std::u32string_view(U"<>\"`{}|\\^").find(each) == std::u32string_view::npos &&
               !(each >= 0x80 && each <= 0xa0) && !(each >= 0x2500 && each <= 0x25ff);
    };
    if (at >= text.size() || !isPart(text[at])) {
        return std::nullopt;
    }
    size_t low = at;
    while (low > 0 && at - low < 4096 && isPart(text[low - 1])) {
        --low;
    }
    for (size_t begin = low; begin <= at; ++begin) {
        if (begin > low && unicode::property(text[begin - 1]).isWord()) {
            continue;
        }
        const auto *scheme = std::find_if(std::begin(Schemes), std::end(Schemes), [&](std::u32string_view each) {
            return text.substr(begin).starts_with(each);
        });
        if (scheme == std::end(Schemes)) {
            continue;
        }
        size_t end = begin + scheme->size();
        int depth = 0;
        while (end < text.size() && end - begin < 4096 && isPart(text[end])) {
            // A bracket that closes one from outside the address ends it.
            depth += text[end] == '(' || text[end] == '[' ? 1 : text[end] == ')' || text[end] == ']' ? -1 : 0;
            if (depth < 0) {
                break;
            }
            ++end;
        }
        while (end > begin + scheme->size() &&
               std::u32string_view(U".,;:!?'\"").find(text[end - 1]) != std::u32string_view::npos) {
            --end;
        }
        if (end > begin + scheme->size() && end > at) {
            const std::u32string uri(text.substr(begin, end - begin));
            return PlainLink{begin, end - 1, *scheme == U"www." ? U"http://" + uri : uri};
        }
    }
    return std::nullopt;
}

} // namespace vt
