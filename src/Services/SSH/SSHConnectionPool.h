#pragma once

#include "Models/Server.h"
#include "Services/SSH/CommandGate.h"
#include "Services/SSH/MasterSSHConnection.h"

#include <QCoroTask>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <memory>
#include <optional>

class AppSettings;
class RuntimeDirectory;
class SSHLauncher;

/// Leave to run commands over a master's socket. A value: there is nothing to release.
struct SSHPooledConnection {
    QUuid serverId;
    QString controlPath;
    Server server;
    std::shared_ptr<CommandGate> gate;

    /// The client's arguments for one command over the socket, which brings authentication and host key with it.
    QStringList buildCommandArguments(const QString &command, bool includeTerminal) const;
};

/// The OpenSSH master connections (ControlMaster, ssh_config(5)), one a server: each authenticates once and leaves a
/// control socket that later commands attach to. Main thread only; lives as long as the process.
class SSHConnectionPool : public QObject
{
    Q_OBJECT

public:
    static constexpr int kHealthCheckSeconds = 30;

    /// `controlPathDirectory` ends with "/". An empty one means that there is no safe place for sockets: the pool
    /// then never gives a connection.
    SSHConnectionPool(SSHLauncher &launcher, const AppSettings &settings, RuntimeDirectory &directory);

    /// A lease on the server's master, which is made first if there is none. Commands that ask while it is being made
    /// wait for that one login. Nothing if it cannot be made: the command then runs with a login of its own, where
    /// ssh's own result tells what is wrong.
    QCoro::Task<std::optional<SSHPooledConnection>> getConnection(Server server, std::optional<QString> password,
                                                                  std::optional<QString> passphrase);

    /// Forgets the server's master, also one that is being made, and removes its socket. The background process ends
    /// by itself once it has been idle for 300 s (ControlPersist).
    void closeConnection(const Server &server);
    void closeAllConnections();

    /// Forgets the masters whose socket is gone. Runs by itself every 30 s.
    void performHealthCheck();

    /// For the quitting application: closes all and removes the sockets' directory if nothing else uses it.
    void cleanup();

    qsizetype count() const { return m_masterConnections.size(); }

private:
    bool setupControlPathDirectory();
    QString generateControlPath(const Server &server) const;
    QCoro::Task<void> createMasterConnection(Server server, std::optional<QString> password,
                                             std::optional<QString> passphrase);

    // A master that is being made, and those who wait for it.
    struct Pending {
        std::shared_ptr<MasterSSHConnection> master;
        std::vector<OneShot<bool>::Completer> waiting;
    };

    SSHLauncher &m_launcher;
    const AppSettings &m_settings;
    RuntimeDirectory &m_directory;
    size_t m_pathSeed;
    QHash<QUuid, std::shared_ptr<MasterSSHConnection>> m_masterConnections;
    QHash<QUuid, std::shared_ptr<Pending>> m_pending;
    QTimer m_healthCheckTimer;
};
