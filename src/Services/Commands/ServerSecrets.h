#pragma once

#include "Models/Server.h"
#include "Services/Commands/CommandSSHManager.h"

#include <QCoroTask>
#include <memory>
#include <optional>

class KeychainManager;
class ServerProbe;

/// What happens to the keychain when a server's form is tried out and saved. Tasks that outlive the form: what they
/// have begun with the keychain they bring to an end.
namespace ServerSecrets
{

/// The secrets as they are typed; empty where nothing is.
struct Typed {
    QString password;
    QString passphrase;
};

struct SudoCheck {
    PasswordlessSudo sudo;
    bool hadPassword = false; ///< one was stored for the record as it was before
    bool isPutBack = false;   ///< an older password is in the keychain again, in the place of the typed one
};

/// Tries `temporary` with a login. A typed password is put into the keychain first, and stays there if the login
/// fails; if only sudo is missing for an edited record (`before`), or the probe was cancelled, what was there before
/// is put back. A stored password that cannot be read is not overwritten.
QCoro::Task<SudoCheck> checkSudo(std::shared_ptr<ServerProbe> probe, KeychainManager &keychain,
                                 std::optional<Server> before, Server temporary, Typed typed);

/// Stores the typed secret of `server`, and removes pass phrases that `before`, the record that `server` takes the
/// place of, leaves behind. With `keepsPassphrase` one that is stored for `server` stays. False if a typed secret
/// could not be stored; nothing is removed then.
QCoro::Task<bool> settle(KeychainManager &keychain, std::optional<Server> before, Server server, Typed typed,
                         bool keepsPassphrase);

} // namespace ServerSecrets
