#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt
{

/// Base64 of RFC 4648, with padding.
std::string encodeBase64(std::string_view bytes);

/// The bytes behind `text`; padding may be missing. Nothing if another character occurs.
std::optional<std::string> decodeBase64(std::string_view text);

} // namespace vt
