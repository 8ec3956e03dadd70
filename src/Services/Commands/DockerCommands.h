#pragma once

#include "Helpers/ShellQuote.h"
#include "Services/Commands/SSHCommand.h"

#include <QMap>
#include <QStringList>

/// The remote lines about containers, for either runtime. An id may be a name.

namespace DockerLines
{

inline QString runtimeName(ContainerRuntime runtime)
{
    return runtime == ContainerRuntime::Podman ? QStringLiteral("Podman") : QStringLiteral("Docker");
}

/// Words as DockerRunContainerCommand takes them.
inline QString joinedWords(const QStringList &words)
{
    QStringList shell;
    for (const QString &word : words) {
        const bool isQuoted = word.contains(u' ') || word.contains(u'$') || word.contains(u'*');
        shell.append(isQuoted ? shellQuoted(word) : word);
    }
    return shell.join(u' ');
}

} // namespace DockerLines

/// All containers, one JSON object a line.
class DockerListContainersCommand : public BaseSSHCommand
{
public:
    explicit DockerListContainersCommand(ContainerRuntime runtime)
        : BaseSSHCommand({.description = QStringLiteral("List %1 containers").arg(DockerLines::runtimeName(runtime)),
                          .category = CommandCategory::Docker,
                          .commandString = QStringLiteral("%1 ps -a --format '{{json .}}'").arg(rawText(runtime)),
                          .timeout = 30.0})
        , runtime(runtime)
    {
    }

    const ContainerRuntime runtime;
};

/// Starts a stopped container.
class DockerStartContainerCommand : public BaseSSHCommand
{
public:
    DockerStartContainerCommand(const QString &containerId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Start %1 container '%2'").arg(DockerLines::runtimeName(runtime), containerId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 start %2").arg(rawText(runtime), shellWord(containerId)),
               .isReversible = true})
        , containerId(containerId)
        , runtime(runtime)
    {
    }

    const QString containerId;
    const ContainerRuntime runtime;
};

/// Stops a container.
class DockerStopContainerCommand : public BaseSSHCommand
{
public:
    DockerStopContainerCommand(const QString &containerId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Stop %1 container '%2'").arg(DockerLines::runtimeName(runtime), containerId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 stop %2").arg(rawText(runtime), shellWord(containerId)),
               .isReversible = true})
        , containerId(containerId)
        , runtime(runtime)
    {
    }

    const QString containerId;
    const ContainerRuntime runtime;
};

/// Restarts a container.
class DockerRestartContainerCommand : public BaseSSHCommand
{
public:
    DockerRestartContainerCommand(const QString &containerId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Restart %1 container '%2'").arg(DockerLines::runtimeName(runtime), containerId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 restart %2").arg(rawText(runtime), shellWord(containerId))})
        , containerId(containerId)
        , runtime(runtime)
    {
    }

    const QString containerId;
    const ContainerRuntime runtime;
};

/// Removes a stopped container.
class DockerRemoveContainerCommand : public BaseSSHCommand
{
public:
    DockerRemoveContainerCommand(const QString &containerId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Remove %1 container '%2'").arg(DockerLines::runtimeName(runtime), containerId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 rm %2").arg(rawText(runtime), shellWord(containerId))})
        , containerId(containerId)
        , runtime(runtime)
    {
    }

    const QString containerId;
    const ContainerRuntime runtime;
};

/// All that the runtime knows of a container, as a JSON array of one object.
class DockerInspectContainerCommand : public BaseSSHCommand
{
public:
    DockerInspectContainerCommand(const QString &containerId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Inspect %1 container '%2'").arg(DockerLines::runtimeName(runtime), containerId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 inspect %2").arg(rawText(runtime), shellWord(containerId))})
        , containerId(containerId)
        , runtime(runtime)
    {
    }

    const QString containerId;
    const ContainerRuntime runtime;
};

/// All images; the first and the fourth column are the id.
class DockerListImagesCommand : public BaseSSHCommand
{
public:
    explicit DockerListImagesCommand(ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description = QStringLiteral("List %1 images").arg(DockerLines::runtimeName(runtime)),
               .category = CommandCategory::Docker,
               .commandString =
                   QStringLiteral(
                       "%1 images --format '{{.ID}}|{{.Repository}}|{{.Tag}}|{{.ID}}|{{.CreatedAt}}|{{.Size}}'")
                       .arg(rawText(runtime)),
               .timeout = 30.0})
        , runtime(runtime)
    {
    }

    const ContainerRuntime runtime;
};

/// Removes an image that no container uses.
class DockerRemoveImageCommand : public BaseSSHCommand
{
public:
    DockerRemoveImageCommand(const QString &imageId, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description = QStringLiteral("Remove %1 image '%2'").arg(DockerLines::runtimeName(runtime), imageId),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 rmi %2").arg(rawText(runtime), shellWord(imageId))})
        , imageId(imageId)
        , runtime(runtime)
    {
    }

    const QString imageId;
    const ContainerRuntime runtime;
};

/// All volumes.
class DockerListVolumesCommand : public BaseSSHCommand
{
public:
    explicit DockerListVolumesCommand(ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description = QStringLiteral("List %1 volumes").arg(DockerLines::runtimeName(runtime)),
               .category = CommandCategory::Docker,
               .commandString =
                   QStringLiteral("%1 volume ls --format '{{.Name}}|{{.Driver}}|{{.Scope}}'").arg(rawText(runtime)),
               .timeout = 30.0})
        , runtime(runtime)
    {
    }

    const ContainerRuntime runtime;
};

