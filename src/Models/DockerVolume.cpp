#include "Models/DockerVolume.h"

#include "Models/Json/Record.h"

template<>
struct Json::Fields<DockerVolume> {
    static constexpr auto list = std::tuple{JSON_FIELD(DockerVolume, id),      JSON_FIELD(DockerVolume, name),
                                            JSON_FIELD(DockerVolume, driver),  JSON_FIELD(DockerVolume, mountpoint),
                                            JSON_FIELD(DockerVolume, created), JSON_FIELD(DockerVolume, scope),
                                            JSON_FIELD(DockerVolume, labels)};
};

JSON_RECORD(DockerVolume)
