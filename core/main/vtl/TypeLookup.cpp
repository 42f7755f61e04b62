#include "lum/core/Check.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/Type.h"
#include "lum/core/vtl/FunctionInputTypes.h"
#include "lum/core/vtl/FunctionSpec.h"
#include "lum/core/vtl/ITypeRecorder.h"
#include "lum/core/vtl/KeyPathTypeLookup.h"

namespace lum::core {

ITypeLookup::~ITypeLookup() = default;

ITypeRecorder::~ITypeRecorder() = default;

bool KeyPathTypeLookup::HasType(const KeyPath& path) const {
    return path.GetLeafSegment().HasType();
}

const Type* KeyPathTypeLookup::GetType(const KeyPath& path) const {
    const Type* const type = path.GetLeafSegment().GetType();
    if (type == nullptr) {
        LUM_FAIL(LumError::KeyNotFound, path.ToString());
    }
    return type;
}

bool KeyPathTypeLookup::IsKeyMap(const KeyPath& path) const {
    return GetType(path)->Is(StoreType::KeyMap);
}

std::vector<const Type*> GetFunctionInputTypes(const FunctionSpec& function,
                                               const ITypeLookup& lookup) {
    std::vector<const Type*> types;
    types.reserve(function.GetArgs().size());
    for (const ValueSpec& argument : function.GetArgs()) {
        types.push_back(argument.IsKey() ? lookup.GetType(argument.GetKeyPath())
                                         : argument.GetValue()->GetType());
    }
    return types;
}

}  // namespace lum::core
