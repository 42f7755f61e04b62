#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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

namespace lum::core::functions_test {

using Types = TypeRefVec<VariableTypeRef>;

/// How a form differs from the usual one.
struct Options {
    const Type* dateType = DateTimeType::Get();  // Of each LumDateTime.
    Domain domain = Domain::All;                 // Of the last input.
    bool isAnyNaN = false;
    bool isStateful = false;
};

/// A functor as a row tests it: the values that it is made from, and what it computes then.
template <typename Model>
struct Use {
    std::vector<SV> values;
    Model model;
};

/// A column and its kinds, of which regular forms leave the latter out.
template <FunctionElement T>
struct ColumnWithKinds {
    ColumnWithKinds(test::Random& random, lumsize_t count)
        : cells(random, count), kinds(random, count) {}
    ColumnWithKinds(test::Random& random, const std::vector<CellT<T>>& allCells,
                    const std::vector<SpecialKind>& allKinds)
        : cells(random, allCells), kinds(random, allKinds) {}

    Column<CellT<T>> cells;
    Column<SpecialKind> kinds;
};

/// What a form must give: cells, kinds, and of a fold the accumulator.
template <FunctionElement T>
struct Expected {
    void Set(lumsize_t index, const ElementWithKind<T>& value) {
        core::Cell<T>::Store(cells[index], value.first);
        kinds[index] = value.second;
    }
    void Check(const char* what, ColumnWithKinds<T>& column, bool isSpecial,
               const Options& options) const {
        column.cells.Expect(what, cells, options.isAnyNaN);
        if (isSpecial) {
            column.kinds.Expect(what, kinds);
        }
    }

    std::vector<CellT<T>> cells;
    std::vector<SpecialKind> kinds;
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

template <bool kSpecial, FunctionElement In, FunctionElement Out>
struct UnaryForm {
    using Output = Out;
    using Functor =
        std::conditional_t<kSpecial, IUnarySpecialFunctor<In, Out>, IUnaryFunctor<In, Out>>;
    static constexpr bool kIsSpecial = kSpecial;

    static Types GetInputTypes() { return {TypeFor<In>()}; }
    static const RegistryOfUnaryFunctions& GetRegistry(const IFunctionLookup& lookup) {
        return lookup.GetUnaryFunctions();
    }

