#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

/// A real sshd of Debian's on a free port of 127.0.0.1, in a private directory of its own (tests/rig/sshd.sh). It
/// goes down with the object; should the test program die, it goes down by itself within two seconds.
///
/// An operation that fails returns false (or -1) and leaves a sentence in error():
///     QVERIFY2(m_sshd.up(), qPrintable(m_sshd.error()));
class RigSshd
{
public:
    enum class Accounts {
        Present, ///< the present user only
        Created, ///< also passwordAccount(), sudoAccount() and plainAccount(), made for the run; needs root
    };

    RigSshd() = default;
    ~RigSshd();
    RigSshd(const RigSshd &) = delete;
    RigSshd &operator=(const RigSshd &) = delete;

    static bool isRoot();

    /// The script behind it, for a daemon that somebody else shall own.
    static QString script();

    bool up(Accounts accounts = Accounts::Present);
    void down();

    QString error() const { return m_error; }

    QString host() const { return QStringLiteral("127.0.0.1"); }

    int port() const { return value("PORT").toInt(); }

    /// The present user; logs in with key(), passphraseKey() or the agent's key.
    QString user() const { return value("USER"); }

    QString key() const { return value("KEY"); }

    QString passphraseKey() const { return value("PASSPHRASE_KEY"); }

    /// Of passphraseKey(): holds quotes, a backslash, a dollar, back-quotes, blanks and a letter beyond ASCII.
    QString passphrase() const;

    /// A known_hosts file with the host key as it was at up() or at the last trust().
    QString knownHosts() const { return value("KNOWN_HOSTS"); }

    QString directory() const { return value("DIR"); }

    qint64 pid() const { return value("PID").toLongLong(); }

    /// The accounts of Accounts::Created, with bash, an empty .bashrc and an empty home. sudoAccount() and
    /// plainAccount() log in with key(); passwordAccount() with key() and with password().
    QString passwordAccount() const { return value("PASSWORD_ACCOUNT"); }

    QString password() const { return m_password; }

    QString sudoAccount() const { return value("SUDO_ACCOUNT"); }

    QString plainAccount() const { return value("PLAIN_ACCOUNT"); }

    /// Gives passwordAccount() another password: any text without a line end.
    bool setPassword(const QString &password);

    /// Swaps the host key on the same port; knownHosts() keeps the old one until trust().
    bool rekey();
    bool trust();

    /// SIGSTOP to the daemon: new connections are accepted by the kernel and get no greeting. With sessions, those
    /// that are open stand still too. resume() lets all go on.
    bool hang(bool sessionsToo = false);
    bool resume();

    /// SIGKILL to every session with what it runs; the daemon stays.
    bool drop();

    /// How many logins were accepted since up(); -1 on failure.
    int logins();

    /// The socket of an ssh-agent, started by the first call, whose key is in no file; empty on failure.
    QString agentSocket();

    /// The daemon's log (level VERBOSE) so far.
    QString log() const;

    /// Arguments with which /usr/bin/ssh logs in here as the given account (empty: user()) with the given key (empty:
    /// none) and without a look at the user's own configuration; the command comes after them.
    QStringList sshArguments(const QString &key, const QString &account = {}) const;

private:
    QString value(const char *name) const { return m_values.value(QLatin1StringView(name)); }

    /// Runs sshd.sh and takes the KEY=VALUE lines that it prints.
    bool run(const QStringList &arguments, const QByteArray &input = {});

    QHash<QString, QString> m_values;
    QString m_directory;
    QString m_password;
    QString m_error;
    QByteArray m_output;
};

/// Leaves the test function, or with initTestCase the whole test, where only root can do what follows.
#define RIG_NEEDS_ROOT()                                                                                             \
    do {                                                                                                             \
        if (!RigSshd::isRoot()) {                                                                                    \
            QSKIP("needs root: accounts are made for the run");                                                      \
        }                                                                                                            \
    } while (false)
