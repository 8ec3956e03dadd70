#include "Services/Commands/ServerSecrets.h"

#include "Helpers/Secret.h"
#include "Services/Commands/ServerProbe.h"
#include "Services/SSH/KeychainManager.h"

namespace
{

using Secret = std::optional<QString>;

Secret given(const QString &typed)
{
    return typed.isEmpty() ? Secret() : Secret(typed);
}

QCoro::Task<void> putBack(KeychainManager &keychain, QString account, Secret before)
{
    if (before) {
        co_await keychain.savePassword(account, *before);
    } else {
        co_await keychain.deletePassword(account);
    }
}

} // namespace

QCoro::Task<ServerSecrets::SudoCheck> ServerSecrets::checkSudo(std::shared_ptr<ServerProbe> probe,
                                                               KeychainManager &keychain,
                                                               std::optional<Server> before, Server temporary,
                                                               Typed typed)
{
    SudoCheck check;
    const bool usesPassword = temporary.authMethod == AuthMethod::Password;
    if (usesPassword && before) {
        check.hadPassword = co_await keychain.hasPassword(*before);
    }
    const QString account = KeychainManager::passwordAccount(temporary);
    Secret earlier;
    bool isReplaced = false;
    if (usesPassword && !typed.password.isEmpty()) {
        earlier = co_await keychain.getPassword(account);
        if ((earlier || !co_await keychain.hasPassword(account)) && !probe->isCancelled()) {
            isReplaced = co_await keychain.savePassword(account, typed.password);
        }
    }

    check.sudo = co_await ServerProbe::checkPasswordlessSudo(
        probe, temporary, {usesPassword ? given(typed.password) : Secret(), given(typed.passphrase)});

    const bool lacksSudo = check.sudo.connectionSucceeded && !check.sudo.available;
    if (isReplaced && (probe->isCancelled() || (before && lacksSudo))) {
        co_await putBack(keychain, account, earlier);
        check.isPutBack = earlier.has_value();
    }
    for (QString *secret : {&typed.password, &typed.passphrase}) {
        wipe(*secret);
    }
    if (earlier) {
        wipe(*earlier);
    }
    co_return check;
}

QCoro::Task<bool> ServerSecrets::settle(KeychainManager &keychain, std::optional<Server> before, Server server,
                                        Typed typed, bool keepsPassphrase)
{
    if (server.authMethod == AuthMethod::Password && !typed.password.isEmpty() &&
        !co_await keychain.savePassword(server, typed.password)) {
        co_return false;
    }
    const QString account = KeychainManager::passphraseAccount(server);
    const QString accountBefore = before ? KeychainManager::passphraseAccount(*before) : QString();
    if (server.authMethod == AuthMethod::PublicKey) {
        const bool isTyped = !typed.passphrase.isEmpty();
        if (isTyped && !co_await keychain.savePassword(account, typed.passphrase)) {
            co_return false;
        }
        const bool isKept = isTyped || keepsPassphrase;
        if (before && before->privateKeyPath != server.privateKeyPath) {
            if (!isKept || accountBefore != account) {
                co_await keychain.deletePassword(accountBefore);
            }
            if (!isKept) {
                co_await keychain.deletePassword(account);
            }
        }
    }
    if (before && before->authMethod == AuthMethod::PublicKey && server.authMethod == AuthMethod::Password) {
        co_await keychain.deletePassword(accountBefore);
    }
    co_return true;
}
