#pragma once

#include "Services/Children/ChildGroup.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/SSH/SSHLauncher.h"

#include <memory>
#include <optional>

/// Looks at a server that need not be in any list, in a session of its own: what it is given and what it learns is
/// known to nobody else and goes with it, no master connection is left behind, and its children can be ended.
///
/// The operations are static, since the probe has to live as long as the task that uses it.
class ServerProbe
{
public:
    /// What a server may ask for.
    struct Secrets {
        std::optional<QString> password;
        std::optional<QString> passphrase;
    };

    /// Works with the means of `manager`, which outlives the probe, and shares none of its sessions.
    explicit ServerProbe(const CommandSSHManager &manager);

    /// Logs in once. A secret that is not given is looked for in the keychain; none is stored.
    static QCoro::Task<ConnectionOutcome> testConnection(std::shared_ptr<ServerProbe> probe, Server server,
                                                         Secrets secrets);

    /// Logs in and asks whether sudo needs a password. No answer in time is no connection.
    static QCoro::Task<PasswordlessSudo> checkPasswordlessSudo(std::shared_ptr<ServerProbe> probe, Server server,
                                                               Secrets secrets);

    /// Ends what is under way, as a failure, before it returns.
    void cancel() { m_children->end(); }

    bool isCancelled() const { return m_children->isEnded(); }

private:
    class Session : public CommandSSHManager
    {
    public:
        using CommandSSHManager::CommandSSHManager;
        ~Session() override;

        void keep(const Server &server, const Secrets &secrets);
    };

    std::shared_ptr<ChildGroup> m_children = std::make_shared<ChildGroup>();
    SSHLauncher m_launcher;
    Session m_session;
};
