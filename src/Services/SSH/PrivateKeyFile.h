#pragma once

#include <QString>

/// Whether the private key in the file is encrypted, so that using it needs a pass phrase. `path` may begin with
/// "~/", as for ssh. Understood are OpenSSH's own format (PROTOCOL.key of its sources), PKCS #8 (RFC 5958) and the
/// older PEM (RFC 1421). False for what cannot be read or is none of these. Reads at most 4 KiB.
bool isPrivateKeyLocked(const QString &path);

/// Whether there is a file at `path`, which may begin with "~/".
bool privateKeyExists(const QString &path);
