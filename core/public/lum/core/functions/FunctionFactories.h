#pragma once

#include <concepts>
#include <memory>
#include <vector>

#include "lum/core/functions/RegisteredFunctions.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/StoreType.h"

/// The types of all functions that registries hold, and the only casts to and from the untyped
/// pointer in which they are stored.
///
/// A function pointer may only be called as what it is, so the types are few, and an entry tells
/// which one it holds: the registry it stands in (unary, binary, multinary); for the first two
/// whether it IsCreator; for the last its output type.
///
/// Threads: factories may be called on any threads at once.
/// Ownership: a factory's functor belongs to the caller.
/// Errors: those of the factory.

namespace lum::core {

class IRawBinaryFunctor;
class IRawUnaryFunctor;

/// Makes a functor of one input: an IUnaryFunctor for the regular form, an IUnarySpecialFunctor for
/// the special form, of the entry's element types.
using UnaryFunctionFactory = std::unique_ptr<IRawUnaryFunctor> (*)();
/// The same from the values of a creator's inputs, in their order.
using UnaryCreatorFactory = std::unique_ptr<IRawUnaryFunctor> (*)(const std::vector<SV>&);
/// Makes a functor of two inputs: an IBinaryFunctor or an IBinarySpecialFunctor.
using BinaryFunctionFactory = std::unique_ptr<IRawBinaryFunctor> (*)();
using BinaryCreatorFactory = std::unique_ptr<IRawBinaryFunctor> (*)(const std::vector<SV>&);
/// The function itself: one result of a list of values. The built-in ones fail with NullArgument
/// for a null pointer among those that they look at. `Out` is the element type of the output type:
/// int, long long, float, double or bool.
template <typename Out>
using MultinaryFunction = Out (*)(const std::vector<SV>&);

/// An element type that a multinary function may give.
template <typename T>
concept MultinaryOutput = std::same_as<T, int> || std::same_as<T, long long> ||
    std::same_as<T, float> || std::same_as<T, double> || std::same_as<T, bool>;

namespace detail {

template <typename>
inline constexpr bool kIsMultinaryFunction = false;
template <MultinaryOutput Out>
inline constexpr bool kIsMultinaryFunction<MultinaryFunction<Out>> = true;

template <MultinaryOutput Out>
consteval StoreType StoreTypeOfOutput() {
    if constexpr (std::same_as<Out, int>) {
        return StoreType::Int32;
    } else if constexpr (std::same_as<Out, long long>) {
        return StoreType::Int64;
    } else if constexpr (std::same_as<Out, float>) {
        return StoreType::Real32;
    } else if constexpr (std::same_as<Out, double>) {
        return StoreType::Real64;
    } else {
        return StoreType::Bool;
    }
}

}  // namespace detail

/// One of the types of this header.
template <typename F>
concept FunctionFactory = std::same_as<F, UnaryFunctionFactory> ||
    std::same_as<F, UnaryCreatorFactory> || std::same_as<F, BinaryFunctionFactory> ||
    std::same_as<F, BinaryCreatorFactory> || detail::kIsMultinaryFunction<F>;

/// The pointer as registries take it.
template <FunctionFactory F>
RegisteredFunctions::FunctionPointer ToFunctionPointer(F factory) noexcept {
    return reinterpret_cast<RegisteredFunctions::FunctionPointer>(factory);
}

/// The pointer as it was before ToFunctionPointer, unchecked: calling it as another type is
/// undefined. LumRawFunctions and GetMultinaryFunction ask the entry first. Null for null.
template <FunctionFactory F>
F FromFunctionPointerUnchecked(RegisteredFunctions::FunctionPointer pointer) noexcept {
    return reinterpret_cast<F>(pointer);
}

/// The function of an entry of RegistryOfMultinaryFunctions; null where its output is not `Out`.
template <MultinaryOutput Out>
MultinaryFunction<Out> GetMultinaryFunction(const RegisteredFunctions& functions) noexcept {
    const OptionalTypeRef outputType = functions.GetOutputType();
    return outputType.HasType() && outputType->Is(detail::StoreTypeOfOutput<Out>())
               ? FromFunctionPointerUnchecked<MultinaryFunction<Out>>(functions.GetFunction())
               : nullptr;
}

}  // namespace lum::core
