#include "Services/Commands/CommandSSHManager.h"

#include "Helpers/Log.h"
#include "Services/Children/ChildGroup.h"
#include "Services/Commands/SystemCommands.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHLauncher.h"

#include <QElapsedTimer>
#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kConnectionTimeout = 300.0; // seconds
constexpr qsizetype kLoggedCommandLength = 50;

// What the client writes when it never got as far as the remote line.
constexpr std::array kConnectionFailures{"Could not resolve hostname", "Permission denied", "Connection refused",
                                         "No route to host", "Operation timed out"};

void log(const QString &message)
{
    Log::info(message, Log::Category::Ssh);
}

QString yesNo(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

bool isConnectionFailure(const QByteArray &error)
{
    return std::ranges::any_of(kConnectionFailures, [&](const char *phrase) { return error.contains(phrase); });
}

} // namespace

CommandSSHManager::CommandSSHManager(const Dependencies &dependencies, SSHConnectionPool &pool,
                                     ConnectionFactory makeConnection)
    : BaseSSHManager(dependencies)
    , m_pool(pool)
    , m_makeConnection(std::move(makeConnection))
{
    if (!m_makeConnection) {
        m_makeConnection = [this](const Server &server, const std::optional<QString> &password,
                                  const std::optional<QString> &passphrase) -> std::shared_ptr<SSHConnection> {
            const auto connection = std::make_shared<SystemSSHConnection>(
                SystemSSHConnection::Transport{m_dependencies.launcher, m_pool, m_dependencies.settings}, server,
                password, passphrase);
            log(u"SystemSSHConnection: Created connection "_s + connection->shortId() + u" for "_s + server.name);
            return connection;
        };
    }
}

QCoro::Task<bool> CommandSSHManager::connect(Server to, std::optional<QString> password,
                                             std::optional<QString> passphrase, ServerRefresh serverRefreshCallback)
{
    const ConnectionOutcome outcome = co_await attemptConnection(
        std::move(to), std::move(password), std::move(passphrase), std::move(serverRefreshCallback));
    co_return outcome.succeeded;
}

QCoro::Task<ConnectionOutcome> CommandSSHManager::attemptConnection(Server to, std::optional<QString> password,
                                                                    std::optional<QString> passphrase,
                                                                    ServerRefresh serverRefreshCallback)
{
    const std::shared_ptr<ChildGroup> attempt = beginAttempt(to.id);
    Server server = std::move(to);
    if (serverRefreshCallback) {
        server = (co_await serverRefreshCallback()).value_or(server);
    }
    if (attempt->isEnded()) {
        co_return ConnectionOutcome{.isOvertaken = true};
    }
    m_serverOverrides.insert(server.id, server);
    log(u"Starting connection to "_s + server.name);
    setConnectionError(std::nullopt);
    cleanupExpiredConnections();

    ConnectionOutcome outcome;
    outcome.error = SSHArguments::refusalFor(server);
    SSHTestResult login;
    if (outcome.error) {
        login = {.error = *outcome.error, .hasNotRun = true};
    } else {
        login = co_await testConnection(server, std::move(password), std::move(passphrase), serverRefreshCallback,
                                        attempt);
        outcome.succeeded = login.success;
    }
    if (login.hasNotRun) {
        Log::error(u"Connection error: "_s + login.error, Log::Category::Ssh);
    }
    if (!outcome.succeeded && !attempt->isEnded()) {
        forgetTriedSecret(server);
        if (!outcome.error) {
            outcome = co_await explainFailure(server, login);
        }
    }
    if (attempt->isEnded()) {
        log(u"Overtaken: the connection to "_s + server.name);
        co_return ConnectionOutcome{.isOvertaken = true};
    }
    if (!outcome.succeeded) {
        setConnectionError(outcome.error);
    }
    endAttempt(server.id);
    co_return outcome;
}

void CommandSSHManager::forgetTriedSecret(const Server &server)
{
    if (server.authMethod == AuthMethod::Password) {
        m_sessionPasswords.remove(server.id);
    } else if (server.authMethod == AuthMethod::PublicKey) {
        m_sessionPassphrases.remove(server.id);
    }
}

