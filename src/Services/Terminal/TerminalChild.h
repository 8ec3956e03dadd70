#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcessEnvironment>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <memory>
#include <sys/types.h>

namespace vt
{
class PseudoTerminal;
}

/// A child that leads a session of its own with a pseudo terminal as its controlling one, pty(7): it may ask
/// questions there, and the characters for interrupt and the like reach it as signals. Nothing here blocks: what the
/// child does not read yet is kept and goes out when it can. The child is waited for by its identifier only, so that
/// other children of the process are nobody's business here. Main thread.
class TerminalChild : public QObject
{
    Q_OBJECT

public:
    explicit TerminalChild(QObject *parent = nullptr);

    /// Ends a child that still runs, as end() does.
    ~TerminalChild() override;

    /// Opens the pair, in a mode in which a person can answer questions line by line. Returns 0 or an errno.
    int open(int columns, int rows);

    /// Starts the program (an absolute path) on it. Returns 0 or an errno. May be called once, after open().
    int start(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment);

    /// The child, or -1 before the start and after the end.
    pid_t processId() const { return m_pid; }

    /// The near descriptor of the pair, or -1.
    int descriptor() const;

    /// Appends what is there to `bytes`, at most `most`. False at the end: nobody holds the far side any more.
    bool read(QByteArray &bytes, qsizetype most);

    /// readable() is emitted while there is something to read, or at the end; not before the first call.
    void setReading(bool isReading);

    /// For the child, in order, however much it is. Lost once the child has ended.
    void send(QByteArrayView bytes);

    /// Bytes that the child has not taken yet.
    qsizetype pending() const { return m_pending; }

    /// Tells the child of a new size. Returns 0 or an errno.
    int resize(int columns, int rows);

    /// SIGTERM, and SIGKILL after 25 ms; the child is waited for by another thread. No signal is emitted any more.
    void end();

    /// Likewise, with SIGKILL to the child and its group at once; returns when the child is gone, after a second at
    /// the latest.
    void endNow();

Q_SIGNALS:
    void readable();

    /// The child has ended and was waited for. What it wrote last may still be there to be read.
    void exited();

private:
    void watchOutput(bool isReading);
    void watchExit();
    void checkExit();
    void sendPending();
    bool takesLinesOnly() const;
    pid_t release();
    void close();

    std::unique_ptr<vt::PseudoTerminal> m_terminal;
    QSocketNotifier *m_readable = nullptr;
    QSocketNotifier *m_writable = nullptr;
    QSocketNotifier *m_exit = nullptr;
    QTimer m_exitPoll;
    QTimer m_lineModePoll;
    int m_pidDescriptor = -1;
    pid_t m_pid = -1;
    std::deque<QByteArray> m_outgoing;
    qsizetype m_pending = 0;
};
