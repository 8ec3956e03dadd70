#pragma once

#include "Models/Server.h"

#include <QStringList>
#include <memory>
#include <optional>

class AppSettings;

/// Builds the argument vector of one `ssh` child, ssh(1) and ssh_config(5). Every element is one element of the
/// vector; nothing is quoted or joined. The shell line, if there is one, is the last element.
class SSHArgumentStrategy
{
public:
    virtual ~SSHArgumentStrategy() = default;

    /// `logLevel` is a value of ssh_config's LogLevel. `includeTerminal` asks for a remote terminal.
    virtual QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                                       const AppSettings &settings, bool includeTerminal,
                                       const QString &logLevel) const = 0;
};

/// A private key file. The server must have one: building without it ends the program, so callers refuse first.
class KeyAuthStrategy : public SSHArgumentStrategy
{
public:
    QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                               const AppSettings &settings, bool includeTerminal,
                               const QString &logLevel) const override;
};

/// A password, which ssh reads from an askpass program.
class PasswordAuthStrategy : public SSHArgumentStrategy
{
public:
    QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                               const AppSettings &settings, bool includeTerminal,
                               const QString &logLevel) const override;
};

/// The keys of the running ssh-agent.
class AgentAuthStrategy : public SSHArgumentStrategy
{
public:
    QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                               const AppSettings &settings, bool includeTerminal,
                               const QString &logLevel) const override;
};

/// Whatever ssh tries by itself.
class FallbackAuthStrategy : public SSHArgumentStrategy
{
public:
    QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                               const AppSettings &settings, bool includeTerminal,
                               const QString &logLevel) const override;
};

/// A master connection's control socket, which brings authentication and host key with it.
class PooledConnectionStrategy : public SSHArgumentStrategy
{
public:
    explicit PooledConnectionStrategy(QString controlPath);

    QStringList buildArguments(const Server &server, const std::optional<QString> &command,
                               const AppSettings &settings, bool includeTerminal,
                               const QString &logLevel) const override;

private:
    QString m_controlPath;
};

/// Chooses the strategy for a server's authentication method. Has no shared state.
class SSHArgumentBuilder
{
public:
    SSHArgumentBuilder();

    const SSHArgumentStrategy &strategyFor(AuthMethod method) const;

private:
    QHash<AuthMethod, std::shared_ptr<const SSHArgumentStrategy>> m_strategies;
    FallbackAuthStrategy m_fallback;
};

/// The pieces that master connections and the connection test share with the strategies.
namespace SSHArguments
{

/// `-o`, `value`, appended.
void addOption(QStringList &arguments, const QString &value);

/// How unknown and changed host keys are met, by the setting `verifyHostKeys`.
void addHostKeyOptions(QStringList &arguments, const AppSettings &settings);

/// `-p`, the port, `username@host`, and the command if there is one.
void addDestination(QStringList &arguments, const Server &server, const std::optional<QString> &command);

/// Replaces the first `ConnectTimeout=` by `seconds` truncated to an integer; without one nothing changes.
QStringList withConnectTimeout(QStringList arguments, double seconds);

/// Why this server must not be handed to ssh, or nothing: a user name or host that begins with "-" would be read as
/// an option, and key authentication needs a key.
std::optional<QString> refusalFor(const Server &server);

} // namespace SSHArguments
