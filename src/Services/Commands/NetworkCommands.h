#pragma once

#include "Services/Commands/MetricScripts.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about the network.

/// The counters of each interface, for MetricsParser.
class GetNetworkMetricsCommand : public BaseSSHCommand
{
public:
    GetNetworkMetricsCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get network interface metrics"),
                          .category = CommandCategory::Network,
                          .commandString = MetricScripts::networkInterfaces()})
    {
    }
};

/// The listening sockets with their processes, of ss(8) or of netstat(8).
class GetPortsCommand : public BaseSSHCommand
{
public:
    explicit GetPortsCommand(bool useNetstat)
        : BaseSSHCommand({.description = QStringLiteral("Get open ports"),
                          .category = CommandCategory::Network,
                          .commandString = useNetstat ? QStringLiteral("netstat -tulpn 2>/dev/null")
                                                      : QStringLiteral("ss -tulpn 2>/dev/null")})
        , useNetstat(useNetstat)
    {
    }

    const bool useNetstat;
};
