#pragma once

#include <QString>

/// One image as the runtime lists it.
struct DockerImage {
    QString id;
    QString repository;
    QString tag;
    QString imageId;
    QString created;
    QString size;

    /// "repository:tag", or the first 12 characters of the image id where the repository is "<none>".
    QString displayName() const;

    /// The size in bytes, for sorting; the units are powers of 1024. 0 for text without an upper-case unit.
    qint64 sizeInBytes() const;

    bool operator==(const DockerImage &) const = default;
};

size_t qHash(const DockerImage &record, size_t seed = 0);
