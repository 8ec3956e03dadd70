#pragma once

#include "Models/Metrics.h"

#include <QByteArrayView>

/// Reads what the metric scripts print. Nothing here fails: what cannot be read is passed over or is 0.
namespace MetricsParser
{

/// What an interface has counted since it came up.
struct NetworkCounters {
    QString name;
    qint64 receivedBytes = 0;
    qint64 receivedPackets = 0;
    qint64 receiveErrors = 0;
    qint64 transmittedBytes = 0;
    qint64 transmittedPackets = 0;
    qint64 transmitErrors = 0;
};

/// What a block device has counted since it appeared, in sectors of 512 bytes whatever the device's own are
/// (Documentation/block/stat.rst of the kernel).
struct DiskCounters {
    QString name;
    qint64 sectorsRead = 0;
    qint64 sectorsWritten = 0;
};

/// A server has a few of either; what one lists beyond this number is passed over.
inline constexpr qsizetype kMostCounters = 4096;

/// Of GetCPUUsageCommand: the number on the last line, in percent; 0 when that is none. May be above 100.
double cpuUsage(QByteArrayView output);

/// Of GetMemoryMetricsCommand, in bytes: a line of KEY:number pieces between bars for main memory, one for swap.
/// `buffers` stays 0: free(1) counts them as cached.
MemoryMetrics memory(QByteArrayView output);

/// Of GetNetworkMetricsCommand, without the loopback interface: lines of seven pieces between bars.
QList<NetworkCounters> network(QByteArrayView output);

/// Of GetDiskIOMetricsCommand: lines of three pieces between bars.
QList<DiskCounters> diskIO(QByteArrayView output);

} // namespace MetricsParser