QCoro::Task<ConnectionOutcome> CommandSSHManager::explainFailure(Server server, SSHTestResult login)
{
    ConnectionOutcome outcome;
    outcome.reason = ConnectionTest::reason(login.error);
    if (server.authMethod == AuthMethod::Password) {
        outcome.error = login.isKeychainDenied
                            ? tr("Keychain access was denied. Please allow Tarnwell to access your keychain to "
                                 "retrieve the saved password.")
                            : tr("Failed to connect. Please check your password and try again.");
        setKeychainAccessDenied(false);
        outcome.isSecretWanted = login.isPasswordMissing || ConnectionTest::tellsRefusedLogin(login.error);
    } else if (server.authMethod == AuthMethod::PublicKey) {
        outcome.isKeyLocked = failedAtLockedKey(server, login);
        outcome.isPassphraseNeeded = co_await isPassphraseNeeded(server, login);
        outcome.error = outcome.isPassphraseNeeded
                            ? tr("SSH key requires a passphrase. Please enter the passphrase for your SSH key.")
                            : tr("Failed to authenticate with SSH key. Please check your key path and permissions.");
        outcome.isSecretWanted =
            outcome.isKeyLocked || (outcome.isPassphraseNeeded && ConnectionTest::tellsRefusedLogin(login.error));
    }
    co_return outcome;
}

void CommandSSHManager::disconnect(const Server &from)
{
    const Server server = m_serverOverrides.value(from.id, from);
    log(u"Disconnecting from "_s + server.name);
    if (const auto connection = m_activeConnections.take(server.id)) {
        connection->cleanup();
        m_connectionCreationTimes.remove(server.id);
    }
    m_pool.closeConnection(server);
    forgetPendingSecrets(server.id);
    m_sessionPasswords.remove(server.id);
    m_passwordlessSudoCache.remove(server.id);
    m_serverOverrides.remove(server.id);
    endAttempt(server.id);
}

void CommandSSHManager::invalidateServerCache(const Server &server)
{
    log(u"Invalidating server cache for "_s + server.name);
    disconnect(server);
    m_serverOverrides.insert(server.id, server);
}

void CommandSSHManager::forgetServer(const Server &server)
{
    disconnect(server);
    m_sessionPassphrases.remove(server.id);
}

void CommandSSHManager::cleanupExpiredConnections()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QUuid &id : m_connectionCreationTimes.keys()) {
        const double age = static_cast<double>(m_connectionCreationTimes.value(id).msecsTo(now)) / 1000;
        if (age <= kConnectionTimeout) {
            continue;
        }
        if (const auto connection = m_activeConnections.take(id)) {
            connection->cleanup();
        }
        m_connectionCreationTimes.remove(id);
    }
}

QCoro::Task<PasswordlessSudo> CommandSSHManager::checkPasswordlessSudo(Server server)
{
    PasswordlessSudo answer;
    if (const auto known = m_passwordlessSudoCache.constFind(server.id); known != m_passwordlessSudoCache.cend()) {
        answer = {*known, true};
    } else {
        const CommandResult result = (co_await executeSSHCommand(CheckPasswordlessSudoCommand(), server)).result;
        if (result.exitCode != CommandResult::kSshFailed) {
            answer.available = result.succeeded() && result.output.contains("SUDO_TEST_OK");
            answer.connectionSucceeded = !isConnectionFailure(result.error);
        }
        if (answer.connectionSucceeded) {
            m_passwordlessSudoCache.insert(server.id, answer.available);
        }
    }
    log(u"Passwordless sudo check for "_s + server.name + u": "_s + yesNo(answer.available) + u", connection: "_s +
        yesNo(answer.connectionSucceeded));
    co_return answer;
}

QCoro::Task<CommandResult> CommandSSHManager::executeRawCommand(ShellLine command, Server on,
                                                                std::optional<double> timeout)
{
    log(u"executeRawCommand called with timeout: "_s + decimalText(timeout.value_or(0)) + u's');
    log(u"Command: "_s + command.forLog(command.text));
    const CommandResult result = co_await executeCommand(command, std::move(on), false, timeout);
    log(u"executeRawCommand result - exitCode: "_s + QString::number(result.exitCode) + u", error: "_s +
        command.forLog(QString::fromUtf8(result.error)));
    co_return result;
}

