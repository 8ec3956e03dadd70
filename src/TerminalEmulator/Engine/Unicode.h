#pragma once

#include <cstdint>

/// Properties of code points from the Unicode Character Database (tools/unicode_tables.py writes the tables).
namespace vt::unicode
{

/// Grapheme cluster break classes of UAX #29, with extended pictographs as a class of their own.
enum Break : uint8_t {
    Other,
    Control,
    Extend,
    Zwj,
    RegionalIndicator,
    Prepend,
    SpacingMark,
    HangulL,
    HangulV,
    HangulT,
    HangulLV,
    HangulLVT,
    Pictograph,
};

struct Property {
    uint8_t bits;

    Break breakClass() const { return static_cast<Break>(bits & 15); }

    int columns() const { return bits >> 4 & 3; }

    bool hasVariations() const { return (bits & 64) != 0; } ///< U+FE0F and U+FE0E choose its presentation

    bool isWord() const { return (bits & 128) != 0; } ///< letter, mark, number or connector
};

/// A value beyond U+10FFFF reads as U+FFFD.
Property property(char32_t codePoint);

/// The simple case folding of `codePoint` (CaseFolding.txt, status C and S).
char32_t fold(char32_t codePoint);

/// Finds the boundaries of extended grapheme clusters (UAX #29, GB1 to GB999) in a stream of code points.
class Segmenter
{
public:
    /// Whether a cluster ends between the last code point given and this one.
    bool breaksBefore(Break next);

    /// A control came: nothing joins what was before it.
    void reset() { m_last = Control; }

    /// The same as breaksBefore(Other).
    void afterPlain()
    {
        m_last = Other;
        m_pictographBefore = false;
        m_oddIndicators = false;
    }

private:
    Break m_last = Control;
    bool m_pictographBefore = false; ///< a pictograph and marks, then perhaps a joiner: GB11
    bool m_oddIndicators = false;    ///< an odd count of regional indicators: GB12
};

} // namespace vt::unicode
