#pragma once

#include "Models/RecordId.h"

#include <QString>

/// One line of the remote /etc/passwd (passwd(5)).
struct UserInfo {
    QUuid id = RecordId::fresh();
    QString username;
    QString uid;
    QString gid;
    QString fullName;
    QString homeDirectory;
    QString shell;

    qint64 uidInt() const; ///< 0 for text that is no integer
    qint64 gidInt() const; ///< 0 for text that is no integer

    /// A uid below 1000. Text that is no integer is no system user.
    bool isSystemUser() const;

    /// The shell is neither a "nologin" nor a "false".
    bool hasLoginShell() const;

    bool operator==(const UserInfo &) const = default;
};

size_t qHash(const UserInfo &record, size_t seed = 0);
