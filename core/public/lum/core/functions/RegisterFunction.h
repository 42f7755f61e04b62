#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/LumBinaryFunctor.h"
#include "lum/core/functions/LumUnaryFunctor.h"
#include "lum/core/functions/RegistryOfBinaryFunctions.h"
#include "lum/core/functions/RegistryOfMultinaryFunctions.h"
#include "lum/core/functions/RegistryOfUnaryFunctions.h"

/// How a host adds a function of its own in one call. What is registered follows from what the
/// function looks like:
///
///     double ToCelsius(const double& fahrenheit);                       unary, regular
///     ElementWithKind<double> Half(const double&, SpecialKind);         unary, special
///     double Mean(const double&, const double&);                        binary, regular
///     ElementWithKind<int> Last(const int&, SpecialKind, const int&, SpecialKind);
///                                                                       binary, special
///     double Largest(const std::vector<SV>&);                           multinary
///
///     RegisterFunction<ToCelsius>(registry.GetUnaryFunctions(),
///                                 FunctionKey(L"toCelsius", RealType::Get64()),
///                                 RealType::Get64());
///
/// The types of elements are those of FunctionElement, by value or by const reference. An
/// overloaded function is named by a static_cast.
///
/// What needs more than a function is a class, a generator, whose call operator looks like one of
/// the first four. With a constructor from `const std::vector<SV>&` it is a creator, made anew for
/// each use from the values given there; without, it has a default constructor. With a call
/// operator that is not const it has state.
///
///     class AddConstant {
///     public:
///         explicit AddConstant(const std::vector<SV>& values);
///         double operator()(const double& element) const;
///     };
///
///     RegisterFunction<AddConstant>(registry.GetUnaryFunctions(), key, RealType::Get64(),
///                                   {RealType::Get64()});
///
/// A function is inlined into the loop over a column, so that it costs no call an element.
///
/// Threads: those of the registries.
/// Errors, nothing being registered and each with the function's name: UnaryInputCount or
///   BinaryInputCount where the key has another number of inputs; FunctionInputMismatch,
///   FunctionOutputMismatch where a type is not that of the function's element; then those of the
///   registry's own operation.

