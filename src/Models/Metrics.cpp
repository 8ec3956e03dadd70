#include "Models/Metrics.h"

#include "Models/Json/GPUMetricsFields.h"
#include "Models/Json/Record.h"

template<>
struct Json::Fields<MemoryMetrics> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(MemoryMetrics, total),     JSON_FIELD(MemoryMetrics, used),
                   JSON_FIELD(MemoryMetrics, free),      JSON_FIELD(MemoryMetrics, available),
                   JSON_FIELD(MemoryMetrics, cached),    JSON_FIELD(MemoryMetrics, buffers),
                   JSON_FIELD(MemoryMetrics, swapTotal), JSON_FIELD(MemoryMetrics, swapUsed),
                   JSON_FIELD(MemoryMetrics, swapFree)};
};

template<>
struct Json::Fields<DiskMetrics> {
    static constexpr auto list = std::tuple{JSON_FIELD(DiskMetrics, id),
                                            JSON_FIELD(DiskMetrics, filesystem),
                                            JSON_FIELD(DiskMetrics, mountPoint),
                                            JSON_FIELD(DiskMetrics, total),
                                            JSON_FIELD(DiskMetrics, used),
                                            JSON_FIELD(DiskMetrics, available),
                                            JSON_FIELD(DiskMetrics, readBytesPerSec),
                                            JSON_FIELD(DiskMetrics, writeBytesPerSec)};
};

template<>
struct Json::Fields<NetworkInterface> {
    static constexpr auto list = std::tuple{JSON_FIELD(NetworkInterface, id),
                                            JSON_FIELD(NetworkInterface, name),
                                            JSON_FIELD(NetworkInterface, receiveBytesPerSec),
                                            JSON_FIELD(NetworkInterface, transmitBytesPerSec),
                                            JSON_FIELD(NetworkInterface, receivePacketsPerSec),
                                            JSON_FIELD(NetworkInterface, transmitPacketsPerSec),
                                            JSON_FIELD(NetworkInterface, receiveErrors),
                                            JSON_FIELD(NetworkInterface, transmitErrors)};
};

template<>
struct Json::Fields<NetworkMetrics> {
    static constexpr auto list = std::tuple{JSON_FIELD(NetworkMetrics, interfaces)};
};

template<>
struct Json::Fields<LoadAverage> {
    static constexpr auto list = std::tuple{JSON_FIELD(LoadAverage, oneMinute), JSON_FIELD(LoadAverage, fiveMinutes),
                                            JSON_FIELD(LoadAverage, fifteenMinutes)};
};

template<>
struct Json::Fields<DiskIODevice> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(DiskIODevice, deviceName), JSON_FIELD(DiskIODevice, readBytesPerSec),
                   JSON_FIELD(DiskIODevice, writeBytesPerSec)};
};

template<>
struct Json::Fields<DiskIOMetrics> {
    static constexpr auto list = std::tuple{JSON_FIELD(DiskIOMetrics, devices)};
};

template<>
struct Json::Fields<MetricsSnapshot> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(MetricsSnapshot, id),          JSON_FIELD(MetricsSnapshot, timestamp),
                   JSON_FIELD(MetricsSnapshot, cpuUsage),    JSON_FIELD(MetricsSnapshot, memoryUsage),
                   JSON_FIELD(MetricsSnapshot, diskMetrics), JSON_FIELD(MetricsSnapshot, networkMetrics),
                   JSON_FIELD(MetricsSnapshot, loadAverage), JSON_FIELD(MetricsSnapshot, diskIOMetrics),
                   JSON_FIELD(MetricsSnapshot, gpuMetrics)};
};

JSON_RECORD(MemoryMetrics)
JSON_RECORD(DiskMetrics)
JSON_RECORD(NetworkInterface)
JSON_RECORD(NetworkMetrics)
JSON_RECORD(LoadAverage)
JSON_RECORD(DiskIODevice)
JSON_RECORD(DiskIOMetrics)
JSON_RECORD(MetricsSnapshot)

double DiskIOMetrics::totalReadBytesPerSec() const
{
    double total = 0;
    for (const DiskIODevice &device : devices) {
        total += device.readBytesPerSec;
    }
    return total;
}

double DiskIOMetrics::totalWriteBytesPerSec() const
{
    double total = 0;
    for (const DiskIODevice &device : devices) {
        total += device.writeBytesPerSec;
    }
    return total;
}