    // Each use of a functor takes one from `make`, since those with state serve one column.
    template <typename Make, typename Model>
    static void Check(const Make& make, const Model& model, const Options& options,
                      test::Random& random) {
        ForEachColumn(random, [&](lumsize_t count, Palette palette) {
            const auto cells = AnyCells<CellT<In>>(random, count, palette, options.domain);
            const auto kinds = AnyKinds(random, count);
            Expected<Out> expected{std::vector<CellT<Out>>(count), std::vector<SpecialKind>(count)};
            Model compute = model;
            for (lumsize_t i = 0; i < count; ++i) {
                const In element = core::Cell<In>::Load(cells[i]);
                if constexpr (kSpecial) {
                    expected.Set(i, compute(element, kinds[i]));
                } else {
                    expected.Set(i, {compute(element), SpecialKind::Normal});
                }
            }

            ColumnWithKinds<In> input(random, cells, kinds);
            const auto run = [&](const char* what, auto&& apply) {
                ColumnWithKinds<Out> output(random, count);
                const auto functor = make();
                apply(functor, output);
                expected.Check(what, output, kSpecial, options);
            };
            run("raw", [&](auto& functor, auto& output) {
                if constexpr (kSpecial) {
                    functor->ApplyRaw(input.cells.PayloadView(), input.kinds.PayloadView(),
                                      output.cells.View(), output.kinds.View());
                } else {
                    functor->ApplyRaw(input.cells.PayloadView(), output.cells.View());
                }
            });
            run("typed",
                [&](auto& functor, auto& output) { Apply(As<Functor>(functor), input, output); });
            if (count <= 70) {
                run("scalar", [&](auto& functor, auto& output) {
                    for (lumsize_t i = 0; i < count; ++i) {
                        const In element = core::Cell<In>::Load(cells[i]);
                        ElementWithKind<Out> value;
                        if constexpr (kSpecial) {
                            value = As<Functor>(functor).Apply(element, kinds[i]);
                        } else {
                            value.first = As<Functor>(functor).Apply(element);
                        }
                        core::Cell<Out>::Store(output.cells.Cells()[i], value.first);
                        output.kinds.Cells()[i] = value.second;
                    }
                });
            }
            if constexpr (std::is_same_v<CellT<In>, CellT<Out>>) {
                ColumnWithKinds<Out> both(random, cells, kinds);
                const auto functor = make();
                Apply(As<Functor>(functor), both, both);
                expected.Check("in place", both, kSpecial, options);
            }
        });
    }

private:
    static void Apply(Functor& functor, auto& input, auto& output) {
        if constexpr (kSpecial) {
            functor.ApplyVector(input.cells.Cells(), input.kinds.Cells(), output.cells.Cells(),
                                output.kinds.Cells());
        } else {
            functor.ApplyVector(input.cells.Cells(), output.cells.Cells());
        }
    }
};

template <bool kSpecial, FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct BinaryForm {
    using Output = Out;
    using Functor = std::conditional_t<kSpecial, IBinarySpecialFunctor<In1, In2, Out>,
                                       IBinaryFunctor<In1, In2, Out>>;
    static constexpr bool kIsSpecial = kSpecial;

    static Types GetInputTypes() { return {TypeFor<In1>(), TypeFor<In2>()}; }
    static const RegistryOfBinaryFunctions& GetRegistry(const IFunctionLookup& lookup) {
        return lookup.GetBinaryFunctions();
    }

    template <typename Make, typename Model>
    static void Check(const Make& make, const Model& model, const Options& options,
                      test::Random& random) {
        const auto functor = make();
        ForEachColumn(random, [&](lumsize_t count, Palette palette) {
            auto cells = AnyCells<CellT<In2>>(random, count, palette, options.domain);
            const auto kinds = AnyKinds(random, count);
            if (kSpecial && options.domain == Domain::Divisors) {
                // What stands below a special is not looked at.
                for (lumsize_t i = 0; i < count; ++i) {
                    cells[i] = kinds[i] == SpecialKind::Normal ? cells[i] : CellT<In2>();
                }
            }
            CheckApply(functor, model, cells, kinds, palette, options, random);
            if constexpr (std::is_same_v<In1, Out>) {
                constexpr FoldDirection kAnyButForward{-2};
                for (const FoldDirection direction :
                     {FoldDirection::Forward,
                      random.Below(2) == 0 ? FoldDirection::Backward : kAnyButForward}) {
                    CheckFold(functor, model, cells, kinds, palette, direction, options, random);
                }
            }
        });
    }

private:
    static ElementWithKind<Out> Compute(const auto& model, const CellT<In1>& cell1,
                                        SpecialKind kind1, const CellT<In2>& cell2,
                                        SpecialKind kind2) {
        const In1 element1 = core::Cell<In1>::Load(cell1);
        const In2 element2 = core::Cell<In2>::Load(cell2);
        if constexpr (kSpecial) {
            return model(element1, kind1, element2, kind2);
        } else {
            return {model(element1, element2), SpecialKind::Normal};
        }
    }

    static void CheckApply(const auto& functor, const auto& model,
                           const std::vector<CellT<In2>>& cells2,
                           const std::vector<SpecialKind>& kinds2, Palette palette,
                           const Options& options, test::Random& random) {
        const auto count = static_cast<lumsize_t>(cells2.size());
        const auto cells1 = AnyCells<CellT<In1>>(random, count, palette);
        const auto kinds1 = AnyKinds(random, count);
        Expected<Out> expected{std::vector<CellT<Out>>(count), std::vector<SpecialKind>(count)};
        for (lumsize_t i = 0; i < count; ++i) {
            expected.Set(i, Compute(model, cells1[i], kinds1[i], cells2[i], kinds2[i]));
        }
        ColumnWithKinds<In1> input1(random, cells1, kinds1);
        ColumnWithKinds<In2> input2(random, cells2, kinds2);

        ColumnWithKinds<Out> raw(random, count);
        if constexpr (kSpecial) {
            functor->ApplyRaw(input1.cells.PayloadView(), input1.kinds.PayloadView(),
                              input2.cells.PayloadView(), input2.kinds.PayloadView(),
                              raw.cells.View(), raw.kinds.View());
        } else {
            functor->ApplyRaw(input1.cells.PayloadView(), input2.cells.PayloadView(),
                              raw.cells.View());
        }
        expected.Check("raw", raw, kSpecial, options);
        ColumnWithKinds<Out> typed(random, count);
        Apply(As<Functor>(functor), input1, input2, typed);
        expected.Check("typed", typed, kSpecial, options);
        if constexpr (std::is_same_v<CellT<In1>, CellT<Out>>) {
            ColumnWithKinds<Out> both(random, cells1, kinds1);
            Apply(As<Functor>(functor), both, input2, both);
            expected.Check("in place of the first", both, kSpecial, options);
        }
        if constexpr (std::is_same_v<CellT<In2>, CellT<Out>>) {
            ColumnWithKinds<Out> both(random, cells2, kinds2);
            Apply(As<Functor>(functor), input1, both, both);
            expected.Check("in place of the second", both, kSpecial, options);
        }
        for (lumsize_t i = 0; i < std::min(count, lumsize_t{70}); ++i) {
            CellT<Out> cell{};
            SpecialKind kind = expected.kinds[i];
            const In1 element1 = core::Cell<In1>::Load(cells1[i]);
            const In2 element2 = core::Cell<In2>::Load(cells2[i]);
            if constexpr (kSpecial) {
                auto value = As<Functor>(functor).Apply(element1, kinds1[i], element2, kinds2[i]);
                core::Cell<Out>::Store(cell, value.first);
                kind = value.second;
            } else {
                core::Cell<Out>::Store(cell, As<Functor>(functor).Apply(element1, element2));
            }
            if (!Column<CellT<Out>>::AreSame(cell, expected.cells[i], options.isAnyNaN) ||
                kind != expected.kinds[i]) {
                throw std::runtime_error("scalar: " + Column<CellT<Out>>::Show(cell));
            }
        }
    }

    // Folds with and without outputs, raw and typed, whole and in two pieces.
    static void CheckFold(const auto& functor, const auto& model,
                          const std::vector<CellT<In2>>& cells,
                          const std::vector<SpecialKind>& kinds, Palette palette,
                          FoldDirection direction, const Options& options, test::Random& random) {
        const auto count = static_cast<lumsize_t>(cells.size());
        const bool isForward = direction == FoldDirection::Forward;
        const auto firstCell = AnyCells<CellT<Out>>(random, 1, palette);
        const std::vector<SpecialKind> firstKind = {random.Below(2) == 0 ? SpecialKind::Normal
                                                                         : AnyKind(random)};
        Expected<Out> expected{std::vector<CellT<Out>>(count), std::vector<SpecialKind>(count)};
        Expected<Out> last{firstCell, firstKind};
        for (lumsize_t step = 0; step < count; ++step) {
            const lumsize_t i = isForward ? step : count - 1 - step;
            auto value = Compute(model, last.cells[0], last.kinds[0], cells[i], kinds[i]);
            last.Set(0, value);
            expected.Set(i, value);
        }

        ColumnWithKinds<In2> input(random, cells, kinds);
        const auto cut = static_cast<lumsize_t>(random.Below(count + 1));
        for (const bool hasOutputs : {false, true}) {
            const auto run = [&](const char* what, auto&& fold) {
                ColumnWithKinds<Out> accumulator(random, firstCell, firstKind);
                ColumnWithKinds<Out> output(random, hasOutputs ? count : 0);
                fold(accumulator, output);
                last.Check(what, accumulator, kSpecial, options);
                if (hasOutputs) {
                    expected.Check(what, output, kSpecial, options);
                }
            };
            run("raw fold", [&](auto& accumulator, auto& output) {
                if constexpr (kSpecial) {
                    functor->FoldRaw(accumulator.cells.View(), accumulator.kinds.View(),
                                     input.cells.PayloadView(), input.kinds.PayloadView(),
                                     output.cells.View(), output.kinds.View(), direction);
                } else {
                    functor->FoldRaw(accumulator.cells.View(), input.cells.PayloadView(),
                                     output.cells.View(), direction);
                }
            });
            const auto foldPiece = [&](auto& accumulator, auto& output, lumsize_t start,
                                       lumsize_t length) {
                const auto slice = [&](auto view) {
                    return view.IsEmpty() ? view : view.GetSlice(start, length);
                };
                if constexpr (kSpecial) {
                    As<Functor>(functor).Fold(
                        accumulator.cells.Cells()[0], accumulator.kinds.Cells()[0],
                        slice(input.cells.Cells()), slice(input.kinds.Cells()),
                        slice(output.cells.Cells()), slice(output.kinds.Cells()), direction);
                } else {
                    As<Functor>(functor).Fold(accumulator.cells.Cells()[0],
                                              slice(input.cells.Cells()),
                                              slice(output.cells.Cells()), direction);
                }
            };
            run("typed fold",
                [&](auto& accumulator, auto& output) { foldPiece(accumulator, output, 0, count); });
            run("fold in pieces", [&](auto& accumulator, auto& output) {
                foldPiece(accumulator, output, isForward ? 0 : cut, isForward ? cut : count - cut);
                foldPiece(accumulator, output, isForward ? cut : 0, isForward ? count - cut : cut);
            });
        }
    }

    static void Apply(Functor& functor, auto& input1, auto& input2, auto& output) {
        if constexpr (kSpecial) {
            functor.ApplyVector(input1.cells.Cells(), input1.kinds.Cells(), input2.cells.Cells(),
                                input2.kinds.Cells(), output.cells.Cells(), output.kinds.Cells());
        } else {
            functor.ApplyVector(input1.cells.Cells(), input2.cells.Cells(), output.cells.Cells());
        }
    }
};

/// The form that a model is one of, as its arguments tell.
template <typename Model>
struct FormOf;
template <FunctionElement In, FunctionElement Out>
struct FormOf<std::function<Out(In)>> : UnaryForm<false, In, Out> {};
template <FunctionElement In, FunctionElement Out>
struct FormOf<std::function<ElementWithKind<Out>(In, SpecialKind)>> : UnaryForm<true, In, Out> {};
template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct FormOf<std::function<Out(In1, In2)>> : BinaryForm<false, In1, In2, Out> {};
template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
struct FormOf<std::function<ElementWithKind<Out>(In1, SpecialKind, In2, SpecialKind)>>
    : BinaryForm<true, In1, In2, Out> {};

inline std::string TypeText(const TypeRef& type) {
    return type.Get() == nullptr ? "AnyType" : type.Get()->ToString().toStdString();
}

/// All that a registry tells of a form, as one line.
inline std::string Describe(const FunctionKey& key, const FunctionInfo& info, bool isSpecial) {
    std::string text = key.ToString().toStdString() + " -> " + TypeText(info.GetOutputType()) +
                       (isSpecial ? " special" : " regular");
    text += info.IsCreator() ? ", made from" : "";
    for (const VariableTypeRef& type : info.GetCreatorInputTypes()) {
        text += " " + TypeText(type);
    }
    return text + (info.IsStateful() ? ", stateful" : "");
}

class FunctionTable {
public:
    /// A form that is made from nothing. The model's arguments and result tell its types.
    template <typename Function>
    void Add(const wchar_t* name, Function model, const Options& options = {}) {
        using Model = decltype(std::function(model));
        AddForm<Model>(name, options, /*isCreator=*/false, {}, {{{}, Model(model)}});
    }
    /// A creator, with uses of it. `valueTypes` are those of the values that it is made from.
    template <typename Signature>
    void AddCreator(const wchar_t* name, const Types& valueTypes,
                    std::vector<Use<std::function<Signature>>> uses, const Options& options = {}) {
        AddForm<std::function<Signature>>(name, options, /*isCreator=*/true, valueTypes,
                                          std::move(uses));
    }
    /// A creator from a constant: `model` takes it behind the arguments of `Signature`.
    template <typename Signature, typename T, typename Function>
    void AddWithConstant(const wchar_t* name, const std::vector<T>& constants, Function model) {
        const Type* const type = TypeFor<T>().Get();
        std::vector<Use<std::function<Signature>>> uses;
        for (const T& constant : constants) {
            uses.push_back({{MakeStoreValue<T>(type, constant)},
                            [=](const auto&... inputs) { return model(inputs..., constant); }});
        }
        AddCreator<Signature>(name, {type}, std::move(uses));
    }
    /// A creator of a regular filter from a set: `model` takes an element and the members.
    template <FunctionElement T, typename Function>
    void AddWithSet(const wchar_t* name, const std::vector<std::vector<CellT<T>>>& sets,
                    Function model) {
        using Storage = typename TypeTraits<T>::Storage;
        const Type* const type = TypeFor<T>().Get();
        std::vector<Use<std::function<bool(T)>>> uses;
        for (const auto& members : sets) {
            auto values = MakeSetContainer<Storage>(type, 0);
            for (const CellT<T>& member : members) {
                if constexpr (std::is_trivially_copyable_v<Storage>) {
                    values->insert(std::bit_cast<Storage>(member));
                } else {
                    values->insert(member);
                }
            }
            uses.push_back({{factory::MakeSet<Storage>(type, std::move(values), nullptr)},
                            [=](const T& element) { return model(element, members); }});
        }
        AddCreator<bool(T)>(name, {SetType::Get(type)}, std::move(uses));
    }