namespace lum::core {

namespace detail {

template <typename>
struct CallSignature;
template <typename Result, typename... Arguments>
struct CallSignature<Result(Arguments...)> {
    using Type = Result(std::remove_cvref_t<Arguments>...);
};
template <typename Result, typename... Arguments>
struct CallSignature<Result (*)(Arguments...)> : CallSignature<Result(Arguments...)> {};
template <typename Result, typename... Arguments>
struct CallSignature<Result (*)(Arguments...) noexcept> : CallSignature<Result(Arguments...)> {};
template <typename Class, typename Result, typename... Arguments>
struct CallSignature<Result (Class::*)(Arguments...)> : CallSignature<Result(Arguments...)> {
    static constexpr bool kIsStateful = true;
};
template <typename Class, typename Result, typename... Arguments>
struct CallSignature<Result (Class::*)(Arguments...) const> : CallSignature<Result(Arguments...)> {
    static constexpr bool kIsStateful = false;
};
template <typename Class, typename Result, typename... Arguments>
struct CallSignature<Result (Class::*)(Arguments...) noexcept>
    : CallSignature<Result (Class::*)(Arguments...)> {};
template <typename Class, typename Result, typename... Arguments>
struct CallSignature<Result (Class::*)(Arguments...) const noexcept>
    : CallSignature<Result (Class::*)(Arguments...) const> {};

/// What a signature makes: the functor of a generator, the generator of a plain function.
template <typename Signature>
struct FunctionShape;

template <FunctionElement In, FunctionElement Out>
struct FunctionShape<Out(In)> {
    static constexpr bool kIsSpecial = false;
    template <typename Generator>
    using Functor = LumUnaryFunctor<In, Out, Generator>;
    template <auto kFunction>
    using Generator = LumUnaryFunctorGenerator<In, Out, kFunction>;
    static bool HasInputs(const TypeRefVec<VariableTypeRef>& types) {
        return IsElementType<In>(types[0]);
    }
    static bool HasOutput(const OptionalTypeRef& type) { return IsElementType<Out>(type); }
};

template <FunctionElement In, FunctionElement Out>
struct FunctionShape<ElementWithKind<Out>(In, SpecialKind)> : FunctionShape<Out(In)> {
    static constexpr bool kIsSpecial = true;
    template <typename Generator>
    using Functor = LumUnarySpecialFunctor<In, Out, Generator>;
    template <auto kFunction>
    using Generator = LumUnarySpecialFunctorGenerator<In, Out, kFunction>;
};

template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct FunctionShape<Out(In1, In2)> {
    static constexpr bool kIsSpecial = false;
    template <typename Generator>
    using Functor = LumBinaryFunctor<In1, In2, Out, Generator>;
    template <auto kFunction>
    using Generator = LumBinaryFunctorGenerator<In1, In2, Out, kFunction>;
    static bool HasInputs(const TypeRefVec<VariableTypeRef>& types) {
        return IsElementType<In1>(types[0]) && IsElementType<In2>(types[1]);
    }
    static bool HasOutput(const OptionalTypeRef& type) { return IsElementType<Out>(type); }
};

template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct FunctionShape<ElementWithKind<Out>(In1, SpecialKind, In2, SpecialKind)>
    : FunctionShape<Out(In1, In2)> {
    static constexpr bool kIsSpecial = true;
    template <typename Generator>
    using Functor = LumBinarySpecialFunctor<In1, In2, Out, Generator>;
    template <auto kFunction>
    using Generator = LumBinarySpecialFunctorGenerator<In1, In2, Out, kFunction>;
};

/// What differs between the registries of one and of two inputs.
template <typename Registry>
struct RegistryShape;

template <>
struct RegistryShape<RegistryOfUnaryFunctions> {
    using Functor = IRawUnaryFunctor;
    static constexpr std::size_t kInputCount = 1;
    static constexpr LumError kCountError = LumError::UnaryInputCount;
};

template <>
struct RegistryShape<RegistryOfBinaryFunctions> {
    using Functor = IRawBinaryFunctor;
    static constexpr std::size_t kInputCount = 2;
    static constexpr LumError kCountError = LumError::BinaryInputCount;
};

template <typename Base, typename Functor>
std::unique_ptr<Base> MakeFunctor() {
    return std::make_unique<Functor>();
}

template <typename Base, typename Functor>
std::unique_ptr<Base> MakeCreatedFunctor(const std::vector<SV>& values) {
    return std::make_unique<Functor>(values);
}

template <typename Signature, typename Generator, typename Registry>
void RegisterGenerator(Registry& registry, FunctionKey&& key, OptionalTypeRef outputType,
                       TypeRefVec<VariableTypeRef>&& creatorInputTypes, bool isStateful) {
    using Shape = FunctionShape<Signature>;
    using Traits = RegistryShape<Registry>;
    using Functor = typename Shape::template Functor<Generator>;
    using Base = typename Traits::Functor;
    using enum FunctionFormRegistry::FunctionType;
    static_assert(std::derived_from<Functor, Base>,
                  "the function has not as many inputs as the registry's functions have");

    const TStringCore& name = key.GetName();
    LUM_CHECK(key.GetInputTypes().size() == Traits::kInputCount, Traits::kCountError, name);
    LUM_CHECK(Shape::HasInputs(key.GetInputTypes()), LumError::FunctionInputMismatch, name);
    // That a type is missing is for the registry to say.
    LUM_CHECK(!outputType.HasType() || Shape::HasOutput(outputType),
              LumError::FunctionOutputMismatch, name);
    if constexpr (std::constructible_from<Generator, const std::vector<SV>&>) {
        registry.Register(std::move(key), outputType, std::move(creatorInputTypes),
                          Shape::kIsSpecial ? CreatorSpecial : CreatorRegular, isStateful,
                          ToFunctionPointer(&MakeCreatedFunctor<Base, Functor>));
    } else {
        registry.Register(std::move(key), outputType, std::move(creatorInputTypes),
                          Shape::kIsSpecial ? Special : Regular, isStateful,
                          ToFunctionPointer(&MakeFunctor<Base, Functor>));
    }
}

}  // namespace detail

/// Registers a plain function. `Registry` is that of unary or of binary functions.
template <auto kFunction, typename Registry>
void RegisterFunction(Registry& registry, FunctionKey key, OptionalTypeRef outputType) {
    using Signature = typename detail::CallSignature<decltype(kFunction)>::Type;
    using Generator = typename detail::FunctionShape<Signature>::template Generator<kFunction>;
    detail::RegisterGenerator<Signature, Generator>(registry, std::move(key), outputType, {},
                                                    /*isStateful=*/false);
}

/// Registers a generator; `creatorInputTypes` are those of the values that its constructor takes.
template <typename Generator, typename Registry>
void RegisterFunction(Registry& registry, FunctionKey key, OptionalTypeRef outputType,
                      TypeRefVec<VariableTypeRef> creatorInputTypes = {}) {
    using Call = detail::CallSignature<decltype(&Generator::operator())>;
    detail::RegisterGenerator<typename Call::Type, Generator>(
        registry, std::move(key), outputType, std::move(creatorInputTypes), Call::kIsStateful);
}

/// Registers a function of a vector of values.
/// Errors: FunctionOutputMismatch; then those of RegistryOfMultinaryFunctions::Register.
template <auto kFunction>
requires detail::kIsMultinaryFunction<decltype(kFunction)>
void RegisterFunction(RegistryOfMultinaryFunctions& registry, FunctionKey key,
                      OptionalTypeRef outputType) {
    using Out = decltype(kFunction(std::declval<const std::vector<SV>&>()));
    LUM_CHECK(!outputType.HasType() || IsElementType<Out>(outputType),
              LumError::FunctionOutputMismatch, key.GetName());
    registry.Register(std::move(key), outputType, ToFunctionPointer(kFunction));
}

}  // namespace lum::core
