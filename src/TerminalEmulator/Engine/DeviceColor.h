#pragma once

#include "TerminalEmulator/Engine/Palette.h"

#include <optional>
#include <string_view>

namespace vt
{

/// A colour of one of X11's device-independent spaces: "rgbi", "ciexyz", "cieuvy", "ciexyy", "cielab", "cieluv" or
/// "tekhvc" (in lower case), with its three numbers. Nothing for another space.
std::optional<DeepColor> deviceColor(std::string_view space, double a, double b, double c);

} // namespace vt
