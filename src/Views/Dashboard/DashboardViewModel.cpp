#include "Views/Dashboard/DashboardViewModel.h"

#include "Helpers/Clock.h"
#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"
#include "Views/Dashboard/DashboardFigures.h"

#include <QLocale>
#include <QPointer>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

QCoro::Task<std::optional<Server>> currentRecord(QPointer<ServerStore> store, QUuid id)
{
    co_return store ? store->server(id) : std::nullopt;
}

} // namespace

DashboardViewModel::DashboardViewModel(const Services &services, const Server &server, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_server(server)
    , m_systemInformation(MonitoredServer{services.manager, services.store, services.clock, server.id})
    , m_sampler(MonitoredServer{services.manager, services.store, services.clock, server.id})
{
    m_systemInformation.setSystemInfo(server.systemInfo);
    connect(&m_systemInformation, &SystemInformation::changed, this, &DashboardViewModel::changed);
    connect(&m_sampler, &MetricsSampler::sampled, this, &DashboardViewModel::sampled);
    connect(&m_sampler, &MetricsSampler::silentSinceChanged, this, &DashboardViewModel::changed);
    connect(&m_sampler, &MetricsSampler::gpuMetricsChanged, this, &DashboardViewModel::gpuMetricsChanged);
    connect(&services.store, &ServerStore::serverUpdated, this, &DashboardViewModel::followStore);
    // Queued, so that a login which ends by itself tells its outcome first.
    connect(&services.manager, &CommandSSHManager::serverConnectingChanged, this, &DashboardViewModel::followManager,
            Qt::QueuedConnection);
}

void DashboardViewModel::start()
{
    m_isAttemptAskedFor = false;
    logIn(std::nullopt);
}

DashboardViewModel::Connection DashboardViewModel::connection() const
{
    if (m_isConnecting) {
        return Connection::Connecting;
    }
    if (isConnected()) {
        return Connection::Connected;
    }
    return m_hasFailed ? Connection::Failed : Connection::NotConnected;
}

void DashboardViewModel::initiateConnection(const std::optional<QString> &secret)
{
    if (!m_isConnecting) {
        m_isAttemptAskedFor = true;
        logIn(secret);
    }
}

void DashboardViewModel::logIn(const std::optional<QString> &secret)
{
    m_isConnecting = true;
    m_hasFailed = false;
    m_showingConnectionError = false;
    m_connectionErrorMessage.clear();
    m_connectionErrorDetail.clear();
    m_wantedSecret = WantedSecret::None;
    Q_EMIT changed();

    // The login proves something about the server also when nobody looks at it any more: the store is told in any
    // case, and this object only if it is still there.
    whenDone(connectToServer(m_services, m_server, secret), &m_services.store,
             [&store = m_services.store, server = m_server, self = QPointer(this)](const ConnectionOutcome &outcome) {
                 if (outcome.isOvertaken) {
                     return;
                 }
                 const bool wasConnected = self && self->isConnected();
                 if (self) {
                     self->m_isConnecting = false;
                 }
                 const auto record = store.server(server.id);
                 if (record && (outcome.succeeded || record->isConnected)) {
                     store.updateServerConnection(server, outcome.succeeded);
                 }
                 if (self) {
                     self->connectionEnded(outcome, wasConnected);
                 }
             });
}

QCoro::Task<ConnectionOutcome> DashboardViewModel::connectToServer(Services services, Server server,
                                                                   std::optional<QString> secret)
{
    const auto secretOf = [&](AuthMethod method) { return server.authMethod == method ? secret : std::nullopt; };
    const QPointer<ServerStore> store(&services.store);
    return services.manager.attemptConnection(server, secretOf(AuthMethod::Password), secretOf(AuthMethod::PublicKey),
                                              [store, id = server.id] { return currentRecord(store, id); });
}

void DashboardViewModel::connectionEnded(const ConnectionOutcome &outcome, bool wasConnected)
{
    if (!outcome.succeeded) {
        showFailure(outcome);
    } else if (wasConnected) { // otherwise the store's change has done it
        refreshSystemInfoIfNeeded();
    }
    Q_EMIT changed();
}

void DashboardViewModel::showFailure(const ConnectionOutcome &outcome)
{
    const QString general = tr("Failed to connect to %1. Please check:\n\n"
                               "• Host is reachable (use IP address like 192.168.1.100)\n"
                               "• SSH service is running on port %2\n"
                               "• Credentials are correct\n"
                               "• Network connectivity")
                                .arg(m_server.name, QString::number(m_server.port));
    m_hasFailed = true;
    m_showingConnectionError = true;
    m_connectionErrorMessage = outcome.isPassphraseNeeded ? tr("SSH key requires a passphrase.\n\n"
                                                               "To add a passphrase:\n"
                                                               "1. Right-click the server and select 'Edit Server'\n"
                                                               "2. Enter the passphrase in the 'Passphrase' field\n"
                                                               "3. Click the key icon to save it to Keychain\n"
                                                               "4. Save the server and try connecting again")
                                                          : outcome.error.value_or(general);
    m_connectionErrorDetail = outcome.reason;
    if (outcome.isSecretWanted) {
        m_wantedSecret =
            m_server.authMethod == AuthMethod::Password ? WantedSecret::Password : WantedSecret::Passphrase;
    }
}

// A login that was overtaken, by a disconnect for instance, has no outcome.
void DashboardViewModel::followManager(const QUuid &serverId)
{
    if (serverId == m_server.id && !m_services.manager.isConnecting(serverId) &&
        std::exchange(m_isConnecting, false)) {
        Q_EMIT changed();
    }
}

void DashboardViewModel::dismissConnectionError()
{
    if (std::exchange(m_showingConnectionError, false)) {
        Q_EMIT changed();
    }
}

void DashboardViewModel::setShowingDisconnectAlert(bool isShowing)
{
    if (std::exchange(m_showingDisconnectAlert, isShowing) != isShowing) {
        Q_EMIT changed();
    }
}

void DashboardViewModel::confirmDisconnect()
{
    const QPointer<DashboardViewModel> self(this);
    setShowingDisconnectAlert(false);
    if (self) {
        Q_EMIT disconnectRequested();
    }
}

void DashboardViewModel::refreshSystemInfoIfNeeded()
{
    m_systemInformation.refreshSystemInfoIfNeeded();
}

void DashboardViewModel::refreshSystemInfo()
{
    m_systemInformation.refreshSystemInfo();
}

void DashboardViewModel::followStore(qsizetype index)
{
    const Server &stored = m_services.store.servers().at(index);
    if (stored.id != m_server.id) {
        return;
    }
    const bool factsChanged = stored.systemInfo != m_server.systemInfo;
    const bool wasConnected = std::exchange(m_server, stored).isConnected;
    if (factsChanged) {
        m_systemInformation.setSystemInfo(m_server.systemInfo);
    }
    if (!wasConnected && isConnected()) {
        connectionCame();
    } else if (wasConnected && !isConnected()) {
        m_showingDisconnectAlert = false;
        m_systemInformation.cancel();
    }
    Q_EMIT changed();
}

void DashboardViewModel::connectionCame()
{
    m_hasFailed = false;
    refreshSystemInfoIfNeeded();
    if (m_sampler.isMonitoring()) { // its rates would reach back to before the gap
        m_sampler.stopMonitoring();
        m_sampler.startMonitoring();
    } else if (isExpanded(kGPUDevices)) {
        detectGPUs();
    }
}

void DashboardViewModel::setExpanded(const QString &section, bool isExpanded)
{
    if (isExpanded == this->isExpanded(section)) {
        return;
    }
    if (isExpanded) {
        m_expandedSections.insert(section);
    } else {
        m_expandedSections.remove(section);
    }
    Q_EMIT expandedSectionsChanged();
    followMonitoring();
    if (isExpanded && section == kGPUDevices) {
        detectGPUs();
    }
}

void DashboardViewModel::followMonitoring()
{
    if (isExpanded(kMonitoring)) {
        m_sampler.startMonitoring();
    } else {
        m_sampler.stopMonitoring();
    }
}

void DashboardViewModel::detectGPUs()
{
    if (!gpuMetrics() && isConnected() && !std::exchange(m_isDetectingGPUs, true)) {
        whenDone(m_sampler.fetchGPUMetrics(), this, [this] { m_isDetectingGPUs = false; });
    }
}

QString DashboardViewModel::monitoringNote() const
{
    if (!isConnected()) {
        return tr("paused: not connected");
    }
    if (const auto &since = m_sampler.silentSince()) {
        return tr("no answer since %1").arg(QLocale().toString(since->toLocalTime(), u"HH:mm:ss"_s));
    }
    return tr("every %1 s").arg(MetricsSampler::kIntervalMs / 1000);
}

QString DashboardViewModel::sampleAge(qsizetype index) const
{
    const bool isThere = index >= 0 && index < metricsHistory().size();
    return isThere ? DashboardFigures::age(metricsHistory().at(index).timestamp, m_services.clock.now()) : QString();
}

QList<DiskInfo> DashboardViewModel::sortedDiskUsage(QList<DiskInfo> disks)
{
    std::ranges::stable_sort(disks, [](const DiskInfo &a, const DiskInfo &b) {
        const bool aIsRoot = a.mountPoint == "/"_L1;
        const bool bIsRoot = b.mountPoint == "/"_L1;
        return aIsRoot != bIsRoot ? aIsRoot : a.mountPoint < b.mountPoint;
    });
    return disks;
}
