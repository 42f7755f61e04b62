#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/Random.h"

namespace lumhost::test {

/// A test over random texts. Failures show the seed and the text through Trace.
class RandomTest : public testing::Test {
protected:
    std::size_t Below(std::size_t limit) { return m_random.Below(limit); }

    template <typename T, std::size_t N>
    const T& OneOf(const T (&choices)[N]) {
        return m_random.OneOf(choices);
    }

    std::string Trace(const std::string& text) const {
        return m_random.Trace() + ", text " + testing::PrintToString(text);
    }

private:
    lum::test::Random m_random;
};

}  // namespace lumhost::test
