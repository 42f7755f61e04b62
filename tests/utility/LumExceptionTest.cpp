#include "lum/core/utility/LumException.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/utility/LumSize.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::LogCapture;

TEST(LumErrorTest, TextsOfCodes) {
    const auto textOf = [](int code) { return ErrorToString(static_cast<LumError>(code)); };
    EXPECT_EQ(textOf(0), L"no error");
    EXPECT_EQ(textOf(3), L"index out of bounds");
    for (const int unknown : {1, 404, -1, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(textOf(unknown), L"unspecified Lumera Runtime error") << unknown;
    }
    TStringCore all;
    // The numbers and texts are a contract: no letter of the table changes unnoticed.
    for (int code = 0; code <= 403; ++code) {
        all += textOf(code) + L"\n";
    }
    EXPECT_EQ(all.hash(), 0x732d88du);
}

TEST(LumExceptionTest, ComposesItsTexts) {
    const LumRuntimeException plain(LumError::OutOfBounds);
    EXPECT_STREQ(plain.what(), "index out of bounds");
    EXPECT_EQ(plain.GetDetails(), L"index out of bounds");
    EXPECT_TRUE(plain.GetContext().isEmpty());

    LumLogicException full(LumError::ExpectedBool, L"Int32 \u00e9", L"first");
    EXPECT_EQ(full.GetError(), LumError::ExpectedBool);
    EXPECT_STREQ(full.what(), "expected bool but was \nInt32 \u00e9");
    full.AppendContext(L"second");
    EXPECT_EQ(full.GetContext(), L"first\nsecond");
    EXPECT_EQ(full.GetDetails(), L"expected bool but was \nInt32 \u00e9");

    LumException bare(LumError::ExpectedBool, L"");
    EXPECT_STREQ(bare.what(), "expected bool but was ");
    bare.AppendContext(L"a");
    bare.AppendContext(L"b");
    EXPECT_EQ(bare.GetContext(), L"a\nb");
}

TEST(LumExceptionTest, ACopyKeepsTheContextAndAMoveDropsIt) {
    static_assert(!std::is_copy_assignable_v<LumException> &&
                  !std::is_move_assignable_v<LumRuntimeException>);
    LumRuntimeException original(LumError::InvalidKey, L"name", L"context");
    const LumRuntimeException copy(original);
    const LumRuntimeException moved(std::move(original));
    EXPECT_EQ(copy.GetContext(), L"context");
    EXPECT_TRUE(moved.GetContext().isEmpty());
    for (const LumRuntimeException* e : {&copy, &moved}) {
        EXPECT_EQ(e->GetError(), LumError::InvalidKey);
        EXPECT_STREQ(e->what(), "invalid key\nname");
        EXPECT_EQ(e->GetDetails(), L"invalid key\nname");
    }
}

TEST(LumSizeTest, NarrowsWhatFits) {
    EXPECT_EQ(LumSizeCastSafe(4294967295u), 4294967295u);
    EXPECT_LUM_PLAIN_ERROR(OutOfRange, "Value exceeds maximum legal value for lumsize_t",
                           LumSizeCastSafe(4294967296u));
}

/// The condition that `statement` reports, or its report where there is none; it must throw an
/// `Exception`.
template <typename Exception>
std::string ConditionOf(const std::function<void()>& statement) {
    const LogCapture capture;
    EXPECT_THROW(statement(), Exception);
    EXPECT_EQ(capture.GetLines().size(), 1u);
    std::string line = capture.GetLines().empty() ? "" : capture.GetLines()[0].text;
    line.erase(0, line.find(" -- "));
    const std::string before = " -- invalid key (condition \"";
    const std::string behind = "\" failed)";
    return line.starts_with(before) && line.ends_with(behind)
               ? line.substr(before.size(), line.size() - before.size() - behind.size())
               : line;
}

TEST(CheckTest, ReportsTheConditionAsWritten) {
    const int low = 1;
    const int* const pointer = nullptr;
    const std::string word = "x";
    const auto code = LumError::InvalidKey;
    const auto runtime = ConditionOf<LumRuntimeException>;
    const auto logic = ConditionOf<LumLogicException>;
    EXPECT_EQ(runtime([&] { LUM_CHECK(low < 0 && word == "a,b", code); }),
              "(low < 0 && word == \"a,b\")");
    EXPECT_EQ(runtime([&] { LUM_CHECK_NOT(word.size() == 1, code); }), "!(word.size() == 1)");
    EXPECT_EQ(runtime([&] { LUM_CHECK_NOT_NULL(pointer, code); }), "(pointer) != nullptr");
    EXPECT_EQ(runtime([&] { LUM_CHECK_NE(low, 1, code); }), "(low) != (1)");
    EXPECT_EQ(runtime([&] { LUM_CHECK_RANGE(low, 2, 3, code); }), "(low) >= (2) && (low) <= (3)");
    EXPECT_EQ(runtime([&] { LUM_CHECK_RANGE(low, -1, 0, code); }), "(low) >= (-1) && (low) <= (0)");
    EXPECT_EQ(runtime([&] { LUM_CHECK_TEXT("(other text)", low > 1, code, L"a"); }),
              "(other text)");
    EXPECT_EQ(runtime([&] { LUM_FAIL(code, L"a"); }), " -- invalid key");
    EXPECT_EQ(logic([&] { LUM_INVARIANT(low == 0, code); }), "(low == 0)");
    EXPECT_EQ(logic([&] { LUM_INVARIANT_NOT_NULL(pointer, code, L"a"); }), "(pointer) != nullptr");
}

TEST(CheckTest, LooksOnceAndMakesDetailsOnlyForAFailure) {
    int looks = 0;
    const auto unwanted = [] {
        ADD_FAILURE() << "details without a failure";
        return TStringCore();
    };
    const LogCapture capture;
    LUM_CHECK(++looks == 1, LumError::InvalidKey, unwanted());
    LUM_CHECK_NOT(++looks == 1, LumError::InvalidKey, unwanted());
    LUM_CHECK_NE(3, 4, LumError::InvalidKey, unwanted());
    LUM_CHECK_RANGE(4, 4, 4, LumError::InvalidKey, unwanted());
    LUM_INVARIANT(++looks == 3, LumError::InvalidKey, unwanted());
    EXPECT_EQ(looks, 3);
    EXPECT_TRUE(capture.GetLines().empty());
}

TEST(CheckTest, NamesTheFileFromOurFolderOn) {
    struct Case {
        const char* file;
        const char* named;
    };
    const Case cases[] = {
        {"core/main/store/StoreValue.cpp", "core/main/store/StoreValue"},
        {"/a/core/main/b.c/core/public/lum/core/types/Type.h", "core/public/lum/core/types/Type"},
        {"/a/core/public/x/core/main/types/Type.cpp", "core/main/types/Type"},
        {"/a/hardcore/main/core/_gen/lum/core/A.h", "core/_gen/lum/core/A"},
        {"../core/_gen_private/lum/core/A.h", "core/_gen_private/lum/core/A"},
        {"/usr/include/lum/core/store/A.h", "core/public/lum/core/store/A"},
        {"/home/host/Main.cpp", "/home/host/Main"},
    };
    for (const Case& c : cases) {
        const LogCapture capture;
        try {
            detail::FailRuntime({c.file, 51, "(a) != (b)"}, LumError::IllegalElementType, L"d");
        } catch (const LumRuntimeException& e) {
            EXPECT_EQ(e.GetContext().toStdString(), std::string("Source: ") + c.named + ":51");
            EXPECT_STREQ(e.what(), "illegal element type\nd");
        }
        ASSERT_EQ(capture.GetLines().size(), 1u);
        EXPECT_EQ(capture.GetLines()[0].text, std::string("Validation failed at ") + c.named +
                                                  ":51 -- illegal element type (condition "
                                                  "\"(a) != (b)\" failed)");
    }
}

}  // namespace
}  // namespace lum::core
