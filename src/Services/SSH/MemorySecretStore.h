#pragma once

#include "Services/SSH/SecretStore.h"

#include <QHash>

/// Keeps secrets until it is destroyed. Its operations end at once and never ask the user.
class MemorySecretStore final : public SecretStore
{
public:
    ~MemorySecretStore() override;

    QCoro::Task<SecretStatus> add(QString account, QByteArray secret) override;
    QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) override;
    QCoro::Task<SecretStatus> remove(QString account) override;

    void cancelAll() override {}

private:
    QHash<QString, QByteArray> m_items;
};
