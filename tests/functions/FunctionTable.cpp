#include "tests/functions/FunctionTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>

namespace lum::core::functions_test {
namespace {

struct Elements {
    Elements(const ElementType& elementType, test::Random& random, lumsize_t elementCount)
        : type(elementType),
          count(elementCount),
          cells(type.makeColumn(random, count)),
          kinds(random, count) {}

    Slice At(lumsize_t start, lumsize_t length) {
        return {cells->View().GetSlice(start, length), kinds.View().GetSlice(start, length)};
    }
    Slice All() { return At(0, count); }
    /// The first elements become those of another column.
    void Assign(Elements& other) {
        cells->Assign(other.cells->View());
        kinds.Assign(other.kinds.View());
    }
    void Reverse() {
        cells->Reverse();
        kinds.Reverse();
    }

    ElementType type;
    lumsize_t count;
    std::unique_ptr<AnyColumn> cells;
    Column<SpecialKind> kinds;
};

void ApplyRaw(const RawFunctor& functor, bool isSpecial, std::vector<Elements>& in,
              const Slice& out) {
    const auto cells = [&](std::size_t i) { return in[i].cells->PayloadView(); };
    const auto kinds = [&](std::size_t i) { return in[i].kinds.PayloadView(); };
    if (functor.unary != nullptr) {
        isSpecial ? functor.unary->ApplyRaw(cells(0), kinds(0), out.cells, out.kinds)
                  : functor.unary->ApplyRaw(cells(0), out.cells);
    } else {
        isSpecial
            ? functor.binary->ApplyRaw(cells(0), kinds(0), cells(1), kinds(1), out.cells, out.kinds)
            : functor.binary->ApplyRaw(cells(0), cells(1), out.cells);
    }
}

/// One form, called in every way on columns of every length.
class FormCheck {
public:
    FormCheck(const Form& form, const std::function<RawFunctor()>& make, const Options& options,
              test::Random& random)
        : m_form(form), m_make(make), m_options(options), m_random(random) {}

    void Run() {
        const bool isFold =
            m_form.inputs.size() == 2 && m_form.inputs[0].type == m_form.output.type;
        ForEachColumn(m_random, [&](lumsize_t count, Palette palette) {
            std::vector<Elements> inputs;
            for (const ElementType& type : m_form.inputs) {
                const bool isLast = inputs.size() + 1 == m_form.inputs.size();
                inputs.push_back(
                    AnyElements(type, count, palette, isLast ? m_options.domain : Domain::All));
            }
            CheckApply(inputs, count);
            if (isFold) {
                constexpr FoldDirection kAnyButForward{-2};
                Elements first = AnyElements(m_form.output, 1, palette, Domain::All);
                CheckFold(first, inputs[1], FoldDirection::Forward);
                CheckFold(first, inputs[1],
                          m_random.Below(2) == 0 ? FoldDirection::Backward : kAnyButForward);
            }
        });
    }

private:
    Elements AnyElements(const ElementType& type, lumsize_t count, Palette palette, Domain domain) {
        Elements elements(type, m_random, count);
        std::vector<SpecialKind> kinds(count, SpecialKind::Normal);
        if (m_form.isSpecial) {
            kinds = AnyKinds(m_random, count);
        }
        elements.cells->Fill(m_random, kinds, palette, domain);
        std::copy(kinds.begin(), kinds.end(), elements.kinds.Cells().begin());
        return elements;
    }

    Elements Copy(Elements& elements) {
        Elements copy(elements.type, m_random, elements.count);
        copy.Assign(elements);
        return copy;
    }

    void Expect(const char* what, const Elements& elements, const Slice& expected) const {
        elements.cells->Expect(what, expected.cells, m_options.isAnyNaN);
        if (m_form.isSpecial) {
            elements.kinds.Expect(what, expected.kinds, /*isAnyNaN=*/false);
        }
    }

