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
    static constexpr size_t MaxLength = 8192;     ///< of an address; a longer one is not a link
    static constexpr size_t MaxBytes = 16u << 20; ///< all links together; what comes beyond is not a link

    /// The number of a link, 0 if there is no room for it. One without an id is always new: two such are two links.
    uint32_t intern(std::string_view id, std::string_view uri);
    /// The link of a number, or null.
    const Link *find(uint32_t number) const;

    /// Whether it is time to look which are still in use. While the room is full of such, only now and then.
    bool wantsSweep() const
    {
        return m_links.size() >= m_sweepAt || (m_bytes >= m_sweepAtBytes && m_sweepAtBytes < MaxBytes) ||
               m_refused >= SweepEvery;
    }

    /// Bytes held, for the memory report.
    size_t bytes() const { return m_bytes; }

    /// Forgets the links that are not in `used`. Numbers do not change.
    void sweep(const std::unordered_set<uint32_t> &used);

private:
    static constexpr size_t SweepEvery = 4u << 20; ///< bytes of links refused since the last sweep

    static size_t cost(std::string_view id, std::string_view uri);

    std::unordered_map<uint32_t, Link> m_links;
    std::unordered_map<std::string, uint32_t> m_byName;
    uint32_t m_next = 1;
    size_t m_bytes = 0;
    size_t m_refused = 0;
    size_t m_sweepAt = 4096;
    size_t m_sweepAtBytes = 4 << 20;
};

} // namespace vt
