#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "lum/core/store/IStoreArray.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

struct RangeCase {
    lumsize_t start;
    lumsize_t length;
    unsigned step;
    const char* expected;
    const char* indexed = nullptr;  // What an array with indices gives, where that is different.
};

TEST(ArrayRangeTest, SelectsElements) {
    constexpr unsigned kDown = ~0u;  // A step of -1.
    const RangeCase cases[] = {
        {2, 3, 1, "i: 2 3 4"},
        {8, 5, 1, "i: 8 9"},
        {0, 0xFFFFFFFF, 1, "i: 0 1 2 3 4 5 6 7 8 9"},
        {0, 4, 3, "i: 0 3 6 9"},
        {0, 2, 3, "i: 0 3"},
        {9, 1, 7, "i: 9"},
        // Down to the first element: the position wraps round and ends the walk.
        {2, 5, kDown, "i: 2 1 0"},
        {7, 3, kDown - 1, "i: 7 5 3"},
        {3, 9, 0x80000000, "i: 3"},
        // A length of 0 wraps round to all that the stride reaches...
        {0, 0, 2, "i: 0 2 4 6 8"},
        {7, 0, 2, "i: 7 9"},
        {3, 0, kDown, "i: 3 2 1 0"},
        {4, 0, 1, "i:", "i: 4 5 6 7 8 9"},
        // ...and a start beyond the end is a start of 0 with a length of 0.
        {10, 5, 2, "i: 0 2 4 6 8"},
        {0xFFFFFFFF, 5, kDown, "i: 0"},
        {10, 5, 1, "i:", "i: 0 1 2 3 4 5 6 7 8 9"},
    };
    test::ForEachFlatForm(test::ColumnOf("i: 0 1 2 3 4 5 6 7 8 9"), [&](const SV& column) {
        for (const RangeCase& c : cases) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(c.start, c.length, c.step)));
            const bool isIndexed = column->AsArray().HasIndices() && c.indexed != nullptr;
            EXPECT_EQ(test::TextOf(column->AsArray().GetRange(c.start, c.length, c.step)),
                      isIndexed ? c.indexed : c.expected);
        }
        EXPECT_LUM_REPORT(OutOfBounds, "Illegal range step value", "",
                          column->AsArray().GetRange(0, 2, 0));
    });
}

TEST(ArrayRangeTest, EmptyArraysGiveEmptyRanges) {
    test::ForEachFlatForm(test::ColumnOf("s!:"), [](const SV& column) {
        for (const unsigned step : {1u, 2u, ~0u}) {
            EXPECT_EQ(test::TextOf(column->AsArray().GetRange(0, 3, step)), "s!:");
        }
    });
}

}  // namespace
}  // namespace lum::core
