#pragma once

#include <string>
#include <string_view>

namespace vt
{

/// UTF-8 as code points; what is malformed becomes U+FFFD.
std::u32string toUtf32(std::string_view utf8);

/// Text an application gave, fit to be shown: well-formed UTF-8 without control characters of any kind, and at most
/// `most` bytes, cut between characters.
std::string cleanText(std::string_view utf8, size_t most);

} // namespace vt
