// Each parser on input of the size that a large server gives, and on 1 MB: time, MB/s, and how often it allocates.

#include "Models/Json.h"
#include "Services/Parsers/GPUMetricsParser.h"
#include "Services/Parsers/MetricsParser.h"
#include "Services/Parsers/ProcessParser.h"
#include "Services/Parsers/ServiceParser.h"
#include "Services/Parsers/StorageDeviceParser.h"
#include "Services/Parsers/SystemInfoParser.h"

#include <QDateTime>
#include <benchmark/benchmark.h>
#include <cstdlib>

// Qt's containers take their memory from malloc, everything else too in the end; the C library has its own under
// these names.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_realloc(void *block, size_t size);

// NOLINTBEGIN(bugprone-reserved-identifier)
static size_t allocations = 0;

[[gnu::visibility("default")]] void *malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void *realloc(void *block, size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}

// NOLINTEND(bugprone-reserved-identifier)
}

namespace
{

constexpr qsizetype kMegabyte = 1'000'000;

// `make(i)` for i from 0, until `count` lines or, without a count, a megabyte.
template<class Make>
QByteArray lines(QByteArray begin, int count, Make make)
{
    for (int i = 0; count > 0 ? i < count : begin.size() < kMegabyte; ++i) {
        begin += make(i) + '\n';
    }
    return begin;
}

QByteArray processes(int count)
{
    static constexpr const char *kUsers[] = {"root", "root", "root", "www-data", "postgres"};
    static constexpr const char *kCommands[] = {
        "[kworker/1:2-events]", "/usr/sbin/sshd -D",
        "/usr/lib/postgresql/15/bin/postgres -D /var/lib/postgresql/15/main -c config_file=/etc/postgresql.conf",
        "nginx: worker process",
        "/usr/bin/python3 /usr/bin/supervisord -n  -c /etc/supervisor/supervisord.conf --user nobody"};
    return lines("USER         PID %CPU %MEM    VSZ   RSS TTY      STAT START   TIME COMMAND\n", count, [](int i) {
        return QByteArray(kUsers[i % 5]).leftJustified(8) + QByteArray::number(i + 1).rightJustified(8) + "  " +
               QByteArray::number((5000 - i) * 0.01, 'f', 1) + "  0." + QByteArray::number(i % 10) + " 112340 " +
               QByteArray::number(1000 + i * 37 % 90000).rightJustified(5) + " ?        Ss   Nov20   0:0" +
               QByteArray::number(i % 10) + ' ' + kCommands[i % 5];
    });
}

QByteArray units(int count)
{
    return lines({}, count, [](int i) {
        return "unit-" + QByteArray::number(i) +
               ".service                 loaded    active   running      Regular background program number " +
               QByteArray::number(i);
    });
}

QByteArray devices(int count)
{
    QByteArray json("{\n   \"blockdevices\": [");
    for (int i = 0; count > 0 ? i < count : json.size() < kMegabyte; ++i) {
        const QByteArray number = QByteArray::number(i);
        json += QByteArray(i == 0 ? "" : ",") + "\n      {\n         \"name\": \"sd" + number +
                "\",\n         \"maj:min\": \"8:" + number +
                "\",\n         \"rm\": false,\n         \"size\": \"3.6T\",\n         \"ro\": false,\n"
                "         \"type\": \"disk\",\n         \"mountpoints\": [\n             null\n         ]\n      }";
    }
    return json + "\n   ]\n}\n";
}

QByteArray facts(int count)
{
    return lines(
        "=== HOSTNAME ===\nweb-01\n=== OS ===\nDebian GNU/Linux 12 (bookworm)\n=== KERNEL ===\n6.1.0-28-amd64\n"
        "=== UPTIME ===\nup 3 weeks, 2 days\n=== CPU ===\nAMD EPYC 7763 64-Core Processor\n=== CPU_COUNT ===\n"
        "8\n=== MEMORY ===\n31Gi\n=== LOAD ===\n0.52 0.58 0.59\n=== DISK ===\n",
        count, [](int i) {
            return "/dev/mapper/vg0-lv" + QByteArray::number(i) + "   98G   41G   52G  45% /srv/volume-" +
                   QByteArray::number(i);
        });
}

QByteArray interfaces(int count)
{
    return lines({}, count,
                 [](int i) { return "veth" + QByteArray::number(i) + "|3211134557|175234|0|43794234|110123|0"; });
}

QByteArray gpus(int count)
{
    return lines("MIXED_VENDOR_START\nVENDOR:NVIDIA\n", count,
                 [](int i) {
                     return QByteArray::number(i) +
                            ", NVIDIA A100-SXM4-80GB, 45, 12 %, 81920 MiB, 2048 MiB, 79872 MiB, "
                            "71.20 W, 400.00 W, [N/A], 1410 MHz, 1593 MHz";
                 }) +
           "VENDOR_END\nMIXED_VENDOR_END\n";
}

using Make = QByteArray (*)(int count);

template<class Parse>
void run(benchmark::State &state, Make make, Parse parse)
{
    const QByteArray input = make(static_cast<int>(state.range(0)));
    allocations = 0;
    benchmark::DoNotOptimize(parse(input));
    state.counters["allocations"] = static_cast<double>(allocations);
    for (auto _ : state) {
        benchmark::DoNotOptimize(parse(input));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * input.size());
}

// A count of 0 is 1 MB of lines; where the parser stops at a limit that would tell nothing.
#define PARSER_BENCHMARK(name, make, parse, ...)                                                                     \
    BENCHMARK_CAPTURE(run, name, make, [](const QByteArray &input) { return parse; })                                \
        ->ArgName("lines")                                                                                           \
        ->ArgsProduct({{__VA_ARGS__}})                                                                               \
        ->Unit(benchmark::kMillisecond)

PARSER_BENCHMARK(processes, processes, ProcessParser::parse(input), 5000, 0);
PARSER_BENCHMARK(services, units, ServiceParser::parse(input), 2000, 0);
PARSER_BENCHMARK(storageDevices, devices, StorageDeviceParser::parse(input), 200, 0);
PARSER_BENCHMARK(systemInfo, facts, SystemInfoParser::parse(input, QDateTime()), 50, 0);
PARSER_BENCHMARK(networkMetrics, interfaces, MetricsParser::network(input), 200);
PARSER_BENCHMARK(gpuMetrics, gpus, GPUMetricsParser::parse(input), 8);

} // namespace

BENCHMARK_MAIN();
