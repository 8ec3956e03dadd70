#pragma once

#include "TerminalEmulator/Engine/Cell.h"

#include <cstddef>
#include <vector>

namespace vt
{

/// Grapheme clusters of more than one code point, each stored once as a step from a shorter one: cluster number n
/// is its parent (a code point or another cluster) and one more code point.
class Clusters
{
public:
    /// Code points a cluster can have; more marks on one character are dropped.
    static constexpr int MaxLength = 24;

    Clusters();

    /// The code (with Cell::Cluster set) of the character `code` followed by `added`. `code` is a code point or the
    /// code of a cluster, without the width bits. A cluster of full length is returned unchanged.
    uint32_t extend(uint32_t code, char32_t added);

    /// The first code point of a cell's code.
    char32_t first(uint32_t code) const;
    /// The last code point of a cell's code.
    char32_t last(uint32_t code) const;
    /// How many code points a cell's code stands for.
    int length(uint32_t code) const;
    /// Writes the code points of a cell's code in order, at most MaxLength, and returns how many.
    int expand(uint32_t code, char32_t *out) const;

    bool wantsSweep() const { return m_nodes.size() >= m_sweepAt; }

    size_t size() const { return m_nodes.size(); }

    /// Marks the cluster of a cell's code and all it builds on in `used` (indexed by number).
    void mark(uint32_t code, std::vector<bool> &used) const;
    /// Keeps the marked clusters and returns for each old number its new one.
    std::vector<uint32_t> sweep(const std::vector<bool> &used);

private:
    struct Node {
        uint32_t parent; ///< a code point, or Cell::Cluster and a smaller number
        uint32_t added : 24;
        uint32_t length : 8;
    };

    size_t slotOf(uint32_t parent, char32_t added) const;
    void place(uint32_t number);
    const Node *node(uint32_t code) const;

    std::vector<Node> m_nodes;
    std::vector<uint32_t> m_slots; ///< open addressing; number + 1, 0 is free
    size_t m_sweepAt = 8192;
};

} // namespace vt
