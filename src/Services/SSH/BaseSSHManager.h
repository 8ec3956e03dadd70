#pragma once

#include "Models/Server.h"
#include "Services/SSH/ConnectionTest.h"
#include "Services/SSH/SSHArgumentStrategy.h"

#include <QCoroTask>
#include <QHash>
#include <QObject>
#include <QProcessEnvironment>
#include <functional>
#include <memory>
#include <optional>

class AppSettings;
class ChildGroup;
class HostKeyPrompt;
class KeychainManager;
class SSHLauncher;

/// Gives the newest copy of a server's record, which may have changed while a dialog was open; or nothing.
using ServerRefresh = std::function<QCoro::Task<std::optional<Server>>()>;

/// Holds the secrets of the session and proves that a server can be reached and logged in to. Outlives every task
/// that it starts; main thread only.
class BaseSSHManager : public QObject
{
    Q_OBJECT

public:
    struct Dependencies {
        SSHLauncher &launcher;
        KeychainManager &keychain;
        const AppSettings &settings;
        HostKeyPrompt &hostKeyPrompt;
    };

    explicit BaseSSHManager(const Dependencies &dependencies);

    const Dependencies &dependencies() const { return m_dependencies; }

    /// The arguments of a client that reports what goes wrong.
    QStringList buildSSHArguments(const Server &server, const std::optional<QString> &command,
                                  bool includeTerminal) const;

    /// `baseEnvironment`, or the application's, with what the client needs to read the server's secret.
    QCoro::Task<QProcessEnvironment> setupSSHEnvironment(Server server,
                                                         std::optional<QProcessEnvironment> baseEnvironment);

    /// Whether SSH_AUTH_SOCK names something that exists.
    bool isSSHAgentAvailable() const;
    QString getSSHAgentSocketPath() const;

    /// The secret typed or read before in this run, else the keychain's, which is then remembered; or nothing.
    QCoro::Task<std::optional<QString>> getSessionPassword(Server server);
    QCoro::Task<std::optional<QString>> getSessionPassphrase(Server server);

    /// Logs in once and runs an echo. Given secrets are kept for the session, also when the test fails. A changed
    /// host key is put before the operator. What is told is the outcome of the last login that was made, and no error
    /// when there was no secret to try; the words for the operator are the caller's. All clients belong to
    /// `children` if it is given: when it is ended, no other one is started.
    QCoro::Task<SSHTestResult> testConnection(Server server, std::optional<QString> password,
                                              std::optional<QString> passphrase, ServerRefresh serverRefreshCallback,
                                              std::shared_ptr<ChildGroup> children = {});

    /// One login, sorted by what the client said.
    QCoro::Task<SSHTestResult> performSSHTest(Server server, std::shared_ptr<ChildGroup> children = {});

    /// One more login after the operator has agreed. With keys being verified, one that stays in conflict is passed
    /// over for this one login; later commands still check it.
    QCoro::Task<SSHTestResult> retryConnectionWithoutHostKeyCheck(Server server,
                                                                  std::shared_ptr<ChildGroup> children = {});

    /// Puts the conflict before the operator; true when the connection is to be tried again.
    QCoro::Task<bool> handleHostKeyConflict(Server server, QString error);

    /// Whether the server's private key is locked and no pass phrase for it is at hand. Logs in to find out, unless
    /// `lastLogin` tells of a login that was just made.
    QCoro::Task<bool> isPassphraseNeeded(Server server, std::optional<SSHTestResult> lastLogin = std::nullopt);

    bool keychainAccessDenied() const { return m_keychainAccessDenied; }

Q_SIGNALS:
    void keychainAccessDeniedChanged(bool denied);

protected:
    /// Whether this login failed for want of a pass phrase, or of the right one.
    static bool failedAtLockedKey(const Server &server, const SSHTestResult &login);

    void setKeychainAccessDenied(bool denied);

    /// A secret that is being read from the keychain for this server is not remembered when it comes.
    void forgetPendingSecrets(const QUuid &serverId) { ++m_secretGenerations[serverId]; }

    const SSHArgumentBuilder &sshArgumentBuilder() const { return m_sshArgumentBuilder; }

    Dependencies m_dependencies;
    QHash<QUuid, QString> m_sessionPasswords;
    QHash<QUuid, QString> m_sessionPassphrases;

private:
    QCoro::Task<ChildOutcome> runTest(Server server, QStringList arguments, std::shared_ptr<ChildGroup> children);
    QCoro::Task<Server> refreshed(Server server, ServerRefresh callback);

    SSHArgumentBuilder m_sshArgumentBuilder;
    QHash<QUuid, int> m_secretGenerations;
    bool m_keychainAccessDenied = false;
};
