#pragma once

#include "Services/Commands/SSHCommand.h"

/// The signals that an operator sends by name.
enum class ProcessSignal { Terminate, Kill, Stop, Continue, HangUp };

/// The raw text is the name as kill(1) takes it.
template<>
struct RawTexts<ProcessSignal> {
    static constexpr std::array all{std::pair{ProcessSignal::Terminate, QStringView(u"TERM")},
                                    std::pair{ProcessSignal::Kill, QStringView(u"KILL")},
                                    std::pair{ProcessSignal::Stop, QStringView(u"STOP")},
                                    std::pair{ProcessSignal::Continue, QStringView(u"CONT")},
                                    std::pair{ProcessSignal::HangUp, QStringView(u"HUP")}};
};

/// The remote lines about processes.

/// All processes, the busiest first, for ProcessParser: eleven columns of ps(1), procps-ng.
class ProcessListCommand : public BaseSSHCommand
{
public:
    ProcessListCommand()
        : BaseSSHCommand({.description = QStringLiteral("List all processes"),
                          .category = CommandCategory::Processes,
                          .commandString = QStringLiteral("ps aux --sort=-%cpu")})
    {
    }
};

/// Asks a process to end, with SIGTERM.
class KillProcessCommand : public BaseSSHCommand
{
public:
    KillProcessCommand(qint64 pid, bool useSudo)
        : BaseSSHCommand({.description = QStringLiteral("Kill process %1").arg(QString::number(pid)),
                          .category = CommandCategory::Processes,
                          .commandString = (useSudo ? QStringLiteral("sudo kill ") : QStringLiteral("kill ")) +
                                           QString::number(pid)})
        , pid(pid)
        , useSudo(useSudo)
    {
    }

    const qint64 pid;
    const bool useSudo;
};

/// Sends a process a signal.
class SignalProcessCommand : public BaseSSHCommand
{
public:
    SignalProcessCommand(qint64 pid, ProcessSignal signal, bool useSudo)
        : BaseSSHCommand(
              {.description = QStringLiteral("Send %1 to process %2").arg(rawText(signal)).arg(pid),
               .category = CommandCategory::Processes,
               .commandString = (useSudo ? QStringLiteral("sudo kill -%1 %2") : QStringLiteral("kill -%1 %2"))
                                    .arg(rawText(signal))
                                    .arg(pid)})
        , pid(pid)
        , signal(signal)
        , useSudo(useSudo)
    {
    }

    const qint64 pid;
    const ProcessSignal signal;
    const bool useSudo;
};

/// The start times of processes are field 22 of /proc/PID/stat, proc(5), in ticks. Field 2 is the name in
/// parentheses, which may hold any bytes; so fields are counted from the last parenthesis of the last line.

/// When the process started, and when this line ran: "PID TICKS" and "self TICKS", for ProcessStart.
class ProcessStartCommand : public BaseSSHCommand
{
public:
    explicit ProcessStartCommand(qint64 pid)
        : BaseSSHCommand({.description = QStringLiteral("Get start time of process %1").arg(pid),
                          .category = CommandCategory::Processes,
                          .commandString = QStringLiteral("sh -c 'for p in %1 self; do echo $p $(LC_ALL=C sed -n "
                                                          "\"\\$s/.*) //p\" /proc/$p/stat 2>/dev/null | "
                                                          "cut -d\" \" -f20); done'")
                                               .arg(pid)})
        , pid(pid)
    {
    }

    const qint64 pid;
};

/// Runs a command on a process only if it is still the one that started at `startTicks`; otherwise the line ends with
/// kAnotherProcess, which no kill(1) gives, and nothing is done.
class GuardedProcessCommand : public BaseSSHCommand
{
public:
    static constexpr qint32 kAnotherProcess = 100;

    GuardedProcessCommand(const BaseSSHCommand &command, qint64 pid, qint64 startTicks)
        : BaseSSHCommand(
              {.description = command.description(),
               .category = command.category(),
               .commandString = QStringLiteral("sh -c '[ \"$(LC_ALL=C sed -n \"\\$s/.*) //p\" /proc/%1/stat "
                                               "2>/dev/null | cut -d\" \" -f20)\" = %2 ] || exit %3' && ")
                                    .arg(pid)
                                    .arg(startTicks)
                                    .arg(kAnotherProcess) +
                                command.commandString()})
        , pid(pid)
        , startTicks(startTicks)
    {
    }

    const qint64 pid;
    const qint64 startTicks;
};
