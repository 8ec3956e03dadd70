#include "Models/PortInfo.h"

#include "Helpers/Text.h"
#include "Models/Json/Record.h"

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<PortInfo> {
    static constexpr auto list = std::tuple{
        JSON_FIELD(PortInfo, id),        JSON_FIELD(PortInfo, protocolType),   JSON_FIELD(PortInfo, localAddress),
        JSON_FIELD(PortInfo, localPort), JSON_FIELD(PortInfo, foreignAddress), JSON_FIELD(PortInfo, foreignPort),
        JSON_FIELD(PortInfo, state),     JSON_FIELD(PortInfo, processName),    JSON_FIELD(PortInfo, pid)};
};

JSON_RECORD(PortInfo)

QString icon(PortCategory category)
{
    switch (category) {
    case PortCategory::Web:
        return u"globe"_s;
    case PortCategory::Ssh:
        return u"terminal"_s;
    case PortCategory::Ftp:
        return u"folder.badge.plus"_s;
    case PortCategory::Database:
        return u"externaldrive"_s;
    case PortCategory::Email:
        return u"envelope"_s;
    case PortCategory::Dns:
        return u"network"_s;
    case PortCategory::Ntp:
        return u"clock"_s;
    case PortCategory::System:
        return u"gear"_s;
    case PortCategory::Registered:
        return u"app.badge"_s;
    case PortCategory::Dynamic:
        return u"shuffle"_s;
    case PortCategory::Other:
        return u"circle"_s;
    }
    return {};
}

SemanticColor color(PortCategory category)
{
    switch (category) {
    case PortCategory::Web:
        return SemanticColor::Blue;
    case PortCategory::Ssh:
        return SemanticColor::Green;
    case PortCategory::Ftp:
        return SemanticColor::Orange;
    case PortCategory::Database:
        return SemanticColor::Purple;
    case PortCategory::Email:
        return SemanticColor::Red;
    case PortCategory::Dns:
        return SemanticColor::Cyan;
    case PortCategory::Ntp:
        return SemanticColor::Yellow;
    case PortCategory::System:
        return SemanticColor::Gray;
    case PortCategory::Registered:
        return SemanticColor::Indigo;
    case PortCategory::Dynamic:
        return SemanticColor::Mint;
    case PortCategory::Other:
        return SemanticColor::Secondary;
    }
    return SemanticColor::Secondary;
}

qint64 PortInfo::localPortInt() const
{
    return Text::decimalInteger(localPort).value_or(0);
}

PortCategory PortInfo::portCategory() const
{
    const std::optional<qint64> port = Text::decimalInteger(localPort);
    if (!port) {
        return PortCategory::Other;
    }
    switch (*port) {
    case 80:
    case 443:
    case 8080:
    case 8443:
        return PortCategory::Web;
    case 22:
        return PortCategory::Ssh;
    case 21:
        return PortCategory::Ftp;
    case 3306:
    case 5432:
    case 6379:
        return PortCategory::Database;
    case 25:
    case 110:
    case 143:
    case 465:
    case 587:
    case 993:
    case 995:
        return PortCategory::Email;
    case 53:
        return PortCategory::Dns;
    case 123:
        return PortCategory::Ntp;
    default:
        break;
    }
    if (*port >= 1 && *port <= 1023) {
        return PortCategory::System;
    }
    return *port >= 1024 && *port <= 49151 ? PortCategory::Registered : PortCategory::Dynamic;
}
