#pragma once

#include "Models/SystemInfo.h"

#include <QByteArrayView>

/// Reads what SystemInfoCommand prints: sections under headings "=== NAME ===".
struct SystemInfoParser {
    /// The facts that `output` tells, with `now` as the time of the last update; fields whose section is missing stay
    /// empty. The second line of HOSTNAME, OS, KERNEL, UPTIME, CPU, CPU_COUNT, MEMORY and LOAD is their value; DISK
    /// goes to parseDiskUsage; other sections are passed over. Storage devices are left absent. Never fails.
    static SystemInfo parse(QByteArrayView output, const QDateTime &now);

    /// The rows of `df -h`: six fields between blanks. Headings and shorter lines are passed over.
    static QList<DiskInfo> parseDiskUsage(QByteArrayView lines);
};
