#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

/// What one position of the screen holds: a character and the number of its style. Eight bytes, so that text is
/// written and moved in whole runs; everything larger (colours, links, clusters of several code points) is interned
/// and named by number.
namespace vt
{

/// A colour as an application named it. The palette turns it into red, green and blue when it is drawn.
struct Color {
    enum class Kind : uint8_t { Default, Indexed, Rgb };

    Kind kind = Kind::Default;
    uint8_t red = 0; ///< Indexed: the index, 0 to 255
    uint8_t green = 0;
    uint8_t blue = 0;

    static constexpr Color indexed(uint8_t index) { return {Kind::Indexed, index, 0, 0}; }

    static constexpr Color rgb(uint8_t r, uint8_t g, uint8_t b) { return {Kind::Rgb, r, g, b}; }

    bool operator==(const Color &) const = default;
};

enum class Underline : uint8_t { None, Single, Double, Curly, Dotted, Dashed };

/// The rendition of a cell. `link` is the number of its hyperlink (Terminal::link), 0 for none.
struct Style {
    enum Flag : uint16_t {
        Bold = 1,
        Faint = 2,
        Italic = 4,
        Blink = 8,
        RapidBlink = 16,
        Inverse = 32,
        Invisible = 64,
        Strike = 128,
        Overline = 256,
        Protected = 512, ///< DECSCA or SPA: selective erase leaves the cell alone
    };

    Color foreground;
    Color background;
    Color underlineColor;
    uint16_t flags = 0;
    Underline underline = Underline::None;
    uint8_t reserved = 0;
    uint32_t link = 0;

    bool has(Flag flag) const { return (flags & flag) != 0; }

    /// There is no padding, and every SGR compares styles: all bytes at once.
    bool operator==(const Style &other) const { return std::memcmp(this, &other, sizeof(Style)) == 0; }
};

static_assert(sizeof(Style) == 20 && std::has_unique_object_representations_v<Style>);

using StyleId = uint32_t;

struct Cell {
    static constexpr uint32_t CodePoint = 0x1fffff; ///< mask of the code point or of the cluster's number
    static constexpr uint32_t Cluster = 1u << 21;   ///< the number names a cluster of several code points
    static constexpr uint32_t Wide = 1u << 22;      ///< takes this column and the next
    static constexpr uint32_t Tail = 1u << 23;      ///< the second column of a wide character
    static constexpr uint32_t ClusterNumber = 0x1fffff;

    uint32_t code = 0; ///< 0: nothing was ever written here, or it was erased
    StyleId style = 0; ///< 0: the default style

    bool isEmpty() const { return code == 0; }

    bool isWide() const { return (code & Wide) != 0; }

    bool isTail() const { return (code & Tail) != 0; }

    bool isCluster() const { return (code & Cluster) != 0; }

    bool operator==(const Cell &) const = default;
};

static_assert(sizeof(Cell) == 8);

/// How a whole row is drawn (DECSWL, DECDWL, DECDHL).
enum class LineSize : uint8_t { Normal, DoubleWidth, DoubleTop, DoubleBottom };

/// Appends `codePoint` to `out` as UTF-8; a surrogate or a value beyond U+10FFFF becomes U+FFFD.
void appendUtf8(std::string &out, char32_t codePoint);

} // namespace vt
