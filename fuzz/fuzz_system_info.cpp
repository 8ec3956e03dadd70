// SystemInfoParser. No fact is longer than the output, and no disk row is made of nothing.

#include "Check.h"

#include "Services/Parsers/SystemInfoParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
    const SystemInfo info = SystemInfoParser::parse(output, now);
    FUZZ_CHECK(info.lastUpdated == now);
    FUZZ_CHECK(!info.storageDevices);
    for (const QString &fact : {info.hostname, info.osVersion, info.kernel, info.uptime, info.cpuInfo, info.cpuCount,
                                info.memoryTotal, info.loadAverage}) {
        FUZZ_CHECK(fact.size() <= output.size());
        FUZZ_CHECK(!fact.contains(u'\n'));
    }
    for (const QList<DiskInfo> &disks : {info.diskUsage, SystemInfoParser::parseDiskUsage(output)}) {
        FUZZ_CHECK(disks.size() <= output.size() / 11); // six fields of one character and the blanks between them
        for (const DiskInfo &disk : disks) {
            for (const QString &field :
                 {disk.filesystem, disk.size, disk.used, disk.available, disk.usePercent, disk.mountPoint}) {
                FUZZ_CHECK(!field.contains(u' ') && !field.contains(u'\n'));
            }
        }
    }
    return 0;
}
