#include "Services/SSH/SSHLauncher.h"

#include "Services/Children/ChildGroup.h"
#include "Services/SSH/AskpassHelper.h"
#include "Services/SSH/SSHProcessTracker.h"

#include <algorithm>

using namespace Qt::StringLiterals;

SSHLauncher::SSHLauncher(ChildProcesses &children, SSHProcessTracker &tracker, AskpassHelper &askpass,
                         QString sshPath)
    : m_children(children)
    , m_tracker(tracker)
    , m_askpass(askpass)
    , m_sshPath(std::move(sshPath))
{
}

SSHLauncher::SSHLauncher(const SSHLauncher &other, std::shared_ptr<ChildGroup> group)
    : SSHLauncher(other)
{
    if (group) {
        m_groups.push_back(std::move(group));
    }
}

QString SSHLauncher::defaultSSHPath()
{
    return u"/usr/bin/ssh"_s;
}

QCoro::Task<ChildOutcome> SSHLauncher::run(SSHRun run)
{
    if (std::ranges::any_of(m_groups, &ChildGroup::isEnded)) {
        co_return ChildOutcome();
    }
    if (!run.handle && !m_groups.empty()) {
        run.handle = std::make_shared<ChildHandle>();
        for (const std::shared_ptr<ChildGroup> &group : m_groups) {
            group->add(run.handle);
        }
    }
    const auto pid = std::make_shared<pid_t>(0);
    ChildSetup setup;
    setup.program = m_sshPath;
    setup.arguments = std::move(run.arguments);
    setup.environment = std::move(run.environment);
    setup.timeLimit = run.timeLimit;
    setup.onTimeLimit = std::move(run.onTimeLimit);
    setup.onStarted = [this, pid, started = std::move(run.onStarted)](qint64 identifier) {
        *pid = static_cast<pid_t>(identifier);
        m_tracker.trackTarnwellProcess(*pid);
        if (started) {
            started(identifier);
        }
    };
    ChildOutcome outcome = co_await m_children.run(std::move(setup), run.handle);
    m_tracker.untrackTarnwellProcess(*pid);
    co_return outcome;
}

QProcessEnvironment SSHLauncher::commandEnvironment(QProcessEnvironment base)
{
    if (const QString all = base.value(u"LC_ALL"_s); !all.isEmpty()) {
        base.insert(u"LANG"_s, all);
    }
    base.remove(u"LC_ALL"_s);
    base.remove(u"LANGUAGE"_s);
    for (const QString &category : {u"LC_MESSAGES"_s, u"LC_NUMERIC"_s, u"LC_TIME"_s}) {
        base.insert(category, u"C"_s);
    }
    return base;
}

std::optional<QString> SSHLauncher::secretFor(const Server &server, const std::optional<QString> &password,
                                              const std::optional<QString> &passphrase)
{
    switch (server.authMethod) {
    case AuthMethod::Password:
        return password;
    case AuthMethod::PublicKey:
        return passphrase;
    case AuthMethod::SshAgent:
        break;
    }
    return std::nullopt;
}

QProcessEnvironment SSHLauncher::withAskpass(QProcessEnvironment base, const std::optional<QString> &secret) const
{
    const std::optional<QString> script = secret ? m_askpass.createAskpassScript(*secret) : std::nullopt;
    if (script) {
        base.insert(u"SSH_ASKPASS_REQUIRE"_s, u"force"_s);
        base.insert(u"DISPLAY"_s, u":0"_s);
        base.insert(u"SSH_ASKPASS"_s, *script);
        for (const QString &variable : AskpassHelper::variablesToRemove()) {
            base.remove(variable);
        }
    }
    return base;
}

CommandResult commandResult(ChildOutcome outcome, const QString &command, const std::optional<double> &timeLimit)
{
    CommandResult result;
    result.command = command;
    switch (outcome.kind) {
    case ChildOutcome::Kind::FailedToStart:
    case ChildOutcome::Kind::Cancelled:
        result.error = outcome.reason.toUtf8();
        result.exitCode = CommandResult::kNotRun;
        return result;
    case ChildOutcome::Kind::TimedOut:
        result.error = "Command execution timed out after " + decimalText(timeLimit.value_or(0)).toUtf8() +
                       " seconds\n" + outcome.error;
        result.exitCode = CommandResult::kTimedOut;
        break;
    case ChildOutcome::Kind::Exited:
        result.error = std::move(outcome.error);
        result.exitCode = outcome.exitCode;
        break;
    }
    result.output = std::move(outcome.output);
    return result;
}

QString decimalText(double value)
{
    const QString text = QString::number(value, 'g', QLocale::FloatingPointShortest);
    return text.contains(u'.') || text.contains(u'e') ? text : text + u".0"_s;
}
