// UserParser. Fields hold neither colons nor line ends.

#include "Check.h"

#include "Services/Users/UserParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    const QList<UserInfo> users = UserParser::parseSystemUsers(output);
    FUZZ_CHECK(users.size() <= output.size() / 6); // the colons of a line
    for (const UserInfo &user : users) {
        for (const QString &text :
             {user.username, user.uid, user.gid, user.fullName, user.homeDirectory, user.shell}) {
            FUZZ_CHECK(!text.contains(u':') && !text.contains(u'\n'));
        }
        FUZZ_CHECK(!user.isSystemUser() || !user.uid.isEmpty());
    }
    return 0;
}
