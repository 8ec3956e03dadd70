#pragma once

/// What a colour means; the theme has the colours themselves.
enum class ToneName { Accent, Green, Red, Orange, Blue, Purple, Gray };
