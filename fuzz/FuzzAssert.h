#pragma once

#include <cstdlib>
#include <iostream>

/// Ends the program, as fuzzers want it, where `condition` does not hold; says the file, the line,
/// the condition and `message`. Anything that a std::ostream prints may be the message; it is
/// evaluated only on failure.
#define LUM_FUZZ_ASSERT(condition, message)                                            \
    do {                                                                               \
        if (!(condition)) {                                                            \
            std::cerr << __FILE__ << ':' << __LINE__                                   \
                      << ": " #condition " does not hold: " << (message) << std::endl; \
            std::abort();                                                              \
        }                                                                              \
    } while (false)
