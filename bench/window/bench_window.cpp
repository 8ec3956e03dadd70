// What moving about in the real window costs, offscreen, on servers that a script answers for: from the call to the
// painted window, with 10,000 servers in the list. A frame is 16 ms.

#include "../Measure.h"

#include "App/StartMeasure.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/CompactHeader.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/SectionPages.h"
#include "Views/Shell/ServerMenuButton.h"
#include "Views/Shell/ServerPopup.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRounds = 15;
constexpr int kServers = 10'000;
constexpr int kVisited = 5; // of these
constexpr int kIdleMs = 5'000;

SystemInfo facts(int i)
{
    SystemInfo info;
    info.hostname = u"server-%1"_s.arg(i);
    info.osVersion = u"Debian GNU/Linux 12 (bookworm)"_s;
    info.cpuCount = u"8"_s;
    info.storageDevices = QList<StorageDevice>();
    for (int disk = 0; disk < 6; ++disk) {
        DiskInfo entry;
        entry.mountPoint = disk == 0 ? u"/"_s : u"/srv/%1"_s.arg(disk);
        entry.size = u"78G"_s;
        entry.used = u"24G"_s;
        entry.usePercent = u"31%"_s;
        info.diskUsage.append(entry);
    }
    return info;
}

double processorMilliseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

void runFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

struct Bench {
    Theme theme;
    FakeTransport transport;
    QList<Server> servers;
    std::unique_ptr<ContentView> window;

    Bench()
    {
        theme.install();
        const Server first = transport.add(u"server-0"_s);
        transport.store.updateServerSystemInfo(first, facts(0));
        servers.append(first);
        QList<Server> others;
        for (int i = 1; i < kServers; ++i) {
            Server server = first;
            server.id = QUuid::createUuid();
            server.name = u"server-%1"_s.arg(i);
            server.host = u"10.0.%1.%2"_s.arg(i / 256).arg(i % 256);
            server.systemInfo = facts(i);
            others.append(server);
        }
        transport.store.importServers(others);
        servers += others.first(kVisited - 1);
        for (const Server &server : std::as_const(servers)) {
            transport.store.updateServerConnection(server, true);
        }
        window = std::make_unique<ContentView>(
            theme, ContentView::Services{transport.store, transport.manager, transport.clock});
        window->resize(1280, 800);
        window->show();
        runFor(200);
    }

    // Until all that the call asked for is laid out and painted.
    double painted(const std::function<void()> &call) const
    {
        return Measure::milliseconds([&] {
            call();
            QCoreApplication::sendPostedEvents();
            window->repaint();
        });
    }

    double select(int i)
    {
        return painted([&] { transport.store.setSelectedServer(transport.store.server(servers.at(i).id)); });
    }

    // The turns of the event loop in which the other pages are made: the longest.
    double longestTurn() const
    {
        double longest = 0;
        while (window->pages().count() < kMainTabCount) {
            longest = std::max(longest, Measure::milliseconds([] { QCoreApplication::processEvents(); }));
        }
        return longest;
    }

    void print(const char *what, const std::vector<double> &values, double wanted) const
    {
        std::printf("%s: %.2f ms, longest %.2f ms (wanted under %.0f ms)\n", what, Measure::median(values),
                    *std::ranges::max_element(values), wanted);
        std::fflush(stdout);
    }
};

// What is learnt of a server is stored with the whole list; what the operator does waits for the file.
void store(Bench &bench)
{
    ServerStore &store = bench.transport.store;
    std::vector<double> connections;
    std::vector<double> news;
    std::vector<double> edits;
    for (int round = 0; round < kRounds; ++round) {
        const Server server = *store.server(bench.servers.at(round % kVisited).id);
        connections.push_back(bench.painted([&] { store.updateServerConnection(server, true); }));
        news.push_back(bench.painted([&] { store.updateServerSystemInfo(server, facts(round)); }));
        runFor(round % 2 == 0 ? 5 : 600); // while the list is written, and after it
        if (round < 3) {
            Server edited = *store.server(server.id);
            edited.labels.insert(u"round"_s, QString::number(round));
            edits.push_back(bench.painted([&] { store.updateServer(edited); }));
        }
    }
    bench.print("the end of a connect, stored", connections, 16);
    bench.print("new facts, stored", news, 16);
    bench.print("an edit, in the file", edits, 1000);
}

void run()
{
    Bench bench;
    store(bench);
    std::vector<double> serverSwitches;
    std::vector<double> turns;
    std::vector<double> sectionSwitches;
    for (int round = 0; round < kRounds; ++round) {
        bench.window->model().setSelectedTab(MainTab::Dashboard);
        serverSwitches.push_back(bench.select(round % kVisited));
        turns.push_back(bench.longestTurn());
        runFor(50); // the login's script
        for (const MainTab tab : allCases<MainTab>()) {
            sectionSwitches.push_back(bench.painted([&] { bench.window->model().setSelectedTab(tab); }));
            runFor(2);
        }
    }
    bench.print("another section", sectionSwitches, 16);
    bench.print("another server, to its cached facts", serverSwitches, 50);
    bench.print("the longest turn while its other pages are made", turns, 16);

    runFor(1'000);
    const double before = processorMilliseconds();
    runFor(kIdleMs);
    std::printf("idle for %.0f s with a server selected: %.2f ms of processor\n", kIdleMs / 1000.0,
                processorMilliseconds() - before);
    bench.window->resize(1024, 700);
    runFor(500);
    std::vector<double> openings;
    for (int round = 0; round < kRounds; ++round) {
        ServerMenuButton &button = bench.window->compactHeader().servers();
        openings.push_back(Measure::milliseconds([&] {
            button.openList();
            QCoreApplication::sendPostedEvents();
            button.popup()->repaint();
        }));
        button.popup()->close();
        runFor(5);
    }
    bench.print("the list of servers of the compact layout opens", openings, 16);
    std::printf("memory with a server selected: %s\n", qPrintable(StartMeasure::now().line().section(u' ', 3)));
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    run();
    return 0;
}
