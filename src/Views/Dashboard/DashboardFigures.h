#pragma once

#include "Models/Metrics.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

/// One value of one graphics processor in one sample.
struct GPUChartDataPoint {
    QUuid id = QUuid::createUuid();
    int gpuIndex = 0;
    int timeIndex = 0; ///< the sample's place in the history
    double value = 0;  ///< percent

    bool operator==(const GPUChartDataPoint &) const = default;
};

/// What the dashboard makes of samples: figures, and the words for them. Nothing here fails; a figure that cannot be
/// had is 0.
class DashboardFigures
{
    Q_DECLARE_TR_FUNCTIONS(DashboardFigures)

public:
    /// Processors that the card lists by name before it says how many more there are.
    static constexpr qsizetype kListedGPUs = 4;
    /// Processors within so many points of each other are alike.
    static constexpr double kSimilarUtilization = 5.0;
    /// Above so many percent a processor is marked.
    static constexpr double kBusyGPU = 80.0;

    /// Used of total in percent.
    static double memoryPercent(const MemoryMetrics &memory);

    /// "19.2 of 31.0 GiB"; empty without a total.
    static QString memoryText(const MemoryMetrics &memory);

    /// MB per second (of 1024 * 1024 bytes) over all interfaces.
    static double receiveRate(const NetworkMetrics &network);
    static double transmitRate(const NetworkMetrics &network);

    /// The same over all devices. Disks and their partitions are devices of their own, so that a busy partition
    /// counts twice.
    static double readRate(const DiskIOMetrics &disks);
    static double writeRate(const DiskIOMetrics &disks);

    /// A rate in MB per second, in the unit that suits it: "512 B/s", "4.2 KB/s", "0.051 MB/s", "12.6 MB/s".
    static QString formatRate(double megabytesPerSecond);

    /// With one decimal, and the unit behind it.
    static QString figure(double value, const QString &unit);

    /// The mean over the devices.
    static double averageUtilization(const GPUMetrics &metrics);

    /// " 87%": three places, so that columns of them line up.
    static QString utilizationText(double utilization);

    static bool haveSimilarUtilization(const GPUMetrics &metrics);

    /// "... and 4 more" behind a list of the first kListedGPUs; empty when all of them are listed.
    static QString moreGPUs(const GPUMetrics &metrics);

    /// "GPU 0".
    static QString gpuTitle(const GPUDevice &gpu);

    /// "8.0 of 24.0 GiB"; empty when the tool told no total.
    static QString gpuMemoryText(const GPUDevice &gpu);

    /// Temperature, power, frequencies and fan, as far as the tool told them, in one line.
    static QString gpuDetails(const GPUDevice &gpu);

    /// A point for each device of each sample, in the order of the history.
    static QList<GPUChartDataPoint> buildChartData(const QList<MetricsSnapshot> &metricsHistory);

    /// How long before `now` a sample was taken: "now", "12 s ago", "3 min ago".
    static QString age(const QDateTime &taken, const QDateTime &now);
};
