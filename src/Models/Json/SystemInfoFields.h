#pragma once

#include "Models/Json/Fields.h"
#include "Models/SystemInfo.h"

// Shared by the records that hold these.

template<>
struct Json::Fields<DiskInfo> {
    static constexpr auto list = std::tuple{JSON_FIELD(DiskInfo, filesystem), JSON_FIELD(DiskInfo, size),
                                            JSON_FIELD(DiskInfo, used),       JSON_FIELD(DiskInfo, available),
                                            JSON_FIELD(DiskInfo, usePercent), JSON_FIELD(DiskInfo, mountPoint)};
};

/// The keys are those of `lsblk --json`.
template<>
struct Json::Fields<StorageDevice> {
    static constexpr auto list = std::tuple{JSON_FIELD(StorageDevice, name),
                                            JSON_FIELD_AS(StorageDevice, "maj:min", majorMinor),
                                            JSON_FIELD_AS(StorageDevice, "rm", removable),
                                            JSON_FIELD(StorageDevice, size),
                                            JSON_FIELD_AS(StorageDevice, "ro", readonly),
                                            JSON_FIELD(StorageDevice, type),
                                            JSON_FIELD(StorageDevice, mountpoints)};
};

template<>
struct Json::Fields<StorageDeviceList> {
    static constexpr auto list = std::tuple{JSON_FIELD(StorageDeviceList, blockdevices)};
};

template<>
struct Json::Fields<SystemInfo> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(SystemInfo, hostname),      JSON_FIELD(SystemInfo, osVersion),
                   JSON_FIELD(SystemInfo, kernel),        JSON_FIELD(SystemInfo, uptime),
                   JSON_FIELD(SystemInfo, cpuInfo),       JSON_FIELD(SystemInfo, cpuCount),
                   JSON_FIELD(SystemInfo, memoryTotal),   JSON_FIELD(SystemInfo, diskUsage),
                   JSON_FIELD(SystemInfo, loadAverage),   JSON_FIELD(SystemInfo, lastUpdated),
                   JSON_FIELD(SystemInfo, storageDevices)};
};
