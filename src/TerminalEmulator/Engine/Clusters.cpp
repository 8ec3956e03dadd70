#include "TerminalEmulator/Engine/Clusters.h"

namespace vt
{

Clusters::Clusters()
    : m_slots(1024, 0)
{
}

const Clusters::Node *Clusters::node(uint32_t code) const
{
    const uint32_t number = code & Cell::ClusterNumber;
    return (code & Cell::Cluster) != 0 && number < m_nodes.size() ? &m_nodes[number] : nullptr;
}

size_t Clusters::slotOf(uint32_t parent, char32_t added) const
{
    const uint64_t key = uint64_t{parent} << 32 | added;
    const uint64_t hash = (key ^ key >> 29) * 0xbf58476d1ce4e5b9u;
    return (hash ^ hash >> 32) & (m_slots.size() - 1);
}

uint32_t Clusters::extend(uint32_t code, char32_t added)
{
    const uint32_t parent = code & (Cell::Cluster | Cell::ClusterNumber);
    const int parentLength = length(parent);
    if (parentLength >= MaxLength || m_nodes.size() > Cell::ClusterNumber) {
        return parent;
    }
    const size_t mask = m_slots.size() - 1;
    size_t at = slotOf(parent, added);
    for (; m_slots[at] != 0; at = (at + 1) & mask) {
        const Node &known = m_nodes[m_slots[at] - 1];
        if (known.parent == parent && known.added == added) {
            return Cell::Cluster | (m_slots[at] - 1);
        }
    }
    m_nodes.push_back({parent, static_cast<uint32_t>(added), static_cast<uint32_t>(parentLength + 1)});
    const auto number = static_cast<uint32_t>(m_nodes.size() - 1);
    m_slots[at] = number + 1;
    if (m_nodes.size() * 2 > m_slots.size()) {
        m_slots.assign(m_slots.size() * 2, 0);
        for (uint32_t each = 0; each <= number; ++each) {
            place(each);
        }
    }
    return Cell::Cluster | number;
}

void Clusters::place(uint32_t number)
{
    const size_t mask = m_slots.size() - 1;
    size_t at = slotOf(m_nodes[number].parent, m_nodes[number].added);
    while (m_slots[at] != 0) {
        at = (at + 1) & mask;
    }
    m_slots[at] = number + 1;
}

char32_t Clusters::first(uint32_t code) const
{
    while (const Node *each = node(code)) {
        code = each->parent;
    }
    return (code & Cell::Cluster) != 0 ? 0xfffd : code & Cell::CodePoint;
}

char32_t Clusters::last(uint32_t code) const
{
    const Node *each = node(code);
    return each ? each->added : code & Cell::CodePoint;
}

int Clusters::length(uint32_t code) const
{
    const Node *each = node(code);
    return each ? static_cast<int>(each->length) : 1;
}

int Clusters::expand(uint32_t code, char32_t *out) const
{
    const int count = length(code);
    for (int at = count - 1; at > 0; --at) {
        const Node *each = node(code);
        out[at] = each->added;
        code = each->parent;
    }
    out[0] = (code & Cell::Cluster) != 0 ? 0xfffd : code & Cell::CodePoint;
    return count;
}

void Clusters::mark(uint32_t code, std::vector<bool> &used) const
{
    for (const Node *each = node(code); each != nullptr; each = node(code)) {
        const uint32_t number = code & Cell::ClusterNumber;
        if (used[number]) {
            return;
        }
        used[number] = true;
        code = each->parent;
    }
}

std::vector<uint32_t> Clusters::sweep(const std::vector<bool> &used)
{
    std::vector<uint32_t> renamed(m_nodes.size(), 0);
    uint32_t next = 0;
    for (uint32_t number = 0; number < m_nodes.size(); ++number) {
        if (!used[number]) {
            continue;
        }
        Node kept = m_nodes[number];
        if ((kept.parent & Cell::Cluster) != 0) {
            kept.parent = Cell::Cluster | renamed[kept.parent & Cell::ClusterNumber];
        }
        renamed[number] = next;
        m_nodes[next++] = kept;
    }
    m_nodes.resize(next);
    m_slots.assign(m_slots.size(), 0);
    for (uint32_t number = 0; number < next; ++number) {
        place(number);
    }
    m_sweepAt = 8192 + 2 * size_t{next};
    return renamed;
}

} // namespace vt
