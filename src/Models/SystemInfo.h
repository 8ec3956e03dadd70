#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

/// One row of the remote disk usage listing, as printed.
struct DiskInfo {
    QString filesystem;
    QString size;
    QString used;
    QString available;
    QString usePercent;
    QString mountPoint;

    bool operator==(const DiskInfo &) const = default;
};

/// One block device as `lsblk --json` prints it (util-linux 2.37 or newer, which knows "mountpoints").
struct StorageDevice {
    QString name;
    QString majorMinor;     ///< JSON key "maj:min"
    bool removable = false; ///< JSON key "rm"
    QString size;
    bool readonly = false; ///< JSON key "ro"
    QString type;
    QList<std::optional<QString>> mountpoints; ///< a JSON null stays an absent entry

    bool operator==(const StorageDevice &) const = default;
};

/// The top level object of that listing.
struct StorageDeviceList {
    QList<StorageDevice> blockdevices;

    bool operator==(const StorageDeviceList &) const = default;
};

/// Facts about a server. All texts stand as the server printed them.
struct SystemInfo {
    QString hostname;
    QString osVersion;
    QString kernel;
    QString uptime;
    QString cpuInfo;
    QString cpuCount;
    QString memoryTotal;
    QList<DiskInfo> diskUsage;
    QString loadAverage;
    QDateTime lastUpdated; ///< UTC
    std::optional<QList<StorageDevice>> storageDevices;

    bool operator==(const SystemInfo &) const = default;
};

size_t qHash(const DiskInfo &record, size_t seed = 0);
size_t qHash(const StorageDevice &record, size_t seed = 0);
size_t qHash(const StorageDeviceList &record, size_t seed = 0);
size_t qHash(const SystemInfo &record, size_t seed = 0);
