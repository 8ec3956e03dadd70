#pragma once

#include "Services/SSH/RuntimeDirectory.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

/// Writes the small scripts through which `ssh` reads a secret (SSH_ASKPASS in ssh(1)). Each child that needs a
/// secret gets a script of its own; `ssh` runs it, reads the first line that it prints, and strips the line's end.
///
/// A script is removed 30 seconds after it was made, at quit, and by RuntimeDirectory at the next start.
class AskpassHelper
{
public:
    /// The directory outlives this object. Scripts are removed after `lifetime`.
    explicit AskpassHelper(RuntimeDirectory &directory,
                           std::chrono::milliseconds lifetime = RuntimeDirectory::kAskpassLifetime);
    ~AskpassHelper();
    AskpassHelper(const AskpassHelper &) = delete;
    AskpassHelper &operator=(const AskpassHelper &) = delete;

    /// The absolute path of a new script that prints `secret` and a line end: "tarnwell_askpass_<UUID>.sh", mode 0700
    /// from its first byte, complete when this returns. Nothing, with a log line and no file left behind, where the
    /// runtime directory is refused, the disk is full, or the secret is not encodable as UTF-8.
    ///
    /// Of a secret with a line end `ssh` takes the first line only, and of one with a NUL what stands before it.
    ///
    /// The script was closed before this returns, so that no child of this thread inherits it open for writing
    /// (running it would then fail with ETXTBSY). The variables BASH_ENV, BASHOPTS and SHELLOPTS must not reach it,
    /// see `variablesToRemove`.
    std::optional<QString> createAskpassScript(const QString &secret);

    /// Removes every script that this object made and that still stands.
    void removeAll();

    /// The script's whole text, in UTF-8; nothing if the secret is not encodable.
    static std::optional<QByteArray> content(const QString &secret);

    /// Variables of the environment that make bash run other files or read `echo` differently: a child that gets a
    /// script must not have them.
    static QStringList variablesToRemove();

private:
    void remove(const QString &path);

    RuntimeDirectory &m_directory;
    std::chrono::milliseconds m_lifetime;
    QSet<QString> m_scripts;
    QObject m_timers; // owns the removals: none fires after this object's end
};