    void CheckApply(std::vector<Elements>& inputs, lumsize_t count) {
        std::vector<Slice> in;
        for (Elements& input : inputs) {
            in.push_back(input.All());
        }
        Elements expected(m_form.output, m_random, count);
        m_form.CallModel(in, expected.All());
        const auto check = [&](const char* what, const auto& apply) {
            Elements output(m_form.output, m_random, count);
            apply(m_make(), output.All());
            Expect(what, output, expected.All());
        };
        check("raw", [&](const RawFunctor& functor, const Slice& out) {
            ApplyRaw(functor, m_form.isSpecial, inputs, out);
        });
        check("typed", [&](const RawFunctor& functor, const Slice& out) {
            m_form.ApplyVector(functor, in, out);
        });
        if (count <= 70) {
            check("scalar", [&](const RawFunctor& functor, const Slice& out) {
                m_form.Apply(functor, in, out);
            });
        }
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            if (inputs[i].type.makeColumn == m_form.output.makeColumn) {
                Elements both = Copy(inputs[i]);
                std::vector<Slice> withBoth = in;
                withBoth[i] = both.All();
                m_form.ApplyVector(m_make(), withBoth, both.All());
                Expect(i == 0 ? "in place of the first" : "in place of the second", both,
                       expected.All());
            }
        }
    }

    // Folds with and without outputs, raw and typed, whole and in two pieces.
    void CheckFold(Elements& first, Elements& input, FoldDirection direction) {
        const lumsize_t count = input.count;
        const bool isForward = direction == FoldDirection::Forward;
        // The function of a column and of its own results, which stand one element further.
        Elements walked = Copy(input);
        Elements results(m_form.output, m_random, count + 1);
        results.Assign(first);
        if (!isForward) {
            walked.Reverse();
        }
        const Slice in[] = {results.At(0, count), walked.All()};
        m_form.CallModel(in, results.At(1, count));
        if (!isForward) {
            results.Reverse();
        }
        const Slice last = results.At(isForward ? count : 0, 1);
        const Slice expected = results.At(isForward ? 1 : 0, count);

        const auto cut = static_cast<lumsize_t>(m_random.Below(count + 1));
        for (const bool hasOutputs : {false, true}) {
            const auto check = [&](const char* what, const auto& fold) {
                Elements accumulator = Copy(first);
                Elements output(m_form.output, m_random, hasOutputs ? count : 0);
                fold(m_make(), accumulator.All(), output);
                Expect(what, accumulator, last);
                if (hasOutputs) {
                    Expect(what, output, expected);
                }
            };
            check("raw fold",
                  [&](const RawFunctor& functor, const Slice& accumulator, Elements& output) {
                      IRawBinaryFunctor& binary = *functor.binary;
                      const Slice out = output.All();
                      m_form.isSpecial
                          ? binary.FoldRaw(accumulator.cells, accumulator.kinds,
                                           input.cells->PayloadView(), input.kinds.PayloadView(),
                                           out.cells, out.kinds, direction)
                          : binary.FoldRaw(accumulator.cells, input.cells->PayloadView(), out.cells,
                                           direction);
                  });
            const auto foldPiece = [&](const RawFunctor& functor, const Slice& accumulator,
                                       Elements& output, lumsize_t start, lumsize_t length) {
                m_form.Fold(functor, accumulator, input.At(start, length),
                            hasOutputs ? output.At(start, length) : output.All(), direction);
            };
            check("typed fold",
                  [&](const RawFunctor& functor, const Slice& accumulator, Elements& output) {
                      foldPiece(functor, accumulator, output, 0, count);
                  });
            check("fold in pieces",
                  [&](const RawFunctor& functor, const Slice& accumulator, Elements& output) {
                      foldPiece(functor, accumulator, output, isForward ? 0 : cut,
                                isForward ? cut : count - cut);
                      foldPiece(functor, accumulator, output, isForward ? cut : 0,
                                isForward ? count - cut : cut);
                  });
        }
    }

