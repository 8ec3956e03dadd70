#include "TerminalEmulator/Engine/LogicalLine.h"

#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>

namespace vt
{

size_t LogicalLine::indexOf(Position place) const
{
    return static_cast<size_t>(std::lower_bound(places.begin(), places.end(), place) - places.begin());
}

Position LogicalLine::endOf(size_t index) const
{
    Position end = places[index];
    end.column += widths[index] - 1;
    return end;
}

LogicalLine logicalLine(const Emulation &emulation, int64_t line)
{
    LogicalLine result;
    Line row;
    result.first = line;
    while (line - result.first < LogicalLine::MaxRows / 2 && emulation.readLine(result.first - 1, row) &&
           row.wrapped) {
        --result.first;
    }
    result.last = result.first - 1;
    char32_t points[Clusters::MaxLength];
    while (result.last - result.first < LogicalLine::MaxRows && emulation.readLine(result.last + 1, row)) {
        ++result.last;
        for (size_t x = 0; x < row.cells.size(); ++x) {
            const Cell cell = row.cells[x];
            if (cell.isTail()) {
                continue;
            }
            const int count = cell.isEmpty() ? 1 : emulation.m_clusters.expand(cell.code, points);
            for (int at = 0; at < count; ++at) {
                result.text += cell.isEmpty() ? U' ' : points[at];
                result.places.push_back({result.last, static_cast<int>(x)});
                result.widths.push_back(cell.isWide() ? 2 : 1);
            }
        }
        if (!row.wrapped) {
            break;
        }
    }
    return result;
}

} // namespace vt
