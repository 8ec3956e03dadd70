#pragma once

#include "Models/Server.h"
#include "Services/Children/ChildProcess.h"

#include <QString>
#include <QStringList>

/// What one login with an echo told.
struct SSHTestResult {
    bool success = false; ///< exit status 0 and the marker in the output
    QString error;        ///< the client's standard error, or why it did not start
    bool isHostKeyError = false;
    bool isNewHostKeyError = false;     ///< no key of this host is known
    bool isChangedHostKeyError = false; ///< another key is known
    bool isPassphraseError = false;     ///< the private key is locked
    bool isPasswordMissing = false;     ///< no login was made: there was no password to try
    bool isKeychainDenied = false;      ///< for the keychain did not give it away
    bool hasNotRun = false;             ///< no client ran; `error` tells why

    bool operator==(const SSHTestResult &) const = default;
};

namespace ConnectionTest
{

/// The shell line of the test.
QString command();

/// Sorts an ended run by the client's known phrases.
SSHTestResult classify(const ChildOutcome &outcome, AuthMethod method);

/// What went wrong, in one line of the client's standard error: the last that names a known reason, else the last
/// with words on it. Empty when it said nothing.
QString reason(const QString &error);

/// Whether the client got as far as to a server that did not accept the login.
bool tellsRefusedLogin(const QString &error);

/// `arguments` without the options that say how host keys are checked.
QStringList withoutHostKeyOptions(const QStringList &arguments);

/// `arguments` with `options` (each becoming `-o` and itself) before the destination.
QStringList withOptionsBeforeDestination(QStringList arguments, const QStringList &options);

} // namespace ConnectionTest
