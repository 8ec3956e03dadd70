// vt-bench FILE [--size COLSxROWS] [--scrollback N] [--repeat N]
//
// Feeds a file to the engine and prints the rate (bytes of one pass by the fastest of the passes), the written cells
// then held, and the peak memory of the process.

#include "TerminalEmulator/Engine/Terminal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/resource.h>

namespace
{

constexpr size_t Block = 65536; // what a read of a pseudo terminal gives at most, rounded up

double pass(const std::string &bytes, vt::Terminal &terminal)
{
    const auto begin = std::chrono::steady_clock::now();
    for (size_t at = 0; at < bytes.size(); at += Block) {
        terminal.feed(std::string_view(bytes).substr(at, Block));
        terminal.takeReplies();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

long heldCells(const vt::Terminal &terminal)
{
    long cells = 0;
    vt::Line line;
    for (int64_t number = terminal.firstLine(); number <= terminal.lastLine(); ++number) {
        terminal.line(number, line);
        cells +=
            std::count_if(line.cells.begin(), line.cells.end(), [](const vt::Cell &cell) { return !cell.isEmpty(); });
    }
    return cells;
}

} // namespace

int main(int argc, char **argv)
{
    vt::Options options;
    options.columns = 120;
    options.rows = 40;
    std::string file;
    int repeat = 1;
    for (int at = 1; at < argc; ++at) {
        const std::string word = argv[at];
        if (word == "--size" && at + 1 < argc) {
            if (std::sscanf(argv[++at], "%dx%d", &options.columns, &options.rows) != 2) {
                file.clear();
                break;
            }
        } else if (word == "--scrollback" && at + 1 < argc) {
            options.scrollback = std::atoi(argv[++at]);
        } else if (word == "--repeat" && at + 1 < argc) {
            repeat = std::max(1, std::atoi(argv[++at]));
        } else {
            file = word;
        }
    }
    std::ifstream input(file, std::ios::binary);
    if (file.empty() || !input) {
        std::fputs("usage: vt-bench FILE [--size COLSxROWS] [--scrollback N] [--repeat N]\n", stderr);
        return 2;
    }
    const std::string bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
    vt::Terminal terminal(options);
    double best = 1e9;
    for (int count = 0; count < repeat; ++count) {
        best = std::min(best, pass(bytes, terminal));
    }
    struct rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%.1f MB/s  %.6f s  %ld cells  %.1f MiB buffers  %.1f MiB peak\n",
                static_cast<double>(bytes.size()) / best / 1e6, best, heldCells(terminal),
                static_cast<double>(terminal.memoryUse()) / 1048576, static_cast<double>(usage.ru_maxrss) / 1024);
    return 0;
}
