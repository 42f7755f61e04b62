#include "tests/support/RandomColumns.h"

#include <bit>
#include <limits>
#include <memory>
#include <utility>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/ColumnText.h"

namespace lum::test {
namespace {

using namespace core;

unsigned int RandomBits32(Random& random, const Type* type) {
    using Limits = std::numeric_limits<float>;
    const float reals[] = {0.0f,         -0.0f, 1.5f, Limits::infinity(), Limits::quiet_NaN(),
                           Limits::min()};
    const unsigned int integers[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    return type->Is(StoreType::Real32) ? std::bit_cast<unsigned int>(random.OneOf(reals))
                                       : random.OneOf(integers);
}

unsigned long long RandomBits64(Random& random, const Type* type) {
    using Limits = std::numeric_limits<double>;
    const double reals[] = {0.0,          -0.0, 1.5, -Limits::infinity(), Limits::quiet_NaN(),
                            Limits::max()};
    const unsigned long long integers[] = {0, 1, 1ull << 63, ~0ull};
    switch (type->GetStoreType()) {
        case StoreType::Real64:
            return std::bit_cast<unsigned long long>(random.OneOf(reals));
        case StoreType::Int64:
            return random.OneOf(integers);
        default:
            return LumDateTime(2000, 1, 1 + static_cast<int>(random.Below(5)), 0, 0, 0, 0)
                .GetValue();
    }
}

template <typename T>
T RandomValue(Random& random, const Type* type) {
    if constexpr (std::is_same_v<T, unsigned char>) {
        return static_cast<unsigned char>(random.Below(2));
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return RandomBits32(random, type);
    } else if constexpr (std::is_same_v<T, unsigned long long>) {
        return RandomBits64(random, type);
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        const wchar_t* const texts[] = {L"", L"a", L"A", L"it's \u00e4", L"longer than the handle"};
        return random.OneOf(texts);
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        return MakeRandomRow(random, &type->As<TupleType>());
    } else {
        const Type* const elementType = type->As<ArrayType>().GetElementType();
        return MakeRandomColumn(random, elementType, static_cast<lumsize_t>(random.Below(4)));
    }
}

SpecialKind RandomKind(Random& random) {
    return random.Below(2) == 0 ? SpecialKind::Normal
                                : static_cast<SpecialKind>(random.Below(kSpecialKindCount));
}

}  // namespace

std::vector<const Type*> GetElementTypes() {
    std::vector<const Type*> types{RealType::Get64(10, 2)};
    for (const char* const text :
         {"b", "i", "l", "f", "r", "s", "d", "t", "c", "P{b,i,l,f,r,s,d,t,c}"}) {
        types.push_back(TypeOf(text));
    }
    types.push_back(ArrayType::Get(TypeOf("i")));
    return types;
}

LumTuple MakeRandomRow(Random& random, const TupleType* type) {
    LumTuple row(type);
    for (lumsize_t i = 0; i < row.GetCount(); ++i) {
        const Type* const member = row.GetNthType(i);
        DispatchStorage(member->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            row.SetNthValueUnsafe<T>(i, RandomValue<T>(random, member));
        });
        row.SetNthSpecial(i, RandomKind(random));
    }
    return row;
}

SV MakeRandomColumn(Random& random, const Type* elementType, lumsize_t count) {
    const StoreType storeType = elementType->GetStoreType();
    const bool hasKinds = !IsCollectionStoreType(storeType) && random.Below(2) == 0;
    auto kinds = hasKinds ? std::make_unique<std::vector<SpecialKind>>(count) : nullptr;
    return DispatchStorage(storeType, [&]<typename T>(StorageTag<T>) {
        auto values = std::make_unique<std::vector<T>>(count);
        for (lumsize_t i = 0; i < count; ++i) {
            const bool repeats = i > 0 && random.Below(3) == 0;
            (*values)[i] = repeats ? (*values)[i - 1] : RandomValue<T>(random, elementType);
            if (hasKinds) {
                (*kinds)[i] = repeats ? (*kinds)[i - 1] : RandomKind(random);
            }
        }
        return factory::MakeArray<T>(elementType, std::move(values), nullptr, std::move(kinds),
                                     SortSpecOrder::UNORD);
    });
}

}  // namespace lum::test
