#pragma once

#include "Views/Theme/ToneName.h"

#include <QString>
#include <optional>

/// One figure of a section's status line.
struct Stat {
    QString label{};
    QString value{};                ///< a count or a text; may be empty
    std::optional<ToneName> tone{}; ///< the value's colour

    bool operator==(const Stat &) const = default;
};
