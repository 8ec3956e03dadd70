// From the start of the process to the first painted window: the program on an empty profile, on one with five and on
// one with ten thousand servers, and a bare list of five names, against an empty window. "bench_start PLATFORM" takes
// that of Qt's platforms: "offscreen" if nothing is said, which measures no display server, or "xcb" in an X session.

#include "../Measure.h"

#include "Models/Json.h"
#include "Models/Server.h"
#include "Models/UserDefaults.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <ctime>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRounds = 15;
constexpr double kWantedTime = 1.3;   // times an empty window's, with five servers
constexpr double kWantedMemory = 1.6; // proportional

struct Start {
    double milliseconds = 0;
    double processorMs = 0;
    double residentMiB = 0;
    double proportionalMiB = 0;
};

double clockMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double valueOf(const QByteArray &line, const QByteArray &name)
{
    const qsizetype at = line.indexOf(name + '=');
    return at < 0 ? 0 : line.mid(at + name.size() + 1).split(' ').first().trimmed().toDouble();
}

// Starts a program that prints one line about the moment in which its window has been painted, and ends.
Start start(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QByteArray line;
    const double before = clockMs();
    process.start(program, arguments);
    while (!line.contains('\n') && process.waitForReadyRead(30'000)) {
        line += process.readAllStandardOutput();
    }
    process.waitForFinished();
    Start result;
    result.milliseconds = valueOf(line, "clock-ms") - before;
    result.processorMs = valueOf(line, "cpu-ms");
    result.residentMiB = valueOf(line, "rss-kib") / 1024;
    result.proportionalMiB = valueOf(line, "pss-kib") / 1024;
    if (result.residentMiB <= 0) {
        std::fprintf(stderr, "%s printed nothing of use\n", qPrintable(program));
    }
    return result;
}

bool writeProfile(const QString &directory, int servers)
{
    QList<Server> list;
    for (int i = 0; i < servers; ++i) {
        Server server;
        server.name = u"server-%1"_s.arg(i);
        server.host = u"10.%1.%2.%3"_s.arg(i / 65536).arg(i / 256 % 256).arg(i % 256);
        server.username = u"deploy"_s;
        server.labels = {{u"env"_s, i % 2 == 0 ? u"prod"_s : u"stage"_s}, {u"rack"_s, QString::number(i % 40)}};
        list.append(server);
    }
    UserDefaults defaults(directory);
    return defaults.setData(u"SavedServers"_s, toJson(list));
}

struct Series {
    std::vector<double> milliseconds;
    std::vector<double> processorMs;
    std::vector<double> residentMiB;
    std::vector<double> proportionalMiB;

    void add(const Start &start)
    {
        milliseconds.push_back(start.milliseconds);
        processorMs.push_back(start.processorMs);
        residentMiB.push_back(start.residentMiB);
        proportionalMiB.push_back(start.proportionalMiB);
    }
};

double times(const std::vector<double> &ours, const std::vector<double> &empty)
{
    return Measure::median(ours) / Measure::median(empty);
}

void print(const char *name, const Series &series, const Series &empty)
{
    using Measure::median;
    std::printf("%s: first paint %.1f ms (%.2f times an empty window's), processor %.1f ms (%.2f times), resident "
                "%.1f MiB, proportional %.1f MiB (%.2f times)\n",
                name, median(series.milliseconds), times(series.milliseconds, empty.milliseconds),
                median(series.processorMs), times(series.processorMs, empty.processorMs), median(series.residentMiB),
                median(series.proportionalMiB), times(series.proportionalMiB, empty.proportionalMiB));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QTemporaryDir place;
    const QByteArray platform = argc > 1 ? argv[1] : "offscreen";
    qputenv("QT_QPA_PLATFORM", platform);
    qputenv("XDG_RUNTIME_DIR", place.path().toUtf8()); // askpass scripts and sockets of a running program stay alone
    if (platform == "offscreen") {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    std::printf("on %s:\n", platform.constData());
    const QString none = place.filePath(u"none"_s);
    const QString five = place.filePath(u"five"_s);
    const QString many = place.filePath(u"many"_s);
    if (!writeProfile(none, 0) || !writeProfile(five, 5) || !writeProfile(many, 10'000)) {
        return 1;
    }
    const auto program = [](const QString &profile) {
        return start(QStringLiteral(PROGRAM), {u"--profile"_s, profile, u"--measure-start"_s});
    };

    Series empty;
    Series rows;
    Series withNone;
    Series withFive;
    Series withMany;
    for (int round = 0; round <= kRounds; ++round) {
        const Start window = start(QStringLiteral(EMPTY_WINDOW), {});
        const Start bareList = start(QStringLiteral(EMPTY_WINDOW), {u"rows"_s});
        const Start first = program(none);
        const Start second = program(five);
        const Start third = program(many);
        if (round > 0) { // the first one fills the caches
            empty.add(window);
            rows.add(bareList);
            withNone.add(first);
            withFive.add(second);
            withMany.add(third);
        }
    }
    print("empty Qt Widgets window", empty, empty);
    print("bare list of five names", rows, empty);
    print("empty profile", withNone, empty);
    print("five servers", withFive, empty);
    print("10,000 servers", withMany, empty);
    std::printf(
        "five servers: %.2f times an empty window's time, wanted at most %.2f; %.2f times its memory, wanted at "
        "most %.2f; %.2f times a bare list's time\n",
        times(withFive.milliseconds, empty.milliseconds), kWantedTime,
        times(withFive.proportionalMiB, empty.proportionalMiB), kWantedMemory,
        times(withFive.milliseconds, rows.milliseconds));
    const double wanted = 2 * Measure::median(withNone.milliseconds) + 150;
    std::printf("10,000 servers: %.1f ms, wanted under %.1f ms (twice an empty list's plus 150)\n",
                Measure::median(withMany.milliseconds), wanted);
    return 0;
}
