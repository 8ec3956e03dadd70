#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace vt
{

/// A hyperlink (OSC 8).
struct Link {
    std::string id; ///< given by the application; links with the same id and address are one
    std::string uri;
    bool operator==(const Link &) const = default;
};

/// The hyperlinks in use. Styles name them by number; 0 is no link.
class Links
{
public:
    static constexpr size_t MaxLength = 8192; ///< of an address; a longer one is not a link

    /// The number of a link. One without an id is always new: two such are two links.
    uint32_t intern(std::string_view id, std::string_view uri);
    /// The link of a number, or null.
    const Link *find(uint32_t number) const;

    bool wantsSweep() const { return m_links.size() >= m_sweepAt || m_bytes >= m_sweepAtBytes; }

    /// Forgets the links that are not in `used`. Numbers do not change.
    void sweep(const std::unordered_set<uint32_t> &used);

private:
    std::unordered_map<uint32_t, Link> m_links;
    std::unordered_map<std::string, uint32_t> m_byName;
    uint32_t m_next = 1;
    size_t m_bytes = 0;
    size_t m_sweepAt = 4096;
    size_t m_sweepAtBytes = 4 << 20;
};

} // namespace vt
