// Any text: it is refused, or it is a path whose text with types reads back as a path of the same
// names and types and prints alike, with a cache and without; and the reader of lists over a
// running scanner takes it for one path too.
//
// Some paths cannot be spelled so that they read back: those with empty names or names of digits
// with a leading zero, and those with types whose parameters are no words or plain numbers. These
// are only printed.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/KeyPathSerializer.h"
#include "core/main/serialize/VtlScanner.h"
#include "fuzz/FuzzAssert.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/utility/Collation.h"

namespace {

using namespace lum::core;  // NOLINT(google-build-using-namespace): a target is a small program.

constexpr unsigned short kWordId = 1;
constexpr unsigned short kNoWordId = 2;

// Knows every locale, and compares none.
class AnyLocalePool final : public ICollatorPool {
public:
    const ICollator& GetCollator(const Collation&) const override {
        throw std::logic_error("nothing is compared here");
    }
    bool Equals(const Collation& a, const Collation& b) const override {
        return a.GetLocale() == b.GetLocale();
    }
};

void Register(unsigned short typeId, const TStringCore& name) {
    RegisterExternalType(
        typeId, name, [](const ValueExternal&) { return std::vector<unsigned char>(); },
        [](const ArrayView<const unsigned char>&) { return nullptr; });
}

bool SetUp() {
    SetCollatorPool(std::make_shared<AnyLocalePool>());
    Register(kWordId, L"ext");
    Register(kNoWordId, L"no word");
    return true;
}

TStringCore MakeText(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || data[0] != 0xFF || data[1] != 0xFE) {
        return TStringCore::fromUtf8(reinterpret_cast<const char*>(data), size);
    }
    TStringCore text;
    for (std::size_t i = 2; i + 1 < size; i += 2) {
        text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    }
    return text;
}

std::optional<KeyPath> TryParse(const TStringCore& text) {
    try {
        return KeyPath::ParseString(text);
    } catch (const LumRuntimeException&) {
        // Refusing a text that is no path is its job,
    } catch (const std::out_of_range&) {
        // and so it is for an external type that nobody registered.
    }
    return std::nullopt;
}

bool ReadsBack(const TStringCore& name) {
    const bool isNumber = std::all_of(name.begin(), name.end(),
                                      [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
    return !name.isEmpty() && !(isNumber && name.length() > 1 && name[0] == u'0');
}

bool ReadsBack(const Type& type) {
    if (const auto* real = type.TryAs<RealType>()) {
        return real == real->GetBaseType() || (real->GetPrecision() >= 0 && real->GetScale() >= 0);
    }
    if (const auto* external = type.TryAs<ExternalType>()) {
        return external->GetExternalTypeId() == kWordId;
    }
    if (const auto* keySet = type.TryAs<KeySetType>()) {
        return ReadsBack(*keySet->GetKeyType()) && ReadsBack(*keySet->GetElementType());
    }
    if (const auto* collection = type.TryAs<CollectionType>()) {
        return ReadsBack(*collection->GetElementType());
    }
    if (const auto* tuple = type.TryAs<TupleType>()) {
        return std::all_of(tuple->GetMembers().begin(), tuple->GetMembers().end(),
                           [](const Type* member) { return ReadsBack(*member); });
    }
    if (const auto* named = type.TryAs<NamedHeterogeneousType>()) {
        return std::all_of(named->GetMembers().begin(), named->GetMembers().end(),
                           [](const NamedHeterogeneousType::Member& member) {
                               return ReadsBack(member.GetName().GetValue()) &&
                                      ReadsBack(*member.GetType());
                           });
    }
    return true;
}

bool NamesReadBack(const KeyPath& path) {
    return std::all_of(
        path.GetSegments().begin(), path.GetSegments().end(),
        [](const KeySegment& segment) { return ReadsBack(segment.GetSegment().GetValue()); });
}

bool TypesReadBack(const KeyPath& path) {
    return std::all_of(path.GetSegments().begin(), path.GetSegments().end(),
                       [](const KeySegment& segment) {
                           return !segment.HasType() || ReadsBack(*segment.GetType());
                       });
}

bool IsSame(const KeyPath& a, const KeyPath& b) {
    return a == b &&
           std::equal(a.GetSegments().begin(), a.GetSegments().end(), b.GetSegments().begin(),
                      [](const KeySegment& left, const KeySegment& right) {
                          return left.TypeAwareEquals(right);
                      });
}

TStringCore TextOf(const KeyPath& path, bool includeTypes, KeyPathSerializerCache* cache) {
    TStringCore text;
    AppendKeyPath(text, path, includeTypes, cache);
    return text;
}

void CheckPath(const TStringCore& text, const KeyPath& path) {
    VtlScanner scanner(text);
    const std::vector<KeyPath> list = ReadKeyPaths(scanner);
    LUM_FUZZ_ASSERT(list.size() == 1 && IsSame(list.front(), path), text);

    const TStringCore typed = TextOf(path, /*includeTypes=*/true, nullptr);
    const TStringCore untyped = path.ToString();
    KeyPathSerializerCache cache;
    for (int i = 0; i < 2; ++i) {
        LUM_FUZZ_ASSERT(TextOf(path, /*includeTypes=*/true, &cache) == typed, text);
        LUM_FUZZ_ASSERT(TextOf(path, /*includeTypes=*/false, &cache) == untyped, text);
    }
    if (NamesReadBack(path)) {
        const std::optional<KeyPath> again = TryParse(untyped);
        LUM_FUZZ_ASSERT(again && *again == path, text);
        LUM_FUZZ_ASSERT(again->ToString() == untyped, text);
        if (TypesReadBack(path)) {
            const std::optional<KeyPath> typedAgain = TryParse(typed);
            LUM_FUZZ_ASSERT(typedAgain && IsSame(*typedAgain, path), text);
            LUM_FUZZ_ASSERT(TextOf(*typedAgain, /*includeTypes=*/true, nullptr) == typed, text);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    if (const std::optional<KeyPath> path = TryParse(text)) {
        CheckPath(text, *path);
    }
    return 0;
}
