#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

#include "core/main/vtl/OperatorText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

static_assert(sizeof(OperatorType) == 4);

// In order of the numbers, which are fixed.
const char* const kNames =
    "applyByPartition block call case concat constant copy createKeySet createTable crossJoin "
    "distinct else filter fullOuterJoin groupBy index innerJoin leftOuterJoin map multiSort noOp "
    "reduce return reverse scan scanRight setValue setValueMulti slice when zip zipWith "
    "internalCreateKeyMap";

bool IsAmong(const std::string& names, const std::string& name) {
    return (" " + names + " ").find(" " + name + " ") != std::string::npos;
}

std::optional<StoreType> FixedTypeOf(const std::string& name) {
    return IsAmong("distinct filter multiSort", name) ? std::optional(StoreType::Bool)
           : IsAmong("block call", name)              ? std::optional(StoreType::String)
           : name == "index"                          ? std::optional(StoreType::Int32)
                                                      : std::nullopt;
}

TEST(OperatorTypeTest, TextsAndProperties) {
    std::istringstream names(kNames);
    int number = 0;
    for (std::string name; names >> name; ++number) {
        SCOPED_TRACE(name);
        const auto type = static_cast<OperatorType>(number);
        EXPECT_EQ(OperatorTypeToString(type).toStdString(), name);
        EXPECT_EQ(OperatorTypeFromString(TStringCore::fromUtf8(name)), type);
        EXPECT_EQ(CanOperatorHaveChildTransforms(type),
                  IsAmong("applyByPartition block case else groupBy when", name));
        EXPECT_EQ(OperatorHasTypedArgument(type),
                  IsAmong("concat constant reduce scan scanRight", name));
        EXPECT_EQ(OperatorHasFixedArgumentType(type), FixedTypeOf(name).has_value());
        if (FixedTypeOf(name)) {
            EXPECT_EQ(OperatorFixedArgumentType(type), FixedTypeOf(name));
        } else {
            EXPECT_LUM_REPORT(OperatorForbidsStoreType, "", "", OperatorFixedArgumentType(type));
        }
    }
    for (const int none : {number, 64, 65, -1, -33}) {
        SCOPED_TRACE(none);
        const auto type = static_cast<OperatorType>(none);
        EXPECT_LUM_REPORT(InvalidOperatorValue, "type",
                          "(typeIndex) <= ((sizeof(s_strings)/sizeof(*(s_strings))) - 1)",
                          OperatorTypeToString(type));
        EXPECT_LUM_REPORT(OperatorForbidsStoreType, "", "", OperatorFixedArgumentType(type));
        EXPECT_FALSE(CanOperatorHaveChildTransforms(type) || OperatorHasTypedArgument(type) ||
                     OperatorHasFixedArgumentType(type));
    }
    for (const std::string text : {"Map", "NOOP", "", " map", "map ", "ma", "maps"}) {
        EXPECT_LUM_PLAIN_ERROR(UnknownTypeName, text,
                               OperatorTypeFromString(TStringCore::fromUtf8(text)));
    }
}

}  // namespace
}  // namespace lum::core
