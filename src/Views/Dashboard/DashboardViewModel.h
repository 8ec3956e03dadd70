#pragma once

#include "Models/Server.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Monitoring/MetricsSampler.h"
#include "Services/Monitoring/SystemInformation.h"

#include <QObject>
#include <QSet>
#include <memory>
#include <optional>

class Clock;
class ServerStore;

/// The first screen of one selected server: makes the connection, fetches the facts and, while that section is open,
/// samples the load. It may be destroyed at any moment; what is under way then ends by itself, and only the
/// store learns of it.
class DashboardViewModel : public QObject
{
    Q_OBJECT

public:
    /// All of them outlive every task.
    struct Services {
        CommandSSHManager &manager;
        ServerStore &store;
        const Clock &clock;
    };

    enum class Connection { NotConnected, Connecting, Connected, Failed };

    /// What the operator may type for another attempt after one that failed.
    enum class WantedSecret { None, Password, Passphrase };

    /// The keys of expandedSections().
    static constexpr auto kStorageDevices = QLatin1StringView("storage_devices");
    static constexpr auto kGPUDevices = QLatin1StringView("gpu_devices");
    static constexpr auto kMonitoring = QLatin1StringView("monitoring");

    DashboardViewModel(const Services &services, const Server &server, QObject *parent = nullptr);

    /// Shows the stored facts, and connects.
    void start();

    /// The record as it stands in the store.
    const Server &server() const { return m_server; }

    /// An attempt to connect is under way; also with a server that counts as connected.
    bool isConnecting() const { return m_isConnecting; }

    bool isConnected() const { return m_server.isConnected; }

    /// The two in one word, with Failed when the last attempt did and none has been made since.
    Connection connection() const;

    /// A failure is to be put before the operator.
    bool showingConnectionError() const { return m_showingConnectionError; }

    /// Of the last attempt that failed, in words for the operator; it stays when the failure has been seen.
    QString connectionErrorMessage() const { return m_connectionErrorMessage; }

    /// What the client said to it, in one line; empty when it said nothing.
    QString connectionErrorDetail() const { return m_connectionErrorDetail; }

    WantedSecret wantedSecret() const { return m_wantedSecret; }

    /// The operator asked for the last attempt; it was not the screen that made it by itself.
    bool isAttemptAskedFor() const { return m_isAttemptAskedFor; }

    /// The question whether to disconnect is to be put before the operator.
    bool showingDisconnectAlert() const { return m_showingDisconnectAlert; }

    const std::optional<SystemInfo> &systemInfo() const { return m_systemInformation.systemInfo(); }

    bool isRefreshing() const { return m_systemInformation.isRefreshing(); }

    /// Why the newest fetch of the facts failed, in the words of the other side; nothing when it did not. The facts
    /// that were there before stay.
    const std::optional<QString> &refreshError() const { return m_systemInformation.refreshError(); }

    const QSet<QString> &expandedSections() const { return m_expandedSections; }

    bool isExpanded(const QString &section) const { return m_expandedSections.contains(section); }

    /// The newest sample, and the newest sixty, oldest first.
    const std::optional<MetricsSnapshot> &currentMetrics() const { return m_sampler.currentMetrics(); }

    const QList<MetricsSnapshot> &metricsHistory() const { return m_sampler.metricsHistory(); }

    const std::optional<GPUMetrics> &gpuMetrics() const { return m_sampler.gpuMetrics(); }

    bool isMonitoring() const { return m_sampler.isMonitoring(); }

    /// How the samples come: at which interval, or since when they don't.
    QString monitoringNote() const;

    /// How long ago the sample at this place of the history was taken, in words.
    QString sampleAge(qsizetype index) const;

    /// The root file system first, the others by their mount point.
    static QList<DiskInfo> sortedDiskUsage(QList<DiskInfo> disks);

public Q_SLOTS:
    /// Samples are taken while the section for them is open, on show or not.
    void setExpanded(const QString &section, bool isExpanded);

    /// Logs in, with `secret` if the operator typed one. Does nothing while a login that it made is under way.
    void initiateConnection(const std::optional<QString> &secret = std::nullopt);

    /// The failure has been seen.
    void dismissConnectionError();

    void setShowingDisconnectAlert(bool isShowing);

    /// The operator has agreed: tells it by disconnectRequested().
    void confirmDisconnect();

    /// Fetches the facts unless those at hand are young and complete.
    void refreshSystemInfoIfNeeded();

    /// Fetches the facts. Of overlapping fetches the newest counts.
    void refreshSystemInfo();

Q_SIGNALS:
    /// Anything is different now but what the other signals tell.
    void changed();
    void expandedSectionsChanged();
    void gpuMetricsChanged();

    /// A sample is whole.
    void sampled();

    /// The operator wants the session to end, with all that belongs to it.
    void disconnectRequested();

private:
    static QCoro::Task<ConnectionOutcome> connectToServer(Services services, Server server,
                                                          std::optional<QString> secret);

    void logIn(const std::optional<QString> &secret);
    void connectionEnded(const ConnectionOutcome &outcome, bool wasConnected);
    void showFailure(const ConnectionOutcome &outcome);
    void followStore(qsizetype index);
    void followManager(const QUuid &serverId);
    void connectionCame();
    void followMonitoring();
    void detectGPUs();

    Services m_services;
    Server m_server;
    bool m_isConnecting = false;
    bool m_hasFailed = false;
    bool m_showingConnectionError = false;
    bool m_showingDisconnectAlert = false;
    bool m_isAttemptAskedFor = false;
    bool m_isDetectingGPUs = false;
    QString m_connectionErrorMessage;
    QString m_connectionErrorDetail;
    WantedSecret m_wantedSecret = WantedSecret::None;
    QSet<QString> m_expandedSections;
    SystemInformation m_systemInformation;
    MetricsSampler m_sampler;
};