    const Form& m_form;
    const std::function<RawFunctor()>& m_make;
    const Options& m_options;
    test::Random& m_random;
};

/// A functor of a form that must be registered.
auto MakeFunctor(const auto& functions, const Form& form, bool isCreator,
                 const std::vector<SV>& values) {
    const bool isThere = form.isSpecial ? functions.HasSpecialForm() : functions.HasRegularForm();
    if (!isThere || functions.IsCreator() != isCreator) {
        throw std::runtime_error("not registered");
    }
    if (isCreator) {
        return (form.isSpecial ? functions.GetSpecialCreatorFactory()
                               : functions.GetRegularCreatorFactory())(values);
    }
    return (form.isSpecial ? functions.GetSpecialFactory() : functions.GetRegularFactory())();
}

std::string TypeText(const TypeRef& type) {
    return type.Get() == nullptr ? "AnyType" : type.Get()->ToString().toStdString();
}

}  // namespace

std::string Describe(const FunctionKey& key, const FunctionInfo& info, bool isSpecial) {
    std::string text = key.ToString().toStdString() + " -> " + TypeText(info.GetOutputType()) +
                       (isSpecial ? " special" : " regular");
    text += info.IsCreator() ? ", made from" : "";
    for (const VariableTypeRef& type : info.GetCreatorInputTypes()) {
        text += " " + TypeText(type);
    }
    return text + (info.IsStateful() ? ", stateful" : "");
}

void FunctionTable::AddForm(const wchar_t* name, const Options& options, bool isCreator,
                            Types valueTypes, std::vector<Use> uses) {
    const Form& form = *uses[0].form;
    const auto choose = [&](const VariableTypeRef& type) {
        return type == DateTimeType::Get() ? VariableTypeRef(options.dateType) : type;
    };
    Types types;
    Types queryTypes;
    for (const ElementType& input : form.inputs) {
        types.push_back(choose(input.type));
        // A column of collections is what finds the wild card.
        queryTypes.push_back(input.type.IsAnyType() ? ArrayType::Get(IntType::Get32())
                                                    : types.back());
    }
    const FunctionInfo info(std::move(valueTypes), choose(form.output.type).Get(), isCreator,
                            options.isStateful);
    const FunctionKey key(name, types, FunctionKey::ArgContainer::Separate);
    m_rows.push_back({Describe(key, info, form.isSpecial),
                      FunctionKey(name, queryTypes, FunctionKey::ArgContainer::Separate), isCreator,
                      options, std::move(uses)});
}

void FunctionTable::Check(const FunctionRegistry& registry) const {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Row& row : m_rows) {
        try {
            for (const Use& use : row.uses) {
                const auto make = [&] {
                    RawFunctor functor;
                    if (use.form->inputs.size() == 1) {
                        functor.unary =
                            MakeFunctor(registry.GetUnaryFunctions().GetRawFunctions(row.query),
                                        *use.form, row.isCreator, use.values);
                    } else {
                        functor.binary =
                            MakeFunctor(registry.GetBinaryFunctions().GetRawFunctions(row.query),
                                        *use.form, row.isCreator, use.values);
                    }
                    return functor;
                };
                FormCheck(*use.form, make, row.options, random).Run();
            }
        } catch (const std::exception& e) {
            ADD_FAILURE() << row.description << ": " << e.what();
        }
    }
}

void FunctionTable::ExpectToBe(const FunctionFormRegistry& functions,
                               const FunctionRegistry& registry) const {
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

std::unique_ptr<FunctionRegistry> MakeBuiltinRegistry() {
    auto registry = FunctionRegistry::Make();
    RegisterAllBuiltinFunctions(*registry);
    return registry;
}

std::unique_ptr<IRawBinaryFunctor> MakeBinary(const FunctionRegistry& registry, const wchar_t* name,
                                              const Type* type, bool isSpecial) {
    const auto functions = registry.GetBinaryFunctions().GetRawFunctions(
        FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate));
    return (isSpecial ? functions.GetSpecialFactory() : functions.GetRegularFactory())();
}

}  // namespace lum::core::functions_test
