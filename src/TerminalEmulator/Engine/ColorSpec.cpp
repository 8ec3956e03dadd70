#include "TerminalEmulator/Engine/ColorNames.h"
#include "TerminalEmulator/Engine/DeviceColor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vt
{

namespace
{

std::optional<unsigned> hexadecimal(std::string_view text)
{
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (text.empty() || text.size() > 4 || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

/// "#" and one to four digits for each colour: the digits are the most significant ones.
std::optional<DeepColor> sharp(std::string_view digits)
{
    if (digits.empty() || digits.size() % 3 != 0 || digits.size() > 12) {
        return std::nullopt;
    }
    const size_t each = digits.size() / 3;
    std::array<uint16_t, 3> parts{};
    for (size_t part = 0; part < 3; ++part) {
        const std::optional<unsigned> value = hexadecimal(digits.substr(part * each, each));
        if (!value) {
            return std::nullopt;
        }
        parts[part] = static_cast<uint16_t>(*value << (16 - 4 * each));
    }
    return DeepColor{parts[0], parts[1], parts[2]};
}

std::optional<std::array<std::string_view, 3>> threeFields(std::string_view text)
{
    std::array<std::string_view, 3> fields;
    for (size_t at = 0; at < 3; ++at) {
        const size_t end = text.find('/');
        if ((end == std::string_view::npos) != (at == 2)) {
            return std::nullopt;
        }
        fields[at] = text.substr(0, end);
        text.remove_prefix(at == 2 ? text.size() : end + 1);
    }
    return fields;
}

/// "rgb:": one to four digits for each colour, scaled to the full range.
std::optional<DeepColor> scaled(std::string_view text)
{
    const auto fields = threeFields(text);
    std::array<uint16_t, 3> parts{};
    for (size_t at = 0; fields && at < 3; ++at) {
        const std::optional<unsigned> value = hexadecimal((*fields)[at]);
        if (!value) {
            return std::nullopt;
        }
        const unsigned full = (1u << (4 * (*fields)[at].size())) - 1;
        parts[at] = static_cast<uint16_t>(*value * 0xffffu / full);
    }
    return fields ? std::optional(DeepColor{parts[0], parts[1], parts[2]}) : std::nullopt;
}

std::optional<DeepColor> named(std::string_view text)
{
    const std::optional<uint32_t> rgb = namedColor(text);
    const auto part = [&](int shift) { return static_cast<uint16_t>((*rgb >> shift & 0xff) * 0x101); };
    return rgb ? std::optional(DeepColor{part(16), part(8), part(0)}) : std::nullopt;
}

} // namespace

std::optional<DeepColor> parseColor(std::string_view text)
{
    if (text.starts_with('#')) {
        return sharp(text.substr(1));
    }
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return named(text);
    }
    std::string space(text.substr(0, colon));
    std::transform(space.begin(), space.end(), space.begin(),
                   [](char each) { return each >= 'A' && each <= 'Z' ? static_cast<char>(each + 32) : each; });
    if (space == "rgb") {
        return scaled(text.substr(colon + 1));
    }
    const auto fields = threeFields(text.substr(colon + 1));
    std::array<double, 3> values{};
    for (size_t at = 0; fields && at < 3; ++at) {
        const std::string_view field = (*fields)[at];
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), values[at]);
        if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(values[at])) {
            return std::nullopt;
        }
    }
    return fields ? deviceColor(space, values[0], values[1], values[2]) : std::nullopt;
}

} // namespace vt
