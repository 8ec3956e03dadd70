#include "Services/Parsers/StorageDeviceParser.h"

#include "Models/Json.h"

#include <cstdio>

namespace
{

// The output from the line on with which the JSON begins: a login script that talks does so before it.
QByteArrayView fromTheBrace(QByteArrayView output)
{
    const qsizetype brace = output.startsWith('{') ? 0 : output.indexOf("\n{") + 1;
    return output.sliced(brace);
}

} // namespace

QList<StorageDevice> StorageDeviceParser::parse(QByteArrayView output)
{
    QString failure;
    std::optional<StorageDeviceList> list = fromJson<StorageDeviceList>(fromTheBrace(output), &failure);
    if (!list) {
        std::printf("Failed to parse storage devices: %s\n", qUtf8Printable(failure));
        std::fflush(stdout);
        return {};
    }
    return std::move(list->blockdevices);
}
