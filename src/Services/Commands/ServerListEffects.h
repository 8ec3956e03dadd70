#pragma once

#include "Models/ServerStore.h"

class CommandSSHManager;
class TerminalSessions;

/// What a change of the server list causes in the transport, in the terminals and in the keychain.
class ServerListEffects : public ServerStoreDelegate
{
public:
    /// Both outlive the store that has this delegate; `terminals` may be null.
    ServerListEffects(CommandSSHManager &manager, TerminalSessions *terminals);

    void sshSettingsChanged(const Server &updated) override;
    void serverDeleted(const Server &removed) override;

private:
    CommandSSHManager &m_manager;
    TerminalSessions *m_terminals;
};
