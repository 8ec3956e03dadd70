#pragma once

#include "Models/SemanticColor.h"

#include <QString>
#include <QStringList>
#include <optional>

/// One container of either runtime, as its listing prints it.
struct DockerContainer {
    QString id;
    QString name;
    QString image;
    QString status;
    QString ports;
    QString created;
    std::optional<QString> size;

    /// By the first of these words in the status, in any case: "up" green, "exited" or "stopped" red, "paused"
    /// orange, "created" gray; otherwise red.
    SemanticColor statusColor() const;

    bool operator==(const DockerContainer &) const = default;
};

/// What inspecting one container tells.
struct DockerContainerDetail {
    QString id;
    QString name;
    QString image;
    QString status;
    QString created;
    QString ports;
    QString mounts;
    QStringList environment;
    QStringList networks;
    QString ipAddress;
    QString restartPolicy;
    QString logPath;
    QString startedAt;
    QString finishedAt;
    QString macAddress;
    QString hostname;
    QString platform;
    QString driver;
    QString logDriver;
    QStringList dns;

    bool operator==(const DockerContainerDetail &) const = default;
};

size_t qHash(const DockerContainer &record, size_t seed = 0);
size_t qHash(const DockerContainerDetail &record, size_t seed = 0);
