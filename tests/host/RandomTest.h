#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <random>
#include <string>

namespace lumhost::test {

/// A test over random input. Failures show the seed through Trace, and --gtest_random_seed gives
/// it back.
class RandomTest : public testing::Test {
protected:
    static constexpr int kMaxSeed = 99999;

    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    template <typename T, std::size_t N>
    const T& OneOf(const T (&choices)[N]) {
        return choices[Below(N)];
    }

    std::string Trace(const std::string& text) const {
        return "seed " + std::to_string(m_seed) + ", text " + testing::PrintToString(text);
    }

private:
    static unsigned ChooseSeed() {
        const int given = GTEST_FLAG_GET(random_seed);
        return given != 0 ? static_cast<unsigned>(given) : 1 + std::random_device{}() % kMaxSeed;
    }

    unsigned m_seed = ChooseSeed();
    std::mt19937 m_random{m_seed};
};

}  // namespace lumhost::test
