#pragma once

#include <QString>

#include <chrono>

/// The private directory for what lives shorter than the program: askpass scripts and the control sockets of `ssh`.
///
/// It is made with mode 0700 and used only if it is a real directory (no link), owned by this user, closed to
/// everybody else, in a parent where nobody else can replace it. Otherwise it is refused: `available` is false,
/// askpass gives no scripts, connections are not pooled, and the rest works.
///
/// Several running programs of one user share the directory. Each holds a shared lock on the file "lock" in it; who
/// gets the lock exclusively at its start is alone, and removes what crashed runs left behind. Who isn't alone
/// removes only askpass scripts older than their lifetime, since a younger one may be in use.
class RuntimeDirectory
{
public:
    /// What the names of all askpass scripts match, and how long one is kept.
    static constexpr QLatin1StringView kAskpassPattern{"tarnwell_askpass_*.sh"};
    static constexpr std::chrono::seconds kAskpassLifetime{30};

    /// "$XDG_RUNTIME_DIR/tarnwell". Where that variable doesn't name an absolute path of a directory that is ours,
    /// safe and allows programs to run: "/tmp/tarnwell-<uid>".
    static QString standardPath();

    /// Makes the directory at the absolute `path` if need be, checks it, locks it and removes leftovers.
    explicit RuntimeDirectory(const QString &path = standardPath());
    ~RuntimeDirectory();
    RuntimeDirectory(const RuntimeDirectory &) = delete;
    RuntimeDirectory &operator=(const RuntimeDirectory &) = delete;

    /// Whether files may be put there.
    bool available() const { return m_refusal.isEmpty(); }

    /// Why it was refused, as a sentence for the log and the window; empty if it was not.
    QString refusal() const { return m_refusal; }

    /// Without a slash at its end. Meaningful only while it is available.
    QString path() const { return m_path; }

    /// Whether no other program used the directory when this one came.
    bool isAlone() const { return m_alone; }

    /// Checks again, and makes the directory anew if it was removed meanwhile (cleaners of /tmp do that to what has
    /// not been used for days). To be called before something is put there; the result is `available`.
    bool ensure();

    /// Where the control sockets "ssh_XXXXXXXX" stand: "<path>/tw_ssh/".
    QString controlPathDirectory() const;

    /// Makes the sockets' directory, with the same checks; false where that is refused or fails. To be called before
    /// a socket is made, since another program's quit may have removed the empty directory.
    bool ensureControlPathDirectory();

    /// Removes the sockets' directory if it is empty. Sockets of other programs may stand there: everyone removes its
    /// own one by one, then calls this.
    void removeControlPathDirectory();

private:
    void open();
    void release();
    void lock();
    void refuse(const QString &reason);
    void removeLeftovers() const;

    QString m_path;
    QString m_refusal;
    int m_directory = -1;
    int m_lock = -1;
    bool m_alone = false;
};
