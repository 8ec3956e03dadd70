// Every record's JSON. What is read must be written and read back as the same record, with the same hash and the same
// text; and whatever the display logic is given, it must come to an end.

#include "Check.h"

#include "Models/CronJob.h"
#include "Models/DockerContainer.h"
#include "Models/DockerImage.h"
#include "Models/DockerNetwork.h"
#include "Models/DockerVolume.h"
#include "Models/FileInfo.h"
#include "Models/Json.h"
#include "Models/Metrics.h"
#include "Models/PackageInfo.h"
#include "Models/PortInfo.h"
#include "Models/ProcessInfo.h"
#include "Models/Server.h"
#include "Models/ServiceInfo.h"
#include "Models/UserInfo.h"

#include <nlohmann/json.hpp>

namespace
{

template<class Record>
std::optional<Record> roundTrip(QByteArrayView input)
{
    QString failure;
    std::optional<Record> record = fromJson<Record>(input, &failure);
    FUZZ_CHECK(record.has_value() == failure.isEmpty());
    if (record) {
        // Whatever was taken is JSON to the library's own reader too.
        FUZZ_CHECK(nlohmann::json::accept(input.data(), input.data() + input.size()));
        const QByteArray written = toJson(*record);
        FUZZ_CHECK(!written.isEmpty());
        const std::optional<Record> again = fromJson<Record>(written, &failure);
        FUZZ_CHECK(again.has_value());
        FUZZ_CHECK(*again == *record);
        FUZZ_CHECK(toJson(*again) == written);
    }
    return record;
}

template<class Record>
std::optional<Record> hashed(QByteArrayView input)
{
    std::optional<Record> record = roundTrip<Record>(input);
    if (record) {
        FUZZ_CHECK(qHash(*record, 1) == qHash(*fromJson<Record>(toJson(*record)), 1));
    }
    return record;
}

void display(QByteArrayView input)
{
    if (const auto process = hashed<ProcessInfo>(input)) {
        FUZZ_CHECK(process->memoryMB().endsWith(u" MB"));
        static_cast<void>(process->pidInt());
        static_cast<void>(process->cpuDouble());
    }
    if (const auto file = hashed<FileInfo>(input)) {
        FUZZ_CHECK(!file->icon().isEmpty());
        static_cast<void>(file->displaySize());
    }
    if (const auto image = hashed<DockerImage>(input)) {
        FUZZ_CHECK(image->sizeInBytes() >= 0);
        static_cast<void>(image->displayName());
    }
    if (const auto job = hashed<CronJob>(input)) {
        static_cast<void>(job->displaySchedule());
    }
    if (const auto port = hashed<PortInfo>(input)) {
        FUZZ_CHECK(!icon(port->portCategory()).isEmpty());
    }
    if (const auto container = hashed<DockerContainer>(input)) {
        static_cast<void>(container->statusColor());
    }
    if (const auto gpus = hashed<GPUMetrics>(input)) {
        FUZZ_CHECK(std::is_sorted(gpus->gpus.begin(), gpus->gpus.end(),
                                  [](const GPUDevice &a, const GPUDevice &b) { return a.index < b.index; }));
    }
    if (const auto user = hashed<UserInfo>(input)) {
        FUZZ_CHECK(!user->isSystemUser() || user->uidInt() < 1000);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView input(data, static_cast<qsizetype>(size));
    display(input);
    hashed<Server>(input);
    roundTrip<QList<Server>>(input);
    hashed<SystemInfo>(input);
    hashed<DiskInfo>(input);
    hashed<StorageDevice>(input);
    hashed<StorageDeviceList>(input);
    hashed<ServiceInfo>(input);
    hashed<DockerContainerDetail>(input);
    hashed<DockerVolume>(input);
    hashed<DockerNetwork>(input);
    hashed<PackageInfo>(input);
    hashed<MetricsSnapshot>(input);
    hashed<MemoryMetrics>(input);
    hashed<DiskMetrics>(input);
    hashed<NetworkInterface>(input);
    hashed<NetworkMetrics>(input);
    hashed<LoadAverage>(input);
    hashed<DiskIODevice>(input);
    hashed<DiskIOMetrics>(input);
    hashed<GPUDevice>(input);
    return 0;
}
