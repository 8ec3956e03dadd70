#pragma once

#include <QMap>
#include <QString>

/// One volume of a container runtime.
struct DockerVolume {
    QString id;
    QString name;
    QString driver;
    QString mountpoint;
    QString created;
    QString scope;
    QMap<QString, QString> labels;

    bool operator==(const DockerVolume &) const = default;
};

size_t qHash(const DockerVolume &record, size_t seed = 0);
