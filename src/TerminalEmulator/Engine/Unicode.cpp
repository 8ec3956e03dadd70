#include "TerminalEmulator/Engine/Unicode.h"

#include <algorithm>
#include <iterator>

namespace vt::unicode
{

namespace
{

struct Folding {
    uint32_t first;
    uint32_t last;
    int32_t distance;
    uint32_t stride;
};

#include "TerminalEmulator/Engine/UnicodeTables.inc"

} // namespace

Property property(char32_t codePoint)
{
    if (codePoint > 0x10ffff) {
        codePoint = 0xfffd;
    }
    return {kProperties[kBlockIndex[codePoint >> 8]][codePoint & 0xff]};
}

char32_t fold(char32_t codePoint)
{
    if (codePoint < 0x80) {
        return codePoint >= 'A' && codePoint <= 'Z' ? codePoint + 32 : codePoint;
    }
    const auto *after =
        std::upper_bound(std::begin(kFoldings), std::end(kFoldings), codePoint,
                         [](char32_t value, const Folding &folding) { return value < folding.first; });
    // Ranges of stride two interlace at most with their neighbour.
    for (int back = 0; back < 2 && after != std::begin(kFoldings); ++back) {
        --after;
        if (codePoint <= after->last && (codePoint - after->first) % after->stride == 0) {
            return static_cast<char32_t>(static_cast<int32_t>(codePoint) + after->distance);
        }
    }
    return codePoint;
}

bool Segmenter::breaksBefore(Break next)
{
    const Break last = m_last;
    m_last = next;
    const bool oddIndicators = m_oddIndicators;
    m_oddIndicators = next == RegionalIndicator && !(last == RegionalIndicator && oddIndicators);
    const bool joinsPictograph = m_pictographBefore && last == Zwj && next == Pictograph;
    m_pictographBefore = next == Pictograph || (m_pictographBefore && (next == Extend || next == Zwj));

    if (last == Control || next == Control) {
        return true;
    }
    if (next == Extend || next == Zwj || next == SpacingMark || last == Prepend || joinsPictograph) {
        return false;
    }
    switch (last) {
    case HangulL:
        return !(next == HangulL || next == HangulV || next == HangulLV || next == HangulLVT);
    case HangulV:
    case HangulLV:
        return !(next == HangulV || next == HangulT);
    case HangulT:
    case HangulLVT:
        return next != HangulT;
    case RegionalIndicator:
        return !(next == RegionalIndicator && oddIndicators);
    default:
        return true;
    }
}

} // namespace vt::unicode
