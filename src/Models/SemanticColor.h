#pragma once

/// The colours that records name for their states. Views map each to a colour of the theme.
enum class SemanticColor { Green, Red, Orange, Gray, Blue, Purple, Cyan, Yellow, Indigo, Mint, Secondary };
