#pragma once

#include "Models/Server.h"

#include <QCoroTask>
#include <QString>
#include <optional>

/// What an error text of ssh tells about a host key.
struct HostKeyInfo {
    std::optional<int> knownHostsLine;  ///< counted from 1
    std::optional<QString> keyType;     ///< "ED25519" and the like
    std::optional<QString> fingerprint; ///< "SHA256:..." in base64

    bool operator==(const HostKeyInfo &) const = default;
};

/// Reads the message that ssh prints about an unknown or changed key (sshconnect.c). Anything may be missing.
HostKeyInfo extractHostKeyInfo(const QString &error);

/// What the operator is told about a key that could not be verified, as plain text.
struct HostKeyConflict {
    QString title;
    QString body;    ///< ends with the sentence that leads to the command
    QString command; ///< the shell line that removes the old key
    QString hint;    ///< what to do after the command, and the line to remove by hand if it is known

    bool operator==(const HostKeyConflict &) const = default;
};

HostKeyConflict describeHostKeyConflict(const Server &server, const QString &error);

bool tellsNewHostKey(const QString &error);
bool tellsChangedHostKey(const QString &error);

/// Asks the operator. Implemented by a dialog, and by a script in tests.
class HostKeyPrompt
{
public:
    virtual ~HostKeyPrompt() = default;

    /// True when the operator wants the connection tried again. Resumes also when the window goes away: false.
    virtual QCoro::Task<bool> askToRetry(HostKeyConflict conflict) = 0;
};
