#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vt
{

/// The colour of a name of X11's database, whatever its case and spaces, as 0xrrggbb; nothing if there is none.
std::optional<uint32_t> namedColor(std::string_view text);

} // namespace vt
