#pragma once

#include "Helpers/Secret.h"
#include "Helpers/ShellQuote.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about accounts.

/// The accounts of the server, as passwd(5).
class ListUsersCommand : public BaseSSHCommand
{
public:
    ListUsersCommand()
        : BaseSSHCommand({.description = QStringLiteral("List system users"),
                          .category = CommandCategory::Users,
                          .commandString = QStringLiteral("cat /etc/passwd")})
    {
    }
};

/// Makes an account with useradd(8). An absent or empty `fullName` leaves the comment field to the server.
class AddUserCommand : public BaseSSHCommand
{
public:
    AddUserCommand(const QString &username, const std::optional<QString> &fullName, bool createHome,
                   const QString &shell)
        : BaseSSHCommand(
              {.description = QStringLiteral("Add user '%1'").arg(username),
               .category = CommandCategory::Users,
               .commandString =
                   QStringLiteral("sudo useradd") + (createHome ? QStringLiteral(" -m") : QString()) +
                   (fullName && !fullName->isEmpty() ? QStringLiteral(" -c '") + quoteRule(*fullName) + u'\''
                                                     : QString()) +
                   QStringLiteral(" -s ") + shellWord(shell) + u' ' + shellWord(username),
               .isReversible = true})
        , username(username)
        , fullName(fullName)
        , createHome(createHome)
        , shell(shell)
    {
    }

    const QString username;
    const std::optional<QString> fullName;
    const bool createHome;
    const QString shell;
};

/// Removes an account, with its home folder if asked.
class DeleteUserCommand : public BaseSSHCommand
{
public:
    DeleteUserCommand(const QString &username, bool removeHome)
        : BaseSSHCommand({.description = QStringLiteral("Delete user '%1'").arg(username),
                          .category = CommandCategory::Users,
                          .commandString = QStringLiteral("sudo userdel ") +
                                           (removeHome ? QStringLiteral("-r ") : QString()) + shellWord(username)})
        , username(username)
        , removeHome(removeHome)
    {
    }

    const QString username;
    const bool removeHome;
};

/// Gives an account a password, neither with a line end, which would be the end of an entry of chpasswd(8).
/// Holds a secret: no log shows the line.
class SetUserPasswordCommand : public BaseSSHCommand
{
public:
    SetUserPasswordCommand(const QString &username, const QString &password)
        : BaseSSHCommand(
              {.description = QStringLiteral("Set password for user '%1'").arg(username),
               .category = CommandCategory::Users,
               .commandString =
                   QStringLiteral("echo '%1:%2' | sudo chpasswd").arg(quoteRule(username), quoteRule(password)),
               .isConfidential = true})
        , username(username)
        , m_password(password)
    {
    }

    SetUserPasswordCommand(const SetUserPasswordCommand &) = default;
    SetUserPasswordCommand(SetUserPasswordCommand &&) = default;
    SetUserPasswordCommand &operator=(const SetUserPasswordCommand &) = delete;
    SetUserPasswordCommand &operator=(SetUserPasswordCommand &&) = delete;

    ~SetUserPasswordCommand() override { wipe(m_password); }

    const QString &password() const { return m_password; }

    const QString username;

private:
    QString m_password;
};

/// Adds an account to a supplementary group.
class AddUserToGroupCommand : public BaseSSHCommand
{
public:
    AddUserToGroupCommand(const QString &username, const QString &group)
        : BaseSSHCommand(
              {.description = QStringLiteral("Add user '%1' to group '%2'").arg(username, group),
               .category = CommandCategory::Users,
               .commandString = QStringLiteral("sudo usermod -aG %1 %2").arg(shellWord(group), shellWord(username)),
               .isReversible = true})
        , username(username)
        , group(group)
    {
    }

    const QString username;
    const QString group;
};

/// Writes a sudoers(5) file that lets an account do everything without a password.
class EnablePasswordlessSudoCommand : public BaseSSHCommand
{
public:
    explicit EnablePasswordlessSudoCommand(const QString &username)
        : BaseSSHCommand({.description = QStringLiteral("Enable passwordless sudo for '%1'").arg(username),
                          .category = CommandCategory::Users,
                          .commandString =
                              QStringLiteral("echo '%1 ALL=(ALL) NOPASSWD:ALL' | sudo tee %2")
                                  .arg(quoteRule(username), shellWord(QStringLiteral("/etc/sudoers.d/") + username)),
                          .isReversible = true})
        , username(username)
    {
    }

    const QString username;
};
