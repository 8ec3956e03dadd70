#include "Models/UserInfo.h"

#include "Helpers/Text.h"
#include "Models/Json/Record.h"

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<UserInfo> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(UserInfo, id),   JSON_FIELD(UserInfo, username), JSON_FIELD(UserInfo, uid),
                   JSON_FIELD(UserInfo, gid),  JSON_FIELD(UserInfo, fullName), JSON_FIELD(UserInfo, homeDirectory),
                   JSON_FIELD(UserInfo, shell)};
};

JSON_RECORD(UserInfo)

qint64 UserInfo::uidInt() const
{
    return Text::decimalInteger(uid).value_or(0);
}

qint64 UserInfo::gidInt() const
{
    return Text::decimalInteger(gid).value_or(0);
}

bool UserInfo::isSystemUser() const
{
    static constexpr qint64 kFirstOrdinaryUid = 1000; // UID_MIN of login.defs(5)
    const std::optional<qint64> number = Text::decimalInteger(uid);
    return number && *number < kFirstOrdinaryUid;
}

bool UserInfo::hasLoginShell() const
{
    return !shell.contains("nologin"_L1) && !shell.contains("false"_L1);
}
