#pragma once

#include "Services/Children/PipeReader.h"

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <optional>

/// What is to be run, as one value.
struct ChildSetup {
    QString program;                                ///< absolute path
    QStringList arguments;                          ///< one element of the vector each; nothing is quoted or joined
    std::optional<QProcessEnvironment> environment; ///< absent: the application's own
    std::optional<double> timeLimit;                ///< seconds from the start of the child; absent: none
    QByteArray input;                               ///< standard input; empty: the null device
    std::function<void(qint64 pid)> onStarted;      ///< called once, when the program really runs
    std::function<void()> onTimeLimit;              ///< called once, just before the child is asked to end
};

/// How a child ended, and all that it wrote.
struct ChildOutcome {
    enum class Kind {
        Exited,        ///< by itself; `exitCode` is its status
        FailedToStart, ///< no process ran; `reason` tells why
        TimedOut,      ///< the time limit ended it
        Cancelled      ///< we ended it, or refused to start it, since the application is ending
    };

    Kind kind = Kind::Cancelled;
    int exitCode = -1; ///< the exit status; for a child that a signal ended, the signal's number
    QByteArray output; ///< all of standard output if it is UTF-8, else nothing: half a text would be read as a whole
    QByteArray error;  ///< all of standard error, likewise
    QString reason;    ///< the system's words where no process ran
};

/// One child process: from a setup to exactly one completion.
///
/// Both pipes are drained while the child runs, so a child that writes megabytes never stands still. The child leads
/// a session of its own: its process group has its number, and it has no terminal that it could ask questions on.
/// When the time limit passes, the child gets SIGTERM; if it still runs after 2.0 s, its whole group gets SIGKILL.
///
/// Not for use by itself: ChildProcesses makes, owns and ends them.
class ChildProcess : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const ChildProcess *ended, ChildOutcome outcome)>;

    /// Starts nothing yet. `done` is called exactly once, from the event loop or from `abandon`, never from `start`.
    ChildProcess(ChildSetup setup, Done done);
    ~ChildProcess() override;

    void start();

    /// Asks a running child to end with SIGTERM. Its completion comes as usual.
    void terminate();

    /// Sends `signal` to the child if it runs.
    void sendSignal(int signal);

    /// Ends the child's group with SIGKILL, reaps the child, and completes with Cancelled before it returns.
    void abandon();

    bool isRunning() const;

    /// The process identifier, or 0 before the start and after the end.
    qint64 processId() const;

private:
    void onTimeLimit();
    void onFinished(int exitCode);
    void complete(ChildOutcome::Kind kind, int exitCode, const QString &reason);

    ChildSetup m_setup;
    Done m_done;
    QProcess m_process;
    QTimer m_timeLimit;
    QTimer m_killDelay;
    PipeReader m_output;
    PipeReader m_error;
    bool m_timedOut = false;
};
