#pragma once

#include "Services/SSH/SecretStore.h"

#include <QtPlugin>

#include <chrono>
#include <memory>

/// The desktop's keyring. It is behind this interface because loading what talks to it takes time and memory that the
/// first paint must not pay: what implements it is a library of its own, which KeyringLibrary loads.
///
/// The destructor ends operations under way, with Failed.
class DesktopKeyring : public SecretStore
{
public:
    /// Whether a keyring answers within `limit`. One that the desktop can start is started.
    virtual QCoro::Task<bool> answers(std::chrono::milliseconds limit) = 0;
};

class KeyringFactory
{
public:
    KeyringFactory() = default;
    KeyringFactory(const KeyringFactory &) = delete;
    KeyringFactory &operator=(const KeyringFactory &) = delete;
    virtual ~KeyringFactory() = default;

    virtual std::unique_ptr<DesktopKeyring> make() = 0;
};

Q_DECLARE_INTERFACE(KeyringFactory, "Tarnwell.KeyringFactory/1")
