#pragma once

#include "Models/UserInfo.h"

#include <QByteArrayView>
#include <QList>

/// Reads what ListUsersCommand prints: passwd(5), seven fields between colons.
struct UserParser {
    /// More accounts than this are not read.
    static constexpr qsizetype kMostUsers = 200'000;

    /// All accounts in the order of the file; lines of fewer than seven fields are passed over. `fullName` is the
    /// whole comment field, and nothing of the password field is kept.
    static QList<UserInfo> parseSystemUsers(QByteArrayView from);
};
