#pragma once

#include "Models/PortInfo.h"
#include "Models/Server.h"

#include <QCoroTask>
#include <QList>

class CommandSSHManager;

namespace OpenPorts
{

/// The sockets that the server's ss tells, or where that tells none its netstat; empty when neither does, for
/// whatever reason. `manager` outlives the task.
QCoro::Task<QList<PortInfo>> getPorts(CommandSSHManager &manager, Server server);

} // namespace OpenPorts
