#include "Services/SSH/BaseSSHManager.h"

#include "Helpers/Log.h"
#include "Models/AppSettings.h"
#include "Services/Children/ChildGroup.h"
#include "Services/SSH/HostKeys.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/SSH/PrivateKeyFile.h"
#include "Services/SSH/SSHLauncher.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kAgentSocket = "SSH_AUTH_SOCK";

void log(const QString &message)
{
    Log::info(message, Log::Category::Ssh);
}

QString yesNo(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

QString address(const Server &server)
{
    return server.host + u':' + QString::number(server.port);
}

} // namespace

BaseSSHManager::BaseSSHManager(const Dependencies &dependencies)
    : m_dependencies(dependencies)
{
}

QStringList BaseSSHManager::buildSSHArguments(const Server &server, const std::optional<QString> &command,
                                              bool includeTerminal) const
{
    return m_sshArgumentBuilder.strategyFor(server.authMethod)
        .buildArguments(server, command, m_dependencies.settings, includeTerminal, u"ERROR"_s);
}

QCoro::Task<QProcessEnvironment> BaseSSHManager::setupSSHEnvironment(Server server,
                                                                     std::optional<QProcessEnvironment> base)
{
    QProcessEnvironment environment = base.value_or(QProcessEnvironment::systemEnvironment());
    if (server.authMethod == AuthMethod::SshAgent) {
        if (const QString socket = getSSHAgentSocketPath(); !socket.isEmpty()) {
            environment.insert(QString::fromLatin1(kAgentSocket), socket);
        }
        co_return environment;
    }
    const std::optional<QString> password = co_await getSessionPassword(server);
    const std::optional<QString> passphrase = co_await getSessionPassphrase(server);
    co_return m_dependencies.launcher.withAskpass(environment, SSHLauncher::secretFor(server, password, passphrase));
}

bool BaseSSHManager::isSSHAgentAvailable() const
{
    const QString socket = getSSHAgentSocketPath();
    return !socket.isEmpty() && QFileInfo::exists(socket);
}

QString BaseSSHManager::getSSHAgentSocketPath() const
{
    return qEnvironmentVariable(kAgentSocket);
}

QCoro::Task<std::optional<QString>> BaseSSHManager::getSessionPassword(Server server)
{
    if (const auto known = m_sessionPasswords.constFind(server.id); known != m_sessionPasswords.cend()) {
        co_return *known;
    }
    const int generation = m_secretGenerations.value(server.id);
    const std::optional<QString> stored = co_await m_dependencies.keychain.getPassword(server);
    if (stored && generation == m_secretGenerations.value(server.id)) {
        m_sessionPasswords.insert(server.id, *stored);
    }
    co_return stored;
}

QCoro::Task<std::optional<QString>> BaseSSHManager::getSessionPassphrase(Server server)
{
    if (const auto known = m_sessionPassphrases.constFind(server.id); known != m_sessionPassphrases.cend()) {
        co_return *known;
    }
    const int generation = m_secretGenerations.value(server.id);
    const std::optional<QString> stored = co_await m_dependencies.keychain.getPassphrase(server);
    if (stored && generation == m_secretGenerations.value(server.id)) {
        m_sessionPassphrases.insert(server.id, *stored);
    }
    co_return stored;
}

QCoro::Task<SSHTestResult> BaseSSHManager::testConnection(Server server, std::optional<QString> password,
                                                          std::optional<QString> passphrase,
                                                          ServerRefresh serverRefreshCallback,
                                                          std::shared_ptr<ChildGroup> children)
{
    if (password) {
        m_sessionPasswords.insert(server.id, *password);
    }
    if (passphrase) {
        m_sessionPassphrases.insert(server.id, *passphrase);
    }
    if (server.authMethod == AuthMethod::Password && !co_await getSessionPassword(server)) {
        SSHTestResult nothing;
        nothing.isPasswordMissing = true;
        nothing.isKeychainDenied =
            m_dependencies.keychain.deniedAccounts().contains(KeychainManager::passwordAccount(server));
        if (nothing.isKeychainDenied) {
            setKeychainAccessDenied(true);
        }
        co_return nothing;
    }

    SSHTestResult result = co_await performSSHTest(server, children);
    if (result.success || result.isPassphraseError) {
        co_return result;
    }
    if (result.isNewHostKeyError) {
        if (server.authMethod == AuthMethod::Password) {
            result.success = true;
            co_return result;
        }
        co_return co_await retryConnectionWithoutHostKeyCheck(co_await refreshed(server, serverRefreshCallback),
                                                              children);
    }
    if (result.isHostKeyError) {
        if (!co_await handleHostKeyConflict(server, result.error)) {
            co_return result;
        }
        const Server latest = co_await refreshed(server, serverRefreshCallback);
        log(u"Original server: "_s + address(server));
        log(u"Server to retry: "_s + address(latest));
        co_return co_await retryConnectionWithoutHostKeyCheck(latest, children);
    }
    co_return result;
}

