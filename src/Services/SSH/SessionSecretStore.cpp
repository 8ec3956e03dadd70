#include "Services/SSH/SessionSecretStore.h"

#include "Services/SSH/KeyringLibrary.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

SessionSecretStore::SessionSecretStore(std::chrono::milliseconds limit)
    : m_limit(limit)
{
}

SessionSecretStore::~SessionSecretStore()
{
    m_isClosing = true;
    cancelAll();
    // Ends the probe here, where what resumes from it still finds this object whole.
    m_keyring.reset();
}

QCoro::Task<> SessionSecretStore::choose()
{
    m_keyring = KeyringLibrary::makeKeyring();
    const bool answers = m_keyring && co_await m_keyring->answers(m_limit);
    m_chosen = answers ? static_cast<SecretStore *>(m_keyring.get()) : &m_memory;
    if (const auto chooser = std::exchange(m_chooser, std::nullopt)) {
        chooser->complete(m_chosen);
    }
}

QCoro::Task<SecretStore *> SessionSecretStore::chosen()
{
    if (m_chosen || m_isClosing) {
        Choice known(m_isClosing ? nullptr : m_chosen);
        return known.wait();
    }
    if (!m_chooser) {
        m_choice = std::make_shared<Choice>(nullptr);
        m_chooser = m_choice->completer();
    }
    if (!std::exchange(m_hasBegun, true)) {
        choose();
    }
    return m_choice->wait();
}

QCoro::Task<QString> SessionSecretStore::notice()
{
    const SecretStore *const memory = &m_memory;
    const SecretStore *const store = co_await chosen();
    co_return store == memory
        ? QCoreApplication::translate("SessionSecretStore",
                                      "No keyring answers: passwords are kept in memory until Tarnwell quits.")
        : QString();
}

QCoro::Task<SecretStatus> SessionSecretStore::add(QString account, QByteArray secret)
{
    SecretStore *const store = co_await chosen();
    co_return store ? co_await store->add(std::move(account), std::move(secret)) : SecretStatus::Failed;
}

QCoro::Task<SecretMatch> SessionSecretStore::copyMatching(QString account, bool wantData)
{
    SecretStore *const store = co_await chosen();
    co_return store ? co_await store->copyMatching(std::move(account), wantData) : SecretMatch{};
}

QCoro::Task<SecretStatus> SessionSecretStore::remove(QString account)
{
    SecretStore *const store = co_await chosen();
    co_return store ? co_await store->remove(std::move(account)) : SecretStatus::Failed;
}

void SessionSecretStore::cancelAll()
{
    if (const auto chooser = std::exchange(m_chooser, std::nullopt)) {
        chooser->complete(nullptr);
    }
    if (m_keyring) {
        m_keyring->cancelAll();
    }
}
