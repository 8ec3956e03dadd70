#include "Models/Server.h"

#include "Models/Json/Record.h"
#include "Models/Json/SystemInfoFields.h"

/// Fields with a stored default are younger than the first stored lists.
template<>
struct Json::Fields<Server> {
    static constexpr auto list = std::tuple{JSON_FIELD(Server, id),
                                            JSON_FIELD(Server, name),
                                            JSON_FIELD(Server, host),
                                            JSON_FIELD(Server, port),
                                            JSON_FIELD(Server, username),
                                            JSON_FIELD(Server, authMethod),
                                            JSON_FIELD(Server, privateKeyPath),
                                            JSON_FIELD_WITH_DEFAULT(Server, isConnected),
                                            JSON_FIELD(Server, lastConnected),
                                            JSON_FIELD(Server, systemInfo),
                                            JSON_FIELD_WITH_DEFAULT(Server, labels),
                                            JSON_FIELD_WITH_DEFAULT(Server, packageManager),
                                            JSON_FIELD_WITH_DEFAULT(Server, useSudo),
                                            JSON_FIELD_WITH_DEFAULT(Server, containerRuntime),
                                            JSON_FIELD_WITH_DEFAULT(Server, forwardAgent)};
};

JSON_RECORD(Server)
JSON_INSTANTIATE(QList<Server>)
