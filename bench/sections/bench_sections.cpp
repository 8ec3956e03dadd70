// A whole section with 5,000 processes or 20,000 sockets in a window of 872 x 640 pixels, painted offscreen: from the
// server's answer, or from a key, to the picture. The server is played; what it says changes from answer to answer.

#include "../Measure.h"
#include "Views/SectionFixture.h"

#include "Services/Parsers/ProcessParser.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Ports/PortsViewModel.h"
#include "Views/Processes/ProcessesView.h"
#include "Views/Processes/ProcessesViewModel.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QRandomGenerator>
#include <ctime>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kProcesses = 5'000;
constexpr int kSockets = 20'000;
constexpr int kRounds = 41;
constexpr double kFrame = 16;         // ms
constexpr double kRefreshEach = 3000; // ms

QByteArray processes(quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray list("USER         PID %CPU %MEM    VSZ   RSS TTY      STAT START   TIME COMMAND\n");
    for (int i = 0; i < kProcesses; ++i) {
        // One in fifty has come since the last list, and most take no share of anything.
        const int pid = random.bounded(50) == 0 ? 100'000 + static_cast<int>(random.bounded(1'000'000)) : i + 2;
        const double cpu = random.bounded(10) == 0 ? random.bounded(1000) / 10.0 : 0;
        list +=
            QStringLiteral("%1 %2 %3 %4 123456 %5 ? Ss 10:31 0:00 /usr/lib/some/program%6 --with=%2 and arguments\n")
                .arg(i % 3 == 0 ? u"www-data"_s : u"root"_s)
                .arg(pid)
                .arg(cpu, 0, 'f', 1)
                .arg(random.bounded(50) / 10.0, 0, 'f', 1)
                .arg(random.bounded(4'000'000))
                .arg(i % 700)
                .toUtf8();
    }
    return list;
}

QByteArray sockets(quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray list("Netid State Recv-Q Send-Q Local Peer Process\n");
    for (int i = 0; i < kSockets; ++i) {
        list += QStringLiteral("tcp LISTEN 0 128 10.%1.%2.1:%3 0.0.0.0:* users:((\"server%4\",pid=%5,fd=6))\n")
                    .arg(i % 200)
                    .arg(i / 200)
                    .arg(random.bounded(50) == 0 ? 60'000 : i)
                    .arg(i % 50)
                    .arg(i)
                    .toUtf8();
    }
    return list;
}

void paint()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

double processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

template<class Work>
std::vector<double> rounds(Work work)
{
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const double time = Measure::milliseconds([&] { work(round); });
        if (round > 0) {
            times.push_back(time);
        }
    }
    return times;
}

void report(const char *what, std::vector<double> times)
{
    const double worst = *std::ranges::max_element(times);
    std::printf("%-44s median %6.2f ms, worst %6.2f ms, wanted at most %.0f\n", what,
                Measure::median(std::move(times)), worst, kFrame);
}

void benchProcesses(const Theme &theme)
{
    SectionFixture fixture;
    const QByteArray lists[]{processes(1), processes(2)};
    size_t turn = 0;
    fixture.scripted.setAnswer([&](const QString &) { return ScriptedServer::said(lists[turn++ % 2]); });
    ProcessesViewModel model(fixture.monitored(), fixture.navigation, std::chrono::hours(1));
    ProcessesView view(theme, model);
    view.resize(872, 640);
    view.show();
    view.setActive(true);
    paint();

    report("5,000 processes: parse", rounds([&](int round) { ProcessParser::parse(lists[round % 2]); }));
    double processor = processorMilliseconds();
    report("5,000 processes: refresh, answer to picture", rounds([&](int) {
               model.refresh();
               paint();
           }));
    processor = (processorMilliseconds() - processor) / kRounds;
    report("5,000 processes: sort by command", rounds([&](int) {
               model.table().sortBy(5);
               paint();
           }));
    report("5,000 processes: sort by memory", rounds([&](int) {
               model.table().sortBy(4);
               paint();
           }));
    report("5,000 processes: another filter", rounds([&](int round) {
               model.setActiveFilterIndex(round % 6);
               paint();
           }));
    model.setActiveFilterIndex(0);
    report("5,000 processes: a key in the search field", rounds([&](int round) {
               const char key = "program1"[round % 8];
               if (round % 8 == 0) {
                   view.header().search()->clear();
               }
               QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(QLatin1Char(key)));
               QCoreApplication::sendEvent(view.header().search(), &press);
               paint();
           }));
    std::printf("%-44s %.2f ms of processor, %.2f %% of a core every 3 s, wanted under 3 %%\n",
                "5,000 processes: refresh", processor, 100 * processor / kRefreshEach);
}

void benchPorts()
{
    SectionFixture fixture;
    const QByteArray lists[]{sockets(1), sockets(2)};
    size_t turn = 0;
    fixture.scripted.setAnswer([&](const QString &) { return ScriptedServer::said(lists[turn++ % 2]); });
    PortsViewModel model(fixture.monitored(), fixture.navigation, std::chrono::hours(1));
    model.updateViewVisibility(true);
    report("20,000 sockets: refresh, without a picture", rounds([&](int) { model.refresh(); }));
    report("20,000 sockets: search, without a picture",
           rounds([&](int round) { model.setSearchText(QString::number(round)); }));
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Theme theme;
    theme.install();
    benchProcesses(theme);
    benchPorts();
    return 0;
}