QCoro::Task<SSHTestResult> BaseSSHManager::performSSHTest(Server server, std::shared_ptr<ChildGroup> children)
{
    if (const std::optional<QString> refusal = SSHArguments::refusalFor(server)) {
        co_return SSHTestResult{.error = *refusal};
    }
    const QStringList arguments = buildSSHArguments(server, ConnectionTest::command(), false);
    log(u"SSH command: ssh "_s + arguments.join(u' '));
    const ChildOutcome outcome = co_await runTest(server, arguments, children);
    if (outcome.kind != ChildOutcome::Kind::Exited) {
        log(u"Process execution error: "_s + outcome.reason);
    }
    const SSHTestResult result = ConnectionTest::classify(outcome, server.authMethod);
    if (server.authMethod == AuthMethod::PublicKey && !result.success) {
        log(u"SSH test exit code: "_s + QString::number(outcome.exitCode));
        log(u"Error contains 'Permission denied': "_s + yesNo(result.error.contains("Permission denied"_L1)));
        log(u"Error contains 'Load key': "_s + yesNo(result.error.contains("Load key"_L1)));
        log(u"Is passphrase error detected: "_s + yesNo(result.isPassphraseError));
    }
    co_return result;
}

QCoro::Task<SSHTestResult> BaseSSHManager::retryConnectionWithoutHostKeyCheck(Server server,
                                                                              std::shared_ptr<ChildGroup> children)
{
    if (const std::optional<QString> refusal = SSHArguments::refusalFor(server)) {
        co_return SSHTestResult{.error = *refusal};
    }
    const bool verifies = m_dependencies.settings.verifyHostKeys();
    const QStringList unchecked{u"StrictHostKeyChecking=no"_s, u"UserKnownHostsFile=/dev/null"_s};
    const QStringList stripped =
        ConnectionTest::withoutHostKeyOptions(buildSSHArguments(server, ConnectionTest::command(), false));

    const QStringList arguments = ConnectionTest::withOptionsBeforeDestination(
        stripped, verifies ? QStringList{u"StrictHostKeyChecking=accept-new"_s} : unchecked);
    log(u"Retry SSH command: ssh "_s + arguments.join(u' '));
    const ChildOutcome outcome = co_await runTest(server, arguments, children);
    const SSHTestResult result = ConnectionTest::classify(outcome, server.authMethod);
    if (outcome.kind != ChildOutcome::Kind::Exited) {
        log(u"Retry connection error: "_s + outcome.reason);
        co_return result;
    }
    log(u"Retry result - exit code: "_s + QString::number(outcome.exitCode));
    log(u"Retry output: "_s + QString::fromUtf8(outcome.output));
    log(u"Retry error: "_s + result.error);
    if (result.success || !result.isHostKeyError || !verifies) {
        co_return result;
    }

    const ChildOutcome last =
        co_await runTest(server, ConnectionTest::withOptionsBeforeDestination(stripped, unchecked), children);
    if (last.kind != ChildOutcome::Kind::Exited) {
        log(u"Fallback failed: "_s + last.reason);
        co_return ConnectionTest::classify(last, server.authMethod);
    }
    const SSHTestResult unverified = ConnectionTest::classify(last, server.authMethod);
    log(u"Fallback result: "_s + yesNo(unverified.success));
    co_return unverified;
}

QCoro::Task<bool> BaseSSHManager::handleHostKeyConflict(Server server, QString error)
{
    log(u"handleHostKeyConflict called for server "_s + server.name);
    log(u"Error message: "_s + error);
    log(u"isNewHostKey: "_s + yesNo(tellsNewHostKey(error)));
    log(u"isChangedHostKey: "_s + yesNo(tellsChangedHostKey(error)));
    const bool retries = co_await m_dependencies.hostKeyPrompt.askToRetry(describeHostKeyConflict(server, error));
    log(u"Alert response: "_s + yesNo(retries));
    co_return retries;
}

QCoro::Task<bool> BaseSSHManager::isPassphraseNeeded(Server server, std::optional<SSHTestResult> lastLogin)
{
    if (server.authMethod != AuthMethod::PublicKey || co_await getSessionPassphrase(server)) {
        co_return false;
    }
    if (co_await m_dependencies.keychain.hasPassphrase(server)) {
        co_return true;
    }
    co_return failedAtLockedKey(server, lastLogin ? *lastLogin : co_await performSSHTest(server));
}

bool BaseSSHManager::failedAtLockedKey(const Server &server, const SSHTestResult &login)
{
    // In batch mode the client passes over a locked key without a word about it, and is then refused.
    return login.isPassphraseError ||
           (server.authMethod == AuthMethod::PublicKey && ConnectionTest::tellsRefusedLogin(login.error) &&
            isPrivateKeyLocked(server.privateKeyPath.value_or(QString())));
}

void BaseSSHManager::setKeychainAccessDenied(bool denied)
{
    if (std::exchange(m_keychainAccessDenied, denied) != denied) {
        Q_EMIT keychainAccessDeniedChanged(denied);
    }
}

QCoro::Task<ChildOutcome> BaseSSHManager::runTest(Server server, QStringList arguments,
                                                  std::shared_ptr<ChildGroup> children)
{
    SSHRun run;
    run.arguments = std::move(arguments);
    run.environment = SSHLauncher::commandEnvironment(co_await setupSSHEnvironment(server, std::nullopt));
    SSHLauncher launcher(m_dependencies.launcher, children);
    co_return co_await launcher.run(std::move(run));
}

QCoro::Task<Server> BaseSSHManager::refreshed(Server server, ServerRefresh callback)
{
    if (callback) {
        const std::optional<Server> latest = co_await callback();
        co_return latest.value_or(server);
    }
    co_return server;
}
