#pragma once

#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/types/TypeRef.h"
#include "lum/core/utility/Fnv.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// What a function is found by: its name, the types of its inputs and the way in which the inputs
/// are passed. Registered functions and queries are both described by keys; in a registered one a
/// type may be VariableTypeRef::AnyType, which stands for a type of the caller's choice.
///
/// Threads: one object may be read on any threads at once.
/// Ownership: a value; the types belong to the library.
/// Errors: std::bad_alloc.
class LUM_CORE_API FunctionKey {
public:
    enum class ArgContainer : unsigned char {
        Separate = 0,  ///< One argument an input.
        Vector = 1,    ///< One vector with all inputs.
    };

    FunctionKey(const RInternString& name, TypeRefVec<VariableTypeRef> inputTypes,
                ArgContainer container)
        : m_name(name), m_inputTypes(std::move(inputTypes)), m_container(container) {}
    FunctionKey(const RInternString& name, VariableTypeRef firstType, VariableTypeRef secondType,
                ArgContainer container)
        : FunctionKey(name, TypeRefVec<VariableTypeRef>{firstType, secondType}, container) {}
    /// A key of one separate input.
    FunctionKey(const RInternString& name, VariableTypeRef type)
        : FunctionKey(name, TypeRefVec<VariableTypeRef>{type}, ArgContainer::Separate) {}

    /// A key of plain types.
    static FunctionKey FromNonVariableInputs(const RInternString& name,
                                             const std::vector<const Type*>& inputTypes,
                                             ArgContainer container);

    const RInternString& GetName() const noexcept { return m_name; }
    const TypeRefVec<VariableTypeRef>& GetInputTypes() const noexcept { return m_inputTypes; }
    ArgContainer GetInputArgContainer() const noexcept { return m_container; }
    void SetInputArgContainer(ArgContainer container) noexcept { m_container = container; }

    /// The hash that goes with IsPotentialOverloadCandidate. The types stay out of it, so that a
    /// query meets all overloads of its name, those with wild cards among them, in one look-up.
    /// Good within the process, as the ids of names are.
    uint64 GetPotentialOverloadHash() const noexcept {
        uint64 hash = HashCombine(0, m_name.GetStringId());
        hash = HashCombine(hash, static_cast<uint64>(m_container));
        return HashCombine(hash, m_inputTypes.size());
    }
    /// Whether the two have one name, one container and equally many inputs.
    bool IsPotentialOverloadCandidate(const FunctionKey& other) const noexcept {
        return m_name == other.m_name && m_container == other.m_container &&
               m_inputTypes.size() == other.m_inputTypes.size();
    }
    /// Whether the two are candidates of each other with the same base type, or AnyType, at each
    /// position: strings of different collations, and reals of different precisions, are the same.
    bool AreKeysExactlyEqual(const FunctionKey& other) const;

    /// The text of the key for messages: "sum(i, i)", "min(vector {l, AnyType})".
    /// Errors: std::out_of_range for an external type whose name is not registered.
    TStringCore ToString() const;

private:
    RInternString m_name;
    TypeRefVec<VariableTypeRef> m_inputTypes;
    ArgContainer m_container;
};

}  // namespace lum::core
