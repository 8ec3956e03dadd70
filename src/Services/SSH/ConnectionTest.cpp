#include "Services/SSH/ConnectionTest.h"

#include "Services/SSH/CommandResult.h"
#include "Services/SSH/HostKeys.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kMarker = "SSH_CONNECTION_SUCCESS"_L1;

bool tellsLockedKey(const QString &error)
{
    if (error.contains("Enter passphrase for key"_L1) || error.contains("incorrect passphrase"_L1) ||
        error.contains("bad decrypt"_L1)) {
        return true;
    }
    return error.contains("Load key"_L1) && error.contains("invalid format"_L1) &&
           !error.contains("bad permissions"_L1);
}

// What tells the operator where to look, as the client words it.
constexpr std::array kReasons{"Connection refused"_L1,
                              "No route to host"_L1,
                              "Network is unreachable"_L1,
                              "Could not resolve hostname"_L1,
                              "timed out"_L1,
                              "Permission denied"_L1,
                              "Host key verification failed"_L1,
                              "incorrect passphrase"_L1,
                              "Connection closed"_L1,
                              "Connection reset"_L1};
constexpr qsizetype kLongestReason = 300;

bool namesReason(const QString &line)
{
    return std::ranges::any_of(kReasons, [&](QLatin1StringView reason) { return line.contains(reason); });
}

bool isHostKeyOption(const QString &value)
{
    return value.contains("StrictHostKeyChecking"_L1) || value.contains("UserKnownHostsFile"_L1) ||
           value.contains("GlobalKnownHostsFile"_L1);
}

} // namespace

namespace ConnectionTest
{

QString command()
{
    return u"echo '%1'"_s.arg(kMarker);
}

SSHTestResult classify(const ChildOutcome &outcome, AuthMethod method)
{
    SSHTestResult result;
    if (outcome.kind != ChildOutcome::Kind::Exited) {
        result.error = outcome.reason;
        result.hasNotRun = outcome.kind == ChildOutcome::Kind::FailedToStart;
        return result;
    }
    result.error = QString::fromUtf8(outcome.error);
    result.success = outcome.exitCode == 0 && outcome.output.contains(kMarker);
    if (outcome.exitCode == CommandResult::kSshFailed && result.error.contains("Host key verification failed"_L1)) {
        result.isHostKeyError = true;
        result.isNewHostKeyError = tellsNewHostKey(result.error);
        result.isChangedHostKeyError = tellsChangedHostKey(result.error);
    }
    result.isPassphraseError = method == AuthMethod::PublicKey && tellsLockedKey(result.error);
    return result;
}

QString reason(const QString &error)
{
    QString last;
    QString named;
    for (const QString &whole : error.split(u'\n', Qt::SkipEmptyParts)) {
        const QString line = whole.trimmed();
        last = line.isEmpty() ? last : line;
        named = namesReason(line) ? line : named;
    }
    return (named.isEmpty() ? last : named).left(kLongestReason);
}

bool tellsRefusedLogin(const QString &error)
{
    return error.contains("Permission denied"_L1);
}

QStringList withoutHostKeyOptions(const QStringList &arguments)
{
    QStringList kept;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments.at(i) == "-o"_L1 && i + 1 < arguments.size() && isHostKeyOption(arguments.at(i + 1))) {
            ++i;
        } else {
            kept += arguments.at(i);
        }
    }
    return kept;
}

QStringList withOptionsBeforeDestination(QStringList arguments, const QStringList &options)
{
    const auto destination = std::ranges::find_if(
        arguments, [](const QString &argument) { return argument.contains(u'@') && !argument.startsWith(u'-'); });
    qsizetype at = destination - arguments.begin();
    for (const QString &option : options) {
        arguments.insert(at++, u"-o"_s);
        arguments.insert(at++, option);
    }
    return arguments;
}

} // namespace ConnectionTest
