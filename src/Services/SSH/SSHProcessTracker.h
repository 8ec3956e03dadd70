#pragma once

#include <QHash>
#include <QMutex>
#include <sys/types.h>

/// The `ssh` children that run, by process identifier, so that quitting leaves none behind. May be called from any
/// thread.
///
/// An identifier is remembered with the start time of its process (field 22 of /proc/PID/stat, proc(5)): when the
/// number has been given to another process meanwhile, that one is never signalled.
class SSHProcessTracker
{
public:
    void trackTarnwellProcess(pid_t pid);
    void untrackTarnwellProcess(pid_t pid);

    /// Ends everything tracked and forgets it: SIGTERM, and SIGKILL for the process and its group after 10 ms.
    /// Blocks for at most 15 ms a process; for the quitting application only.
    void forceKillTarnwellProcesses();

    qsizetype count() const;

private:
    mutable QMutex m_lock;
    QHash<pid_t, quint64> m_tarnwellProcesses; // to the start time in clock ticks since boot
};
