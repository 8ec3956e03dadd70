#pragma once

#include "TerminalEmulator/Engine/Types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vt
{

class Emulation;

/// Rows that autowrap joined, as one text. Empty cells between characters read as spaces.
struct LogicalLine {
    /// Rows one logical line can have; a longer one is taken in pieces.
    static constexpr int MaxRows = 2000;

    int64_t first = 0; ///< numbers of its first and last row
    int64_t last = -1;
    std::u32string text;
    std::vector<Position> places; ///< of each code point: its cell
    std::vector<uint8_t> widths;  ///< columns of that cell

    /// The index of the first code point at or behind a place; text.size() if there is none.
    size_t indexOf(Position place) const;
    /// The last column a code point covers.
    Position endOf(size_t index) const;
};

/// The logical line that contains row `line`, or an empty one if there is no such row.
LogicalLine logicalLine(const Emulation &emulation, int64_t line);

} // namespace vt
