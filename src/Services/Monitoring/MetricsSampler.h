#pragma once

#include "Models/Metrics.h"
#include "Services/Monitoring/MonitoredServer.h"
#include "Services/Parsers/MetricsParser.h"

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <optional>

struct CommandResult;
class SSHCommand;

/// The load of one server: a sample every three seconds while monitoring runs, and the newest sixty of them.
///
/// A sample is a set of commands sent one after the other; there is never more than one under way, since the
/// processor script goes through files of fixed names. Belongs to a view model and may go away at any moment, also
/// within a sample, which then comes to nothing.
class MetricsSampler : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype kHistoryLength = 60;
    static constexpr int kIntervalMs = 3000;
    /// From the end of the first sample, which can have no rates, to the begin of the second.
    static constexpr int kSecondSampleDelayMs = 1000;
    /// A sample that has taken longer is one without an answer.
    static constexpr int kSilenceMs = 15'000;

    explicit MetricsSampler(const MonitoredServer &server, QObject *parent = nullptr);

    /// The samples, oldest first. They stay when monitoring stops.
    const QList<MetricsSnapshot> &metricsHistory() const { return m_metricsHistory; }

    /// The newest sample.
    const std::optional<MetricsSnapshot> &currentMetrics() const { return m_currentMetrics; }

    /// The newest answer about graphics processors; absent while there is none.
    const std::optional<GPUMetrics> &gpuMetrics() const { return m_gpuMetrics; }

    bool isMonitoring() const { return m_isMonitoring; }

    /// When the server answered the last time, or monitoring began, if it gives no answer at present.
    const std::optional<QDateTime> &silentSince() const { return m_silentSince; }

    /// Takes a sample, another one a second after it is done, and then one at each tick. Rates begin anew.
    void startMonitoring();
    void stopMonitoring();

    /// Takes one sample. Nothing changes when the server is not connected, when a sample is under way, or when the
    /// server is lost before the sample is whole. Graphics processors are asked for while monitoring runs.
    QCoro::Task<> fetchMetrics();

    /// Asks for graphics processors once and keeps the answer as gpuMetrics().
    QCoro::Task<> fetchGPUMetrics();

    /// The parts of a sample, each one command. Where a command fails they give 0, nothing listed, or nothing.
    ///
    /// In percent; not clamped.
    QCoro::Task<double> getCPUUsage();
    QCoro::Task<MemoryMetrics> getMemoryMetrics();
    /// Bytes per second since the reading before; packets and errors as counted since the interface came up.
    QCoro::Task<NetworkMetrics> getNetworkMetrics();
    /// Bytes per second since the reading before. Disks and their partitions are devices of their own.
    QCoro::Task<DiskIOMetrics> getDiskIOMetrics();
    QCoro::Task<std::optional<GPUMetrics>> getGPUMetrics();

Q_SIGNALS:
    void isMonitoringChanged(bool isMonitoring);
    void gpuMetricsChanged();
    void silentSinceChanged();

    /// A sample is whole: currentMetrics() and metricsHistory() have it.
    void sampled();

private:
    struct NetworkBytes {
        qint64 receive = 0;
        qint64 transmit = 0;
    };

    struct DiskSectors {
        qint64 read = 0;
        qint64 write = 0;
    };

    using Self = QPointer<MetricsSampler>;

    static QCoro::Task<> sample(Self self);
    static QCoro::Task<> measure(Self self);
    static QCoro::Task<> sampleTwice(Self self);
    static QCoro::Task<> askForGPUs(Self self);
    static QCoro::Task<CommandResult> run(Self self, std::shared_ptr<const SSHCommand> command);
    static QCoro::Task<NetworkMetrics> readNetwork(Self self);
    static QCoro::Task<DiskIOMetrics> readDiskIO(Self self);
    static bool mayGoOn(const Self &self);

    void resetRates();
    void setSilent(bool isSilent);
    void keep(const MetricsSnapshot &snapshot);
    void setGPUMetrics(const std::optional<GPUMetrics> &metrics);
    QList<NetworkInterface> networkRates(const QList<MetricsParser::NetworkCounters> &counters, const QDateTime &now);
    QList<DiskIODevice> diskRates(const QList<MetricsParser::DiskCounters> &counters, const QDateTime &now);

    MonitoredServer m_server;
    QList<MetricsSnapshot> m_metricsHistory;
    std::optional<MetricsSnapshot> m_currentMetrics;
    std::optional<GPUMetrics> m_gpuMetrics;
    bool m_isMonitoring = false;
    bool m_isSampling = false;
    bool m_hasLostServer = false; ///< within the sample that is under way
    QDateTime m_sampleBegan;
    QDateTime m_answeredAt;
    std::optional<QDateTime> m_silentSince;
    QTimer m_monitoringTimer;
    QTimer m_secondSampleTimer;
    QHash<QString, NetworkBytes> m_previousNetworkBytes;
    std::optional<QDateTime> m_lastNetworkReadTime;
    QHash<QString, DiskSectors> m_previousDiskSectors;
    std::optional<QDateTime> m_lastDiskReadTime;
};
