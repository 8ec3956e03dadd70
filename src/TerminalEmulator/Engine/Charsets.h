#pragma once

#include <cstdint>
#include <string_view>

namespace vt
{

/// Graphic character sets an application can designate (SCS) to G0 to G3.
enum class Charset : uint8_t {
    Ascii,
    DecSpecial, ///< line drawing
    DecTechnical,
    DecSupplemental,
    Latin1, ///< the 96 characters from U+00A0
    British,
    Dutch,
    Finnish,
    French,
    FrenchCanadian,
    German,
    Italian,
    NorwegianDanish,
    Portuguese,
    Spanish,
    Swedish,
    Swiss,
};

/// The set a designator (intermediates after the first, and the final byte) names, or Ascii with `found` false.
/// `is96`: a 96-character set was asked for; `level` is the VT level; national sets need `national` (DECNRCM).
Charset charsetFor(std::string_view designator, bool is96, bool &found);

/// The designator of a set, as DECRQPSR reports it.
std::string_view designatorOf(Charset set);
bool has96(Charset set);
/// Whether the set is one of those that DECNRCM switches on.
bool isNational(Charset set);

/// The character at position `code` (0x20 to 0x7f) of a set.
char32_t translate(Charset set, char32_t code);

} // namespace vt