QCoro::Task<CommandResult> CommandSSHManager::executeCommand(ShellLine command, Server on, bool useSudo,
                                                             std::optional<double> timeout)
{
    const Server server = m_serverOverrides.value(on.id, on);
    const ShellLine line(useSudo ? u"sudo "_s + command.text : command.text, command.isConfidential);
    log(u"executeCommand called with: "_s + line.forLog(line.text.left(kLoggedCommandLength)) + u"..."_s);
    log(u"Active connections count: "_s + QString::number(m_activeConnections.size()));

    if (const auto kept = m_activeConnections.value(server.id)) {
        const CommandResult result = co_await kept->executeCommand(line, timeout);
        const bool isBroken = result.error.contains("Broken pipe") || result.error.contains("Connection closed");
        if (result.succeeded() || !isBroken) {
            co_return result;
        }
        m_activeConnections.remove(server.id);
        m_connectionCreationTimes.remove(server.id);
    }
    const std::shared_ptr<SSHConnection> connection = co_await makeConnection(server);
    co_return co_await connection->executeCommand(line, timeout);
}

QCoro::Task<std::shared_ptr<SSHConnection>> CommandSSHManager::makeConnection(Server server)
{
    const std::optional<QString> password = co_await getSessionPassword(server);
    const std::optional<QString> passphrase = co_await getSessionPassphrase(server);
    co_return m_makeConnection(server, password, passphrase);
}

QCoro::Task<CommandExecutionResult> CommandSSHManager::executeSSHCommand(std::shared_ptr<const SSHCommand> command,
                                                                         Server on)
{
    log(u"[CommandSSHManager] executeSSHCommand called - command: "_s + command->description() + u", timeout: "_s +
        decimalText(command->timeout().value_or(0)) + u's');
    QElapsedTimer clock;
    clock.start();
    const CommandExecutionResult run = co_await m_commandExecutor.execute(command, std::move(on), *this);
    log(u"[CommandSSHManager] executeSSHCommand completed in "_s +
        decimalText(static_cast<double>(clock.nsecsElapsed()) / 1e9) + u"s - success: "_s +
        yesNo(run.result.succeeded()));
    co_return run;
}

QCoro::Task<CommandExecutionResult> CommandSSHManager::getSystemInfoUsingCommands(Server server)
{
    return executeSSHCommand(SystemInfoCommand(), std::move(server));
}

QCoro::Task<CommandExecutionResult> CommandSSHManager::getStorageDevicesUsingCommands(Server server)
{
    return executeSSHCommand(StorageDevicesCommand(), std::move(server));
}

std::shared_ptr<ChildGroup> CommandSSHManager::beginAttempt(const QUuid &serverId)
{
    const bool wasAnyConnecting = isConnecting();
    const auto attempt = std::make_shared<ChildGroup>();
    const std::shared_ptr<ChildGroup> overtaken = std::exchange(m_attempts[serverId], attempt);
    if (overtaken) {
        overtaken->end();
    } else {
        tellConnecting(serverId, wasAnyConnecting);
    }
    return attempt;
}

void CommandSSHManager::endAttempt(const QUuid &serverId)
{
    const bool wasAnyConnecting = isConnecting();
    if (const std::shared_ptr<ChildGroup> attempt = m_attempts.take(serverId)) {
        attempt->end();
        tellConnecting(serverId, wasAnyConnecting);
    }
}

void CommandSSHManager::tellConnecting(const QUuid &serverId, bool wasAnyConnecting)
{
    if (isConnecting() != wasAnyConnecting) {
        Q_EMIT isConnectingChanged(isConnecting());
    }
    Q_EMIT serverConnectingChanged(serverId);
}

void CommandSSHManager::setConnectionError(std::optional<QString> error)
{
    if (m_connectionError != error) {
        m_connectionError = std::move(error);
        Q_EMIT connectionErrorChanged();
    }
}
