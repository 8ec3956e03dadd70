#pragma once

#include "Helpers/ShellQuote.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about cron jobs.

/// Whether crontab(1) is there: prints CRONTAB_AVAILABLE or CRONTAB_NOT_FOUND.
class CheckCrontabAvailableCommand : public BaseSSHCommand
{
public:
    CheckCrontabAvailableCommand()
        : BaseSSHCommand({.description = QStringLiteral("Check if crontab is available"),
                          .category = CommandCategory::Cron,
                          .commandString = QStringLiteral(
                              R"sh(sh -c 'command -v crontab >/dev/null 2>&1 && echo "CRONTAB_AVAILABLE" || echo )sh"
                              R"sh("CRONTAB_NOT_FOUND"')sh")})
    {
    }
};

/// The jobs of the account that is logged in.
class GetUserCrontabCommand : public BaseSSHCommand
{
public:
    GetUserCrontabCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get user crontab"),
                          .category = CommandCategory::Cron,
                          .commandString = QStringLiteral("crontab -l 2>/dev/null")})
    {
    }
};

/// The jobs of the system; their lines name a user.
class GetSystemCrontabCommand : public BaseSSHCommand
{
public:
    GetSystemCrontabCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get system crontab"),
                          .category = CommandCategory::Cron,
                          .commandString = QStringLiteral("cat /etc/crontab 2>/dev/null")})
    {
    }
};

/// The jobs of packages, all files one after the other.
class GetCronDCommand : public BaseSSHCommand
{
public:
    GetCronDCommand()
        : BaseSSHCommand(
              {.description = QStringLiteral("Get cron.d entries"),
               .category = CommandCategory::Cron,
               .commandString = QStringLiteral(R"sh(find /etc/cron.d -type f -exec cat {} \; 2>/dev/null)sh")})
    {
    }
};

/// Root's own jobs.
class GetRootCrontabCommand : public BaseSSHCommand
{
public:
    GetRootCrontabCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get root crontab"),
                          .category = CommandCategory::Cron,
                          .commandString = QStringLiteral("sudo crontab -l -u root 2>/dev/null")})
    {
    }
};

/// Replaces the jobs of the account that is logged in by those in a file.
class InstallCrontabCommand : public BaseSSHCommand
{
public:
    explicit InstallCrontabCommand(const QString &tempFile)
        : BaseSSHCommand({.description = QStringLiteral("Install crontab from file"),
                          .category = CommandCategory::Cron,
                          .commandString = QStringLiteral("crontab %1").arg(shellWord(tempFile))})
        , tempFile(tempFile)
    {
    }

    const QString tempFile;
};
