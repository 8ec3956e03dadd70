#include "Models/ServerStore.h"

#include "Helpers/Clock.h"
#include "Models/Json.h"
#include "Models/UserDefaults.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kServersKey = "SavedServers"_L1;

bool hasSSHSettingsChanged(const Server &before, const Server &after)
{
    return before.host != after.host || before.port != after.port || before.username != after.username ||
           before.authMethod != after.authMethod || before.privateKeyPath != after.privateKeyPath ||
           before.forwardAgent != after.forwardAgent;
}

// Two servers with one key are the same to an import; the port takes no part.
QString importKey(const Server &server)
{
    return server.host + u':' + server.username;
}

} // namespace

ServerStore::ServerStore(UserDefaults &defaults, const Clock &clock, ServerStoreDelegate *delegate, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_clock(clock)
    , m_delegate(delegate)
{
    loadServers();
}

qsizetype ServerStore::indexOf(const QUuid &id) const
{
    const auto found =
        std::find_if(m_servers.begin(), m_servers.end(), [&](const Server &server) { return server.id == id; });
    return found == m_servers.end() ? -1 : found - m_servers.begin();
}

std::optional<Server> ServerStore::server(const QUuid &id) const
{
    const qsizetype index = indexOf(id);
    return index < 0 ? std::nullopt : std::optional(m_servers[index]);
}

void ServerStore::setSelectedServer(const std::optional<Server> &server)
{
    if (m_selectedServer != server) {
        m_selectedServer = server;
        Q_EMIT selectedServerChanged();
    }
}

bool ServerStore::addServer(const Server &server)
{
    append({server});
    return true;
}

void ServerStore::updateServer(Server updated)
{
    const qsizetype index = indexOf(updated.id);
    if (index < 0) {
        return;
    }
    const bool isOtherSession = hasSSHSettingsChanged(m_servers.at(index), updated);
    updated.isConnected = updated.isConnected && !isOtherSession;
    m_servers[index] = updated;
    storeAndTell(index);
    if (isOtherSession) {
        if (m_delegate) {
            m_delegate->sshSettingsChanged(updated);
        }
        Q_EMIT serverSettingsChanged(updated);
    }
}

void ServerStore::deleteServer(Server server)
{
    if (m_delegate) {
        m_delegate->serverDeleted(server);
    }
    QList<qsizetype> indexes; // as each is when those before it are gone
    for (qsizetype index = indexOf(server.id); index >= 0; index = indexOf(server.id)) {
        m_servers.removeAt(index);
        indexes.append(index);
    }
    const bool wasSelected = m_selectedServer && m_selectedServer->id == server.id;
    if (wasSelected) {
        m_selectedServer.reset();
    }
    saveServers();
    for (const qsizetype index : std::as_const(indexes)) {
        Q_EMIT serverRemoved(index);
    }
    if (wasSelected) {
        Q_EMIT selectedServerChanged();
    }
}

void ServerStore::updateServerConnection(const Server &server, bool isConnected)
{
    change(server.id, [&](Server &record) {
        record.isConnected = isConnected;
        if (isConnected) {
            record.lastConnected = m_clock.now();
        }
    });
}

void ServerStore::updateServerSystemInfo(const Server &server, const SystemInfo &systemInfo)
{
    change(server.id, [&](Server &record) { record.systemInfo = systemInfo; });
}

void ServerStore::updateServerPackageManager(const Server &server, PackageManager packageManager)
{
    change(server.id, [&](Server &record) { record.packageManager = packageManager; });
}

int ServerStore::importServers(const QList<Server> &imported)
{
    QSet<QString> known;
    for (const Server &server : std::as_const(m_servers)) {
        known.insert(importKey(server));
    }
    QList<Server> kept;
    for (const Server &server : imported) {
        if (!known.contains(importKey(server))) {
            kept.append(server);
        }
    }
    m_importedServersCount = static_cast<int>(kept.size());
    append(kept);
    return m_importedServersCount;
}

void ServerStore::failImport(const QString &error)
{
    m_importError = error;
    m_showImportError = true;
    Q_EMIT importErrorChanged();
}

void ServerStore::setShowImportError(bool show)
{
    if (std::exchange(m_showImportError, show) != show) {
        Q_EMIT importErrorChanged();
    }
}

void ServerStore::loadServers()
{
    const std::optional<QByteArray> stored = m_defaults.data(kServersKey);
    std::optional<QList<Server>> servers = stored ? fromJson<QList<Server>>(*stored) : std::nullopt;
    if (!servers) {
        m_storedListIsDamaged = m_defaults.contains(kServersKey);
        return;
    }
    m_servers = *std::move(servers);
    for (Server &server : m_servers) {
        server.isConnected = false;
    }
}

void ServerStore::saveServers()
{
    const QByteArray json = toJson(m_servers);
    if (json.isEmpty()) {
        return; // what is stored stays
    }
    if (std::exchange(m_storedListIsDamaged, false)) {
        m_defaults.keepDamagedCopy(kServersKey);
    }
    m_defaults.setData(kServersKey, json);
}

void ServerStore::append(const QList<Server> &servers)
{
    const qsizetype first = m_servers.size();
    m_servers += servers;
    saveServers();
    if (!servers.isEmpty()) {
        Q_EMIT serversAdded(first, servers.size());
    }
}

template<class Change>
void ServerStore::change(const QUuid &id, Change apply)
{
    const qsizetype index = indexOf(id);
    if (index >= 0) {
        apply(m_servers[index]);
        storeAndTell(index);
    }
}

// Stores and tells that the record at `index` has changed.
void ServerStore::storeAndTell(qsizetype index)
{
    const bool isSelected = m_selectedServer && m_selectedServer->id == m_servers[index].id;
    if (isSelected) {
        m_selectedServer = m_servers[index];
    }
    saveServers();
    Q_EMIT serverUpdated(index);
    if (isSelected) {
        Q_EMIT selectedServerChanged();
    }
}
