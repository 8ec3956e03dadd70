#pragma once

#include "Models/Server.h"
#include "Services/Monitoring/SystemInformation.h"

#include <QCoroTask>
#include <QObject>
#include <optional>

class Clock;
class CommandSSHManager;
class ServerStore;

/// The first screen of one selected server: makes the connection and fetches the facts. It may be destroyed at any
/// moment; what is under way then ends by itself, and only the store learns of it.
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

    /// What the operator has to type for a connection.
    enum class WantedSecret { None, Password, Passphrase };

    DashboardViewModel(const Services &services, const Server &server, QObject *parent = nullptr);

    /// Shows the stored facts, and connects.
    void start();

    /// The record as it stands in the store.
    const Server &server() const { return m_server; }

    Connection connection() const { return m_connection; }

    /// Of a failed connection, in words for the operator.
    QString connectionErrorMessage() const { return m_connectionErrorMessage; }

    WantedSecret wantedSecret() const { return m_wantedSecret; }

    /// Nothing has failed yet but that there was no secret to try.
    bool lacksSecret() const { return m_lacksSecret && m_wantedSecret != WantedSecret::None; }

    const std::optional<SystemInfo> &systemInfo() const { return m_systemInformation.systemInfo(); }

    bool isRefreshing() const { return m_systemInformation.isRefreshing(); }

    /// Why the newest fetch of the facts failed, in the words of the other side; nothing when it did not. The facts
    /// that were there before stay.
    const std::optional<QString> &refreshError() const { return m_systemInformation.refreshError(); }

    /// The root file system first, the others by their mount point.
    static QList<DiskInfo> sortedDiskUsage(QList<DiskInfo> disks);

public Q_SLOTS:
    /// Logs in, with `secret` if the operator typed one. Does nothing while a login is under way.
    void initiateConnection(const std::optional<QString> &secret = std::nullopt);

    /// Ends the session: the pooled connection and the secrets kept for it.
    void disconnectFromServer();

    /// Fetches the facts unless those at hand are young and complete.
    void refreshSystemInfoIfNeeded();

    /// Fetches the facts. Of overlapping fetches the newest counts.
    void refreshSystemInfo();

Q_SIGNALS:
    /// Anything of the above is different now.
    void changed();

private:
    struct Login;
    static QCoro::Task<Login> logIn(Services services, Server server, std::optional<QString> secret);

    void loginEnded(const Login &login);
    void followStore(qsizetype index);

    Services m_services;
    Server m_server;
    Connection m_connection = Connection::NotConnected;
    QString m_connectionErrorMessage;
    WantedSecret m_wantedSecret = WantedSecret::None;
    bool m_lacksSecret = false;
    SystemInformation m_systemInformation;
};
