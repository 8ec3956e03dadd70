#include "Services/Commands/ServerListEffects.h"

#include "Services/Commands/CommandSSHManager.h"
#include "Services/SSH/KeychainManager.h"
#include "Services/Terminal/TerminalSessions.h"

ServerListEffects::ServerListEffects(CommandSSHManager &manager, TerminalSessions *terminals)
    : m_manager(manager)
    , m_terminals(terminals)
{
}

void ServerListEffects::sshSettingsChanged(const Server &updated)
{
    m_manager.invalidateServerCache(updated);
    if (m_terminals) {
        m_terminals->serverSettingsChanged(updated);
    }
}

void ServerListEffects::serverDeleted(const Server &removed)
{
    if (removed.authMethod == AuthMethod::Password) {
        m_manager.dependencies().keychain.deletePassword(KeychainManager::passwordAccount(removed));
    }
    if (m_terminals) {
        m_terminals->cleanupServer(removed.id);
    }
    m_manager.forgetServer(removed);
}
