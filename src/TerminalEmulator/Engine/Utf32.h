#pragma once

#include <string>
#include <string_view>

namespace vt
{

/// UTF-8 as code points; what is malformed becomes U+FFFD.
std::u32string toUtf32(std::string_view utf8);

} // namespace vt
