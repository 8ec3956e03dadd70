#pragma once

#include <QString>

/// One process as `ps aux` prints it. Identified by `pid`.
struct ProcessInfo {
    QString pid;
    QString user;
    QString cpu;    ///< percent
    QString memory; ///< percent
    QString rssMemoryKB;
    QString command;
    QString startTime;

    qint64 pidInt() const;    ///< 0 for text that is no integer
    double cpuDouble() const; ///< this and the next two: 0.0 for text that is no decimal number
    double memoryDouble() const;
    double rssMemoryKBDouble() const;

    /// Resident memory as shown: "12.3 MB" of 1024 * 1024 bytes, "<1 MB", or "0 MB" for text that is no number.
    QString memoryMB() const;

    bool operator==(const ProcessInfo &) const = default;
};

size_t qHash(const ProcessInfo &record, size_t seed = 0);
