#pragma once

#include "Models/Server.h"

#include <optional>

class Clock;
class CommandSSHManager;
class ServerStore;

/// One server of the list and what reaches it. The three objects outlive every task that is started with them.
struct MonitoredServer {
    CommandSSHManager &manager;
    ServerStore &store;
    const Clock &clock;
    QUuid id;

    /// The stored record, if it is still there and says that the server is connected.
    std::optional<Server> connected() const;
};
