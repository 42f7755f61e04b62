#pragma once

#include <memory>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/functions/RegisteredFunctions.h"

namespace lum::core {

/// A copy of what a unary or a binary registry holds under a key, with factories of their true
/// types. `RawFunctor` is what they make, IRawUnaryFunctor or IRawBinaryFunctor.
///
/// An entry has factories of one kind, that of its first registration: those of a creator take
/// values. The factory of a form that the entry does not have, and of the other kind, is null.
///
/// Threads: one object may be read on any threads at once.
/// Ownership: a value.
template <typename RawFunctor>
class LumRawFunctions {
public:
    using Factory = std::unique_ptr<RawFunctor> (*)();
    using CreatorFactory = std::unique_ptr<RawFunctor> (*)(const std::vector<SV>&);

    /// Errors: NullTransformFunction where the entry has neither form, with the function's name.
    explicit LumRawFunctions(const RegisteredFunctions& functions)
        : m_name(functions.GetFunctionName()),
          m_outputType(functions.GetOutputType()),
          m_isCreator(functions.IsCreator()),
          m_isStateful(functions.IsStateful()),
          m_regularFactory(functions.GetFunction()),
          m_specialFactory(functions.GetSpecialFunction()) {
        LUM_CHECK(m_regularFactory || m_specialFactory, LumError::NullTransformFunction, m_name);
    }

    const RInternString& GetFunctionName() const noexcept { return m_name; }
    OptionalTypeRef GetOutputType() const noexcept { return m_outputType; }
    bool IsCreator() const noexcept { return m_isCreator; }
    bool IsStateful() const noexcept { return m_isStateful; }
    bool HasRegularForm() const noexcept { return m_regularFactory != nullptr; }
    bool HasSpecialForm() const noexcept { return m_specialFactory != nullptr; }

    Factory GetRegularFactory() const noexcept { return AsFactory(m_regularFactory); }
    Factory GetSpecialFactory() const noexcept { return AsFactory(m_specialFactory); }
    CreatorFactory GetRegularCreatorFactory() const noexcept { return AsCreator(m_regularFactory); }
    CreatorFactory GetSpecialCreatorFactory() const noexcept { return AsCreator(m_specialFactory); }

private:
    using FunctionPointer = RegisteredFunctions::FunctionPointer;

    Factory AsFactory(FunctionPointer pointer) const noexcept {
        return m_isCreator ? nullptr : FromFunctionPointerUnchecked<Factory>(pointer);
    }
    CreatorFactory AsCreator(FunctionPointer pointer) const noexcept {
        return m_isCreator ? FromFunctionPointerUnchecked<CreatorFactory>(pointer) : nullptr;
    }

    RInternString m_name;
    OptionalTypeRef m_outputType;
    bool m_isCreator;
    bool m_isStateful;
    FunctionPointer m_regularFactory;
    FunctionPointer m_specialFactory;
};

using LumRawUnaryFunctions = LumRawFunctions<IRawUnaryFunctor>;
using LumRawBinaryFunctions = LumRawFunctions<IRawBinaryFunctor>;

}  // namespace lum::core
