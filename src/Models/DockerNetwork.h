#pragma once

#include <QString>
#include <QStringList>

/// One network of a container runtime.
struct DockerNetwork {
    QString id;
    QString name;
    QString driver;
    QString scope;
    QString created;
    bool isInternal = false;
    bool attachable = false;
    QStringList containers;

    bool operator==(const DockerNetwork &) const = default;
};

size_t qHash(const DockerNetwork &record, size_t seed = 0);
