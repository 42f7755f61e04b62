#pragma once

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::test {

inline constexpr int kStoreTypeCount = 16;

/// A type of each kind, for tests that go through all of them.
inline const core::Type* AnyTypeOf(core::StoreType storeType) {
    using namespace core;
    switch (storeType) {
        case StoreType::Tuple:
            return TupleType::Get({IntType::Get32()});
        case StoreType::External:
            return ExternalType::Get(7);
        case StoreType::Array:
            return ArrayType::Get(IntType::Get32());
        case StoreType::Set:
            return SetType::Get(IntType::Get32());
        case StoreType::KeySet:
            return KeySetType::Get(IntType::Get32(), IntType::Get32());
        case StoreType::KeyMap:
            return KeyMapType::Get({});
        case StoreType::Table:
            return TableType::Get({});
        default:
            return MakePrimitiveType(storeType);
    }
}

}  // namespace lum::test
