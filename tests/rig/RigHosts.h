#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

/// A host that tests log in to, with a key and without a question.
struct RigHost {
    QString role;
    QString user;
    QString address;
    int port = 22;
    QString key; ///< path of the private key

    /// Arguments with which /usr/bin/ssh logs in, without a look at the user's own configuration and known hosts; the
    /// command comes after them.
    QStringList sshArguments() const;
};

/// The full hosts, by role. They are named in tests/hosts.local (a contributor's own machines) and, for the roles
/// that are not, in the file that tests/rig/hosts/rig.sh writes while its hosts are up. A line of either is
///     ROLE USER ADDRESS PORT KEY
/// with '#' before a comment. Roles:
///     systemd    Debian with systemd, docker, podman, apt, cron, logs, odd files; the user has sudo without a
///     password nosudo, german, tcsh   the same host as a user without sudo; with German messages and a .bashrc that
///     talks;
///                            with a shell that is no POSIX shell
///     dnf        systemd, dnf and rpm, podman, no docker, no apt
///     busybox    busybox and dropbear, nothing more
///     slow       the systemd host over a line with 200 ms round trip and losses
///     breakable  the systemd host over a line that line() changes
///     hostile    sshd without systemd, to which hostile() does things
class RigHosts
{
public:
    /// Reads the files of this tree and of the rig.
    RigHosts();

    /// Reads these files; where two name one role, the first holds.
    explicit RigHosts(const QStringList &files);

    /// The host with that role if there is one whose key can be read.
    std::optional<RigHost> find(const QString &role) const;

    /// Why find() gives nothing.
    QString reason(const QString &role) const;

    /// "rekey", "hang", "resume" or "drop" for the rig's "hostile" host. On failure error() says why.
    bool hostile(const QString &what);

    /// Settings for the line to the rig's "breakable" host, as tests/rig/hosts/link.py lists them: "mode=blackhole".
    bool line(const QStringList &settings);

    QString error() const { return m_error; }

private:
    void read(const QString &file);
    bool run(const QString &script, const QStringList &arguments);

    QHash<QString, RigHost> m_hosts;
    QString m_state; ///< the rig's own folder, for its scripts
    QString m_error;
};

/// Declares `host`, the host with that role, or leaves the test function and says why.
#define RIG_NEEDS_HOST(host, hosts, role)                                                                            \
    const std::optional<RigHost> host##Found = (hosts).find(role);                                                   \
    if (!host##Found) {                                                                                              \
        QSKIP(qPrintable((hosts).reason(role)));                                                                     \
    }                                                                                                                \
    const RigHost &host = *host##Found // NOLINT(bugprone-macro-parentheses): the name that is declared
