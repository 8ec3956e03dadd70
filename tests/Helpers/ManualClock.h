#pragma once

#include "Helpers/Clock.h"

/// A clock that stands still until the test moves it.
class ManualClock final : public Clock
{
public:
    QDateTime now() const override { return m_now; }

    void advance(qint64 milliseconds) { m_now = m_now.addMSecs(milliseconds); }

private:
    QDateTime m_now{QDate(2024, 2, 29), QTime(23, 59, 59), Qt::UTC};
};
