#include "Services/Users/UserAccounts.h"

#include "Helpers/Secret.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/UserCommands.h"
#include "Services/Users/UserParser.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

using UserCreationError = UserAccounts::UserCreationError;

constexpr qsizetype kLongestName = 32; // utmp(5) has no room for more

constexpr std::array kCentOSFamily{"centos"_L1, "rhel"_L1,         "red hat"_L1, "rocky"_L1,
                                   "alma"_L1,   "oracle linux"_L1, "fedora"_L1};

bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isNameCharacter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || isAsciiDigit(c) || c == u'_' || c == u'.' ||
           c == u'-';
}

QString sudoWanted(const QString &username)
{
    return UserAccounts::tr("This operation requires passwordless sudo access on the server.") + u"\n\n"_s +
           UserAccounts::tr("To enable it, run this command on the server:") + u'\n' +
           EnablePasswordlessSudoCommand(username).commandString();
}

// One step; nothing when it succeeded.
QCoro::Task<std::optional<UserCreationError>> step(CommandSSHManager &manager, Server server,
                                                   UserCreationError::Code code,
                                                   std::shared_ptr<const SSHCommand> command)
{
    const CommandResult result = (co_await manager.executeSSHCommand(command, server)).result;
    if (result.succeeded()) {
        co_return std::nullopt;
    }
    co_return UserCreationError{code, QString::fromUtf8(result.error.trimmed())};
}

} // namespace

QCoro::Task<QList<UserInfo>> UserAccounts::getSystemUsers(CommandSSHManager &manager, Server server)
{
    const CommandResult result = (co_await manager.executeSSHCommand(ListUsersCommand(), server)).result;
    co_return result.succeeded() ? UserParser::parseSystemUsers(result.output) : QList<UserInfo>();
}

QCoro::Task<std::optional<UserCreationError>> UserAccounts::createUser(CommandSSHManager &manager, Server server,
                                                                       NewUser user)
{
    const PasswordlessSudo sudo = co_await manager.checkPasswordlessSudo(server);
    if (!sudo.connectionSucceeded) {
        co_return UserCreationError{UserCreationError::Refused,
                                    tr("Could not connect to server. Please check your connection settings.")};
    }
    if (!sudo.available) {
        co_return UserCreationError{UserCreationError::Refused, sudoWanted(server.username)};
    }
    QList<std::pair<UserCreationError::Code, std::shared_ptr<const SSHCommand>>> steps{
        {UserCreationError::AddUser,
         std::make_shared<AddUserCommand>(user.username,
                                          user.fullName.isEmpty() ? std::nullopt : std::optional(user.fullName),
                                          user.createHomeDirectory, user.shell)}};
    if (!user.password.isEmpty()) {
        steps.append(
            {UserCreationError::SetPassword, std::make_shared<SetUserPasswordCommand>(user.username, user.password)});
        wipe(user.password);
    }
    if (user.addToSudoGroup) {
        steps.append({UserCreationError::AddToGroup,
                      std::make_shared<AddUserToGroupCommand>(user.username, sudoGroup(server))});
    }
    if (user.enablePasswordlessSudo) {
        steps.append(
            {UserCreationError::PasswordlessSudo, std::make_shared<EnablePasswordlessSudoCommand>(user.username)});
    }
    for (const auto &[code, command] : steps) {
        if (const auto error = co_await step(manager, server, code, command)) {
            co_return error;
        }
    }
    co_return std::nullopt;
}

QCoro::Task<CommandResult> UserAccounts::deleteUser(CommandSSHManager &manager, Server server, QString username)
{
    co_return (co_await manager.executeSSHCommand(DeleteUserCommand(username, true), server)).result;
}

bool UserAccounts::isValidUsername(QStringView username)
{
    const QStringView name = username.endsWith(u'$') ? username.chopped(1) : username;
    return !name.isEmpty() && username.size() <= kLongestName && !name.startsWith(u'-') && name != u"."_s &&
           name != u".."_s && std::ranges::all_of(name, isNameCharacter) && !std::ranges::all_of(name, isAsciiDigit);
}

bool UserAccounts::isValidSudoersFile(QStringView username)
{
    return isValidUsername(username) && !username.contains(u'.');
}

QString UserAccounts::sudoersFile(const QString &username)
{
    return u"/etc/sudoers.d/"_s + username;
}

QString UserAccounts::sudoGroup(const Server &server)
{
    return isCentOSBased(server) ? u"wheel"_s : u"sudo"_s;
}

bool UserAccounts::isCentOSBased(const Server &server)
{
    return server.systemInfo && std::ranges::any_of(kCentOSFamily, [&](QLatin1StringView name) {
               return server.systemInfo->osVersion.contains(name, Qt::CaseInsensitive);
           });
}
