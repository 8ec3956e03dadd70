#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the target when an invariant does not hold.
#define FUZZ_CHECK(condition)                                                                                        \
    do {                                                                                                             \
        if (!(condition)) {                                                                                          \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                     \
            std::abort();                                                                                            \
        }                                                                                                            \
    } while (false)
