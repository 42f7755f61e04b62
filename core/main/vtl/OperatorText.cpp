#include "core/main/vtl/OperatorText.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "lum/core/Check.h"

namespace lum::core {
namespace {

constexpr std::size_t kOperatorCount = std::size(kOperatorTypeNames);

const std::array<TStringCore, kOperatorCount>& GetTexts() {
    static const auto s_texts = [] {
        std::array<TStringCore, kOperatorCount> texts;
        std::transform(std::begin(kOperatorTypeNames), std::end(kOperatorTypeNames), texts.begin(),
                       [](std::u16string_view name) { return TStringCore(name); });
        return texts;
    }();
    return s_texts;
}

}  // namespace

const TStringCore& OperatorTypeToString(OperatorType type) {
    const auto typeIndex = static_cast<unsigned int>(type);
    LUM_CHECK_TEXT("(typeIndex) <= ((sizeof(s_strings)/sizeof(*(s_strings))) - 1)",
                   typeIndex < kOperatorCount, LumError::InvalidOperatorValue, L"type");
    return GetTexts()[typeIndex];
}

OperatorType OperatorTypeFromString(const TStringCore& text) {
    const auto& texts = GetTexts();
    const auto found = std::find(texts.begin(), texts.end(), text);
    if (found == texts.end()) {
        throw LumRuntimeException(LumError::UnknownTypeName, text);
    }
    return static_cast<OperatorType>(found - texts.begin());
}

}  // namespace lum::core
