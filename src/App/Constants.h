#pragma once

#include <QLatin1StringView>

/// Names under which the program is known to the desktop.
namespace Constants
{

inline constexpr QLatin1StringView kApplicationName{"Tarnwell"};
inline constexpr QLatin1StringView kDesktopFileName{"com.ostlerworks.tarnwell"};

/// Where the about window's links lead.
inline constexpr QLatin1StringView kWebsite{"https://ostlerworks.com/tarnwell"};
inline constexpr QLatin1StringView kDocumentation{"https://ostlerworks.com/tarnwell/documentation"};
inline constexpr QLatin1StringView kSupport{"mailto:support@ostlerworks.com?subject=Tarnwell%20Support"};

/// Defaults key: the desktop wanted a dark window when it was last asked. The next start opens in these colours, for
/// the answer comes only after the window is painted.
inline constexpr QLatin1StringView kDesktopPrefersDarkKey{"desktopPrefersDark"};

/// For how long a picture of the window waits for the server's data.
inline constexpr int kPictureTimeLimitMs = 30'000;

} // namespace Constants
