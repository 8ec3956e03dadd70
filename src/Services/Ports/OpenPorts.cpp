#include "Services/Ports/OpenPorts.h"

#include "Helpers/Text.h"
#include "Services/Commands/CommandSSHManager.h"
#include "Services/Commands/NetworkCommands.h"
#include "Services/Ports/PortParser.h"

QCoro::Task<QList<PortInfo>> OpenPorts::getPorts(CommandSSHManager &manager, Server server)
{
    QList<PortInfo> ports;
    for (const bool useNetstat : {false, true}) {
        const CommandResult result = (co_await manager.executeSSHCommand(GetPortsCommand(useNetstat), server)).result;
        if (result.succeeded() && !Text::trimmed(result.output).empty()) {
            ports = PortParser::parsePorts(result.output, !useNetstat);
        }
        if (!ports.isEmpty()) {
            break;
        }
    }
    co_return ports;
}
