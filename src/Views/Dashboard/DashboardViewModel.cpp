#include "Views/Dashboard/DashboardViewModel.h"

#include "Helpers/Clock.h"
#include "Helpers/Log.h"
#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"

#include <QPointer>
#include <algorithm>

using namespace Qt::StringLiterals;

struct DashboardViewModel::Login {
    bool succeeded = false;
    bool hadSecret = false; ///< of a password server: there was a password to try
    std::optional<QString> error;
};

struct DashboardViewModel::Facts {
    std::optional<SystemInfo> systemInfo;
    QString error;
};

namespace
{

QString took(const CommandExecutionResult &run)
{
    return QString::number(run.executionTime, 'f', 2) + u's';
}

QCoro::Task<std::optional<Server>> currentRecord(QPointer<ServerStore> store, QUuid id)
{
    co_return store ? store->server(id) : std::nullopt;
}

// The manager's own words; the translation is looked up where the manager looks it up.
bool asksForPassphrase(const std::optional<QString> &error)
{
    return error && *error == CommandSSHManager::tr("SSH key requires a passphrase. Please enter the passphrase for "
                                                    "your SSH key.");
}

} // namespace

DashboardViewModel::DashboardViewModel(const Services &services, const Server &server, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_server(server)
    , m_systemInfo(server.systemInfo)
{
    connect(&services.store, &ServerStore::serverUpdated, this, &DashboardViewModel::followStore);
}

void DashboardViewModel::start()
{
    initiateConnection();
}

void DashboardViewModel::initiateConnection(const std::optional<QString> &secret)
{
    if (m_connection == Connection::Connecting) {
        return;
    }
    m_connection = Connection::Connecting;
    m_connectionErrorMessage.clear();
    m_wantedSecret = WantedSecret::None;
    Q_EMIT changed();

    // The login proves something about the server also when nobody looks at it any more: the store is told in any
    // case, and this object only if it is still there.
    whenDone(logIn(m_services, m_server, secret), &m_services.store,
             [&store = m_services.store, server = m_server, self = QPointer(this)](const Login &login) {
                 const auto record = store.server(server.id);
                 if (record && (login.succeeded || record->isConnected)) {
                     store.updateServerConnection(server, login.succeeded);
                 }
                 if (self) {
                     self->loginEnded(login);
                 }
             });
}

QCoro::Task<DashboardViewModel::Login> DashboardViewModel::logIn(Services services, Server server,
                                                                 std::optional<QString> secret)
{
    const auto secretOf = [&](AuthMethod method) { return server.authMethod == method ? secret : std::nullopt; };
    const QPointer<ServerStore> store(&services.store);
    Login login;
    login.hadSecret = secret.has_value() || (server.authMethod == AuthMethod::Password &&
                                             (co_await services.manager.getSessionPassword(server)).has_value());
    login.succeeded =
        co_await services.manager.connect(server, secretOf(AuthMethod::Password), secretOf(AuthMethod::PublicKey),
                                          [store, id = server.id] { return currentRecord(store, id); });
    if (!login.succeeded) {
        login.error = services.manager.connectionError();
    }
    co_return login;
}

void DashboardViewModel::loginEnded(const Login &login)
{
    if (login.succeeded) {
        m_connection = Connection::Connected;
        Q_EMIT changed();
        refreshSystemInfoIfNeeded();
        return;
    }
    m_connection = Connection::Failed;
    m_connectionErrorMessage = login.error.value_or(tr("Failed to connect to %1. Please check:\n\n"
                                                       "• Host is reachable (use IP address like 192.168.1.100)\n"
                                                       "• SSH service is running on port %2\n"
                                                       "• Credentials are correct\n"
                                                       "• Network connectivity")
                                                        .arg(m_server.name, QString::number(m_server.port)));
    const bool isPassword = m_server.authMethod == AuthMethod::Password;
    if (isPassword || asksForPassphrase(login.error)) {
        m_wantedSecret = isPassword ? WantedSecret::Password : WantedSecret::Passphrase;
    }
    Q_EMIT changed();
}

void DashboardViewModel::disconnectFromServer()
{
    m_services.manager.disconnect(m_server);
    m_connection = Connection::NotConnected;
    ++m_newestRequest;
    m_isRefreshing = false;
    m_services.store.updateServerConnection(m_server, false);
    Q_EMIT changed();
}

void DashboardViewModel::refreshSystemInfoIfNeeded()
{
    if (!m_server.isConnected) {
        return;
    }
    if (m_server.systemInfo && m_server.systemInfo->storageDevices) {
        const auto age = static_cast<double>(m_server.systemInfo->lastUpdated.msecsTo(m_services.clock.now())) / 1000;
        if (age < kFactsLifetimeSeconds) {
            Log::info(u"Using cached system info (age: %1s)"_s.arg(age), Log::Category::Performance);
            m_systemInfo = m_server.systemInfo;
            Q_EMIT changed();
            return;
        }
        Log::info(u"Cache expired (age: %1s), refreshing..."_s.arg(age), Log::Category::Performance);
    }
    refreshSystemInfo();
}

void DashboardViewModel::refreshSystemInfo()
{
    if (!m_server.isConnected) {
        return;
    }
    m_isRefreshing = true;
    Q_EMIT changed();
    whenDone(fetchFacts(m_services, m_server), this, [this, request = ++m_newestRequest](const Facts &facts) {
        if (request == m_newestRequest) {
            factsArrived(facts);
        }
    });
}

QCoro::Task<DashboardViewModel::Facts> DashboardViewModel::fetchFacts(Services services, Server server)
{
    const CommandExecutionResult system = co_await services.manager.getSystemInfoUsingCommands(server);
    Log::info(u"Command Pattern: "_s + system.command->description() + u" executed in "_s + took(system),
              Log::Category::Performance);
    const CommandExecutionResult storage = co_await services.manager.getStorageDevicesUsingCommands(server);
    Log::info(u"Storage devices fetched in "_s + took(storage), Log::Category::Performance);

    Facts facts;
    if (!system.result.succeeded()) {
        facts.error = QString::fromUtf8(system.result.error.trimmed());
        Log::error(u"Command execution failed: "_s + facts.error, Log::Category::Ssh);
        co_return facts;
    }
    facts.systemInfo = SystemInfoParser::parse(system.result.output, services.clock.now());
    if (storage.result.succeeded()) {
        facts.systemInfo->storageDevices = StorageDeviceParser::parse(storage.result.output);
    }
    co_return facts;
}

void DashboardViewModel::factsArrived(const Facts &facts)
{
    m_isRefreshing = false;
    m_refreshError = facts.systemInfo ? std::nullopt : std::optional(facts.error);
    if (facts.systemInfo) {
        m_systemInfo = facts.systemInfo;
        m_services.store.updateServerSystemInfo(m_server, *facts.systemInfo);
    }
    Q_EMIT changed();
}

void DashboardViewModel::followStore(qsizetype index)
{
    const Server &stored = m_services.store.servers().at(index);
    if (stored.id != m_server.id) {
        return;
    }
    const bool factsChanged = stored.systemInfo != m_server.systemInfo;
    m_server = stored;
    if (factsChanged) {
        m_systemInfo = stored.systemInfo;
    }
    if (!stored.isConnected && m_connection == Connection::Connected) {
        m_connection = Connection::NotConnected;
    }
    Q_EMIT changed();
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
