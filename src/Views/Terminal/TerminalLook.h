#pragma once

#include "Models/AppSettings.h"
#include "TerminalEmulator/View/TerminalWidget.h"

class Theme;

/// The preferences for terminals as fonts and colours.
namespace TerminalLook
{

/// `default` is the theme's text on its surface, of the moment.
vt::TerminalColors colors(TerminalColorScheme scheme, const Theme &theme);

/// The desktop's monospaced font for "SF Mono" and for each family that is not installed. A point is one
/// device-independent pixel here, as in the rest of the window.
QFont font(const QString &family, int points);

} // namespace TerminalLook
