#pragma once

#include <bit>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/main/store/ValueSet.h"
#include "lum/core/functions/BuiltinFunctions.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/functions/IBinaryFunctor.h"
#include "lum/core/functions/IUnaryFunctor.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "tests/functions/FunctionColumns.h"

/// Tables of functions, each row a form with a model of it. A table is everything that a registry
/// holds; each row is driven by its name, as an engine does, and compared with its model.
///
/// A form is compiled in each source that has a row of it, so that only its calls know its types;
/// what is called with which columns is written once, in FunctionTable.cpp.

namespace lum::core::functions_test {

using Types = TypeRefVec<VariableTypeRef>;

/// How a form differs from the usual one.
struct Options {
    const Type* dateType = DateTimeType::Get();  // Of each LumDateTime.
    Domain domain = Domain::All;                 // Of the last input.
    bool isAnyNaN = false;
    bool isStateful = false;
};

/// The typed interface of a functor; throws where it is another.
template <typename Typed, typename Raw>
Typed& As(const std::unique_ptr<Raw>& functor) {
    auto* const typed = dynamic_cast<Typed*>(functor.get());
    if (typed == nullptr) {
        throw std::runtime_error("the functor has other element types");
    }
    return *typed;
}

/// An element type as the tables know it.
struct ElementType {
    VariableTypeRef type;
    std::unique_ptr<AnyColumn> (*makeColumn)(test::Random&, lumsize_t);
};

template <FunctionElement T>
ElementType ElementTypeOf() {
    return {TypeFor<T>(), &Column<CellT<T>>::Make};
}

/// A part of a column of elements and of their kinds, of which regular forms leave the latter out.
struct Slice {
    RawDataView cells;
    RawDataView kinds;
};
using Slices = std::span<const Slice>;

template <FunctionElement T>
struct TypedSlice {
    TypedSlice(const Slice& slice)  // NOLINT(google-explicit-constructor)
        : cells(slice.cells.ViewAs<CellT<T>>()), kinds(slice.kinds.ViewAs<SpecialKind>()) {}

    T Get(uint64 index) const { return Cell<T>::Load(cells[index]); }
    void Set(uint64 index, T element) const { Cell<T>::Store(cells[index], std::move(element)); }
    void Set(uint64 index, ElementWithKind<T> element) const {
        Set(index, std::move(element.first));
        kinds[index] = element.second;
    }

    ArrayView<CellT<T>> cells;
    ArrayView<SpecialKind> kinds;
};

/// A functor of either number of inputs, as its factory gives it.
struct RawFunctor {
    template <typename Typed>
    Typed& GetTyped() const {
        if constexpr (std::is_base_of_v<IRawUnaryFunctor, Typed>) {
            return As<Typed>(unary);
        } else {
            return As<Typed>(binary);
        }
    }

    std::unique_ptr<IRawUnaryFunctor> unary;
    std::unique_ptr<IRawBinaryFunctor> binary;
};

/// The calls that know the types of a form. Its model and its functor take one element alike.
template <typename Signature>
struct Calls;

template <FunctionElement In, FunctionElement Out>
struct Calls<Out(In)> {
    using Functor = IUnaryFunctor<In, Out>;
    using Output = Out;
    static constexpr bool kIsSpecial = false;
    static std::vector<ElementType> GetInputs() { return {ElementTypeOf<In>()}; }

    static void Each(auto& function, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In> in = inputs[0];
        for (uint64 i = 0; i < out.cells.GetSize(); ++i) {
            out.Set(i, function(in.Get(i)));
        }
    }
    static void Vector(Functor& functor, Slices inputs, const TypedSlice<Out>& out) {
        functor.ApplyVector(TypedSlice<In>(inputs[0]).cells, out.cells);
    }
};

template <FunctionElement In, FunctionElement Out>
struct Calls<ElementWithKind<Out>(In, SpecialKind)> {
    using Functor = IUnarySpecialFunctor<In, Out>;
    using Output = Out;
    static constexpr bool kIsSpecial = true;
    static std::vector<ElementType> GetInputs() { return {ElementTypeOf<In>()}; }

