#include "TerminalEmulator/Engine/Links.h"

#include <algorithm>
#include <utility>

namespace vt
{

size_t Links::cost(std::string_view id, std::string_view uri)
{
    constexpr size_t Overhead = 128; // the nodes of both tables
    const size_t text = id.size() + uri.size();
    return Overhead + (id.empty() ? text : 2 * text);
}

uint32_t Links::intern(std::string_view id, std::string_view uri)
{
    std::string name;
    if (!id.empty()) {
        name = std::string(id) + '\0' + std::string(uri);
        const auto known = m_byName.find(name);
        if (known != m_byName.end()) {
            return known->second;
        }
    }
    const size_t wanted = cost(id, uri);
    if (m_bytes + wanted > MaxBytes) {
        m_refused += wanted;
        return 0;
    }
    const uint32_t number = m_next++;
    m_links.emplace(number, Link{std::string(id), std::string(uri)});
    m_bytes += wanted;
    if (!name.empty()) {
        m_byName.emplace(std::move(name), number);
    }
    return number;
}

const Link *Links::find(uint32_t number) const
{
    const auto found = m_links.find(number);
    return found == m_links.end() ? nullptr : &found->second;
}

void Links::sweep(const std::unordered_set<uint32_t> &used)
{
    std::erase_if(m_byName, [&](const auto &entry) { return !used.contains(entry.second); });
    std::erase_if(m_links, [&](const auto &entry) { return !used.contains(entry.first); });
    m_bytes = 0;
    for (const auto &[number, link] : m_links) {
        m_bytes += cost(link.id, link.uri);
    }
    m_refused = 0;
    m_sweepAt = 4096 + 2 * m_links.size();
    m_sweepAtBytes = std::min((4 << 20) + 2 * m_bytes, MaxBytes);
}

} // namespace vt
