#pragma once

#include "TerminalEmulator/Engine/Types.h"

#include <array>
#include <optional>
#include <string_view>

namespace vt
{

/// A colour as X11 tells it: 16 bits for each of red, green and blue.
struct DeepColor {
    uint16_t red = 0;
    uint16_t green = 0;
    uint16_t blue = 0;
    bool operator==(const DeepColor &) const = default;

    Rgb rgb() const
    {
        return {static_cast<uint8_t>(red >> 8), static_cast<uint8_t>(green >> 8), static_cast<uint8_t>(blue >> 8)};
    }
};

/// Reads a colour in one of X11's forms (XParseColor(3)): "#rgb" to "#rrrrggggbbbb", "rgb:r/g/b", "rgbi:", the CIE
/// and TekHVC forms, or a name. Nothing if it is none.
std::optional<DeepColor> parseColor(std::string_view text);

/// The 256 indexed colours, the special ones (OSC 5) and the dynamic ones (OSC 10 to 19).
class Palette
{
public:
    static constexpr int Specials = 5; ///< bold, underline, blink, reverse, italic

    enum Dynamic {
        Foreground,
        Background,
        CursorColor,
        PointerForeground,
        PointerBackground,
        TekForeground,
        TekBackground,
        HighlightBackground,
        TekCursor,
        HighlightForeground,
        DynamicCount
    };

    Palette();

    DeepColor indexed(int index) const { return m_indexed[static_cast<size_t>(index)]; }

    void setIndexed(int index, DeepColor color) { m_indexed[static_cast<size_t>(index)] = color; }

    void resetIndexed(int index);
    /// Changes a colour and what it is reset to.
    void setDefaultIndexed(int index, Rgb color);

    DeepColor special(int index) const;

    void setSpecial(int index, DeepColor color) { m_specials[static_cast<size_t>(index)] = color; }

    void resetSpecial(int index) { m_specials[static_cast<size_t>(index)].reset(); }

    DeepColor dynamic(Dynamic which) const { return m_dynamic[which]; }

    void setDynamic(Dynamic which, DeepColor color) { m_dynamic[which] = color; }

    void resetDynamic(Dynamic which) { m_dynamic[which] = m_dynamicDefaults[which]; }

    void setDefaultDynamic(Dynamic which, Rgb color);

    void reset();

private:
    static DeepColor standard(int index);

    std::array<DeepColor, 256> m_defaults;
    std::array<DeepColor, 256> m_indexed;
    std::array<std::optional<DeepColor>, Specials> m_specials;
    std::array<DeepColor, DynamicCount> m_dynamic;
    std::array<DeepColor, DynamicCount> m_dynamicDefaults;
};

} // namespace vt
