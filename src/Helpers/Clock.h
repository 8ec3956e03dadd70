#pragma once

#include <QDateTime>

/// The wall clock, as a collaborator: what depends on the age of something asks it, and a test moves its own.
class Clock
{
public:
    Clock() = default;
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
    virtual ~Clock() = default;

    /// The present moment in UTC.
    virtual QDateTime now() const = 0;
};

/// The system's clock.
class SystemClock final : public Clock
{
public:
    QDateTime now() const override { return QDateTime::currentDateTimeUtc(); }
};
