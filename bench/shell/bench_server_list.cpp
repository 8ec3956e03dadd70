// A key in the search field of a list of 10,000 servers, until the list is painted. Wanted: within a frame of 16 ms.

#include "../Measure.h"

#include "rig/TestTransport.h"

#include "Models/ServerStore.h"
#include "Views/Components/SearchField.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListView>

#include <ctime>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kServers = 10'000;
constexpr int kRounds = 20;

QList<Server> servers()
{
    QList<Server> list;
    for (int i = 0; i < kServers; ++i) {
        Server server;
        server.name = u"server-%1"_s.arg(i);
        server.host = u"10.%1.%2.%3"_s.arg(i / 65536).arg(i / 256 % 256).arg(i % 256);
        server.username = u"deploy"_s;
        if (i % 3 > 0) {
            server.labels = {{u"env"_s, i % 2 == 0 ? u"prod"_s : u"stage"_s}, {u"rack"_s, QString::number(i % 40)}};
        }
        list.append(server);
    }
    return list;
}

// What this thread has computed so far, in milliseconds: other programs take none of it.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

struct Times {
    std::vector<double> wall;
    std::vector<double> processor;
};

struct PaintWatch : QObject {
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        painted = painted || event->type() == QEvent::Paint;
        return QObject::eventFilter(watched, event);
    }

    bool painted = false;
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Theme theme;
    theme.install();
    TestTransport transport;
    ServerStore store(transport.defaults, transport.clock);
    store.importServers(servers());

    Times first;
    Times further;
    Times erased;
    for (int round = 0; round < kRounds; ++round) {
        ServerListView view(theme, {store, transport.manager}); // knows no words of any server yet
        view.resize(240, 900);
        view.show();
        QApplication::processEvents();
        PaintWatch watch;
        view.installEventFilter(&watch);
        view.list().viewport()->installEventFilter(&watch);
        const auto press = [&](Times &times, int key, const QString &text) {
            const double before = processorTime();
            times.wall.push_back(Measure::milliseconds([&] {
                watch.painted = false;
                QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
                QApplication::sendEvent(&view.searchField(), &event);
                do {
                    QApplication::processEvents();
                } while (!watch.painted);
            }));
            times.processor.push_back(processorTime() - before);
        };
        bool isFirst = true;
        for (const QString &text : {u"server-99"_s, u"env:prod"_s, u"10.0.1"_s}) {
            for (const QChar letter : text) {
                press(std::exchange(isFirst, false) ? first : further, 0, QString(letter));
            }
            while (!view.searchField().text().isEmpty()) {
                press(erased, Qt::Key_Backspace, {});
            }
        }
    }
    const auto print = [](const char *name, const Times &times) {
        std::printf("%s: median %.1f ms (processor %.1f ms), slowest %.1f ms (processor %.1f ms) of %zu\n", name,
                    Measure::median(times.wall), Measure::median(times.processor),
                    *std::ranges::max_element(times.wall), *std::ranges::max_element(times.processor),
                    times.wall.size());
    };
    std::printf("a key in the search field of %d servers, until the list is painted; wanted: 16 ms\n", kServers);
    print("first letter", first);
    print("further letters", further);
    print("erasing", erased);
    return 0;
}
