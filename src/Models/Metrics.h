#pragma once

#include "Models/GPUMetrics.h"
#include "Models/RecordId.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

/// Memory in bytes.
struct MemoryMetrics {
    qint64 total = 0;
    qint64 used = 0;
    qint64 free = 0;
    qint64 available = 0;
    qint64 cached = 0;
    qint64 buffers = 0;
    qint64 swapTotal = 0;
    qint64 swapUsed = 0;
    qint64 swapFree = 0;

    bool operator==(const MemoryMetrics &) const = default;
};

/// One filesystem; sizes in bytes.
struct DiskMetrics {
    QUuid id = RecordId::fresh();
    QString filesystem;
    QString mountPoint;
    qint64 total = 0;
    qint64 used = 0;
    qint64 available = 0;
    qint64 readBytesPerSec = 0;
    qint64 writeBytesPerSec = 0;

    bool operator==(const DiskMetrics &) const = default;
};

struct NetworkInterface {
    QUuid id = RecordId::fresh();
    QString name;
    qint64 receiveBytesPerSec = 0;
    qint64 transmitBytesPerSec = 0;
    qint64 receivePacketsPerSec = 0;
    qint64 transmitPacketsPerSec = 0;
    qint64 receiveErrors = 0;
    qint64 transmitErrors = 0;

    bool operator==(const NetworkInterface &) const = default;
};

struct NetworkMetrics {
    QList<NetworkInterface> interfaces;

    bool operator==(const NetworkMetrics &) const = default;
};

struct LoadAverage {
    double oneMinute = 0;
    double fiveMinutes = 0;
    double fifteenMinutes = 0;

    bool operator==(const LoadAverage &) const = default;
};

/// The rates of one block device.
struct DiskIODevice {
    QString deviceName;
    double readBytesPerSec = 0;
    double writeBytesPerSec = 0;

    bool operator==(const DiskIODevice &) const = default;
};

struct DiskIOMetrics {
    QList<DiskIODevice> devices;

    double totalReadBytesPerSec() const; ///< the sum over the devices
    double totalWriteBytesPerSec() const;

    bool operator==(const DiskIOMetrics &) const = default;
};

/// One sample of a server's load.
struct MetricsSnapshot {
    QUuid id = RecordId::fresh();
    QDateTime timestamp; ///< UTC
    double cpuUsage = 0; ///< percent
    MemoryMetrics memoryUsage;
    QList<DiskMetrics> diskMetrics;
    NetworkMetrics networkMetrics;
    LoadAverage loadAverage;
    DiskIOMetrics diskIOMetrics;
    std::optional<GPUMetrics> gpuMetrics;

    bool operator==(const MetricsSnapshot &) const = default;
};

size_t qHash(const MemoryMetrics &record, size_t seed = 0);
size_t qHash(const DiskMetrics &record, size_t seed = 0);
size_t qHash(const NetworkInterface &record, size_t seed = 0);
size_t qHash(const NetworkMetrics &record, size_t seed = 0);
size_t qHash(const LoadAverage &record, size_t seed = 0);
size_t qHash(const DiskIODevice &record, size_t seed = 0);
size_t qHash(const DiskIOMetrics &record, size_t seed = 0);
size_t qHash(const MetricsSnapshot &record, size_t seed = 0);
