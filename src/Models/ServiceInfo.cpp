#include "Models/ServiceInfo.h"

#include "Models/Json/Record.h"

template<>
struct Json::Fields<ServiceInfo> {
    static constexpr auto list = std::tuple{JSON_FIELD(ServiceInfo, name), JSON_FIELD(ServiceInfo, status),
                                            JSON_FIELD(ServiceInfo, enabled), JSON_FIELD(ServiceInfo, description)};
};

JSON_RECORD(ServiceInfo)
