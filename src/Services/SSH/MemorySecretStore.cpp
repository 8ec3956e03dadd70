#include "Services/SSH/MemorySecretStore.h"

#include "Helpers/Secret.h"

MemorySecretStore::~MemorySecretStore()
{
    for (QByteArray &secret : m_items) {
        wipe(secret);
    }
}

QCoro::Task<SecretStatus> MemorySecretStore::add(QString account, QByteArray secret)
{
    QByteArray &item = m_items[account];
    wipe(item);
    item = std::move(secret);
    co_return SecretStatus::Success;
}

QCoro::Task<SecretMatch> MemorySecretStore::copyMatching(QString account, bool wantData)
{
    const auto item = m_items.constFind(account);
    if (item == m_items.constEnd()) {
        co_return SecretMatch{SecretStatus::ItemNotFound, {}};
    }
    // A copy of its own, so that the receiver can wipe what it got.
    co_return SecretMatch{SecretStatus::Success,
                          wantData ? QByteArray(item->constData(), item->size()) : QByteArray()};
}

QCoro::Task<SecretStatus> MemorySecretStore::remove(QString account)
{
    const auto item = m_items.find(account);
    if (item == m_items.end()) {
        co_return SecretStatus::ItemNotFound;
    }
    wipe(*item);
    m_items.erase(item);
    co_return SecretStatus::Success;
}
