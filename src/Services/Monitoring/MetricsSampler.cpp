#include "Services/Monitoring/MetricsSampler.h"

#include "Helpers/Clock.h"
#include "Helpers/Log.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/Parsers/GPUMetricsParser.h"
#include "Services/SSH/SSHLauncher.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kSectorSize = 512; // bytes, for every device

// Seconds since the reading before; 0 when there is none to compare with.
double secondsSince(const std::optional<QDateTime> &before, const QDateTime &now)
{
    return before ? static_cast<double>(before->msecsTo(now)) / 1000 : 0;
}

// How far a counter rose per second. One that fell began anew, and tells nothing.
double rate(qint64 before, qint64 now, double seconds)
{
    if (seconds <= 0 || now <= before) {
        return 0;
    }
    return static_cast<double>(static_cast<quint64>(now) - static_cast<quint64>(before)) / seconds;
}

qint64 wholeRate(qint64 before, qint64 now, double seconds)
{
    constexpr auto kLimit = static_cast<double>(std::numeric_limits<qint64>::max());
    const double exact = rate(before, now, seconds);
    return exact < kLimit ? static_cast<qint64>(exact) : std::numeric_limits<qint64>::max();
}

// Whether the command never reached the server, or the line to it broke.
bool tellsLostServer(const CommandResult &result)
{
    return result.exitCode == CommandResult::kSshFailed || result.exitCode == CommandResult::kNotRun;
}

void logUtilizations(const GPUMetrics &metrics)
{
    QStringList entries;
    for (const GPUDevice &gpu : metrics.gpus) {
        entries.append(u"GPU%1:%2%"_s.arg(QString::number(gpu.index), decimalText(gpu.utilization)));
    }
    Log::info(u"GPU metrics parsed: %1 GPU(s), utilizations: %2"_s.arg(QString::number(metrics.gpus.size()),
                                                                       entries.join(u", "_s)));
}

} // namespace

MetricsSampler::MetricsSampler(const MonitoredServer &server, QObject *parent)
    : QObject(parent)
    , m_server(server)
{
    m_monitoringTimer.setInterval(kIntervalMs);
    m_secondSampleTimer.setInterval(kSecondSampleDelayMs);
    m_secondSampleTimer.setSingleShot(true);
    connect(&m_monitoringTimer, &QTimer::timeout, this, [this] { sample(this); });
    connect(&m_secondSampleTimer, &QTimer::timeout, this, [this] { sample(this); });
}

void MetricsSampler::startMonitoring()
{
    if (m_isMonitoring) {
        return;
    }
    m_isMonitoring = true;
    m_answeredAt = m_server.clock.now();
    resetRates();
    m_monitoringTimer.start();
    const Self self(this);
    Q_EMIT isMonitoringChanged(true);
    if (self && !m_gpuMetrics) {
        fetchGPUMetrics();
    }
    if (self) {
        sampleTwice(self);
    }
}

void MetricsSampler::stopMonitoring()
{
    if (!m_isMonitoring) {
        return;
    }
    m_isMonitoring = false;
    m_monitoringTimer.stop();
    m_secondSampleTimer.stop();
    resetRates();
    const Self self(this);
    setSilent(false);
    if (self) {
        Q_EMIT isMonitoringChanged(false);
    }
}

void MetricsSampler::resetRates()
{
    m_previousNetworkBytes.clear();
    m_previousDiskSectors.clear();
    m_lastNetworkReadTime.reset();
    m_lastDiskReadTime.reset();
}

QCoro::Task<> MetricsSampler::fetchMetrics()
{
    return sample(this);
}

QCoro::Task<> MetricsSampler::fetchGPUMetrics()
{
    return askForGPUs(this);
}

QCoro::Task<> MetricsSampler::sampleTwice(Self self)
{
    co_await sample(self);
    if (self && self->m_isMonitoring) {
        self->m_secondSampleTimer.start();
    }
}

bool MetricsSampler::mayGoOn(const Self &self)
{
    return self && !self->m_hasLostServer && self->m_server.connected();
}

