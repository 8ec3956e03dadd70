#include "Views/Dashboard/DashboardFigures.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kKi = 1024;
constexpr double kMi = kKi * kKi;
constexpr double kGi = kKi * kMi;
constexpr qint64 kMinute = 60; // seconds
constexpr qint64 kHour = 60 * kMinute;

template<typename List, typename Field>
double sumOf(const List &list, Field field)
{
    return std::accumulate(list.begin(), list.end(), 0.0, [field](double sum, const auto &entry) {
        return sum + static_cast<double>(entry.*field);
    });
}

QString partOf(qint64 used, qint64 total)
{
    if (total < 1) {
        return {};
    }
    const bool isLarge = static_cast<double>(total) >= kGi;
    const double unit = isLarge ? kGi : kMi;
    return DashboardFigures::tr("%1 of %2 %3")
        .arg(QString::asprintf("%.1f", static_cast<double>(used) / unit),
             QString::asprintf("%.1f", static_cast<double>(total) / unit), isLarge ? u"GiB"_s : u"MiB"_s);
}

QString powerText(const GPUDevice &gpu)
{
    return gpu.powerLimit ? QString::asprintf("%.0f / %.0f W", *gpu.powerDraw, *gpu.powerLimit)
                          : QString::asprintf("%.0f W", *gpu.powerDraw);
}

} // namespace

double DashboardFigures::memoryPercent(const MemoryMetrics &memory)
{
    return memory.total < 1 ? 0 : static_cast<double>(memory.used) / static_cast<double>(memory.total) * 100;
}

QString DashboardFigures::memoryText(const MemoryMetrics &memory)
{
    return partOf(memory.used, memory.total);
}

double DashboardFigures::receiveRate(const NetworkMetrics &network)
{
    return sumOf(network.interfaces, &NetworkInterface::receiveBytesPerSec) / kMi;
}

double DashboardFigures::transmitRate(const NetworkMetrics &network)
{
    return sumOf(network.interfaces, &NetworkInterface::transmitBytesPerSec) / kMi;
}

double DashboardFigures::readRate(const DiskIOMetrics &disks)
{
    return sumOf(disks.devices, &DiskIODevice::readBytesPerSec) / kMi;
}

double DashboardFigures::writeRate(const DiskIOMetrics &disks)
{
    return sumOf(disks.devices, &DiskIODevice::writeBytesPerSec) / kMi;
}

QString DashboardFigures::formatRate(double megabytesPerSecond)
{
    const double rate = megabytesPerSecond;
    if (rate < 0.01) {
        return rate * kKi < 0.1 ? QString::asprintf("%.0f B/s", rate * kMi)
                                : QString::asprintf("%.1f KB/s", rate * kKi);
    }
    if (rate < 0.1) {
        return QString::asprintf("%.3f MB/s", rate);
    }
    return rate < 1.0 ? QString::asprintf("%.2f MB/s", rate) : QString::asprintf("%.1f MB/s", rate);
}

QString DashboardFigures::figure(double value, const QString &unit)
{
    return QString::asprintf("%.1f", value) + unit;
}

double DashboardFigures::averageUtilization(const GPUMetrics &metrics)
{
    return metrics.gpus.isEmpty()
               ? 0
               : sumOf(metrics.gpus, &GPUDevice::utilization) / static_cast<double>(metrics.gpus.size());
}

QString DashboardFigures::utilizationText(double utilization)
{
    return QString::asprintf("%3.0f%%", utilization);
}

bool DashboardFigures::haveSimilarUtilization(const GPUMetrics &metrics)
{
    const auto [least, most] = std::ranges::minmax_element(metrics.gpus, {}, &GPUDevice::utilization);
    return metrics.gpus.size() > 1 && most->utilization - least->utilization <= kSimilarUtilization;
}

QString DashboardFigures::moreGPUs(const GPUMetrics &metrics)
{
    const qsizetype more = metrics.gpus.size() - kListedGPUs;
    return more > 0 ? tr("... and %1 more").arg(more) : QString();
}

QString DashboardFigures::gpuTitle(const GPUDevice &gpu)
{
    return tr("GPU %1").arg(gpu.index);
}

QString DashboardFigures::gpuMemoryText(const GPUDevice &gpu)
{
    return partOf(gpu.memoryUsed, gpu.memoryTotal);
}

QString DashboardFigures::gpuDetails(const GPUDevice &gpu)
{
    QStringList details;
    if (gpu.temperature) {
        details.append(QString::asprintf("%.0f", *gpu.temperature) + u" °C"_s);
    }
    if (gpu.powerDraw) {
        details.append(powerText(gpu));
    }
    if (gpu.coreFrequency) {
        details.append(tr("Core %1 MHz").arg(QString::asprintf("%.0f", *gpu.coreFrequency)));
    }
    if (gpu.memoryFrequency) {
        details.append(tr("Memory %1 MHz").arg(QString::asprintf("%.0f", *gpu.memoryFrequency)));
    }
    if (gpu.fanSpeed) {
        details.append(tr("Fan %1").arg(QString::asprintf("%.0f%%", *gpu.fanSpeed)));
    }
    return details.join(u"  ·  "_s);
}

QList<GPUChartDataPoint> DashboardFigures::buildChartData(const QList<MetricsSnapshot> &metricsHistory)
{
    QList<GPUChartDataPoint> points;
    for (qsizetype time = 0; time < metricsHistory.size(); ++time) {
        if (const auto &metrics = metricsHistory.at(time).gpuMetrics) {
            for (const GPUDevice &gpu : metrics->gpus) {
                points.append({.gpuIndex = gpu.index, .timeIndex = static_cast<int>(time), .value = gpu.utilization});
            }
        }
    }
    return points;
}

QString DashboardFigures::age(const QDateTime &taken, const QDateTime &now)
{
    const qint64 seconds = std::max<qint64>(taken.secsTo(now), 0);
    if (seconds < 1) {
        return tr("now");
    }
    if (seconds < kMinute) {
        return tr("%1 s ago").arg(seconds);
    }
    return seconds < kHour ? tr("%1 min ago").arg(seconds / kMinute) : tr("%1 h ago").arg(seconds / kHour);
}
