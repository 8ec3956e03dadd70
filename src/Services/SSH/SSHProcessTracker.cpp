#include "Services/SSH/SSHProcessTracker.h"

#include "Helpers/Log.h"

#include <QFile>
#include <QStringList>
#include <csignal>
#include <optional>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr useconds_t kTermWait = 10'000;
constexpr useconds_t kKillWait = 5'000;

// The start time of a living process; nothing for one that is gone or only waits to be reaped.
std::optional<quint64> startTime(pid_t pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray line = stat.readAll();
    // The second field is the name between parentheses, which may itself hold blanks and parentheses.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr qsizetype kState = 0;      // field 3 of the line
    constexpr qsizetype kStartTime = 19; // field 22
    if (fields.size() <= kStartTime || fields.at(kState) == "Z" || fields.at(kState) == "X") {
        return std::nullopt;
    }
    return fields.at(kStartTime).toULongLong();
}

void info(const QString &message)
{
    Log::info(message, Log::Category::Ssh);
}

void forceKill(pid_t pid, quint64 tracked)
{
    const auto isGone = [&] { return ::kill(pid, 0) != 0 || startTime(pid) != tracked; };

    info(u"Attempting to kill SSH process %1"_s.arg(pid));
    if (isGone()) {
        info(u"SSH process %1 already terminated"_s.arg(pid));
        return;
    }
    info(u"Process %1 exists, sending SIGTERM"_s.arg(pid));
    ::kill(pid, SIGTERM);
    ::usleep(kTermWait);
    if (isGone()) {
        info(u"Process %1 terminated gracefully"_s.arg(pid));
        return;
    }
    info(u"Force killing stubborn SSH process %1 with SIGKILL"_s.arg(pid));
    ::kill(pid, SIGKILL);
    ::kill(-pid, SIGKILL);
    ::usleep(kKillWait);
    if (isGone()) {
        info(u"Process %1 successfully terminated"_s.arg(pid));
    } else {
        Log::warning(u"WARNING: Process %1 is still alive after SIGKILL!"_s.arg(pid), Log::Category::Ssh);
    }
}

} // namespace

void SSHProcessTracker::trackTarnwellProcess(pid_t pid)
{
    if (const std::optional<quint64> started = startTime(pid)) {
        const QMutexLocker locker(&m_lock);
        m_tarnwellProcesses.insert(pid, *started);
    }
}

void SSHProcessTracker::untrackTarnwellProcess(pid_t pid)
{
    const QMutexLocker locker(&m_lock);
    m_tarnwellProcesses.remove(pid);
}

void SSHProcessTracker::forceKillTarnwellProcesses()
{
    QHash<pid_t, quint64> processes;
    {
        const QMutexLocker locker(&m_lock);
        processes.swap(m_tarnwellProcesses);
    }
    if (processes.isEmpty()) {
        return;
    }
    QStringList identifiers;
    for (const pid_t pid : processes.keys()) {
        identifiers += QString::number(pid);
    }
    info(u"Force killing %1 Tarnwell SSH processes: [%2]"_s.arg(processes.size()).arg(identifiers.join(u", "_s)));
    for (auto it = processes.cbegin(); it != processes.cend(); ++it) {
        forceKill(it.key(), it.value());
    }
    info(u"SSH process cleanup completed for all %1 processes"_s.arg(processes.size()));
}

qsizetype SSHProcessTracker::count() const
{
    const QMutexLocker locker(&m_lock);
    return m_tarnwellProcesses.size();
}
