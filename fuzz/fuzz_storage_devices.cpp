// StorageDeviceParser. What it takes is what the record's JSON takes.

#include "Check.h"

#include "Models/Json.h"
#include "Services/Parsers/StorageDeviceParser.h"

#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return std::freopen("/dev/null", "w", stdout) ? 0 : 1; // each refusal is told on standard output
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    const QList<StorageDevice> devices = StorageDeviceParser::parse(output);
    const auto list = fromJson<StorageDeviceList>(output);
    FUZZ_CHECK(devices == (list ? list->blockdevices : QList<StorageDevice>()));
    FUZZ_CHECK(fromJson<StorageDeviceList>(toJson(StorageDeviceList{devices}))->blockdevices == devices);
    return 0;
}
