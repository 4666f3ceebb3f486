#pragma once

#include <cstdio>
#include <cstdlib>

/// Aborts the fuzzer if the condition is false. The fuzzer then writes the input to a file.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: false: %s\n", __FILE__, __LINE__, #condition);            \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
