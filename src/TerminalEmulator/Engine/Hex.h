#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt
{

/// Bytes as pairs of hexadecimal digits.
std::string toHex(std::string_view bytes);

/// The bytes behind pairs of hexadecimal digits; nothing if there is anything else, or half a pair.
std::optional<std::string> fromHex(std::string_view digits);

} // namespace vt