QCoro::Task<> MetricsSampler::sample(Self self)
{
    if (self->m_isSampling) {
        if (self->m_sampleBegan.msecsTo(self->m_server.clock.now()) > kSilenceMs) {
            self->setSilent(true);
        }
        co_return;
    }
    if (!self->m_server.connected()) {
        co_return;
    }
    self->m_isSampling = true;
    self->m_hasLostServer = false;
    self->m_sampleBegan = self->m_server.clock.now();
    co_await measure(self);
    if (self) {
        self->m_isSampling = false;
        if (self->m_hasLostServer) {
            self->setSilent(true);
        }
    }
}

void MetricsSampler::setSilent(bool isSilent)
{
    const auto since = isSilent && m_isMonitoring ? std::optional(m_answeredAt) : std::nullopt;
    if (std::exchange(m_silentSince, since) != since) {
        Q_EMIT silentSinceChanged();
    }
}

QCoro::Task<> MetricsSampler::measure(Self self)
{
    MetricsSnapshot snapshot;
    snapshot.cpuUsage = co_await self->getCPUUsage();
    if (!mayGoOn(self)) {
        co_return;
    }
    snapshot.memoryUsage = co_await self->getMemoryMetrics();
    if (!mayGoOn(self)) {
        co_return;
    }
    snapshot.networkMetrics = co_await self->getNetworkMetrics();
    if (!mayGoOn(self)) {
        co_return;
    }
    snapshot.diskIOMetrics = co_await self->getDiskIOMetrics();
    if (!mayGoOn(self)) {
        co_return;
    }
    if (self->m_isMonitoring) {
        snapshot.gpuMetrics = co_await self->getGPUMetrics();
        if (!mayGoOn(self)) {
            co_return;
        }
    } else {
        snapshot.gpuMetrics = self->m_gpuMetrics.value_or(GPUMetrics());
    }
    self->keep(snapshot);
}

void MetricsSampler::keep(const MetricsSnapshot &snapshot)
{
    m_currentMetrics = snapshot;
    m_answeredAt = m_server.clock.now();
    m_currentMetrics->timestamp = m_answeredAt;
    m_metricsHistory.append(*m_currentMetrics);
    if (m_metricsHistory.size() > kHistoryLength) {
        m_metricsHistory.remove(0, m_metricsHistory.size() - kHistoryLength);
    }
    const Self self(this);
    setGPUMetrics(snapshot.gpuMetrics);
    if (self) {
        setSilent(false);
    }
    if (self) {
        Q_EMIT sampled();
    }
}

void MetricsSampler::setGPUMetrics(const std::optional<GPUMetrics> &metrics)
{
    if (m_gpuMetrics != metrics) {
        m_gpuMetrics = metrics;
        Q_EMIT gpuMetricsChanged();
    }
}

QCoro::Task<> MetricsSampler::askForGPUs(Self self)
{
    const std::optional<GPUMetrics> metrics = co_await self->getGPUMetrics();
    if (self) {
        self->setGPUMetrics(metrics);
    }
}

QCoro::Task<CommandResult> MetricsSampler::run(Self self, std::shared_ptr<const SSHCommand> command)
{
    const std::optional<Server> server = self->m_server.connected();
    if (!server) {
        co_return CommandResult();
    }
    const CommandExecutionResult run = co_await self->m_server.manager.executeSSHCommand(command, *server);
    if (self && tellsLostServer(run.result)) {
        self->m_hasLostServer = true;
    }
    co_return run.result;
}

QCoro::Task<double> MetricsSampler::getCPUUsage()
{
    const CommandResult result = co_await run(this, std::make_shared<GetCPUUsageCommand>());
    if (!result.succeeded()) {
        Log::error(u"CPU command failed. Exit code: %1, Output: %2"_s.arg(QString::number(result.exitCode),
                                                                          QString::fromUtf8(result.output)));
        co_return 0.0;
    }
    co_return MetricsParser::cpuUsage(result.output);
}

QCoro::Task<MemoryMetrics> MetricsSampler::getMemoryMetrics()
{
    const CommandResult result = co_await run(this, std::make_shared<GetMemoryMetricsCommand>());
    co_return result.succeeded() ? MetricsParser::memory(result.output) : MemoryMetrics();
}

