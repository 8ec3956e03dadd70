#include "Services/Commands/SSHCommand.h"

#include "Services/Commands/CommandSSHManager.h"

QCoro::Task<CommandResult> BaseSSHCommand::execute(CommandSSHManager &manager, Server server) const
{
    co_return co_await manager.executeRawCommand({m_fields.commandString, m_fields.isConfidential}, std::move(server),
                                                 m_fields.timeout);
}
