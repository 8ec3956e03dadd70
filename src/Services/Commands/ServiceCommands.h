#pragma once

#include "Helpers/ShellQuote.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about systemd services. A service name is a unit name with or without its suffix.

/// All service units, loaded or not, for ServiceParser: one line a unit, without colours and headings.
///
/// The time limit of systemctl is the server's own, below the command's. When it fails, the words of the message
/// behind the first become parameters of the shell, so that "ERROR:" alone comes back.
class ServiceListCommand : public BaseSSHCommand
{
public:
    explicit ServiceListCommand(bool useSudo)
        : BaseSSHCommand(
              {.description = QStringLiteral("List all services"),
               .category = CommandCategory::Services,
               .commandString =
                   (useSudo ? QStringLiteral("sudo bash -c \"") : QStringLiteral("bash -c \"")) + innerText() + u'"',
               .timeout = 15.0})
        , useSudo(useSudo)
    {
    }

    const bool useSudo;

private:
    static QString innerText()
    {
        return QStringLiteral(
            "SYSTEMD_COLORS=0 "
            "command -v timeout >/dev/null 2>&1 && timeout 10 "
            "systemctl list-units --type=service --all --no-pager --no-legend --plain --no-ask-password"
            " 2>&1 || echo \"ERROR: systemctl command failed or timed out\"");
    }
};

/// Starts a unit.
class StartServiceCommand : public BaseSSHCommand
{
public:
    explicit StartServiceCommand(const QString &serviceName)
        : BaseSSHCommand({.description = QStringLiteral("Start service '%1'").arg(serviceName),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl start %1").arg(shellWord(serviceName)),
                          .isReversible = true})
        , serviceName(serviceName)
    {
    }

    const QString serviceName;
};

/// Stops a unit.
class StopServiceCommand : public BaseSSHCommand
{
public:
    explicit StopServiceCommand(const QString &serviceName)
        : BaseSSHCommand({.description = QStringLiteral("Stop service '%1'").arg(serviceName),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl stop %1").arg(shellWord(serviceName)),
                          .isReversible = true})
        , serviceName(serviceName)
    {
    }

    const QString serviceName;
};

/// Restarts a unit: what it held is lost, so this cannot be undone.
class RestartServiceCommand : public BaseSSHCommand
{
public:
    explicit RestartServiceCommand(const QString &serviceName)
        : BaseSSHCommand({.description = QStringLiteral("Restart service '%1'").arg(serviceName),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl restart %1").arg(shellWord(serviceName))})
        , serviceName(serviceName)
    {
    }

    const QString serviceName;
};

/// Lets a unit start at boot.
class EnableServiceCommand : public BaseSSHCommand
{
public:
    explicit EnableServiceCommand(const QString &serviceName)
        : BaseSSHCommand({.description = QStringLiteral("Enable service '%1'").arg(serviceName),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl enable %1").arg(shellWord(serviceName)),
                          .isReversible = true})
        , serviceName(serviceName)
    {
    }

    const QString serviceName;
};

/// Keeps a unit from starting at boot.
class DisableServiceCommand : public BaseSSHCommand
{
public:
    explicit DisableServiceCommand(const QString &serviceName)
        : BaseSSHCommand({.description = QStringLiteral("Disable service '%1'").arg(serviceName),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl disable %1").arg(shellWord(serviceName)),
                          .isReversible = true})
        , serviceName(serviceName)
    {
    }

    const QString serviceName;
};

/// Writes a unit file, whatever its content: that travels as base64.
class CreateServiceFileCommand : public BaseSSHCommand
{
public:
    CreateServiceFileCommand(const QString &servicePath, const QString &content)
        : BaseSSHCommand(
              {.description = QStringLiteral("Create service file at %1").arg(servicePath),
               .category = CommandCategory::Services,
               .commandString = QStringLiteral("echo '%1' | base64 -d | sudo tee %2 > /dev/null")
                                    .arg(QString::fromLatin1(content.toUtf8().toBase64()), shellWord(servicePath)),
               .isReversible = true})
        , servicePath(servicePath)
        , content(content)
    {
    }

    const QString servicePath;
    const QString content;
};

/// Makes systemd read its unit files again.
class ReloadSystemdCommand : public BaseSSHCommand
{
public:
    ReloadSystemdCommand()
        : BaseSSHCommand({.description = QStringLiteral("Reload systemd daemon"),
                          .category = CommandCategory::Services,
                          .commandString = QStringLiteral("sudo systemctl daemon-reload")})
    {
    }
};