    /// Drives every row. Columns are random, and so are the places where they begin.
    void Check(const FunctionRegistry& registry) const {
        test::Random random;
        SCOPED_TRACE(random.Trace());
        for (const Row& row : m_rows) {
            try {
                row.check(registry, random);
            } catch (const std::exception& e) {
                ADD_FAILURE() << row.description << ": " << e.what();
            }
        }
    }

    /// The rows are what the registry holds, and no others.
    template <typename Registry>
    void ExpectToBe(const Registry& functions, const FunctionRegistry& registry) const {
        std::vector<std::string> rows;
        for (const Row& row : m_rows) {
            rows.push_back(row.description);
        }
        std::vector<std::string> held;
        functions.VisitFunctions([&](const FunctionKey& key, const RegisteredFunctions& entry) {
            const FunctionInfo& info = registry.GetFunction(key);
            EXPECT_EQ(entry.GetFunctionName(), key.GetName());
            EXPECT_EQ(entry.GetOutputType(), info.GetOutputType());
            EXPECT_EQ(entry.IsCreator(), info.IsCreator());
            EXPECT_EQ(entry.IsStateful(), info.IsStateful());
            if (entry.HasFunction()) {
                held.push_back(Describe(key, info, /*isSpecial=*/false));
            }
            if (entry.HasSpecialFunction()) {
                held.push_back(Describe(key, info, /*isSpecial=*/true));
            }
        });
        EXPECT_THAT(held, testing::UnorderedElementsAreArray(rows));
    }

private:
    struct Row {
        std::string description;
        std::function<void(const FunctionRegistry&, test::Random&)> check;
    };

