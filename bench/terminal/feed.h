#pragma once

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

/// What the feeders have in common: a file, a size, and how the time is taken.
struct Job {
    std::string bytes;
    int columns = 120;
    int rows = 40;
    int scrollback = 10'000;

    static Job parse(int argc, char **argv)
    {
        Job job;
        if (argc < 5) {
            std::fputs("usage: FEEDER FILE COLUMNS ROWS SCROLLBACK\n", stderr);
            std::exit(2);
        }
        std::ifstream input(argv[1], std::ios::binary);
        job.bytes.assign(std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>());
        job.columns = std::atoi(argv[2]);
        job.rows = std::atoi(argv[3]);
        job.scrollback = std::atoi(argv[4]);
        return job;
    }

    /// Feeds the file in blocks of 64 KiB and prints the processor's seconds until `finish` returned: others at work
    /// on the machine change them less than the clock's.
    template<class Feed, class Finish>
    void run(Feed feed, Finish finish) const
    {
        constexpr size_t Block = 65536;
        const auto now = [] {
            struct timespec time = {};
            ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
        };
        const double begin = now();
        for (size_t at = 0; at < bytes.size(); at += Block) {
            feed(bytes.data() + at, at + Block > bytes.size() ? bytes.size() - at : Block);
        }
        finish();
        std::printf("%.6f\n", now() - begin);
    }
};
