#include "Services/Commands/ServerProbe.h"

#include "Helpers/Secret.h"
#include "Models/AppSettings.h"
#include "Services/SSH/SSHArgumentStrategy.h"

#include <algorithm>

namespace
{

/// Runs lines with a login each, and gives the login the time that the settings allow for it.
class UnpooledConnection : public SSHConnection
{
public:
    UnpooledConnection(const SystemSSHConnection::Transport &transport, const Server &server,
                       const std::optional<QString> &password, const std::optional<QString> &passphrase)
        : m_loginSeconds(std::max(transport.settings.sshTimeout(), 1))
        , m_connection(transport, server, password, passphrase)
    {
    }

    QCoro::Task<CommandResult> executeCommand(ShellLine command, std::optional<double> timeout) override
    {
        if (timeout) {
            timeout = *timeout + m_loginSeconds;
        }
        CommandResult result = co_await m_connection.executeUnpooled(command, timeout);
        if (result.exitCode == CommandResult::kTimedOut || result.exitCode == CommandResult::kNotRun) {
            result.exitCode = CommandResult::kSshFailed;
        }
        co_return result;
    }

    void cleanup() override {}

private:
    int m_loginSeconds;
    SystemSSHConnection m_connection;
};

} // namespace

ServerProbe::Session::~Session()
{
    for (auto *secrets : {&m_sessionPasswords, &m_sessionPassphrases}) {
        for (QString &secret : *secrets) {
            wipe(secret);
        }
    }
}

void ServerProbe::Session::keep(const Server &server, const Secrets &secrets)
{
    if (secrets.password) {
        m_sessionPasswords.insert(server.id, *secrets.password);
    }
    if (secrets.passphrase) {
        m_sessionPassphrases.insert(server.id, *secrets.passphrase);
    }
}

ServerProbe::ServerProbe(const CommandSSHManager &manager)
    : m_launcher(manager.dependencies().launcher, m_children)
    , m_session(
          {m_launcher, manager.dependencies().keychain, manager.dependencies().settings,
           manager.dependencies().hostKeyPrompt},
          manager.pool(),
          [transport = SystemSSHConnection::Transport{m_launcher, manager.pool(), manager.dependencies().settings}](
              const Server &server, const std::optional<QString> &password,
              const std::optional<QString> &passphrase) -> std::shared_ptr<SSHConnection> {
              return std::make_shared<UnpooledConnection>(transport, server, password, passphrase);
          })
{
}

QCoro::Task<ConnectionOutcome> ServerProbe::testConnection(std::shared_ptr<ServerProbe> probe, Server server,
                                                           Secrets secrets)
{
    co_return co_await probe->m_session.attemptConnection(server, secrets.password, secrets.passphrase);
}

QCoro::Task<PasswordlessSudo> ServerProbe::checkPasswordlessSudo(std::shared_ptr<ServerProbe> probe, Server server,
                                                                 Secrets secrets)
{
    if (SSHArguments::refusalFor(server)) {
        co_return PasswordlessSudo();
    }
    probe->m_session.keep(server, secrets);
    co_return co_await probe->m_session.checkPasswordlessSudo(server);
}
