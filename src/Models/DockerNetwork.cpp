#include "Models/DockerNetwork.h"

#include "Models/Json/Record.h"

template<>
struct Json::Fields<DockerNetwork> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(DockerNetwork, id),         JSON_FIELD(DockerNetwork, name),
                   JSON_FIELD(DockerNetwork, driver),     JSON_FIELD(DockerNetwork, scope),
                   JSON_FIELD(DockerNetwork, created),    JSON_FIELD(DockerNetwork, isInternal),
                   JSON_FIELD(DockerNetwork, attachable), JSON_FIELD(DockerNetwork, containers)};
};

JSON_RECORD(DockerNetwork)
