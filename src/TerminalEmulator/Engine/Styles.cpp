#include "TerminalEmulator/Engine/Styles.h"

#include <bit>
#include <cstring>

namespace vt
{

Styles::Styles()
    : m_styles(1)
    , m_slots(256, 0)
{
}

uint64_t Styles::hashOf(const Style &style)
{
    static_assert(sizeof(Style) == 20, "every byte of a style takes part in its hash");
    uint64_t first;
    uint64_t second;
    uint32_t third;
    std::memcpy(&first, &style, 8);
    std::memcpy(&second, reinterpret_cast<const char *>(&style) + 8, 8);
    std::memcpy(&third, reinterpret_cast<const char *>(&style) + 16, 4);
    uint64_t hash = first * 0x9e3779b97f4a7c15u;
    hash = (std::rotl(hash, 29) ^ second) * 0xbf58476d1ce4e5b9u;
    hash = (std::rotl(hash, 31) ^ third) * 0x94d049bb133111ebu;
    return hash ^ hash >> 32;
}

StyleId Styles::intern(const Style &style)
{
    if (style == m_styles[0]) {
        return 0;
    }
    const size_t mask = m_slots.size() - 1;
    size_t at = hashOf(style) & mask;
    for (; m_slots[at] != 0; at = (at + 1) & mask) {
        if (m_styles[m_slots[at]] == style) {
            return m_slots[at];
        }
    }
    m_styles.push_back(style);
    const auto id = static_cast<StyleId>(m_styles.size() - 1);
    m_slots[at] = id;
    if (m_styles.size() * 2 > m_slots.size()) {
        grow();
    }
    return id;
}

void Styles::place(StyleId id)
{
    const size_t mask = m_slots.size() - 1;
    size_t at = hashOf(m_styles[id]) & mask;
    while (m_slots[at] != 0) {
        at = (at + 1) & mask;
    }
    m_slots[at] = id;
}

void Styles::grow()
{
    m_slots.assign(m_slots.size() * 2, 0);
    for (StyleId id = 1; id < m_styles.size(); ++id) {
        place(id);
    }
}

std::vector<StyleId> Styles::sweep(const std::vector<bool> &used)
{
    std::vector<StyleId> renamed(m_styles.size(), 0);
    StyleId next = 1;
    for (StyleId id = 1; id < m_styles.size(); ++id) {
        if (id < used.size() && used[id]) {
            renamed[id] = next;
            m_styles[next++] = m_styles[id];
        }
    }
    m_styles.resize(next);
    m_slots.assign(m_slots.size(), 0);
    for (StyleId id = 1; id < next; ++id) {
        place(id);
    }
    m_sweepAt = 8192 + 4 * size_t{next};
    return renamed;
}

} // namespace vt
