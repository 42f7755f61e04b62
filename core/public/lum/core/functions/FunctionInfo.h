#pragma once

#include <utility>

#include "lum/core/Export.h"
#include "lum/core/types/TypeRef.h"

namespace lum::core {

/// What a registered key promises to whoever plans a call, without the function itself.
///
/// Threads: one object may be read on any threads at once.
/// Ownership: a value; the types belong to the library.
/// Errors: std::bad_alloc.
class LUM_CORE_API FunctionInfo {
public:
    /// A function that is made without values.
    FunctionInfo(OptionalTypeRef outputType, bool isCreator, bool isStateful)
        : FunctionInfo({}, outputType, isCreator, isStateful) {}
    FunctionInfo(TypeRefVec<VariableTypeRef>&& creatorInputTypes, OptionalTypeRef outputType,
                 bool isCreator, bool isStateful)
        : m_creatorInputTypes(std::move(creatorInputTypes)),
          m_isCreator(isCreator),
          m_isStateful(isStateful),
          m_outputType(outputType) {}

    /// The types of the values that a creator is given to make the function.
    const TypeRefVec<VariableTypeRef>& GetCreatorInputTypes() const noexcept {
        return m_creatorInputTypes;
    }
    OptionalTypeRef GetOutputType() const noexcept { return m_outputType; }
    /// Whether the function is made anew for each use, from literals or sets.
    bool IsCreator() const noexcept { return m_isCreator; }
    /// Whether the function carries state from element to element.
    bool IsStateful() const noexcept { return m_isStateful; }

    /// Whether all but IsStateful agree: state is a matter of running the function, not of what it
    /// takes and gives.
    friend bool operator==(const FunctionInfo& a, const FunctionInfo& b) noexcept {
        return a.m_outputType == b.m_outputType && a.m_isCreator == b.m_isCreator &&
               a.m_creatorInputTypes == b.m_creatorInputTypes;
    }
    /// The hash that goes with operator==; good within the process, as those of types are.
    uint64 GetHashValue() const noexcept;

private:
    TypeRefVec<VariableTypeRef> m_creatorInputTypes;
    bool m_isCreator;
    bool m_isStateful;
    OptionalTypeRef m_outputType;
};

}  // namespace lum::core
