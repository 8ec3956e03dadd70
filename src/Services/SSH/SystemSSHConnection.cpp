#include "Services/SSH/SystemSSHConnection.h"

#include "Helpers/Log.h"
#include "Models/AppSettings.h"
#include "Services/SSH/SSHArgumentStrategy.h"
#include "Services/SSH/SSHConnectionPool.h"
#include "Services/SSH/SSHLauncher.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kLoggedCommandLength = 50;

void info(const QString &message)
{
    Log::info(message, Log::Category::Ssh);
}

CommandResult notRun(const QString &command, const QString &error)
{
    return {.error = error.toUtf8(), .exitCode = CommandResult::kNotRun, .command = command};
}

} // namespace

SystemSSHConnection::SystemSSHConnection(const Transport &transport, Server server, std::optional<QString> password,
                                         std::optional<QString> passphrase)
    : m_transport(transport)
    , m_server(std::move(server))
    , m_password(std::move(password))
    , m_passphrase(std::move(passphrase))
{
}

QCoro::Task<CommandResult> SystemSSHConnection::executeCommand(ShellLine command, std::optional<double> timeout)
{
    if (!m_isConnected) {
        co_return notRun(command.text, u"Connection closed"_s);
    }
    if (const std::optional<QString> refusal = SSHArguments::refusalFor(m_server)) {
        co_return notRun(command.text, *refusal);
    }
    info(u"SystemSSHConnection: "_s + shortId() + u" executing: "_s +
         command.forLog(command.text.left(kLoggedCommandLength)) + u"..."_s);
    if (m_transport.settings.useConnectionPooling()) {
        const std::optional<SSHPooledConnection> lease =
            co_await m_transport.pool.getConnection(m_server, m_password, m_passphrase);
        if (lease) {
            co_return co_await executePooledCommand(command, *lease, timeout);
        }
    }
    co_return co_await executeUnpooled(command, timeout);
}

QCoro::Task<CommandResult> SystemSSHConnection::executePooledCommand(ShellLine command, SSHPooledConnection lease,
                                                                     std::optional<double> timeout)
{
    const CommandGate::Pass pass = co_await lease.gate->enter();

    SSHRun run;
    run.arguments = lease.buildCommandArguments(command.text, false);
    run.environment = SSHLauncher::commandEnvironment(QProcessEnvironment::systemEnvironment());
    run.timeLimit = timeout;
    run.onTimeLimit = [timeout] {
        info(u"SystemSSHConnection: Pooled command timed out after "_s + decimalText(*timeout) +
             u" seconds, terminating process"_s);
    };
    ChildOutcome outcome = co_await m_transport.launcher.run(std::move(run));

    if (outcome.kind == ChildOutcome::Kind::FailedToStart) {
        info(u"SystemSSHConnection: Pooled command execution error: "_s + outcome.reason);
    }
    CommandResult result = commandResult(std::move(outcome), command.text, timeout);
    info(u"SystemSSHConnection: Pooled command exit code: "_s + QString::number(result.exitCode));
    if (result.exitCode != 0) {
        lease.gate->learnFrom(result.error);
    }
    co_return result;
}

QCoro::Task<CommandResult> SystemSSHConnection::executeUnpooled(ShellLine command, std::optional<double> timeout)
{
    const SSHArgumentBuilder builder;
    SSHRun run;
    run.arguments = builder.strategyFor(m_server.authMethod)
                        .buildArguments(m_server, command.text, m_transport.settings, false, u"QUIET"_s);
    if (timeout) {
        run.arguments = SSHArguments::withConnectTimeout(run.arguments, *timeout);
    }
    run.environment =
        m_transport.launcher.withAskpass(SSHLauncher::commandEnvironment(QProcessEnvironment::systemEnvironment()),
                                         SSHLauncher::secretFor(m_server, m_password, m_passphrase));
    run.timeLimit = timeout;
    run.onStarted = [](qint64 pid) {
        info(u"[SystemSSHConnection] Process started with PID: "_s + QString::number(pid));
    };
    run.onTimeLimit = [timeout] {
        info(u"[SystemSSHConnection] Command timed out after "_s + decimalText(*timeout) +
             u" seconds, terminating process"_s);
    };
    CommandResult result = commandResult(co_await m_transport.launcher.run(std::move(run)), command.text, timeout);
    info(u"[SystemSSHConnection] Process completed - exitCode: "_s + QString::number(result.exitCode));
    info(u"[SystemSSHConnection] Output length: %1, Error length: %2"_s.arg(result.output.size())
             .arg(result.error.size()));
    co_return result;
}

void SystemSSHConnection::cleanup()
{
    info(u"SystemSSHConnection: Cleaning up connection "_s + shortId());
    info(u"SystemSSHConnection: Closing connection "_s + shortId());
    m_isConnected = false;
}

QString SystemSSHConnection::shortId() const
{
    return m_connectionId.toString(QUuid::WithoutBraces).toUpper().left(8);
}
