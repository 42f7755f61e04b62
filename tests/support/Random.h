#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>

namespace lum::test {

/// Random numbers for tests: another seed each run, which failures show through Trace, and which
/// --gtest_random_seed gives back.
class Random {
public:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    unsigned long long Bits() { return m_random(); }

    template <typename T, std::size_t N>
    const T& OneOf(const T (&choices)[N]) {
        return choices[Below(N)];
    }

    std::string Trace() const { return "seed " + std::to_string(m_seed); }

private:
    static unsigned ChooseSeed() {
        constexpr unsigned kMaxSeed = 99999;  // What the option takes.
        const int given = GTEST_FLAG_GET(random_seed);
        return given != 0 ? static_cast<unsigned>(given) : 1 + std::random_device{}() % kMaxSeed;
    }

    unsigned m_seed = ChooseSeed();
    std::mt19937_64 m_random{m_seed};
};

}  // namespace lum::test
