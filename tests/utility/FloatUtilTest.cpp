#include "lum/core/utility/FloatUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace lum::core {
namespace {

template <typename Real>
class FloatUtilTest : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(FloatUtilTest, Reals);

TYPED_TEST(FloatUtilTest, Compares) {
    using Real = TypeParam;
    using Limits = std::numeric_limits<Real>;
    const Real nan = Limits::quiet_NaN();
    const Real one = 1;
    const Real next = std::nextafter(one, Real{2});
    Real sixteen = one;
    for (int i = 0; i < 16; ++i) {
        sixteen = std::nextafter(sixteen, Real{2});
    }
    struct Case {
        Real a;
        Real b;
        unsigned int maxUlps;
        int expected;
    };
    const Case cases[] = {
        {0, -Real{0}, 0, 0},
        {one, next, 0, -1},
        {next, one, 0, 1},
        {one, next, 1, 0},
        {one, sixteen, 16, 0},
        {one, sixteen, 15, -1},
        {-one, -sixteen, 16, 0},
        {-one, -sixteen, 15, 1},
        {one, 2, 16, -1},
        // Numbers of different signs are never near.
        {Limits::denorm_min(), -Limits::denorm_min(), 16, 1},
        {-Limits::denorm_min(), 0, 16, -1},
        {0, Limits::denorm_min(), 1, 0},
        {Limits::infinity(), Limits::infinity(), 0, 0},
        {Limits::max(), Limits::infinity(), 1, 0},
        {-Limits::infinity(), Limits::infinity(), 16, -1},
        {nan, one, 16, 1},
        {one, nan, 16, 1},
        {nan, nan, 0, 0},
        {nan, -nan, 16, 1},
        {-one, one, 0xFFFFFFFF, -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FloatUtil::Compare(c.a, c.b, c.maxUlps), c.expected)
            << c.a << ' ' << c.b << ' ' << c.maxUlps;
    }
}

TYPED_TEST(FloatUtilTest, Classifies) {
    using Limits = std::numeric_limits<TypeParam>;
    EXPECT_TRUE(FloatUtil::IsNan(-Limits::quiet_NaN()) &&
                FloatUtil::IsSpecial(Limits::quiet_NaN()));
    EXPECT_TRUE(!FloatUtil::IsNan(Limits::infinity()) && FloatUtil::IsSpecial(-Limits::infinity()));
    EXPECT_FALSE(FloatUtil::IsSpecial(Limits::max()) || FloatUtil::IsSpecial(TypeParam{0}));
}

}  // namespace
}  // namespace lum::core
