#include "lum/core/types/TupleType.h"

#include "core/main/types/Context.h"
#include "lum/core/Check.h"

namespace lum::core {

TupleType::TupleType(std::vector<const Type*>&& members)
    : AnonymousHeterogeneousType(StoreType::Tuple, std::move(members)) {
    std::vector<const Type*> base;
    base.reserve(GetMembers().size());
    for (const Type* const member : GetMembers()) {
        LUM_CHECK(IsPrimitiveStoreType(member->GetStoreType()), LumError::TuplePrimitivesOnly);
        base.push_back(member->GetBaseType());
    }
    SetBaseType(base == GetMembers() ? this : Get(std::move(base)));
    SetOffsets(Context::Get().MakeOffsets(GetMembers()));
}

const TupleType* TupleType::Get(std::vector<const Type*>&& members) {
    for (const Type* const member : members) {
        LUM_CHECK_NOT_NULL(member, LumError::IllegalElementType);
    }
    return Context::Get().GetTuple(std::move(members));
}

TStringCore TupleType::ToString() const {
    TStringCore text = Type::ToString();
    if (GetMembers().empty()) {
        return text;
    }
    text += u'{';
    bool isFirst = true;
    for (const Type* const member : GetMembers()) {
        if (!isFirst) {
            text += L", ";
        }
        text += member->ToString();
        isFirst = false;
    }
    text += u'}';
    return text;
}

}  // namespace lum::core
