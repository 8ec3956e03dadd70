#include "Models/DockerContainer.h"

#include "Models/Json/Record.h"

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<DockerContainer> {
    static constexpr auto list = std::tuple{JSON_FIELD(DockerContainer, id),    JSON_FIELD(DockerContainer, name),
                                            JSON_FIELD(DockerContainer, image), JSON_FIELD(DockerContainer, status),
                                            JSON_FIELD(DockerContainer, ports), JSON_FIELD(DockerContainer, created),
                                            JSON_FIELD(DockerContainer, size)};
};

template<>
struct Json::Fields<DockerContainerDetail> {
    static constexpr auto list = std::tuple{JSON_FIELD(DockerContainerDetail, id),
                                            JSON_FIELD(DockerContainerDetail, name),
                                            JSON_FIELD(DockerContainerDetail, image),
                                            JSON_FIELD(DockerContainerDetail, status),
                                            JSON_FIELD(DockerContainerDetail, created),
                                            JSON_FIELD(DockerContainerDetail, ports),
                                            JSON_FIELD(DockerContainerDetail, mounts),
                                            JSON_FIELD(DockerContainerDetail, environment),
                                            JSON_FIELD(DockerContainerDetail, networks),
                                            JSON_FIELD(DockerContainerDetail, ipAddress),
                                            JSON_FIELD(DockerContainerDetail, restartPolicy),
                                            JSON_FIELD(DockerContainerDetail, logPath),
                                            JSON_FIELD(DockerContainerDetail, startedAt),
                                            JSON_FIELD(DockerContainerDetail, finishedAt),
                                            JSON_FIELD(DockerContainerDetail, macAddress),
                                            JSON_FIELD(DockerContainerDetail, hostname),
                                            JSON_FIELD(DockerContainerDetail, platform),
                                            JSON_FIELD(DockerContainerDetail, driver),
                                            JSON_FIELD(DockerContainerDetail, logDriver),
                                            JSON_FIELD(DockerContainerDetail, dns)};
};

JSON_RECORD(DockerContainer)
JSON_RECORD(DockerContainerDetail)

SemanticColor DockerContainer::statusColor() const
{
    static constexpr std::array kWords{
        std::pair{"up"_L1, SemanticColor::Green},     std::pair{"exited"_L1, SemanticColor::Red},
        std::pair{"stopped"_L1, SemanticColor::Red},  std::pair{"paused"_L1, SemanticColor::Orange},
        std::pair{"created"_L1, SemanticColor::Gray},
    };
    const QString lowered = status.toLower();
    for (const auto &[word, color] : kWords) {
        if (lowered.contains(word)) {
            return color;
        }
    }
    return SemanticColor::Red;
}
