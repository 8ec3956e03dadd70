#include "Services/Commands/SSHCommand.h"

#include "Helpers/Secret.h"
#include "Services/Commands/CommandSSHManager.h"

BaseSSHCommand::~BaseSSHCommand()
{
    if (m_fields.isConfidential) {
        wipe(m_fields.commandString);
    }
}

QCoro::Task<CommandResult> BaseSSHCommand::execute(CommandSSHManager &manager, Server server) const
{
    co_return co_await manager.executeRawCommand({m_fields.commandString, m_fields.isConfidential}, std::move(server),
                                                 m_fields.timeout);
}
