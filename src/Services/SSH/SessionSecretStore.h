#pragma once

#include "Helpers/OneShot.h"
#include "Services/SSH/DesktopKeyring.h"
#include "Services/SSH/MemorySecretStore.h"

#include <optional>

/// The secret store of a run: the desktop's keyring if it answers when it is first asked for, otherwise a store in
/// memory. Can be used at once; operations wait for the choice, which the first of them starts.
class SessionSecretStore final : public SecretStore
{
public:
    /// How long the keyring may take to answer.
    static constexpr std::chrono::milliseconds kLimit{2000};

    explicit SessionSecretStore(std::chrono::milliseconds limit = kLimit);
    ~SessionSecretStore() override;

    /// One line for the window when secrets will not outlive the program; empty otherwise. Waits for the choice.
    QCoro::Task<QString> notice();

    QCoro::Task<SecretStatus> add(QString account, QByteArray secret) override;
    QCoro::Task<SecretMatch> copyMatching(QString account, bool wantData) override;
    QCoro::Task<SecretStatus> remove(QString account) override;
    void cancelAll() override;

private:
    using Choice = OneShot<SecretStore *>;

    QCoro::Task<> choose();
    // Null if the operation was cancelled meanwhile.
    QCoro::Task<SecretStore *> chosen();

    std::chrono::milliseconds m_limit;
    bool m_hasBegun = false;
    std::unique_ptr<DesktopKeyring> m_keyring; // null until then, and where there is no library for it
    MemorySecretStore m_memory;
    SecretStore *m_chosen = nullptr;
    std::shared_ptr<Choice> m_choice; // for the operations that wait
    std::optional<Choice::Completer> m_chooser;
    bool m_isClosing = false;
};