/// All networks, in five columns; podman knows neither the fourth nor the fifth.
class DockerListNetworksCommand : public BaseSSHCommand
{
public:
    explicit DockerListNetworksCommand(ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description = QStringLiteral("List %1 networks").arg(DockerLines::runtimeName(runtime)),
               .category = CommandCategory::Docker,
               .commandString =
                   rawText(runtime) +
                   (runtime == ContainerRuntime::Podman
                        ? QStringLiteral(" network ls --format '{{.ID}}|{{.Name}}|{{.Driver}}||'")
                        : QStringLiteral(
                              " network ls --format '{{.ID}}|{{.Name}}|{{.Driver}}|{{.Scope}}|{{.CreatedAt}}'")),
               .timeout = 30.0})
        , runtime(runtime)
    {
    }

    const ContainerRuntime runtime;
};

/// Removes a network that no container uses.
class DockerRemoveNetworkCommand : public BaseSSHCommand
{
public:
    DockerRemoveNetworkCommand(const QString &networkName, ContainerRuntime runtime)
        : BaseSSHCommand(
              {.description =
                   QStringLiteral("Remove %1 network '%2'").arg(DockerLines::runtimeName(runtime), networkName),
               .category = CommandCategory::Docker,
               .commandString = QStringLiteral("%1 network rm %2").arg(rawText(runtime), shellWord(networkName))})
        , networkName(networkName)
        , runtime(runtime)
    {
    }

    const QString networkName;
    const ContainerRuntime runtime;
};

/// Makes and starts a container from words that the operator typed as shell text, the runtime's name first. A word
/// with a blank, $ or * in it is quoted; every other one stands as it was typed.
class DockerRunContainerCommand : public BaseSSHCommand
{
public:
    /// A published port, and a folder of the server that the container sees.
    struct PortMapping {
        int host = 0;
        int container = 0;
    };

    struct VolumeMapping {
        QString host;
        QString container;
    };

    DockerRunContainerCommand(const QStringList &commandArgs, ContainerRuntime runtime)
        : BaseSSHCommand({.description = QStringLiteral("Run ") + DockerLines::runtimeName(runtime) +
                                         QStringLiteral(" container"),
                          .category = CommandCategory::Docker,
                          .commandString = DockerLines::joinedWords(commandArgs) + QStringLiteral(" 2>&1")})
        , commandArgs(commandArgs)
        , runtime(runtime)
        , imageName(commandArgs.isEmpty() ? QStringLiteral("unknown") : commandArgs.last())
        , detached(commandArgs.contains(QStringLiteral("-d")))
    {
    }

    const QStringList commandArgs;
    const ContainerRuntime runtime;
    const QString imageName;
    const std::optional<QString> containerName = std::nullopt;
    const QList<PortMapping> ports = {};
    const QMap<QString, QString> envVars = {};
    const QList<VolumeMapping> volumes = {};
    const bool detached;
    const std::optional<QString> restartPolicy = std::nullopt;
};

/// Where the docker client is.
class WhichDockerCommand : public BaseSSHCommand
{
public:
    WhichDockerCommand()
        : BaseSSHCommand({.description = QStringLiteral("Find Docker executable"),
                          .category = CommandCategory::Docker,
                          .commandString = QStringLiteral("which docker")})
    {
    }
};

/// Whether the docker daemon runs: prints "active" if it does.
class DockerServiceStatusCommand : public BaseSSHCommand
{
public:
    DockerServiceStatusCommand()
        : BaseSSHCommand({.description = QStringLiteral("Check Docker service status"),
                          .category = CommandCategory::Docker,
                          .commandString = QStringLiteral("systemctl is-active docker")})
    {
    }
};

/// All containers in six columns, for a runtime that knows no {{json .}}.
inline CustomCommand dockerFallbackListing(ContainerRuntime runtime)
{
    return {
        rawText(runtime) +
            QStringLiteral(" ps -a --format '{{.ID}}|{{.Names}}|{{.Image}}|{{.Status}}|{{.Ports}}|{{.CreatedAt}}'"),
        QStringLiteral("List containers with fallback format"), CommandCategory::Docker};
}

/// What a container wrote, of both its streams: the last `tail` lines, or all of them when that is below 1.
inline CustomCommand dockerContainerLogs(const QString &containerId, qint64 tail, bool showsTimestamps,
                                         ContainerRuntime runtime)
{
    return {rawText(runtime) + QStringLiteral(" logs") + (showsTimestamps ? QStringLiteral(" -t") : QString()) +
                (tail >= 1 ? QStringLiteral(" --tail ") + QString::number(tail) : QString()) + u' ' +
                shellWord(containerId) + QStringLiteral(" 2>&1"),
            QStringLiteral("Get Docker container logs"), CommandCategory::Docker};
}

/// One reading of a container's load and all that the runtime knows of it, each between two marks.
inline CustomCommand dockerDetailsAndStats(const QString &containerId, ContainerRuntime runtime)
{
    const QString program = rawText(runtime);
    const QString id = shellWord(containerId);
    const QStringList lines{
        QStringLiteral(R"(echo "===STATS_START===")"),
        program +
            QStringLiteral(" stats --no-stream --format "
                           "'{{.CPUPerc}}|{{.MemUsage}}|{{.MemPerc}}|{{.NetIO}}|{{.BlockIO}}|{{.PIDs}}' ") +
            id + QStringLiteral(R"( 2>/dev/null || echo "STATS_ERROR")"),
        QStringLiteral(R"(echo "===STATS_END===")"),
        QStringLiteral(R"(echo "===INSPECT_START===")"),
        program + QStringLiteral(" inspect ") + id + QStringLiteral(R"( 2>/dev/null || echo "INSPECT_ERROR")"),
        QStringLiteral(R"(echo "===INSPECT_END===")"),
    };
    return {lines.join(u'\n'), QStringLiteral("Get Docker container details and stats combined"),
            CommandCategory::Docker};
}
