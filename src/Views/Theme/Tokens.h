#pragma once

#include "Views/Theme/ToneName.h"

#include <QColor>

/// The colours of one meaning.
struct Tone {
    QColor color; ///< dots, bars, curves, icons
    QColor soft;  ///< the ground of a pill, a selected row, a notice
    QColor text;  ///< words, on the soft ground as well as on surfaces: contrast 4.5 or more (WCAG 2.1, 1.4.3)
};

/// Every colour of the program. Nothing else names a colour.
struct Tokens {
    QColor window;  ///< the page behind cards
    QColor side;    ///< the server list, bars at the window's edge
    QColor surface; ///< cards, tables, headers, sheets
    QColor raised;  ///< menus and tooltips, above a surface
    QColor line;    ///< borders of controls and cards
    QColor soft;    ///< separators of rows, grids, empty bars
    QColor text;
    QColor dim;   ///< labels
    QColor faint; ///< decoration and disabled words; never the only carrier of information
    QColor onAccent;
    QColor scrim; ///< laid over a window below a sheet; not opaque

    Tone accent;
    Tone green;
    Tone red;
    Tone orange;
    Tone blue;
    Tone purple;
    Tone gray;

    const Tone &tone(ToneName name) const;

    static const Tokens &light();
    static const Tokens &dark();
};

/// Measures in device-independent pixels.
namespace Metrics
{

inline constexpr int kStep = 4; ///< all spacing is a multiple of it
inline constexpr int kControlRadius = 7;
inline constexpr int kCardRadius = 10;
inline constexpr int kSheetRadius = 12;
inline constexpr int kControlHeight = 30;
inline constexpr int kRowHeight = 34;
inline constexpr int kIconSize = 16;
inline constexpr int kPageMargin = 20;
inline constexpr int kCardGap = 12;

} // namespace Metrics