    static void Each(auto& function, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In> in = inputs[0];
        for (uint64 i = 0; i < out.cells.GetSize(); ++i) {
            out.Set(i, function(in.Get(i), in.kinds[i]));
        }
    }
    static void Vector(Functor& functor, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In> in = inputs[0];
        functor.ApplyVector(in.cells, in.kinds, out.cells, out.kinds);
    }
};

template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct Calls<Out(In1, In2)> {
    using Functor = IBinaryFunctor<In1, In2, Out>;
    using Output = Out;
    static constexpr bool kIsSpecial = false;
    static std::vector<ElementType> GetInputs() {
        return {ElementTypeOf<In1>(), ElementTypeOf<In2>()};
    }

    static void Each(auto& function, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In1> in1 = inputs[0];
        const TypedSlice<In2> in2 = inputs[1];
        for (uint64 i = 0; i < out.cells.GetSize(); ++i) {
            out.Set(i, function(in1.Get(i), in2.Get(i)));
        }
    }
    static void Vector(Functor& functor, Slices inputs, const TypedSlice<Out>& out) {
        functor.ApplyVector(TypedSlice<In1>(inputs[0]).cells, TypedSlice<In2>(inputs[1]).cells,
                            out.cells);
    }
    static void Fold(Functor& functor, const TypedSlice<Out>& accumulator,
                     const TypedSlice<In2>& in, const TypedSlice<Out>& out,
                     FoldDirection direction) {
        functor.Fold(accumulator.cells[0], in.cells, out.cells, direction);
    }
};

template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct Calls<ElementWithKind<Out>(In1, SpecialKind, In2, SpecialKind)> {
    using Functor = IBinarySpecialFunctor<In1, In2, Out>;
    using Output = Out;
    static constexpr bool kIsSpecial = true;
    static std::vector<ElementType> GetInputs() {
        return {ElementTypeOf<In1>(), ElementTypeOf<In2>()};
    }

    static void Each(auto& function, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In1> in1 = inputs[0];
        const TypedSlice<In2> in2 = inputs[1];
        for (uint64 i = 0; i < out.cells.GetSize(); ++i) {
            out.Set(i, function(in1.Get(i), in1.kinds[i], in2.Get(i), in2.kinds[i]));
        }
    }
    static void Vector(Functor& functor, Slices inputs, const TypedSlice<Out>& out) {
        const TypedSlice<In1> in1 = inputs[0];
        const TypedSlice<In2> in2 = inputs[1];
        functor.ApplyVector(in1.cells, in1.kinds, in2.cells, in2.kinds, out.cells, out.kinds);
    }
    static void Fold(Functor& functor, const TypedSlice<Out>& accumulator,
                     const TypedSlice<In2>& in, const TypedSlice<Out>& out,
                     FoldDirection direction) {
        functor.Fold(accumulator.cells[0], accumulator.kinds[0], in.cells, in.kinds, out.cells,
                     out.kinds, direction);
    }
};

/// A form with its model, called through columns of any type.
class Form {
public:
    Form(bool isSpecialForm, std::vector<ElementType> inputTypes, ElementType outputType)
        : isSpecial(isSpecialForm), inputs(std::move(inputTypes)), output(outputType) {}
    virtual ~Form() = default;

    /// Computes element by element, from index 0 up.
    virtual void CallModel(Slices in, const Slice& out) const = 0;
    virtual void Apply(const RawFunctor& functor, Slices in, const Slice& out) const = 0;
    virtual void ApplyVector(const RawFunctor& functor, Slices in, const Slice& out) const = 0;
    /// Of forms with two inputs.
    virtual void Fold(const RawFunctor& functor, const Slice& accumulator, const Slice& in,
                      const Slice& out, FoldDirection direction) const = 0;

    const bool isSpecial;
    const std::vector<ElementType> inputs;
    const ElementType output;
};

template <typename Signature>
class FormOf : public Form {
public:
    using Call = Calls<Signature>;
    using Functor = typename Call::Functor;

    explicit FormOf(std::function<Signature> model)
        : Form(Call::kIsSpecial, Call::GetInputs(), ElementTypeOf<typename Call::Output>()),
          m_model(std::move(model)) {}

