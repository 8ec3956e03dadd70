#include "Helpers/Clock.h"
#include "Models/Json.h"
#include "Models/ServerStore.h"
#include "Models/UserDefaults.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kServers = 10'000;

SystemInfo sampleInfo()
{
    SystemInfo info{.hostname = u"web-01"_s,
                    .osVersion = u"Debian GNU/Linux 12 (bookworm)"_s,
                    .kernel = u"6.1.0-28-amd64"_s,
                    .uptime = u"up 3 weeks, 2 days, 4 hours, 11 minutes"_s,
                    .cpuInfo = u"AMD EPYC 7763 64-Core Processor"_s,
                    .cpuCount = u"8"_s,
                    .memoryTotal = u"31Gi"_s,
                    .loadAverage = u"0.52 0.58 0.59"_s,
                    .lastUpdated = QDateTime::fromMSecsSinceEpoch(1758307200123, Qt::UTC),
                    .storageDevices = QList<StorageDevice>()};
    for (const auto &mount : {u"/"_s, u"/boot"_s, u"/home"_s, u"/var"_s}) {
        info.diskUsage.append({u"/dev/nvme0n1p1"_s, u"98G"_s, u"41G"_s, u"52G"_s, u"45%"_s, mount});
        info.storageDevices->append({u"nvme0n1"_s, u"259:0"_s, false, u"98G"_s, false, u"disk"_s, {mount}});
    }
    return info;
}

QList<Server> sampleServers(bool withInfo)
{
    QList<Server> servers;
    for (int i = 0; i < kServers; ++i) {
        Server server;
        server.name = u"web-%1"_s.arg(i);
        server.host = u"web-%1.example.net"_s.arg(i);
        server.username = u"operator"_s;
        server.authMethod = AuthMethod::PublicKey;
        server.privateKeyPath = u"/home/operator/.ssh/id_ed25519"_s;
        server.labels = {{u"env"_s, u"production"_s}, {u"team"_s, u"operations"_s}};
        server.lastConnected = QDateTime::fromMSecsSinceEpoch(1758307200123 + i, Qt::UTC);
        if (withInfo) {
            server.systemInfo = sampleInfo();
        }
        servers.append(server);
    }
    return servers;
}

void encodeServers(benchmark::State &state)
{
    const QList<Server> servers = sampleServers(state.range(0) != 0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(toJson(servers));
    }
}

void decodeServers(benchmark::State &state)
{
    const QByteArray json = toJson(sampleServers(state.range(0) != 0));
    std::optional<QList<Server>> servers;
    for (auto _ : state) {
        state.PauseTiming();
        servers.reset(); // giving the records back is no part of a start
        state.ResumeTiming();
        servers = fromJson<QList<Server>>(json);
    }
    state.counters["MB"] = static_cast<double>(json.size()) / 1e6;
}

// From the file to the store, as at a start.
void loadStore(benchmark::State &state)
{
    const QTemporaryDir directory;
    const SystemClock clock;
    {
        UserDefaults defaults(directory.path());
        defaults.setData(u"SavedServers"_s, toJson(sampleServers(state.range(0) != 0)));
    }
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<ServerStore> store;
    for (auto _ : state) {
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
        defaults = std::make_unique<UserDefaults>(directory.path());
        store = std::make_unique<ServerStore>(*defaults, clock);
    }
}

// One changed record, written and flushed with all others.
void saveStore(benchmark::State &state)
{
    const QTemporaryDir directory;
    const SystemClock clock;
    UserDefaults defaults(directory.path());
    defaults.setData(u"SavedServers"_s, toJson(sampleServers(state.range(0) != 0)));
    ServerStore store(defaults, clock);
    for (auto _ : state) {
        Server server = store.servers().first();
        server.useSudo = !server.useSudo;
        store.updateServer(server);
    }
}

BENCHMARK(encodeServers)->ArgName("withInfo")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeServers)->ArgName("withInfo")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK(loadStore)->ArgName("withInfo")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(saveStore)->ArgName("withInfo")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
