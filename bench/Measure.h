#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <vector>

/// What the benchmarks share: a machine that others use as well is measured by ratios of medians, the two sides
/// taking turns in one run.
namespace Measure
{

inline double median(std::vector<double> values)
{
    std::ranges::sort(values);
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// The wall time of `work` in milliseconds.
template<typename Work>
double milliseconds(Work &&work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

struct Sides {
    std::vector<double> ours;
    std::vector<double> theirs;
};

/// Runs both sides `rounds` times in turns, each giving a time or size of its own; the first round is not counted.
template<typename Ours, typename Theirs>
Sides alternate(int rounds, Ours &&ours, Theirs &&theirs)
{
    Sides sides;
    for (int round = 0; round <= rounds; ++round) {
        const double mine = ours();
        const double other = theirs();
        if (round > 0) {
            sides.ours.push_back(mine);
            sides.theirs.push_back(other);
        }
    }
    return sides;
}

/// "name: ratio 1.02 (ours 12.3 ms, theirs 12.1 ms, wanted at most 1.10)"
inline void report(const char *name, const Sides &sides, const char *unit, double wanted)
{
    const double ours = median(sides.ours);
    const double theirs = median(sides.theirs);
    std::printf("%s: ratio %.3f (ours %.3f %s, theirs %.3f %s, wanted at most %.2f)\n", name, ours / theirs, ours,
                unit, theirs, unit, wanted);
    std::fflush(stdout);
}

/// A field of /proc/self/status in kB, for instance "VmHWM", proc(5).
inline qint64 statusKilobytes(const QByteArray &field)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(field + ':')) {
            return line.mid(field.size() + 1).trimmed().split(' ').first().toLongLong();
        }
    }
    return 0;
}

/// Makes the peak of resident memory start again from the present, proc(5) on clear_refs.
inline void resetPeakMemory()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

} // namespace Measure
