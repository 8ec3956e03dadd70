#pragma once

#include "Models/RecordId.h"

#include <QString>

/// One job of a crontab: five time fields and a command.
struct CronJob {
    QUuid id = RecordId::fresh();
    QString minute;
    QString hour;
    QString dayOfMonth;
    QString month;
    QString dayOfWeek;
    QString command;
    QString user;
    bool isEnabled = true;

    /// The job that one line of a crontab says, of the user's own form or, when `isUserCrontab` is false, of the
    /// system's with its user column (crontab(5)). A line behind a "#" is a disabled job. A line with fewer than six
    /// pieces becomes a job at every minute whose command is the whole text. `user` is the owner where the line names
    /// none.
    static CronJob fromCronLine(const QString &cronLine, const QString &user, bool isUserCrontab);

    /// The five time fields, joined by one blank.
    QString schedule() const;

    /// The schedule in words where it is a plain one, such as "Daily at 4:05"; otherwise schedule().
    QString displaySchedule() const;

    bool operator==(const CronJob &) const = default;
};

size_t qHash(const CronJob &record, size_t seed = 0);
