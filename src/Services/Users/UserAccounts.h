#pragma once

#include "Models/Server.h"
#include "Models/UserInfo.h"
#include "Services/SSH/CommandResult.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QList>
#include <optional>

class CommandSSHManager;

/// The accounts of a server. Every `manager` outlives the task that it is given to.
class UserAccounts
{
    Q_DECLARE_TR_FUNCTIONS(UserAccounts)

public:
    /// What is to become an account.
    struct NewUser {
        QString username; ///< isValidUsername
        QString fullName;
        QString password; ///< without a line end; empty for an account that has none
        bool createHomeDirectory = true;
        QString shell;
        bool addToSudoGroup = false;
        bool enablePasswordlessSudo = false;
    };

    /// Which step of a creation failed, and what the server said to it.
    struct UserCreationError {
        enum Code { Refused = 0, AddUser = 1, SetPassword = 2, AddToGroup = 3, PasswordlessSudo = 4 };

        Code code = Refused; ///< Refused: nothing was changed, and `text` is in words for the operator
        QString text;

        bool operator==(const UserCreationError &) const = default;
    };

    /// Empty when the list cannot be read, for whatever reason.
    static QCoro::Task<QList<UserInfo>> getSystemUsers(CommandSSHManager &manager, Server server);

    /// Makes the account in up to four steps, after a test for sudo without a password, which all of them need. The
    /// first failure ends it; steps that are done stay done.
    static QCoro::Task<std::optional<UserCreationError>> createUser(CommandSSHManager &manager, Server server,
                                                                    NewUser user);

    /// Removes the account and its home folder.
    static QCoro::Task<CommandResult> deleteUser(CommandSSHManager &manager, Server server, QString username);

    /// The rule of useradd(8): letters and digits of ASCII, "_", "-" and ".", at most 32, not beginning with "-",
    /// with one "$" at the end if need be; neither digits alone nor "." nor "..".
    static bool isValidUsername(QStringView username);

    /// sudoers(5): files with a dot in their name are passed over in the folder.
    static bool isValidSudoersFile(QStringView username);

    /// The file into which `enablePasswordlessSudo` writes.
    static QString sudoersFile(const QString &username);

    /// "wheel" where isCentOSBased, else "sudo".
    static QString sudoGroup(const Server &server);

    /// Whether the stored facts name a system of that family; not without facts.
    static bool isCentOSBased(const Server &server);
};