QCoro::Task<NetworkMetrics> MetricsSampler::getNetworkMetrics()
{
    return readNetwork(this);
}

QCoro::Task<NetworkMetrics> MetricsSampler::readNetwork(Self self)
{
    const QDateTime now = self->m_server.clock.now();
    const CommandResult result = co_await run(self, std::make_shared<GetNetworkMetricsCommand>());
    NetworkMetrics metrics;
    if (self && result.succeeded()) {
        metrics.interfaces = self->networkRates(MetricsParser::network(result.output), now);
    }
    if (self) {
        self->m_lastNetworkReadTime = now;
    }
    co_return metrics;
}

QList<NetworkInterface> MetricsSampler::networkRates(const QList<MetricsParser::NetworkCounters> &counters,
                                                     const QDateTime &now)
{
    const double elapsed = secondsSince(m_lastNetworkReadTime, now);
    const auto before = std::exchange(m_previousNetworkBytes, {}); // what is gone counts as new if it comes back
    QList<NetworkInterface> interfaces;
    for (const MetricsParser::NetworkCounters &counter : counters) {
        const NetworkBytes bytes{counter.receivedBytes, counter.transmittedBytes};
        const NetworkBytes last = before.value(counter.name, bytes);
        interfaces.append({.name = counter.name,
                           .receiveBytesPerSec = wholeRate(last.receive, bytes.receive, elapsed),
                           .transmitBytesPerSec = wholeRate(last.transmit, bytes.transmit, elapsed),
                           .receivePacketsPerSec = counter.receivedPackets,
                           .transmitPacketsPerSec = counter.transmittedPackets,
                           .receiveErrors = counter.receiveErrors,
                           .transmitErrors = counter.transmitErrors});
        m_previousNetworkBytes.insert(counter.name, bytes);
    }
    return interfaces;
}

QCoro::Task<DiskIOMetrics> MetricsSampler::getDiskIOMetrics()
{
    return readDiskIO(this);
}

QCoro::Task<DiskIOMetrics> MetricsSampler::readDiskIO(Self self)
{
    const QDateTime now = self->m_server.clock.now();
    const CommandResult result = co_await run(self, std::make_shared<GetDiskIOMetricsCommand>());
    DiskIOMetrics metrics;
    if (self && result.succeeded()) {
        metrics.devices = self->diskRates(MetricsParser::diskIO(result.output), now);
    }
    if (self) {
        self->m_lastDiskReadTime = now;
    }
    co_return metrics;
}

QList<DiskIODevice> MetricsSampler::diskRates(const QList<MetricsParser::DiskCounters> &counters,
                                              const QDateTime &now)
{
    const double elapsed = secondsSince(m_lastDiskReadTime, now);
    const auto before = std::exchange(m_previousDiskSectors, {});
    QList<DiskIODevice> devices;
    for (const MetricsParser::DiskCounters &counter : counters) {
        const DiskSectors sectors{counter.sectorsRead, counter.sectorsWritten};
        const DiskSectors last = before.value(counter.name, sectors);
        devices.append({.deviceName = counter.name,
                        .readBytesPerSec = kSectorSize * rate(last.read, sectors.read, elapsed),
                        .writeBytesPerSec = kSectorSize * rate(last.write, sectors.write, elapsed)});
        m_previousDiskSectors.insert(counter.name, sectors);
    }
    return devices;
}

QCoro::Task<std::optional<GPUMetrics>> MetricsSampler::getGPUMetrics()
{
    const CommandResult result = co_await run(this, std::make_shared<GetGPUMetricsCommand>());
    if (!result.succeeded()) {
        Log::error(u"GPU metrics command failed with exit code: "_s + QString::number(result.exitCode));
        co_return std::optional<GPUMetrics>();
    }
    const std::optional<GPUMetrics> metrics = GPUMetricsParser::parse(result.output);
    if (metrics) {
        logUtilizations(*metrics);
    } else {
        Log::error(u"Failed to parse GPU metrics from output: "_s + QString::fromUtf8(result.output));
    }
    co_return metrics;
}
