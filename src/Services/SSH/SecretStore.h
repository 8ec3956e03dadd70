#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>

/// The attribute "service" of every item that this program stores.
inline constexpr QLatin1StringView kSecretServiceAttribute{"com.ostlerworks.tarnwell"};

/// How an operation of a secret store ended. The numbers are those of the OSStatus results of SecItemAdd,
/// SecItemCopyMatching and SecItemDelete.
enum class SecretStatus {
    Success = 0,
    Failed = -1,         ///< no store answers, it broke off, or the operation was cancelled
    UserCanceled = -128, ///< the user was asked to unlock the store, and refused
    AuthFailed = -25293, ///< the store doesn't let this program in
    ItemNotFound = -25300,
    InteractionNotAllowed = -25308 ///< the store is locked, and nothing can ask the user to unlock it
};

/// What a store has for an account.
struct SecretMatch {
    SecretStatus status = SecretStatus::Failed;
    QByteArray data; ///< with Success, if data was asked for; to be wiped by who got it
};

/// A place where secrets are kept, one item an account. All operations are tasks on the main thread; those that need
/// the user may take minutes, and operations on other accounts go on meanwhile.
class SecretStore
{
public:
    SecretStore() = default;
    SecretStore(const SecretStore &) = delete;
    SecretStore &operator=(const SecretStore &) = delete;
    virtual ~SecretStore() = default;

    /// Stores `secret` (any bytes) for `account`, in the place of an item that is there.
    virtual QCoro::Task<SecretStatus> add(QString account, QByteArray secret) = 0;

    /// Looks the account up. Without `wantData` this never asks the user anything: a locked item counts as found.
    virtual QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) = 0;

    /// Removes the account's item; ItemNotFound if there is none.
    virtual QCoro::Task<SecretStatus> remove(QString account) = 0;

    /// Ends all operations under way with Failed; when this returns, whoever waited for one has been resumed.
    /// The store can be used on.
    virtual void cancelAll() = 0;
};
