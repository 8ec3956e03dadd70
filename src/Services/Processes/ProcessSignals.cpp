#include "Services/Processes/ProcessSignals.h"

#include "Helpers/Text.h"
#include "Services/Commands/CommandSSHManager.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr double kTicksPerSecond = 100; // USER_HZ, the same on every architecture that has a distribution

std::optional<qint64> ticksOf(QByteArrayView output, QByteArrayView name)
{
    for (const QByteArrayView line : Text::lines(output)) {
        const auto words = Text::firstFields<2>(Text::trimmed(line));
        if (words.isComplete() && words.field[0] == name) {
            return Text::decimalInteger(words.field[1]);
        }
    }
    return std::nullopt;
}

// Where kill is a part of the shell, as in csh, it complains on standard output.
QString complaint(const CommandResult &result)
{
    const QByteArray error = result.error.trimmed();
    return QString::fromUtf8(error.isEmpty() ? result.output.trimmed() : error);
}

} // namespace

std::optional<ProcessStart> ProcessStart::parse(QByteArrayView output, qint64 pid)
{
    const std::optional<qint64> ticks = ticksOf(output, QByteArray::number(pid));
    const std::optional<qint64> now = ticksOf(output, "self");
    if (!ticks || !now) {
        return std::nullopt;
    }
    return ProcessStart{*ticks, (static_cast<double>(*now) - static_cast<double>(*ticks)) / kTicksPerSecond};
}

QCoro::Task<ProcessSignals::StartAnswer> ProcessSignals::findStart(CommandSSHManager &manager, Server server,
                                                                   qint64 pid)
{
    const CommandResult result = (co_await manager.executeSSHCommand(ProcessStartCommand(pid), server)).result;
    if (!result.succeeded()) {
        co_return StartAnswer{.start = {}, .isAnswered = false, .error = complaint(result)};
    }
    co_return StartAnswer{ProcessStart::parse(result.output, pid), true, {}};
}

QCoro::Task<ProcessSignals::Answer> ProcessSignals::send(CommandSSHManager &manager, Server server, Request request,
                                                         qint64 startTicks)
{
    const qint64 pid = request.process.pidInt();
    const bool useSudo = usesSudo(server, request);
    const GuardedProcessCommand command =
        request.signal ? GuardedProcessCommand(SignalProcessCommand(pid, *request.signal, useSudo), pid, startTicks)
                       : GuardedProcessCommand(KillProcessCommand(pid, useSudo), pid, startTicks);
    const CommandResult result = (co_await manager.executeSSHCommand(command, server)).result;
    if (result.succeeded()) {
        co_return Answer{Outcome::Sent, {}};
    }
    if (result.exitCode == GuardedProcessCommand::kAnotherProcess) {
        co_return Answer{Outcome::AnotherProcess, {}};
    }
    co_return Answer{Outcome::Refused, complaint(result)};
}

bool ProcessSignals::usesSudo(const Server &server, const Request &request)
{
    const QString &user = request.process.user;
    if (!server.useSudo || user == server.username) {
        return false;
    }
    return request.signal ? server.username != "root"_L1 : user != "root"_L1;
}
