#include "Services/Monitoring/MonitoredServer.h"

#include "Models/ServerStore.h"

std::optional<Server> MonitoredServer::connected() const
{
    std::optional<Server> server = store.server(id);
    return server && server->isConnected ? server : std::nullopt;
}
