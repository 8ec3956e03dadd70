#pragma once

#include "Models/Server.h"
#include "Services/Children/ChildProcesses.h"
#include "Services/SSH/CommandResult.h"

#include <QCoroTask>
#include <QProcessEnvironment>
#include <QStringList>
#include <optional>
#include <vector>

class AskpassHelper;
class ChildGroup;
class SSHProcessTracker;

/// One run of the client.
struct SSHRun {
    QStringList arguments;
    QProcessEnvironment environment;
    std::optional<double> timeLimit;       ///< seconds
    std::shared_ptr<ChildHandle> handle;   ///< if set: the child while it runs
    std::function<void(qint64)> onStarted; ///< for the caller's own log line
    std::function<void()> onTimeLimit;     ///< likewise
};

/// Starts the operating system's `ssh`: the one place that knows its path, the environment of its children and the
/// tracking of their identifiers. Lives as long as the process.
class SSHLauncher
{
public:
    /// `sshPath` is another program only in tests.
    SSHLauncher(ChildProcesses &children, SSHProcessTracker &tracker, AskpassHelper &askpass,
                QString sshPath = defaultSSHPath());

    /// The same client, whose children from here belong to `group` as well; it may be null. Where a run brings a
    /// handle of its own, its child belongs to no group.
    SSHLauncher(const SSHLauncher &other, std::shared_ptr<ChildGroup> group);

    static QString defaultSSHPath();

    /// Runs the client to its end and tracks it meanwhile.
    QCoro::Task<ChildOutcome> run(SSHRun run);

    /// For clients that are started elsewhere, on a terminal: where they are, and where they are to be entered.
    const QString &sshPath() const { return m_sshPath; }

    SSHProcessTracker &tracker() const { return m_tracker; }

    /// The environment of children that run commands. The client hands LC_* and LANG to the server (SendEnv,
    /// ssh_config(5)), and the parsers read English with decimal points.
    static QProcessEnvironment commandEnvironment(QProcessEnvironment base);

    /// The secret that `ssh` will ask for with this server's authentication method, if it is known: the password of
    /// a password server, the pass phrase of a key server.
    static std::optional<QString> secretFor(const Server &server, const std::optional<QString> &password,
                                            const std::optional<QString> &passphrase);

    /// `base` with what makes ssh read the secret from a new askpass script (SSH_ASKPASS, SSH_ASKPASS_REQUIRE and
    /// DISPLAY, ssh(1) ENVIRONMENT). Without a secret, or when no script could be made, `base`: ssh then fails in
    /// its own words.
    QProcessEnvironment withAskpass(QProcessEnvironment base, const std::optional<QString> &secret) const;

private:
    ChildProcesses &m_children;
    SSHProcessTracker &m_tracker;
    AskpassHelper &m_askpass;
    QString m_sshPath;
    std::vector<std::shared_ptr<ChildGroup>> m_groups;
};

/// What a run's outcome means as a command's result; `timeLimit` is the one that was set, in seconds.
CommandResult commandResult(ChildOutcome outcome, const QString &command, const std::optional<double> &timeLimit);

/// `value` with at least one decimal: "30.0", "2.5".
QString decimalText(double value);
