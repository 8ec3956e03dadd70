#include "Services/Users/UserParser.h"

#include "Services/Parsers/SharedText.h"

namespace
{

enum Field : size_t { Name, Uid = 2, Gid, Comment, Home, Shell, FieldCount };

} // namespace

QList<UserInfo> UserParser::parseSystemUsers(QByteArrayView from)
{
    QList<UserInfo> users;
    SharedText shell;
    for (const QByteArrayView line : Text::lines(from)) {
        const auto fields = Text::firstPieces<FieldCount>(Text::trimmed(line), ':');
        if (!fields.isComplete()) {
            continue;
        }
        users.append({.username = Text::fromUtf8(fields.field[Name]),
                      .uid = Text::fromUtf8(fields.field[Uid]),
                      .gid = Text::fromUtf8(fields.field[Gid]),
                      .fullName = Text::fromUtf8(fields.field[Comment]),
                      .homeDirectory = Text::fromUtf8(fields.field[Home]),
                      .shell = shell.of(fields.field[Shell])});
        if (users.size() == kMostUsers) {
            break;
        }
    }
    return users;
}
