#pragma once

#include <type_traits>

#include "lum/core/functions/ElementTypes.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {

// The type under which the built-in functions of element type `T` are registered; AnyType for SV.
// LumDateTime stands for DateTime here, and functions of dates say so themselves.
template <FunctionElement T>
const Type* TypeOf() {
    if constexpr (std::is_same_v<T, bool>) {
        return BoolType::Get();
    } else if constexpr (std::is_same_v<T, int>) {
        return IntType::Get32();
    } else if constexpr (std::is_same_v<T, long long>) {
        return IntType::Get64();
    } else if constexpr (std::is_same_v<T, float>) {
        return RealType::Get32();
    } else if constexpr (std::is_same_v<T, double>) {
        return RealType::Get64();
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        return StringType::Get();
    } else if constexpr (std::is_same_v<T, LumDateTime>) {
        return DateTimeType::Get();
    } else if constexpr (std::is_same_v<T, LumColor>) {
        return ColorType::Get();
    } else {
        static_assert(std::is_same_v<T, SV>);
        return nullptr;
    }
}

// The key of a function of one input of type `T`.
template <FunctionElement T>
FunctionKey KeyOf(const wchar_t* name) {
    return FunctionKey(name, TypeOf<T>());
}

// The key of a function of two inputs.
template <FunctionElement T1, FunctionElement T2>
FunctionKey KeyOf(const wchar_t* name) {
    return FunctionKey(name, TypeOf<T1>(), TypeOf<T2>(), FunctionKey::ArgContainer::Separate);
}

// Calls `action` once for each of the types, as its template argument.
template <FunctionElement... T, typename Action>
void ForEachType(Action action) {
    (action.template operator()<T>(), ...);
}

}  // namespace lum::core
