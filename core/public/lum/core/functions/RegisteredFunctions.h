#pragma once

#include "lum/core/Export.h"
#include "lum/core/types/TypeRef.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// What a registry holds under a key: the promises of the function, and the factories of its two
/// forms. The regular form works on plain elements, the special form on elements with their special
/// kinds; an entry has one of them or both.
///
/// Factories stand here without their types; FunctionFactories.h tells what they are and casts them
/// back.
///
/// Threads: one object may be read on any threads at once.
/// Ownership: factories are plain functions, which nobody owns.
/// Errors: LumRuntimeException as told; the object stays as it was.
class LUM_CORE_API RegisteredFunctions {
public:
    /// A factory or a function of any type.
    using FunctionPointer = void (*)();

    RegisteredFunctions(const RInternString& name, OptionalTypeRef outputType, bool isCreator,
                        bool isStateful) noexcept
        : m_name(name),
          m_outputType(outputType),
          m_isCreator(isCreator),
          m_isStateful(isStateful) {}

    const RInternString& GetFunctionName() const noexcept { return m_name; }
    OptionalTypeRef GetOutputType() const noexcept { return m_outputType; }
    /// Whether the factories take values, as creator factories do.
    bool IsCreator() const noexcept { return m_isCreator; }
    bool IsStateful() const noexcept { return m_isStateful; }

    /// The regular form; null until set.
    FunctionPointer GetFunction() const noexcept { return m_function; }
    /// The special form; null until set.
    FunctionPointer GetSpecialFunction() const noexcept { return m_specialFunction; }
    bool HasFunction() const noexcept { return m_function != nullptr; }
    bool HasSpecialFunction() const noexcept { return m_specialFunction != nullptr; }

    /// Errors: NullTransformFunction for null, with the function's name.
    void SetFunction(FunctionPointer function);
    /// Errors: NullTransformFunction for null, with the function's name.
    void SetSpecialFunction(FunctionPointer function);

private:
    RInternString m_name;
    OptionalTypeRef m_outputType;
    bool m_isCreator;
    bool m_isStateful;
    FunctionPointer m_function = nullptr;
    FunctionPointer m_specialFunction = nullptr;
};

}  // namespace lum::core
