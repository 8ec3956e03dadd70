#include "Models/PackageInfo.h"

#include "Models/Json/Record.h"

template<>
struct Json::Fields<PackageInfo> {
    static constexpr auto list = std::tuple{
        JSON_FIELD(PackageInfo, id),          JSON_FIELD(PackageInfo, name),        JSON_FIELD(PackageInfo, version),
        JSON_FIELD(PackageInfo, description), JSON_FIELD(PackageInfo, isInstalled), JSON_FIELD(PackageInfo, size)};
};

JSON_RECORD(PackageInfo)
