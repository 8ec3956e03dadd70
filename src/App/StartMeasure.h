#pragma once

#include <QString>

/// What the start of this process has cost until now.
struct StartMeasure {
    double milliseconds = 0;    ///< since the kernel started the process (proc(5), field 22 of stat); 10 ms steps
    double clockMs = 0;         ///< CLOCK_MONOTONIC, for who started the process and knows when
    double cpuMs = 0;           ///< user and system time of all threads
    qint64 residentKiB = 0;     ///< VmRSS
    qint64 proportionalKiB = 0; ///< Pss of smaps_rollup: shared pages counted in part

    static StartMeasure now();

    /// "first-paint-ms=… clock-ms=… cpu-ms=… rss-kib=… pss-kib=…"
    QString line() const;
};
