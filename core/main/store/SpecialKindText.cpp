#include "lum/core/store/SpecialKindText.h"

#include <unordered_map>

#include "lum/core/Check.h"
#include "lum/core/serialize/SpecialKindUtil.h"

namespace lum::core {

TStringCore SpecialKindToString(SpecialKind kind) {
    const auto number = static_cast<unsigned int>(kind);
    LUM_CHECK(number < kSpecialKindCount, LumError::IllegalSpecialKind);
    return TStringCore(std::u16string_view(kSpecialKindNames[number]));
}

SpecialKind SpecialKindFromString(const TStringCore& name) {
    // Never freed, since threads may still ask while the process ends.
    static const auto& s_kinds = *[] {
        auto* const kinds = new std::unordered_map<TStringCore, SpecialKind>;
        for (unsigned int i = 0; i < kSpecialKindCount; ++i) {
            kinds->emplace(TStringCore(std::u16string_view(kSpecialKindNames[i])),
                           static_cast<SpecialKind>(i));
        }
        return kinds;
    }();
    const auto found = s_kinds.find(name);
    LUM_CHECK(found != s_kinds.end(), LumError::CannotParseSpecialKind);
    return found->second;
}

}  // namespace lum::core
