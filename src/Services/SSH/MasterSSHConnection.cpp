#include "Services/SSH/MasterSSHConnection.h"

#include "Helpers/Log.h"
#include "Models/AppSettings.h"
#include "Services/SSH/SSHArgumentStrategy.h"
#include "Services/SSH/SSHLauncher.h"

#include <QFile>
#include <QFileInfo>
#include <csignal>

using namespace Qt::StringLiterals;
using SSHArguments::addOption;

namespace
{

constexpr auto kEstablishedMarker = "SSH_MASTER_ESTABLISHED"_L1;
constexpr int kInterruptDelayMs = 100;

// A socket is no regular file, but QFile::exists follows it like any other.
bool socketExists(const QString &path)
{
    return QFileInfo::exists(path);
}

void log(const QString &message)
{
    Log::info(message, Log::Category::Connection);
}

} // namespace

MasterSSHConnection::MasterSSHConnection(SSHLauncher &launcher, const AppSettings &settings, Server server,
                                         QString controlPath, std::optional<QString> password,
                                         std::optional<QString> passphrase)
    : m_launcher(launcher)
    , m_settings(settings)
    , m_server(std::move(server))
    , m_controlPath(std::move(controlPath))
    , m_password(std::move(password))
    , m_passphrase(std::move(passphrase))
{
}

QStringList MasterSSHConnection::buildMasterArguments(const Server &server, const QString &controlPath,
                                                      const AppSettings &settings)
{
    QStringList arguments{u"-M"_s, u"-S"_s, controlPath};
    for (const QString &option : {u"ControlPersist=300s"_s, u"LogLevel=ERROR"_s, u"ConnectTimeout=10"_s,
                                  u"ServerAliveInterval=30"_s, u"ServerAliveCountMax=3"_s, u"BatchMode=no"_s}) {
        addOption(arguments, option);
    }
    switch (server.authMethod) {
    case AuthMethod::Password:
        addOption(arguments, u"PasswordAuthentication=yes"_s);
        addOption(arguments, u"PubkeyAuthentication=no"_s);
        addOption(arguments, u"PreferredAuthentications=password"_s);
        break;
    case AuthMethod::PublicKey:
        if (server.privateKeyPath) {
            arguments << u"-i"_s << *server.privateKeyPath;
        }
        addOption(arguments, u"PasswordAuthentication=no"_s);
        addOption(arguments, u"PreferredAuthentications=publickey"_s);
        break;
    case AuthMethod::SshAgent:
        addOption(arguments, u"PasswordAuthentication=no"_s);
        addOption(arguments, u"PreferredAuthentications=publickey"_s);
        addOption(arguments, u"IdentitiesOnly=no"_s);
        break;
    }
    SSHArguments::addHostKeyOptions(arguments, settings);
    if (settings.useCompression()) {
        addOption(arguments, u"Compression=yes"_s);
    }
    if (server.forwardAgent) {
        addOption(arguments, u"ForwardAgent=yes"_s);
    }
    SSHArguments::addDestination(arguments, server, u"echo '%1'"_s.arg(kEstablishedMarker));
    return arguments;
}

QCoro::Task<bool> MasterSSHConnection::establish()
{
    SSHRun run;
    run.arguments = buildMasterArguments(m_server, m_controlPath, m_settings);
    run.environment =
        m_launcher.withAskpass(SSHLauncher::commandEnvironment(QProcessEnvironment::systemEnvironment()),
                               SSHLauncher::secretFor(m_server, m_password, m_passphrase));
    run.handle = m_masterProcess;
    if (m_server.authMethod == AuthMethod::SshAgent && run.environment.contains(u"SSH_AUTH_SOCK"_s)) {
        log(u"SSH agent socket path: "_s + run.environment.value(u"SSH_AUTH_SOCK"_s));
    }
    log(u"Establishing master connection with args: "_s + run.arguments.join(u' '));

    // With ControlPersist the client goes to the background after the remote echo, and what was started ends. The
    // background process keeps standard error open, so the end of that stream is not waited for.
    const ChildOutcome outcome = co_await m_launcher.run(std::move(run));

    if (outcome.kind != ChildOutcome::Kind::Exited) {
        log(u"Error establishing connection: "_s + outcome.reason);
        co_return false;
    }
    if (outcome.exitCode != 0 || !socketExists(m_controlPath)) {
        log(u"Master process exited with code "_s + QString::number(outcome.exitCode));
        log(u"Error: "_s + QString::fromUtf8(outcome.error));
        co_return false;
    }
    if (!outcome.output.contains(kEstablishedMarker)) {
        log(u"Unexpected output: "_s + QString::fromUtf8(outcome.output));
        co_return false;
    }
    m_isEstablished = true;
    log(u"Control socket created at: "_s + m_controlPath);
    co_return true;
}

void MasterSSHConnection::cleanup()
{
    m_isEstablished = false;
    m_isClosed = true;
    if (ChildProcess *const process = m_masterProcess->data(); process != nullptr && process->isRunning()) {
        process->terminate();
        QTimer::singleShot(kInterruptDelayMs, process, [process] { process->sendSignal(SIGINT); });
    }
    QFile::remove(m_controlPath);
}

bool MasterSSHConnection::isUsable() const
{
    return m_isEstablished && socketExists(m_controlPath);
}
