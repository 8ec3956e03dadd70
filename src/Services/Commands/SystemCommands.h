#pragma once

#include "Services/Commands/MetricScripts.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about the server as a whole.

/// The facts for SystemInfoParser: one "=== NAME ===" heading a section, and under it what the server's own tools
/// print. Each section has a way for systems that lack the first tool.
class SystemInfoCommand : public BaseSSHCommand
{
public:
    SystemInfoCommand()
        : BaseSSHCommand(
              {.description = QStringLiteral("Get system information"),
               .category = CommandCategory::System,
               .commandString = QStringLiteral(
                   R"sh(sh -c 'echo "=== HOSTNAME ===" && hostname)sh"
                   R"sh( && echo "=== OS ===" && (if command -v lsb_release >/dev/null 2>&1; then lsb_release )sh"
                   R"sh(-d | cut -f2; elif [ -f /etc/os-release ]; then grep "^PRETTY_NAME=" /etc/os-release | )sh"
                   R"sh(cut -d"=" -f2- | tr -d "\""; elif [ -f /etc/centos-release ]; then cat )sh"
                   R"sh(/etc/centos-release; elif [ -f /etc/redhat-release ]; then cat /etc/redhat-release; )sh"
                   R"sh(elif [ -f /etc/system-release ]; then cat /etc/system-release; else uname -s; fi))sh"
                   R"sh( && echo "=== KERNEL ===" && uname -r)sh"
                   R"sh( && echo "=== UPTIME ===" && (uptime -p 2>/dev/null || uptime))sh"
                   R"sh( && echo "=== CPU ===" && (lscpu 2>/dev/null | grep "Model name" | cut -d":" -f2 | )sh"
                   R"sh(xargs || grep "model name" /proc/cpuinfo 2>/dev/null | head -1 | cut -d":" -f2 | xargs )sh"
                   R"sh(|| echo "Unknown CPU"))sh"
                   R"sh( && echo "=== CPU_COUNT ===" && (nproc 2>/dev/null || sysctl -n hw.ncpu 2>/dev/null || )sh"
                   R"sh(grep -c processor /proc/cpuinfo))sh"
                   R"sh( && echo "=== MEMORY ===" && (free -h 2>/dev/null | grep "Mem:" | awk "{print \$2}" || )sh"
                   R"sh(echo "Unknown"))sh"
                   R"sh( && echo "=== LOAD ===" && (cat /proc/loadavg 2>/dev/null | cut -d" " -f1,2,3 || uptime )sh"
                   R"sh(2>/dev/null | sed "s/.*load average: //" || echo "0 0 0"))sh"
                   R"sh( && echo "=== DISK ===" && df -h 2>/dev/null | grep -v "^Filesystem"')sh")})
    {
    }
};

/// The block devices as the JSON of lsblk(8), for StorageDeviceParser.
class StorageDevicesCommand : public BaseSSHCommand
{
public:
    StorageDevicesCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get storage devices information"),
                          .category = CommandCategory::System,
                          .commandString = QStringLiteral(
                              R"sh(sh -c 'command -v lsblk >/dev/null 2>&1 && lsblk -l --json || echo )sh"
                              R"sh("{\"blockdevices\":[]}"')sh")})
    {
    }
};

/// Whether sudo works without a password: prints SUDO_TEST_OK if it does.
class CheckPasswordlessSudoCommand : public BaseSSHCommand
{
public:
    CheckPasswordlessSudoCommand()
        : BaseSSHCommand({.description = QStringLiteral("Check passwordless sudo"),
                          .category = CommandCategory::System,
                          .commandString = QStringLiteral("sudo -n echo 'SUDO_TEST_OK' 2>&1"),
                          .timeout = 5.0})
    {
    }
};

/// How busy the processors are, in percent.
class GetCPUUsageCommand : public BaseSSHCommand
{
public:
    GetCPUUsageCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get CPU usage percentage"),
                          .category = CommandCategory::System,
                          .commandString = MetricScripts::cpuUsage()})
    {
    }
};

/// Main memory and swap in bytes, of free(1): KEY:number pieces between bars, one line each.
class GetMemoryMetricsCommand : public BaseSSHCommand
{
public:
    GetMemoryMetricsCommand()
        : BaseSSHCommand(
              {.description = QStringLiteral("Get memory metrics"),
               .category = CommandCategory::System,
               .commandString = QStringLiteral(
                   R"sh(free -b | awk 'NR==2{printf "TOTAL:%s|USED:%s|FREE:%s|SHARED:%s|CACHE:%s|AVAILABLE:%s\n", )sh"
                   R"sh($2, $3, $4, $5, $6, $7}' && free -b | awk 'NR==3{printf )sh"
                   R"sh("SWAP_TOTAL:%s|SWAP_USED:%s|SWAP_FREE:%s\n", $2, $3, $4}')sh")})
    {
    }
};

/// The counters of each block device.
class GetDiskIOMetricsCommand : public BaseSSHCommand
{
public:
    GetDiskIOMetricsCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get disk I/O metrics"),
                          .category = CommandCategory::System,
                          .commandString = MetricScripts::diskIO()})
    {
    }
};

/// The graphics processors.
class GetGPUMetricsCommand : public BaseSSHCommand
{
public:
    GetGPUMetricsCommand()
        : BaseSSHCommand({.description = QStringLiteral("Get GPU metrics"),
                          .category = CommandCategory::System,
                          .commandString = MetricScripts::gpus()})
    {
    }
};
