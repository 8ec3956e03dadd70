#include "Models/ProcessInfo.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QScrollBar>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

// A table of processes in a window of 872 x 640 pixels, painted offscreen. Every figure is the whole of what the
// operator waits for: the model's work, the view's, and the repainting.

namespace
{

using Column = RecordColumn<ProcessInfo>;

QList<ProcessInfo> processes(int count, quint32 seed)
{
    QRandomGenerator random(seed);
    static const QStringList users{u"root"_s, u"www-data"_s, u"deploy"_s, u"postgres"_s, u"message+"_s};
    QList<ProcessInfo> list;
    list.reserve(count);
    for (int i = 0; i < count; ++i) {
        // One in fifty is another process than in a list of another seed.
        const int pid = random.bounded(50) == 0 ? 100'000 + static_cast<int>(random.bounded(1'000'000)) : i;
        list.append({.pid = QString::number(pid),
                     .user = users.at(random.bounded(users.size())),
                     .cpu = QString::number(random.bounded(1000) / 10.0, 'f', 1),
                     .memory = QString::number(random.bounded(100) / 10.0, 'f', 1),
                     .rssMemoryKB = QString::number(random.bounded(4'000'000)),
                     .command = u"/usr/lib/some/program%1 --with=%2 and its arguments"_s.arg(i % 700).arg(pid),
                     .startTime = u"10:31"_s});
    }
    return list;
}

RecordTableDeclaration<ProcessInfo> declaration()
{
    return {.name = u"Processes"_s,
            .identity = &ProcessInfo::pid,
            .columns = {Column{.title = u"PID"_s,
                               .text = &ProcessInfo::pid,
                               .sortKey = &ProcessInfo::pidInt,
                               .align = CellAlign::Right,
                               .width = 80},
                        Column{.title = u"User"_s, .text = &ProcessInfo::user},
                        Column{.title = u"CPU %"_s,
                               .text = &ProcessInfo::cpu,
                               .sortKey = &ProcessInfo::cpuDouble,
                               .align = CellAlign::Right,
                               .width = 90},
                        Column{.title = u"Mem MB"_s,
                               .text = &ProcessInfo::memoryMB,
                               .sortKey = &ProcessInfo::rssMemoryKBDouble,
                               .align = CellAlign::Right,
                               .width = 110},
                        Column{.title = u"Command"_s,
                               .text = &ProcessInfo::command,
                               .style = CellStyle::Mono,
                               .stretches = true}},
            .actions = {{.label = u"Kill"_s,
                         .icon = IconName::Close,
                         .isDestructive = true,
                         .isButton = true,
                         .run = [](const ProcessInfo &) {}}},
            .tieKey = &ProcessInfo::pidInt,
            .sortColumn = 2,
            .sortOrder = Qt::DescendingOrder};
}

struct Screen {
    explicit Screen(int count)
        : model(declaration())
        , table(theme, model)
    {
        theme.install();
        model.setRecords(processes(count, 1));
        table.resize(872, 640);
        table.show();
        table.selectRow(3);
        painted();
    }

    // Everything that waits in the event loop, the repainting too.
    static void painted()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    Theme theme;
    RecordTableModel<ProcessInfo> model;
    RecordTable table;
};

void refresh(benchmark::State &state)
{
    const auto count = static_cast<int>(state.range(0));
    Screen screen(count);
    const QList<ProcessInfo> lists[]{processes(count, 1), processes(count, 2)};
    int turn = 0;
    for (auto _ : state) {
        screen.model.setRecords(lists[++turn % 2]);
        Screen::painted();
    }
}

void sort(benchmark::State &state)
{
    Screen screen(static_cast<int>(state.range(0)));
    const int column = state.range(1) == 0 ? 2 : 4;
    for (auto _ : state) {
        screen.model.sortBy(column);
        Screen::painted();
    }
}

void keystroke(benchmark::State &state)
{
    Screen screen(static_cast<int>(state.range(0)));
    const QString typed[]{u"p"_s, u"pr"_s, u"pro"_s, u"program1"_s, u"nothing has this"_s, {}};
    size_t turn = 0;
    for (auto _ : state) {
        screen.model.setFilter([text = typed[turn++ % std::size(typed)]](const ProcessInfo &p) {
            return text.isEmpty() || p.command.contains(text, Qt::CaseInsensitive) ||
                   p.user.contains(text, Qt::CaseInsensitive) || p.pid.contains(text, Qt::CaseInsensitive);
        });
        Screen::painted();
    }
}

void scroll(benchmark::State &state)
{
    Screen screen(static_cast<int>(state.range(0)));
    QScrollBar &bar = *screen.table.verticalScrollBar();
    int position = 0;
    for (auto _ : state) {
        position = (position + 611) % bar.maximum();
        bar.setValue(position);
        Screen::painted();
    }
}

void selectAllAndRefresh(benchmark::State &state)
{
    const auto count = static_cast<int>(state.range(0));
    Screen screen(count);
    screen.table.selectAll();
    const QList<ProcessInfo> lists[]{processes(count, 1), processes(count, 2)};
    int turn = 0;
    for (auto _ : state) {
        screen.model.setRecords(lists[++turn % 2]);
        Screen::painted();
    }
}

} // namespace

BENCHMARK(refresh)->Arg(5'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(sort)
    ->ArgNames({"rows", "text"})
    ->Args({5'000, 0})
    ->Args({5'000, 1})
    ->Args({10'000, 0})
    ->Args({10'000, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(keystroke)->Arg(5'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(scroll)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(selectAllAndRefresh)->Arg(5'000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