    template <typename Model>
    void AddForm(const wchar_t* name, const Options& options, bool isCreator, Types valueTypes,
                 std::vector<Use<Model>> uses) {
        using Form = FormOf<Model>;
        const auto choose = [&](const TypeRef& type) {
            return type.Get() == DateTimeType::Get() ? options.dateType : type.Get();
        };
        Types types;
        Types queryTypes;
        for (const VariableTypeRef& type : Form::GetInputTypes()) {
            types.push_back(choose(type));
            // A column of collections is what finds the wild card.
            queryTypes.push_back(type.IsAnyType() ? ArrayType::Get(IntType::Get32())
                                                  : choose(type));
        }
        const FunctionInfo info(std::move(valueTypes), choose(TypeFor<typename Form::Output>()),
                                isCreator, options.isStateful);
        const FunctionKey key(name, types, FunctionKey::ArgContainer::Separate);
        const FunctionKey query(name, queryTypes, FunctionKey::ArgContainer::Separate);
        const auto check = [=](const FunctionRegistry& registry, test::Random& random) {
            const auto functions = Form::GetRegistry(registry).GetRawFunctions(query);
            for (const Use<Model>& use : uses) {
                const auto make = [&] {
                    if (isCreator) {
                        return (Form::kIsSpecial
                                    ? functions.GetSpecialCreatorFactory()
                                    : functions.GetRegularCreatorFactory())(use.values);
                    }
                    return (Form::kIsSpecial ? functions.GetSpecialFactory()
                                             : functions.GetRegularFactory())();
                };
                if (functions.IsCreator() != isCreator ||
                    !(Form::kIsSpecial ? functions.HasSpecialForm() : functions.HasRegularForm())) {
                    throw std::runtime_error("not registered");
                }
                Form::Check(make, use.model, options, random);
            }
        };
        m_rows.push_back({Describe(key, info, Form::kIsSpecial), check});
    }

    std::vector<Row> m_rows;
};

/// A registry of all built-in functions.
inline std::unique_ptr<FunctionRegistry> MakeBuiltinRegistry() {
    auto registry = FunctionRegistry::Make();
    RegisterAllBuiltinFunctions(*registry);
    return registry;
}

/// A built-in of two inputs of the same type.
inline std::unique_ptr<IRawBinaryFunctor> MakeBinary(const FunctionRegistry& registry,
                                                     const wchar_t* name, const Type* type,
                                                     bool isSpecial) {
    const auto functions = registry.GetBinaryFunctions().GetRawFunctions(
        FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate));
    return (isSpecial ? functions.GetSpecialFactory() : functions.GetRegularFactory())();
}

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
