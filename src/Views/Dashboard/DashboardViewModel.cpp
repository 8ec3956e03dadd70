#include "Views/Dashboard/DashboardViewModel.h"

#include "Helpers/Tasks.h"
#include "Models/ServerStore.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/SSH/PrivateKeyFile.h"

#include <QPointer>
#include <algorithm>

using namespace Qt::StringLiterals;

struct DashboardViewModel::Login {
    bool succeeded = false;
    bool hadSecret = false; ///< one was typed, or a password was kept
    std::optional<QString> error;
};

namespace
{

QCoro::Task<std::optional<Server>> currentRecord(QPointer<ServerStore> store, QUuid id)
{
    co_return store ? store->server(id) : std::nullopt;
}

// The manager's own words; the translation is looked up where the manager looks it up.
QString passphraseWanted()
{
    return CommandSSHManager::tr("SSH key requires a passphrase. Please enter the passphrase for your SSH key.");
}

} // namespace

DashboardViewModel::DashboardViewModel(const Services &services, const Server &server, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_server(server)
    , m_systemInformation(MonitoredServer{services.manager, services.store, services.clock, server.id})
{
    m_systemInformation.setSystemInfo(server.systemInfo);
    connect(&m_systemInformation, &SystemInformation::changed, this, &DashboardViewModel::changed);
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
    m_lacksSecret = !login.hadSecret;
    if (m_server.authMethod == AuthMethod::Password) {
        m_wantedSecret = WantedSecret::Password;
    } else if (login.error == passphraseWanted()) {
        m_wantedSecret = WantedSecret::Passphrase;
    } else if (m_server.authMethod == AuthMethod::PublicKey &&
               isPrivateKeyLocked(m_server.privateKeyPath.value_or(QString()))) {
        // In batch mode the client passes over a locked key without a word about it.
        m_wantedSecret = WantedSecret::Passphrase;
        m_connectionErrorMessage = login.hadSecret ? m_connectionErrorMessage : passphraseWanted();
    }
    Q_EMIT changed();
}

void DashboardViewModel::disconnectFromServer()
{
    m_services.manager.disconnect(m_server);
    m_connection = Connection::NotConnected;
    m_systemInformation.cancel();
    m_services.store.updateServerConnection(m_server, false);
    Q_EMIT changed();
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
    m_server = stored;
    if (factsChanged) {
        m_systemInformation.setSystemInfo(stored.systemInfo);
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
