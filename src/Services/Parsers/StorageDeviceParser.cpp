#include "Services/Parsers/StorageDeviceParser.h"

#include "Models/Json.h"

#include <cstdio>

QList<StorageDevice> StorageDeviceParser::parse(QByteArrayView output)
{
    QString failure;
    std::optional<StorageDeviceList> list = fromJson<StorageDeviceList>(output, &failure);
    if (!list) {
        std::printf("Failed to parse storage devices: %s\n", qUtf8Printable(failure));
        std::fflush(stdout);
        return {};
    }
    return std::move(list->blockdevices);
}
