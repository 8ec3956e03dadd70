#include "TerminalEmulator/Engine/Palette.h"

namespace vt
{

namespace
{

constexpr DeepColor deep(int red, int green, int blue)
{
    return {static_cast<uint16_t>(red * 0x101), static_cast<uint16_t>(green * 0x101),
            static_cast<uint16_t>(blue * 0x101)};
}

constexpr DeepColor Basic[16] = {
    deep(0, 0, 0),       deep(205, 0, 0),   deep(0, 205, 0),   deep(205, 205, 0),
    deep(0, 0, 238),     deep(205, 0, 205), deep(0, 205, 205), deep(229, 229, 229),
    deep(127, 127, 127), deep(255, 0, 0),   deep(0, 255, 0),   deep(255, 255, 0),
    deep(92, 92, 255),   deep(255, 0, 255), deep(0, 255, 255), deep(255, 255, 255),
};

} // namespace

Palette::Palette()
{
    for (int index = 0; index < 256; ++index) {
        m_defaults[static_cast<size_t>(index)] = standard(index);
    }
    m_dynamicDefaults.fill(deep(0, 0, 0));
    for (const Dynamic light :
         {Foreground, CursorColor, PointerForeground, TekForeground, TekCursor, HighlightBackground}) {
        m_dynamicDefaults[light] = deep(229, 229, 229);
    }
    reset();
}

/// xterm's 256: the 16 basic ones, a cube of six steps a side, and 24 greys.
DeepColor Palette::standard(int index)
{
    if (index < 16) {
        return Basic[index];
    }
    if (index >= 232) {
        const int grey = 8 + 10 * (index - 232);
        return deep(grey, grey, grey);
    }
    const auto step = [](int value) { return value == 0 ? 0 : 55 + 40 * value; };
    const int cube = index - 16;
    return deep(step(cube / 36), step(cube / 6 % 6), step(cube % 6));
}

void Palette::resetIndexed(int index)
{
    setIndexed(index, m_defaults[static_cast<size_t>(index)]);
}

void Palette::setDefaultIndexed(int index, Rgb color)
{
    m_defaults[static_cast<size_t>(index)] = deep(color.red, color.green, color.blue);
    resetIndexed(index);
}

DeepColor Palette::special(int index) const
{
    return m_specials[static_cast<size_t>(index)].value_or(m_dynamic[Foreground]);
}

void Palette::setDefaultDynamic(Dynamic which, Rgb color)
{
    m_dynamicDefaults[which] = deep(color.red, color.green, color.blue);
    resetDynamic(which);
}

void Palette::reset()
{
    m_indexed = m_defaults;
    m_specials.fill(std::nullopt);
    m_dynamic = m_dynamicDefaults;
}

} // namespace vt
