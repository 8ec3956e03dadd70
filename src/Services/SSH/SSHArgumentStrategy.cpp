#include "Services/SSH/SSHArgumentStrategy.h"

#include "Models/AppSettings.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using SSHArguments::addDestination;
using SSHArguments::addHostKeyOptions;
using SSHArguments::addOption;

namespace
{

void addCommonOptions(QStringList &arguments, const AppSettings &settings, const QString &logLevel)
{
    addOption(arguments, u"LogLevel="_s + logLevel);
    addOption(arguments, u"ConnectTimeout="_s + QString::number(settings.sshTimeout()));
    addOption(arguments, u"ServerAliveInterval="_s + QString::number(settings.keepAliveInterval()));
    addOption(arguments, u"ServerAliveCountMax=5"_s);
}

void addCompression(QStringList &arguments, const AppSettings &settings)
{
    if (settings.useCompression()) {
        addOption(arguments, u"Compression=yes"_s);
    }
}

void addTerminal(QStringList &arguments, bool includeTerminal)
{
    if (includeTerminal) {
        arguments += u"-t"_s;
    }
}

// What most vectors end with.
void addEnding(QStringList &arguments, const Server &server, const std::optional<QString> &command,
               bool includeTerminal)
{
    if (server.forwardAgent) {
        addOption(arguments, u"ForwardAgent=yes"_s);
    }
    addTerminal(arguments, includeTerminal);
    addDestination(arguments, server, command);
}

} // namespace

namespace SSHArguments
{

void addOption(QStringList &arguments, const QString &value)
{
    arguments << u"-o"_s << value;
}

void addHostKeyOptions(QStringList &arguments, const AppSettings &settings)
{
    if (settings.verifyHostKeys()) {
        addOption(arguments, u"StrictHostKeyChecking=accept-new"_s);
        return;
    }
    addOption(arguments, u"StrictHostKeyChecking=no"_s);
    addOption(arguments, u"UserKnownHostsFile=/dev/null"_s);
    addOption(arguments, u"GlobalKnownHostsFile=/dev/null"_s);
}

void addDestination(QStringList &arguments, const Server &server, const std::optional<QString> &command)
{
    arguments << u"-p"_s << QString::number(server.port) << server.username + u'@' + server.host;
    if (command) {
        arguments += *command;
    }
}

QStringList withConnectTimeout(QStringList arguments, double seconds)
{
    constexpr auto kPrefix = "ConnectTimeout="_L1;
    for (QString &argument : arguments) {
        if (argument.startsWith(kPrefix)) {
            argument = kPrefix + QString::number(static_cast<qint64>(seconds));
            break;
        }
    }
    return arguments;
}

std::optional<QString> refusalFor(const Server &server)
{
    if (server.username.startsWith(u'-')) {
        return QCoreApplication::translate("SSHArguments", "Username must not begin with '-'");
    }
    if (server.host.startsWith(u'-')) {
        return QCoreApplication::translate("SSHArguments", "Host must not begin with '-'");
    }
    if (server.authMethod == AuthMethod::PublicKey && server.privateKeyPath.value_or(QString()).isEmpty()) {
        return QCoreApplication::translate("SSHArguments", "SSH key path is required for key authentication");
    }
    return std::nullopt;
}

} // namespace SSHArguments

QStringList KeyAuthStrategy::buildArguments(const Server &server, const std::optional<QString> &command,
                                            const AppSettings &settings, bool includeTerminal,
                                            const QString &logLevel) const
{
    if (!server.privateKeyPath) {
        qFatal("KeyAuthStrategy requires a private key path");
    }
    QStringList arguments{u"-i"_s, *server.privateKeyPath};
    addCommonOptions(arguments, settings, logLevel);
    addCompression(arguments, settings);
    addHostKeyOptions(arguments, settings);
    addOption(arguments, u"PasswordAuthentication=no"_s);
    addOption(arguments, u"PreferredAuthentications=publickey"_s);
    addOption(arguments, u"BatchMode=no"_s);
    addEnding(arguments, server, command, includeTerminal);
    return arguments;
}

QStringList PasswordAuthStrategy::buildArguments(const Server &server, const std::optional<QString> &command,
                                                 const AppSettings &settings, bool includeTerminal,
                                                 const QString &logLevel) const
{
    QStringList arguments;
    addCommonOptions(arguments, settings, logLevel);
    addOption(arguments, u"BatchMode=no"_s);
    addOption(arguments, u"PasswordAuthentication=yes"_s);
    addOption(arguments, u"PubkeyAuthentication=no"_s);
    addOption(arguments, u"PreferredAuthentications=password"_s);
    addCompression(arguments, settings);
    addHostKeyOptions(arguments, settings);
    addEnding(arguments, server, command, includeTerminal);
    return arguments;
}

QStringList AgentAuthStrategy::buildArguments(const Server &server, const std::optional<QString> &command,
                                              const AppSettings &settings, bool includeTerminal,
                                              const QString &logLevel) const
{
    QStringList arguments;
    addCommonOptions(arguments, settings, logLevel);
    addCompression(arguments, settings);
    addHostKeyOptions(arguments, settings);
    addOption(arguments, u"PreferredAuthentications=publickey"_s);
    addOption(arguments, u"IdentitiesOnly=no"_s);
    addOption(arguments, server.forwardAgent ? u"ForwardAgent=yes"_s : u"ForwardAgent=no"_s);
    addTerminal(arguments, includeTerminal);
    addDestination(arguments, server, command);
    return arguments;
}

QStringList FallbackAuthStrategy::buildArguments(const Server &server, const std::optional<QString> &command,
                                                 const AppSettings &settings, bool includeTerminal,
                                                 const QString &logLevel) const
{
    QStringList arguments;
    addCommonOptions(arguments, settings, logLevel);
    addCompression(arguments, settings);
    addHostKeyOptions(arguments, settings);
    addEnding(arguments, server, command, includeTerminal);
    return arguments;
}

PooledConnectionStrategy::PooledConnectionStrategy(QString controlPath)
    : m_controlPath(std::move(controlPath))
{
}

QStringList PooledConnectionStrategy::buildArguments(const Server &server, const std::optional<QString> &command,
                                                     const AppSettings &, bool includeTerminal,
                                                     const QString &logLevel) const
{
    QStringList arguments{u"-S"_s, m_controlPath};
    addOption(arguments, u"LogLevel="_s + logLevel);
    addOption(arguments, u"ControlMaster=no"_s);
    addEnding(arguments, server, command, includeTerminal);
    return arguments;
}

SSHArgumentBuilder::SSHArgumentBuilder()
    : m_strategies{{AuthMethod::PublicKey, std::make_shared<KeyAuthStrategy>()},
                   {AuthMethod::Password, std::make_shared<PasswordAuthStrategy>()},
                   {AuthMethod::SshAgent, std::make_shared<AgentAuthStrategy>()}}
{
}

const SSHArgumentStrategy &SSHArgumentBuilder::strategyFor(AuthMethod method) const
{
    const auto found = m_strategies.constFind(method);
    return found == m_strategies.cend() ? static_cast<const SSHArgumentStrategy &>(m_fallback) : **found;
}
