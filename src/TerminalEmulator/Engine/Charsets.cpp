#include "TerminalEmulator/Engine/Charsets.h"

#include <algorithm>
#include <iterator>

namespace vt
{

namespace
{

struct Designation {
    std::string_view designator;
    Charset set;
    bool is96;
};

// VT510 programmer information, "Select character set"; the first of a set's designators is the one reported.
constexpr Designation Designations[] = {
    {"B", Charset::Ascii, false},           {"1", Charset::Ascii, false},
    {"0", Charset::DecSpecial, false},      {"2", Charset::DecSpecial, false},
    {">", Charset::DecTechnical, false},    {"%5", Charset::DecSupplemental, false},
    {"<", Charset::DecSupplemental, false}, {"A", Charset::Latin1, true},
    {"A", Charset::British, false},         {"4", Charset::Dutch, false},
    {"5", Charset::Finnish, false},         {"C", Charset::Finnish, false},
    {"R", Charset::French, false},          {"f", Charset::French, false},
    {"9", Charset::FrenchCanadian, false},  {"Q", Charset::FrenchCanadian, false},
    {"K", Charset::German, false},          {"Y", Charset::Italian, false},
    {"`", Charset::NorwegianDanish, false}, {"E", Charset::NorwegianDanish, false},
    {"6", Charset::NorwegianDanish, false}, {"%6", Charset::Portuguese, false},
    {"Z", Charset::Spanish, false},         {"7", Charset::Swedish, false},
    {"H", Charset::Swedish, false},         {"=", Charset::Swiss, false},
};

// VT100 line drawing, from 0x5f.
constexpr char32_t Special[] = U"\u00a0\u25c6\u2592\u2409\u240c\u240d\u240a\u00b0\u00b1\u2424\u240b\u2518\u2510\u250c"
                               U"\u2514\u253c\u23ba\u23bb\u2500\u23bc\u23bd\u251c\u2524\u2534\u252c\u2502\u2264\u2265"
                               U"\u03c0\u2260\u00a3\u00b7";

// DEC technical, from 0x21; 0 is an empty position.
constexpr char32_t Technical[] = {
    0x23b7, 0x250c, 0x2500, 0x2320, 0x2321, 0x2502, 0x23a1, 0x23a3, 0x23a4, 0x23a6, 0x239b, 0x239d, 0x239e, 0x23a0,
    0x23a8, 0x23ac, 0,      0,      0,      0,      0,      0,      0,      0,      0,      0,      0,      0x2264,
    0x2260, 0x2265, 0x222b, 0x2234, 0x221d, 0x221e, 0x00f7, 0x0394, 0x2207, 0x03a6, 0x0393, 0x223c, 0x2243, 0x0398,
    0x00d7, 0x039b, 0x21d4, 0x21d2, 0x2261, 0x03a0, 0x03a8, 0,      0x03a3, 0,      0,      0x221a, 0x03a9, 0x039e,
    0x03a5, 0x2282, 0x2283, 0x2229, 0x222a, 0x2227, 0x2228, 0x00ac, 0x03b1, 0x03b2, 0x03c7, 0x03b4, 0x03b5, 0x03c6,
    0x03b3, 0x03b7, 0x03b9, 0x03b8, 0x03ba, 0x03bb, 0,      0x03bd, 0x2202, 0x03c0, 0x03c8, 0x03c1, 0x03c3, 0x03c4,
    0,      0x0192, 0x03c9, 0x03be, 0x03c5, 0x03b6, 0x2190, 0x2191, 0x2192, 0x2193,
};

// The positions national sets replace, and with what (VT510 programmer information, character set tables).
constexpr std::string_view NationalPositions = "#@[\\]^_`{|}~";

struct National {
    Charset set;
    std::u32string_view characters;
};

constexpr National Nationals[] = {
    {Charset::British, U"\u00a3@[\\]^_`{|}~"},
    {Charset::Dutch, U"\u00a3\u00be\u0133\u00bd|^_`\u00a8\u0192\u00bc\u00b4"},
    {Charset::Finnish, U"#@\u00c4\u00d6\u00c5\u00dc_\u00e9\u00e4\u00f6\u00e5\u00fc"},
    {Charset::French, U"\u00a3\u00e0\u00b0\u00e7\u00a7^_`\u00e9\u00f9\u00e8\u00a8"},
    {Charset::FrenchCanadian, U"#\u00e0\u00e2\u00e7\u00ea\u00ee_\u00f4\u00e9\u00f9\u00e8\u00fb"},
    {Charset::German, U"#\u00a7\u00c4\u00d6\u00dc^_`\u00e4\u00f6\u00fc\u00df"},
    {Charset::Italian, U"\u00a3\u00a7\u00b0\u00e7\u00e9^_\u00f9\u00e0\u00f2\u00e8\u00ec"},
    {Charset::NorwegianDanish, U"#\u00c4\u00c6\u00d8\u00c5\u00dc_\u00e4\u00e6\u00f8\u00e5\u00fc"},
    {Charset::Portuguese, U"#@\u00c3\u00c7\u00d5^_`\u00e3\u00e7\u00f5~"},
    {Charset::Spanish, U"\u00a3\u00a7\u00a1\u00d1\u00bf^_`\u00b0\u00f1\u00e7~"},
    {Charset::Swedish, U"#\u00c9\u00c4\u00d6\u00c5\u00dc_\u00e9\u00e4\u00f6\u00e5\u00fc"},
    {Charset::Swiss, U"\u00f9\u00e0\u00e9\u00e7\u00ea\u00ee\u00e8\u00f4\u00e4\u00f6\u00fc\u00fb"},
};

char32_t supplemental(char32_t code)
{
    switch (code) {
    case 0x28:
        return 0xa4;
    case 0x57:
        return 0x152;
    case 0x5d:
        return 0x178;
    case 0x77:
        return 0x153;
    case 0x7d:
        return 0xff;
    default:
        return code + 0x80;
    }
}

} // namespace

Charset charsetFor(std::string_view designator, bool is96, bool &found)
{
    const auto *entry = std::find_if(std::begin(Designations), std::end(Designations), [&](const Designation &each) {
        return each.designator == designator && each.is96 == is96;
    });
    found = entry != std::end(Designations);
    return found ? entry->set : Charset::Ascii;
}

std::string_view designatorOf(Charset set)
{
    const auto *entry = std::find_if(std::begin(Designations), std::end(Designations),
                                     [&](const Designation &each) { return each.set == set; });
    return entry->designator;
}

bool has96(Charset set)
{
    return set == Charset::Latin1;
}

bool isNational(Charset set)
{
    return set > Charset::British;
}

char32_t translate(Charset set, char32_t code)
{
    switch (set) {
    case Charset::Ascii:
        return code;
    case Charset::DecSpecial:
        return code >= 0x5f && code <= 0x7e ? Special[code - 0x5f] : code;
    case Charset::DecTechnical: {
        const char32_t found = code >= 0x21 && code <= 0x7e ? Technical[code - 0x21] : code;
        return found != 0 ? found : 0xfffd;
    }
    case Charset::DecSupplemental:
        return code > 0x20 && code < 0x7f ? supplemental(code) : code;
    case Charset::Latin1:
        return code + 0x80;
    default:
        break;
    }
    const size_t position = code < 0x7f ? NationalPositions.find(static_cast<char>(code)) : std::string_view::npos;
    if (position == std::string_view::npos) {
        return code;
    }
    const auto *entry = std::find_if(std::begin(Nationals), std::end(Nationals),
                                     [&](const National &each) { return each.set == set; });
    return entry != std::end(Nationals) ? entry->characters[position] : code;
}

} // namespace vt
