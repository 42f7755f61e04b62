#include "lumsys/LumeraError.h"

#include <gtest/gtest.h>

namespace lumsys {
namespace {

TEST(LumeraErrorTest, TellsItsMessageElseItsName) {
    const LumeraError named = LumeraError::MakeError(0xBA363583, L"LumeraException_0xBA363583");
    EXPECT_EQ(named.GetKey(), 0xBA363583u);
    EXPECT_STREQ(named.what(), "LumeraException_0xBA363583");
    EXPECT_TRUE(named.GetMessage().isEmpty());

    const LumeraError told = LumeraError::MakeError(1, L"name", L"state=\u00e9");
    EXPECT_EQ(told.GetName(), L"name");
    EXPECT_STREQ(told.what(), "state=\u00e9");
}

TEST(LumeraErrorTest, ThrownLogicExceptionKnowsWhereItArose) {
    const LumeraError error = LumeraError::MakeError(0xB0CF49DE, L"name", L"message");
    try {
        ThrowLogicException("core/main/Task", 17, "isReady", error);
    } catch (const std::exception& e) {
        const auto* const thrown = dynamic_cast<const LogicException*>(&e);
        ASSERT_NE(thrown, nullptr);
        EXPECT_EQ(thrown->GetKey(), 0xB0CF49DEu);
        EXPECT_STREQ(thrown->what(), "message");
        EXPECT_EQ(thrown->GetInfo().file, "core/main/Task");
        EXPECT_EQ(thrown->GetInfo().line, 17);
        EXPECT_EQ(thrown->GetInfo().condition, "isReady");
    }
    EXPECT_TRUE(error.GetInfo().file.empty());
}

}  // namespace
}  // namespace lumsys
