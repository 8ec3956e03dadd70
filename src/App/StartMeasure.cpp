#include "App/StartMeasure.h"

#include <QFile>
#include <QList>
#include <ctime>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Of a line "Name:   123 kB".
qint64 kiBOf(const QByteArray &content, const QByteArray &name)
{
    for (const QByteArray &line : content.split('\n')) {
        if (line.startsWith(name + ':')) {
            return line.simplified().split(' ').value(1).toLongLong();
        }
    }
    return 0;
}

double millisecondsOf(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double millisecondsSinceStart()
{
    // The second field is the program's name in brackets and may hold anything.
    const QByteArray stat = contentOf(u"/proc/self/stat"_s);
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    const double start = fields.value(19).toDouble() / static_cast<double>(sysconf(_SC_CLK_TCK));
    return millisecondsOf(CLOCK_BOOTTIME) - start * 1e3;
}

} // namespace

StartMeasure StartMeasure::now()
{
    StartMeasure measure;
    measure.clockMs = millisecondsOf(CLOCK_MONOTONIC); // first: asking for the memory takes a millisecond or two
    measure.cpuMs = millisecondsOf(CLOCK_PROCESS_CPUTIME_ID);
    measure.milliseconds = millisecondsSinceStart();
    measure.residentKiB = kiBOf(contentOf(u"/proc/self/status"_s), "VmRSS");
    measure.proportionalKiB = kiBOf(contentOf(u"/proc/self/smaps_rollup"_s), "Pss");
    return measure;
}

QString StartMeasure::line() const
{
    return u"first-paint-ms=%1 clock-ms=%2 cpu-ms=%3 rss-kib=%4 pss-kib=%5"_s.arg(milliseconds, 0, 'f', 0)
        .arg(clockMs, 0, 'f', 3)
        .arg(cpuMs, 0, 'f', 3)
        .arg(residentKiB)
        .arg(proportionalKiB);
}
