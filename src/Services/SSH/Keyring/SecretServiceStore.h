#pragma once

#include "Services/SSH/DesktopKeyring.h"

struct SecretServiceLink;

/// The desktop's keyring: a Secret Service on the session bus
/// (https://specifications.freedesktop.org/secret-service/latest/), through libsecret's asynchronous functions.
///
/// An item has the schema "com.ostlerworks.tarnwell.Password", the attributes "service" and "account", and the label
/// "Tarnwell: <account>", and stands in the default collection, which is made if there is none.
class SecretServiceStore final : public DesktopKeyring
{
public:
    SecretServiceStore();
    ~SecretServiceStore() override;

    QCoro::Task<bool> answers(std::chrono::milliseconds limit) override;
    QCoro::Task<SecretStatus> add(QString account, QByteArray secret) override;
    QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) override;
    QCoro::Task<SecretStatus> remove(QString account) override;
    void cancelAll() override;

private:
    std::shared_ptr<SecretServiceLink> m_link;
    std::shared_ptr<SecretServiceLink> m_probe;
};
