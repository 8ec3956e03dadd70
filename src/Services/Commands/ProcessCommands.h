#pragma once

#include "Services/Commands/SSHCommand.h"

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