    void CallModel(Slices in, const Slice& out) const override {
        auto model = m_model;  // Each column has its own state.
        Call::Each(model, in, out);
    }
    void Apply(const RawFunctor& functor, Slices in, const Slice& out) const override {
        auto& typed = functor.GetTyped<Functor>();
        const auto apply = [&](const auto&... elements) { return typed.Apply(elements...); };
        Call::Each(apply, in, out);
    }
    void ApplyVector(const RawFunctor& functor, Slices in, const Slice& out) const override {
        Call::Vector(functor.GetTyped<Functor>(), in, out);
    }
    void Fold(const RawFunctor& functor, const Slice& accumulator, const Slice& in,
              const Slice& out, FoldDirection direction) const override {
        if constexpr (requires { &Call::Fold; }) {
            Call::Fold(functor.GetTyped<Functor>(), accumulator, in, out, direction);
        }
    }

private:
    const std::function<Signature> m_model;
};

/// A functor as a row tests it: the values that it is made from, and the form, whose model says
/// what it computes then.
struct Use {
    std::vector<SV> values;
    std::shared_ptr<const Form> form;
};

template <typename Signature>
Use MakeUse(std::vector<SV> values, std::function<Signature> model) {
    return {std::move(values), std::make_shared<FormOf<Signature>>(std::move(model))};
}

class FunctionTable {
public:
    /// A form that is made from nothing. The model's arguments and result tell its types.
    template <typename Function>
    void Add(const wchar_t* name, Function model, const Options& options = {}) {
        AddForm(name, options, /*isCreator=*/false, {}, {MakeUse({}, std::function(model))});
    }
    /// A creator, with uses of it. `valueTypes` are those of the values that it is made from.
    void AddCreator(const wchar_t* name, const Types& valueTypes, std::vector<Use> uses,
                    const Options& options = {}) {
        AddForm(name, options, /*isCreator=*/true, valueTypes, std::move(uses));
    }
    /// A creator from a constant: `model` takes it behind the arguments of `Signature`.
    template <typename Signature, typename T, typename Function>
    void AddWithConstant(const wchar_t* name, const std::vector<T>& constants, Function model) {
        const Type* const type = TypeFor<T>().Get();
        std::vector<Use> uses;
        for (const T& constant : constants) {
            uses.push_back(MakeUse<Signature>(
                {MakeStoreValue<T>(type, constant)},
                [=](const auto&... inputs) { return model(inputs..., constant); }));
        }
        AddCreator(name, {type}, std::move(uses));
    }
    /// A creator of a regular filter from a set: `model` takes an element and the members.
    template <FunctionElement T, typename Function>
    void AddWithSet(const wchar_t* name, const std::vector<std::vector<CellT<T>>>& sets,
                    Function model) {
        using Storage = typename TypeTraits<T>::Storage;
        const Type* const type = TypeFor<T>().Get();
        std::vector<Use> uses;
        for (const auto& members : sets) {
            auto values = MakeSetContainer<Storage>(type, 0);
            for (const CellT<T>& member : members) {
                if constexpr (std::is_trivially_copyable_v<Storage>) {
                    values->insert(std::bit_cast<Storage>(member));
                } else {
                    values->insert(member);
                }
            }
            uses.push_back(
                MakeUse<bool(T)>({factory::MakeSet<Storage>(type, std::move(values), nullptr)},
                                 [=](const T& element) { return model(element, members); }));
        }
        AddCreator(name, {SetType::Get(type)}, std::move(uses));
    }

    /// Drives every row. Columns are random, and so are the places where they begin.
    void Check(const FunctionRegistry& registry) const;

    /// The rows are what the registry holds, and no others.
    void ExpectToBe(const FunctionFormRegistry& functions, const FunctionRegistry& registry) const;

private:
    struct Row {
        std::string description;
        FunctionKey query;
        bool isCreator;
        Options options;
        std::vector<Use> uses;
    };

    void AddForm(const wchar_t* name, const Options& options, bool isCreator, Types valueTypes,
                 std::vector<Use> uses);

    std::vector<Row> m_rows;
};

/// All that a registry tells of a form, as one line.
std::string Describe(const FunctionKey& key, const FunctionInfo& info, bool isSpecial);

/// A registry of all built-in functions.
std::unique_ptr<FunctionRegistry> MakeBuiltinRegistry();

/// A built-in of two inputs of the same type.
std::unique_ptr<IRawBinaryFunctor> MakeBinary(const FunctionRegistry& registry, const wchar_t* name,
                                              const Type* type, bool isSpecial);

/// Sums, differences and products that wrap.
template <typename T, typename Operation>
T Wrapping(T a, T b, Operation operation) {
    if constexpr (std::is_integral_v<T>) {
        using Unsigned = std::make_unsigned_t<T>;
        return static_cast<T>(operation(static_cast<Unsigned>(a), static_cast<Unsigned>(b)));
    } else {
        return operation(a, b);
    }
}

}  // namespace lum::core::functions_test
