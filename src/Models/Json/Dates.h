#pragma once

#include <QDateTime>
#include <cmath>
#include <optional>

// Dates in JSON: the seconds since 2001-01-01 00:00:00 UTC, kept to the millisecond.
namespace Json
{

inline constexpr qint64 kReferenceDateMs = 978307200000; // 2001-01-01 00:00:00 UTC since the Unix epoch
inline constexpr double kLatestSeconds = 8.64e12; // a hundred million days: within it each millisecond is exact

inline double secondsFromDate(const QDateTime &date)
{
    return static_cast<double>((date.isValid() ? date.toMSecsSinceEpoch() : 0) - kReferenceDateMs) / 1000.0;
}

/// Nothing for a number beyond the dates that can be counted.
inline std::optional<QDateTime> dateFromSeconds(double seconds)
{
    if (!(std::abs(seconds) <= kLatestSeconds)) {
        return std::nullopt;
    }
    return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000.0) + kReferenceDateMs, Qt::UTC);
}

} // namespace Json
