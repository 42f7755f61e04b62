#include "core/main/vtl/OperatorText.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "lum/core/Check.h"

namespace lum::core {
namespace {

constexpr std::size_t kOperatorCount = std::size(kOperatorTypeNames);

// A table in which each name has a place of its own, so that finding one takes one comparison. The
// factors are such that no two names meet.
constexpr std::size_t kPlaceCount = 64;

constexpr std::size_t PlaceOf(std::u16string_view name) noexcept {
    return (3 * name.size() + 10 * name.front() + 2 * name.back()) % kPlaceCount;
}

constexpr std::array<unsigned char, kPlaceCount> MakePlaces() {
    std::array<unsigned char, kPlaceCount> places{};
    for (std::size_t i = 0; i < kOperatorCount; ++i) {
        places[PlaceOf(kOperatorTypeNames[i])] = static_cast<unsigned char>(i);
    }
    return places;
}

constexpr std::array<unsigned char, kPlaceCount> kPlaces = MakePlaces();

constexpr bool HasEachNameAPlace() noexcept {
    for (std::size_t i = 0; i < kOperatorCount; ++i) {
        if (kPlaces[PlaceOf(kOperatorTypeNames[i])] != i) {
            return false;
        }
    }
    return true;
}
static_assert(HasEachNameAPlace());

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

OperatorType OperatorTypeFromString(std::u16string_view text) {
    const std::size_t number = text.empty() ? 0 : kPlaces[PlaceOf(text)];
    if (text != kOperatorTypeNames[number]) {
        throw LumRuntimeException(LumError::UnknownTypeName, TStringCore(text));
    }
    return static_cast<OperatorType>(number);
}

}  // namespace lum::core
