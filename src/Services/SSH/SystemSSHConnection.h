#pragma once

#include "Models/Server.h"
#include "Services/SSH/CommandResult.h"
#include "Services/SSH/ShellLine.h"

#include <QCoroTask>
#include <QUuid>
#include <memory>
#include <optional>

class AppSettings;
class SSHConnectionPool;
class SSHLauncher;
struct SSHPooledConnection;

/// One way to run shell lines on one server. Tests script another one.
class SSHConnection
{
public:
    virtual ~SSHConnection() = default;

    /// Runs one shell line. `timeout` is in seconds; absent means no limit. Any number may run at once. The object
    /// lives until the task is done.
    virtual QCoro::Task<CommandResult> executeCommand(ShellLine command, std::optional<double> timeout) = 0;

    /// From now on every command is answered with "Connection closed". Stops nothing that runs.
    virtual void cleanup() = 0;
};

/// Runs each line in an `ssh` child of its own: over the pooled master connection of its server, or, with pooling off
/// or no master to be had, with a login of its own. Holds nothing open between lines.
class SystemSSHConnection : public SSHConnection
{
public:
    /// The process-wide objects that every connection uses.
    struct Transport {
        SSHLauncher &launcher;
        SSHConnectionPool &pool;
        const AppSettings &settings;
    };

    SystemSSHConnection(const Transport &transport, Server server, std::optional<QString> password,
                        std::optional<QString> passphrase);

    /// Exit code 124 when the time limit passed, -1 when no process ran (closed, refused, not to be started).
    QCoro::Task<CommandResult> executeCommand(ShellLine command, std::optional<double> timeout) override;

    /// Runs the line over a master's socket; the lease's gate decides when, and the time limit counts from then.
    QCoro::Task<CommandResult> executePooledCommand(ShellLine command, SSHPooledConnection lease,
                                                    std::optional<double> timeout);

    /// Runs the line with a login of its own. The server must be one that `SSHArguments::refusalFor` lets through.
    QCoro::Task<CommandResult> executeUnpooled(ShellLine command, std::optional<double> timeout);

    void cleanup() override;

    bool isConnected() const { return m_isConnected; }

    QUuid connectionId() const { return m_connectionId; }

    /// The first eight characters of the identity, as log lines name it.
    QString shortId() const;

private:
    Transport m_transport;
    Server m_server;
    std::optional<QString> m_password;
    std::optional<QString> m_passphrase;
    bool m_isConnected = true;
    QUuid m_connectionId = QUuid::createUuid();
};
