#pragma once

#include "Services/Commands/SSHCommandExecutor.h"
#include "Services/SSH/BaseSSHManager.h"
#include "Services/SSH/SystemSSHConnection.h"

#include <QHash>
#include <concepts>
#include <memory>

class ChildGroup;
class SSHConnectionPool;

/// What a probe for sudo without a password told.
struct PasswordlessSudo {
    bool available = false;
    bool connectionSucceeded = false;

    bool operator==(const PasswordlessSudo &) const = default;
};

/// How one attempt to connect ended.
struct ConnectionOutcome {
    bool succeeded = false;
    std::optional<QString> error;    ///< in words for the operator; absent for agent servers
    QString reason;                  ///< one line of what the client said; empty when it said nothing
    bool isKeyLocked = false;        ///< the private key did not open
    bool isPassphraseNeeded = false; ///< and no pass phrase for it is at hand
    bool isSecretWanted = false; ///< a password or a pass phrase was missing or refused, and nothing else is wrong
    bool isOvertaken = false;    ///< it tells nothing about the server any more; the rest is empty

    bool operator==(const ConnectionOutcome &) const = default;
};

/// The one object through which screens reach servers. A connection is a logical state: `connect` proves that the
/// server answers, and every later command starts a client of its own with the secrets kept for the session.
class CommandSSHManager : public BaseSSHManager
{
    Q_OBJECT

public:
    /// Makes the connection object of one command.
    using ConnectionFactory = std::function<std::shared_ptr<SSHConnection>(
        const Server &server, const std::optional<QString> &password, const std::optional<QString> &passphrase)>;

    /// `makeConnection` is another one than SystemSSHConnection's only in tests.
    CommandSSHManager(const Dependencies &dependencies, SSHConnectionPool &pool,
                      ConnectionFactory makeConnection = {});

    SSHConnectionPool &pool() const { return m_pool; }

    /// Whether any attempt is under way, or one to this server.
    bool isConnecting() const { return !m_attempts.isEmpty(); }

    bool isConnecting(const QUuid &serverId) const { return m_attempts.contains(serverId); }

    /// The failure that ended last, in words for the operator. Attempts may overlap: who made one has its outcome.
    std::optional<QString> connectionError() const { return m_connectionError; }

    SSHCommandExecutor &commandExecutor() { return m_commandExecutor; }

    /// Proves that the server answers and keeps the given secrets for the session. On failure the secret that was
    /// tried is forgotten and `connectionError` says what to do, except for agent servers. Touches no record.
    QCoro::Task<bool> connect(Server to, std::optional<QString> password = std::nullopt,
                              std::optional<QString> passphrase = std::nullopt,
                              ServerRefresh serverRefreshCallback = {});

    /// The same, with all there is to tell of this attempt. Of the attempts to one server only the newest counts: an
    /// older one that is under way is ended as overtaken, and touches nothing any more. So does whatever ends the
    /// session: disconnect, invalidateServerCache, forgetServer.
    QCoro::Task<ConnectionOutcome> attemptConnection(Server to, std::optional<QString> password = std::nullopt,
                                                     std::optional<QString> passphrase = std::nullopt,
                                                     ServerRefresh serverRefreshCallback = {});

    /// Forgets the session with the server: its pooled connection, its password and what was learnt of it. A typed
    /// pass phrase stays known until the program ends.
    void disconnect(const Server &from);

    /// For a server whose record has changed: following commands see the new settings at once.
    void invalidateServerCache(const Server &server);

    /// For a server that is deleted: nothing of it stays known, its pass phrase included.
    void forgetServer(const Server &server);

    /// Drops connection objects older than 300 s.
    void cleanupExpiredConnections();

    /// Asks the server once a session whether sudo needs a password.
    QCoro::Task<PasswordlessSudo> checkPasswordlessSudo(Server server);

    /// Runs a complete line as it stands. `timeout` in seconds; absent means no limit.
    QCoro::Task<CommandResult> executeRawCommand(ShellLine command, Server on, std::optional<double> timeout);

    /// Runs a line, with "sudo " before it if asked: the prefix applies to the line's first simple command only.
    QCoro::Task<CommandResult> executeCommand(ShellLine command, Server on, bool useSudo,
                                              std::optional<double> timeout = std::nullopt);

    /// The entry that screens call.
    QCoro::Task<CommandExecutionResult> executeSSHCommand(std::shared_ptr<const SSHCommand> command, Server on);

    template<std::derived_from<SSHCommand> Command>
    QCoro::Task<CommandExecutionResult> executeSSHCommand(Command command, Server on)
    {
        return executeSSHCommand(std::shared_ptr<const SSHCommand>(std::make_shared<Command>(std::move(command))),
                                 std::move(on));
    }

    QCoro::Task<CommandExecutionResult> getSystemInfoUsingCommands(Server server);
    QCoro::Task<CommandExecutionResult> getStorageDevicesUsingCommands(Server server);

Q_SIGNALS:
    void isConnectingChanged(bool isConnecting);

    /// isConnecting() of this server is another one now.
    void serverConnectingChanged(const QUuid &serverId);
    void connectionErrorChanged();

private:
    std::shared_ptr<ChildGroup> beginAttempt(const QUuid &serverId);
    void endAttempt(const QUuid &serverId);
    void tellConnecting(const QUuid &serverId, bool wasAnyConnecting);
    void setConnectionError(std::optional<QString> error);
    void forgetTriedSecret(const Server &server);
    QCoro::Task<ConnectionOutcome> explainFailure(Server server, SSHTestResult login);
    QCoro::Task<std::shared_ptr<SSHConnection>> makeConnection(Server server);

    // No operation inserts into the first two: a connection object lives as long as its command. Their readers stand
    // for a connection that is worth keeping.
    QHash<QUuid, std::shared_ptr<SSHConnection>> m_activeConnections;
    QHash<QUuid, QDateTime> m_connectionCreationTimes;
    QHash<QUuid, Server> m_serverOverrides; // the most recent copy of a record, which wins over a screen's
    QHash<QUuid, bool> m_passwordlessSudoCache;

    SSHConnectionPool &m_pool;
    ConnectionFactory m_makeConnection;
    SSHCommandExecutor m_commandExecutor;
    QHash<QUuid, std::shared_ptr<ChildGroup>> m_attempts; // the newest to each server, and its clients
    std::optional<QString> m_connectionError;
};
