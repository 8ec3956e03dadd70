#pragma once

#include "Helpers/OneShot.h"
#include "Models/Server.h"
#include "Services/SSH/SecretStore.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>

#include <memory>
#include <optional>

class Clock;

/// The passwords and passphrases of all servers: a secret store behind a cache of 300 seconds.
///
/// An account names one secret: "username@host:port" for a password, the same after "passphrase:" for the passphrase
/// of a key. Renaming a server keeps its secret; another user name, host or port is another account.
///
/// Where the store can't or mustn't ask for an account, the account is denied: it isn't asked for again in this run,
/// until a secret is saved for it or its item is deleted.
///
/// Operations on one account don't overtake each other, and reads of one account that overlap ask the store once.
/// A presence test is the exception: it never waits for a read that waits for the user. The object outlives its
/// tasks: its destructor ends them, as failures.
class KeychainManager
{
public:
    static constexpr QLatin1StringView service = kSecretServiceAttribute;
    /// How long, in seconds, a secret in the cache is valid.
    static constexpr double cacheTimeout = 300.0;

    /// Both outlive this object.
    KeychainManager(SecretStore &store, const Clock &clock);
    ~KeychainManager();
    KeychainManager(const KeychainManager &) = delete;
    KeychainManager &operator=(const KeychainManager &) = delete;

    /// Stores `password` in the place of what is there. False if it is not encodable as UTF-8 or the store refuses;
    /// in the latter case an older secret may be gone. The account is not denied afterwards.
    QCoro::Task<bool> savePassword(QString account, QString password);

    /// The secret, or nothing if there is none, it isn't UTF-8, or the store refuses. May ask the user to unlock the
    /// store, for minutes.
    QCoro::Task<std::optional<QString>> getPassword(QString account);

    /// True if no item is left, also if there was none.
    QCoro::Task<bool> deletePassword(QString account);

    /// Whether there is a secret; never asks the user.
    QCoro::Task<bool> hasPassword(QString account);

    static QString passwordAccount(const Server &server);
    static QString passphraseAccount(const Server &server);

    /// The accounts that the store refused to give.
    const QSet<QString> &deniedAccounts() const { return m_deniedAccounts; }

    /// The credentials of a server. A password belongs to AuthMethod::Password and a passphrase to
    /// AuthMethod::PublicKey; with another method they are absent, and saving does nothing and gives false.
    QCoro::Task<bool> hasPassword(Server server);
    QCoro::Task<std::optional<QString>> getPassword(Server server);
    QCoro::Task<bool> savePassword(Server server, QString password);
    QCoro::Task<bool> hasPassphrase(Server server);
    QCoro::Task<std::optional<QString>> getPassphrase(Server server);

private:
    using Secret = std::optional<QString>;
    class Turn;

    QCoro::Task<Secret> read(QString account);
    QCoro::Task<SecretStatus> removeItem(QString account);
    bool isCached(const QString &account) const;
    void remember(const QString &account, const QString &secret);
    void forget(const QString &account);

    SecretStore &m_store;
    const Clock &m_clock;
    QHash<QString, QString> m_passwordCache;
    QHash<QString, QDateTime> m_cacheTimestamps;
    QSet<QString> m_deniedAccounts;
    QHash<QString, std::shared_ptr<OneShot<Secret>>> m_reading;  // reads under way, for those who join
    QHash<QString, std::shared_ptr<OneShot<bool>>> m_lastInLine; // the end of the newest operation
    bool m_isClosing = false;
};
