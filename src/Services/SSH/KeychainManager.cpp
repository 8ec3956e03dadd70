#include "Services/SSH/KeychainManager.h"

#include "Helpers/Clock.h"
#include "Helpers/Secret.h"

using namespace Qt::StringLiterals;

/// One operation's place in the line of its account, from construction to destruction.
class KeychainManager::Turn
{
public:
    Turn(KeychainManager &manager, const QString &account)
        : m_line(manager.m_lastInLine)
        , m_account(account)
        , m_before(m_line.value(account))
        , m_end(std::make_shared<OneShot<bool>>(true))
        , m_done(m_end->completer())
    {
        m_line.insert(account, m_end);
    }

    ~Turn()
    {
        if (m_line.value(m_account) == m_end) {
            m_line.remove(m_account);
        }
        m_done.complete(true);
    }

    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    /// Resumes when all operations before this one have ended.
    QCoro::Task<bool> comes() const { return m_before ? m_before->wait() : OneShot<bool>(true).wait(); }

private:
    QHash<QString, std::shared_ptr<OneShot<bool>>> &m_line;
    QString m_account;
    std::shared_ptr<OneShot<bool>> m_before;
    std::shared_ptr<OneShot<bool>> m_end;
    OneShot<bool>::Completer m_done;
};

KeychainManager::KeychainManager(SecretStore &store, const Clock &clock)
    : m_store(store)
    , m_clock(clock)
{
}

KeychainManager::~KeychainManager()
{
    // Whoever is resumed here finds every operation refused, and the line of its account comes to its end.
    m_isClosing = true;
    m_store.cancelAll();
    for (QString &secret : m_passwordCache) {
        wipe(secret);
    }
}

QString KeychainManager::passwordAccount(const Server &server)
{
    return server.username + u'@' + server.host + u':' + QString::number(server.port);
}

QString KeychainManager::passphraseAccount(const Server &server)
{
    return u"passphrase:"_s + passwordAccount(server);
}

bool KeychainManager::isCached(const QString &account) const
{
    const QDateTime cached = m_cacheTimestamps.value(account);
    if (!cached.isValid()) {
        return false;
    }
    // A time stamp in the future comes from a clock that was set back: its age is not known.
    const double age = static_cast<double>(cached.msecsTo(m_clock.now())) / 1000.0;
    return age >= 0.0 && age < cacheTimeout;
}

void KeychainManager::remember(const QString &account, const QString &secret)
{
    forget(account);
    m_passwordCache.insert(account, secret);
    m_cacheTimestamps.insert(account, m_clock.now());
}

void KeychainManager::forget(const QString &account)
{
    QString secret = m_passwordCache.take(account);
    wipe(secret);
    m_cacheTimestamps.remove(account);
}

QCoro::Task<bool> KeychainManager::savePassword(QString account, QString password)
{
    std::optional<QByteArray> bytes = strictUtf8(password);
    if (!bytes) {
        co_return false;
    }
    m_deniedAccounts.remove(account);
    const Turn turn(*this, account);
    co_await turn.comes();
    m_deniedAccounts.remove(account);
    const SecretStatus removal = co_await removeItem(account);
    // Who has just refused to unlock the store isn't asked a second time.
    SecretStatus status = removal;
    if (removal != SecretStatus::UserCanceled && !m_isClosing) {
        status = co_await m_store.add(account, *bytes);
    }
    wipe(*bytes);
    if (status != SecretStatus::Success || m_isClosing) {
        co_return false;
    }
    remember(account, password);
    co_return true;
}

QCoro::Task<std::optional<QString>> KeychainManager::getPassword(QString account)
{
    if (m_deniedAccounts.contains(account) || m_isClosing) {
        co_return std::nullopt;
    }
    if (isCached(account)) {
        co_return m_passwordCache.value(account);
    }
    if (const auto reading = m_reading.value(account)) {
        co_return co_await reading->wait();
    }
    const auto shared = std::make_shared<OneShot<Secret>>(std::nullopt);
    const auto done = shared->completer();
    m_reading.insert(account, shared);
    const Secret secret = co_await read(account);
    m_reading.remove(account);
    done.complete(secret);
    co_return secret;
}

QCoro::Task<std::optional<QString>> KeychainManager::read(QString account)
{
    const Turn turn(*this, account);
    co_await turn.comes();
    // What stood before in the line may have answered it.
    if (isCached(account)) {
        co_return m_passwordCache.value(account);
    }
    forget(account);
    if (m_deniedAccounts.contains(account) || m_isClosing) {
        co_return std::nullopt;
    }
    SecretMatch match = co_await m_store.copyMatching(account, true);
    if (match.status == SecretStatus::InteractionNotAllowed) {
        m_deniedAccounts.insert(account);
    }
    if (match.status != SecretStatus::Success) {
        co_return std::nullopt;
    }
    const Secret secret = strictText(match.data);
    wipe(match.data);
    if (secret) {
        remember(account, *secret);
    }
    co_return secret;
}

QCoro::Task<SecretStatus> KeychainManager::removeItem(QString account)
{
    if (m_isClosing) {
        co_return SecretStatus::Failed;
    }
    const SecretStatus status = co_await m_store.remove(account);
    if (status == SecretStatus::Success || status == SecretStatus::ItemNotFound) {
        forget(account);
        m_deniedAccounts.remove(account);
    }
    co_return status;
}

QCoro::Task<bool> KeychainManager::deletePassword(QString account)
{
    const Turn turn(*this, account);
    co_await turn.comes();
    const SecretStatus status = co_await removeItem(account);
    co_return status == SecretStatus::Success || status == SecretStatus::ItemNotFound;
}

QCoro::Task<bool> KeychainManager::hasPassword(QString account)
{
    if (m_deniedAccounts.contains(account) || m_isClosing) {
        co_return false;
    }
    if (isCached(account)) {
        co_return true;
    }
    const SecretMatch match = co_await m_store.copyMatching(account, false);
    // A secret that was saved meanwhile is newer than this answer.
    if (isCached(account)) {
        co_return true;
    }
    if (match.status == SecretStatus::UserCanceled || match.status == SecretStatus::AuthFailed ||
        match.status == SecretStatus::InteractionNotAllowed) {
        m_deniedAccounts.insert(account);
    }
    co_return match.status == SecretStatus::Success;
}

QCoro::Task<bool> KeychainManager::hasPassword(Server server)
{
    co_return server.authMethod == AuthMethod::Password &&co_await hasPassword(passwordAccount(server));
}

QCoro::Task<std::optional<QString>> KeychainManager::getPassword(Server server)
{
    if (server.authMethod != AuthMethod::Password) {
        co_return std::nullopt;
    }
    co_return co_await getPassword(passwordAccount(server));
}

QCoro::Task<bool> KeychainManager::savePassword(Server server, QString password)
{
    co_return server.authMethod ==
        AuthMethod::Password &&co_await savePassword(passwordAccount(server), std::move(password));
}

QCoro::Task<bool> KeychainManager::hasPassphrase(Server server)
{
    co_return server.authMethod == AuthMethod::PublicKey &&co_await hasPassword(passphraseAccount(server));
}

QCoro::Task<std::optional<QString>> KeychainManager::getPassphrase(Server server)
{
    if (server.authMethod != AuthMethod::PublicKey) {
        co_return std::nullopt;
    }
    co_return co_await getPassword(passphraseAccount(server));
}
