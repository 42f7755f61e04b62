// Where the three forms of an array are meant to answer differently: stored values, one constant,
// and runs. Everywhere else they answer alike, which ArrayFormsTest looks at.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/main/store/TemporaryRawDataAccess.h"
#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::TextOf;
using Typed = ITypedArray<unsigned>;

constexpr unsigned kDown = ~0u;  // A step of -1.

struct Forms {
    SV plain;
    SV constant;
    SV composite;
};

SV Composed(const std::vector<SV>& constants) {
    return MakeCompositeArray<unsigned>(constants, nullptr, SortSpecOrder::DESC);
}

/// The number 7 four times.
Forms Sevens() {
    const Type* const type = IntType::Get32();
    return {factory::MakeArray<unsigned>(type, {7, 7, 7, 7}, SortSpecOrder::DESC),
            factory::MakeConstantArray<unsigned>(type, 7u, 4),
            Composed({factory::MakeConstantArray<unsigned>(type, 7u, 3),
                      factory::MakeConstantArray<unsigned>(type, 7u, 1)})};
}

/// Two specials of one kind, over different placeholders where the form has room for two.
Forms Nulls() {
    const Type* const type = IntType::Get32();
    return {
        factory::MakeArray<unsigned>(type, {7, 8}, {0, 1}, {SpecialKind::Null, SpecialKind::Null},
                                     SortSpecOrder::DESC),
        factory::MakeConstantArray<unsigned>(type, 2, SpecialKind::Null),
        MakeCompositeArray<unsigned>(type, {{7, SpecialKind::Null, 1}, {8, SpecialKind::Null, 1}},
                                     nullptr, SortSpecOrder::DESC)};
}

/// No element, but a value that there could be.
Forms Empties() {
    const Forms sevens = Sevens();
    return {sevens.plain->AsArray().GetRange(0, 0, 1),
            factory::MakeConstantArray<unsigned>(IntType::Get32(), 7u, 0),
            Composed({factory::MakeConstantArray<unsigned>(IntType::Get32(), 7u, 0)})};
}

/// Two objects of one value; the constant form has only one.
Forms Handles() {
    const Type* const type = IntType::Get32();
    const SV one = factory::MakeInt32(7);
    const SV other = factory::MakeInt32(7);
    return {factory::MakeArray<SV>(type, {one, other}, SortSpecOrder::DESC),
            factory::MakeConstantArray<SV>(type, one, 2),
            MakeCompositeArray<SV>(type,
                                   {{one, SpecialKind::Normal, 1}, {other, SpecialKind::Normal, 1}},
                                   nullptr, SortSpecOrder::DESC)};
}

std::string OrderText(const SV& column) {
    switch (column->AsArray().GetSortOrder()) {
        case SortSpecOrder::UNKNOWN:
            return "UNKNOWN";
        case SortSpecOrder::ASC:
            return "ASC";
        case SortSpecOrder::DESC:
            return "DESC";
        default:
            return "another";
    }
}

std::string YesOrNo(bool answer) {
    return answer ? "yes" : "no";
}

/// What the operation gives, or the code and the condition of its failure.
std::string OutcomeOf(const std::function<std::string()>& operation) {
    const test::LogCapture log;
    try {
        return operation();
    } catch (const LumRuntimeException& e) {
        const std::string code = "error " + std::to_string(static_cast<int>(e.GetError()));
        const std::string& report = log.GetLines().back().text;
        const std::size_t condition = report.find(" (condition \"");
        return condition == std::string::npos
                   ? code
                   : code + " " + report.substr(condition + 13, report.rfind('"') - condition - 13);
    }
}

std::function<std::string(const SV&)> RangeOf(lumsize_t start, lumsize_t length, unsigned step) {
    return
        [=](const SV& column) { return TextOf(column->AsArray().GetRange(start, length, step)); };
}

template <typename F>
std::function<std::string(const SV&)> OfTyped(const F& function) {
    return [=](const SV& column) { return function(column->AsTypedArray<unsigned>()); };
}

struct Difference {
    const char* name;
    Forms (*make)();
    std::function<std::string(const SV&)> run;
    const char* plain;
    const char* constant;
    const char* composite;
};

TEST(ArrayFormDifferencesTest, SideBySide) {
    const test::CollatorPoolGuard pool;
    const Difference differences[] = {
        // Statements of order.
        {"order", Sevens, OrderText, "DESC", "ASC", "DESC"},
        {"order of a clone", Sevens, [](const SV& c) { return OrderText(c->Clone()); }, "UNKNOWN",
         "ASC", "DESC"},
        {"order of a range", Sevens,
         [](const SV& c) { return OrderText(c->AsArray().GetRange(1, 2, 1)); }, "DESC", "ASC",
         "DESC"},
        {"order under indices", Sevens,
         [](const SV& c) {
             return OrderText(
                 c->AsArray().WithIndices(std::vector<unsigned>{0}, SortSpecOrder::UNKNOWN));
         },
         "UNKNOWN", "ASC", "UNKNOWN"},
        {"order when materialized", Sevens,
         [](const SV& c) { return OrderText(c->AsArray().Materialize()); }, "DESC", "ASC", "DESC"},

        // Ranges: clamped, wrapped round, and cut.
        {"start beyond the end", Sevens, RangeOf(5, 3, 1), "i:", "i: 7 7 7", "i:"},
        {"start beyond the end, strided", Sevens, RangeOf(5, 3, 2), "i: 7 7", "i: 7 7", "i:"},
        {"start at the end, strided", Sevens, RangeOf(4, 3, 2), "i: 7 7", "i:", "i:"},
        {"length of 0", Sevens, RangeOf(0, 0, 1), "i:", "i:", "i:"},
        {"length of 0, strided", Sevens, RangeOf(0, 0, 2), "i: 7 7", "i:", "i:"},
        {"downwards", Sevens, RangeOf(1, 3, kDown), "i: 7 7", "i: 7", "i: 7"},
        {"downwards through indices", Sevens,
         [](const SV& c) {
             const SV same = c->AsArray().WithIndices(std::vector<unsigned>{0, 1, 2, 3},
                                                      SortSpecOrder::UNKNOWN);
             return TextOf(same->AsArray().GetRange(1, 3, kDown));
         },
         "i: 7 7", "i: 7", "i: 7 7"},
        {"start beyond the end of indices", Sevens,
         [](const SV& c) {
             const SV same = c->AsArray().WithIndices(std::vector<unsigned>{0, 1, 2, 3},
                                                      SortSpecOrder::UNKNOWN);
             return TextOf(same->AsArray().GetRange(5, 3, 1));
         },
         "i: 7 7 7 7", "i: 7 7 7", "i:"},
        {"step of 0", Sevens, RangeOf(0, 2, 0), "error 3", "error 3", "error 3"},

        // Indices.
        {"indices outside", Sevens,
         [](const SV& c) {
             return TextOf(
                 c->AsArray().WithIndices(std::vector<unsigned>{9, 0}, SortSpecOrder::UNKNOWN));
         },
         "error 3 (static_cast<size_t>(realIndex) < m_values.GetSize())", "i: 7 7",
         "error 3 (index < m_size)"},
        {"has indices then", Sevens,
         [](const SV& c) {
             return YesOrNo(c->AsArray()
                                .WithIndices(std::vector<unsigned>{0}, SortSpecOrder::UNKNOWN)
                                ->AsArray()
                                .HasIndices());
         },
         "yes", "no", "yes"},
        {"offers its indices", Sevens,
         [](const SV& c) {
             const auto* const indexed = dynamic_cast<const ArrayWithIndices*>(c.get());
             return indexed == nullptr ? "no" : std::to_string(indexed->GetIndices().GetSize());
         },
         "no", "no", "error 2 !(IsNull())"},

        // Positions.
        {"value behind the end", Sevens,
         OfTyped([](const Typed& a) { return std::to_string(a.GetValue(4)); }),
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (index < m_size)",
         "error 3 (index < m_sizeAndHasSpecials.first)"},
        {"kind behind the end", Sevens,
         OfTyped([](const Typed& a) { return TextOf(a.GetSpecialKind(4)); }),
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (index < m_size)",
         "error 3 (index < m_sizeAndHasSpecials.first)"},
        {"element behind the end", Sevens,
         [](const SV& c) { return TextOf(c->AsArray().GetElement(4)); },
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (index < m_size)",
         "error 3 (index < m_sizeAndHasSpecials.first)"},
        {"key behind the end", Sevens,
         [](const SV& c) { return TextOf(c->AsCollection().GetValue(L"4")); },
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (index < m_size)",
         "error 3 (index < m_sizeAndHasSpecials.first)"},
        {"first of two behind the end", Sevens,
         [](const SV& c) { return YesOrNo(c->AsArray().ElementsEqual(4, 0)); },
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (idx1 < m_size)",
         "error 3 (idx1 < m_sizeAndHasSpecials.first)"},
        {"second of two behind the end", Sevens,
         [](const SV& c) { return YesOrNo(c->AsArray().ElementsEqual(0, 4)); },
         "error 3 (static_cast<size_t>(index) < m_values.GetSize())", "error 3 (idx2 < m_size)",
         "error 3 (idx2 < m_sizeAndHasSpecials.first)"},
        {"run behind the end", Sevens,
         [](const SV& c) { return std::to_string(c->AsArray().FindRunEnd(4)); },
         "error 3 (startIndex < m_count)", "error 3 (startIndex < m_size)",
         "error 3 (startIndex < m_sizeAndHasSpecials.first)"},
        {"unchecked value far behind the end", Sevens,
         [](const SV& c) {
             return c->AsArray().IsConstant()
                        ? std::to_string(c->AsTypedArray<unsigned>().GetValueUnchecked(~0u))
                        : "not to be asked";
         },
         "not to be asked", "7", "not to be asked"},

        // Equality and runs.
        {"run of specials", Nulls,
         [](const SV& c) { return std::to_string(c->AsArray().FindRunEnd(0)); }, "0", "1", "1"},
        {"equal specials", Nulls,
         [](const SV& c) { return YesOrNo(c->AsArray().ElementsEqual(0, 1)); }, "yes", "yes",
         "yes"},
        {"run of equal objects", Handles,
         [](const SV& c) { return std::to_string(c->AsArray().FindRunEnd(0)); }, "1", "1", "0"},
        {"equal objects", Handles,
         [](const SV& c) { return YesOrNo(c->AsArray().ElementsEqual(0, 1)); }, "yes", "yes", "no"},
        {"an object and itself", Handles,
         [](const SV& c) { return YesOrNo(c->AsArray().ElementsEqual(1, 1)); }, "yes", "yes",
         "yes"},

        // Boxed elements.
        {"elements are one object", Sevens,
         [](const SV& c) {
             return YesOrNo(c->AsArray().GetElement(0) == c->AsArray().GetElement(3));
         },
         "no", "yes", "no"},
        {"special elements are one object", Nulls,
         [](const SV& c) {
             return YesOrNo(c->AsArray().GetElement(0) == c->AsArray().GetElement(1));
         },
         "no", "yes", "no"},
        {"walked elements are one object", Sevens,
         [](const SV& c) {
             const auto it = c->AsArray().GetStoreValueIterable().begin()->Clone();
             const SV first = it->Dereference();
             it->Advance();
             return YesOrNo(first == it->Dereference());
         },
         "no", "yes", "no"},
        {"tried by key, they are one object", Sevens,
         [](const SV& c) {
             const IStoreCollection& collection = c->AsCollection();
             return YesOrNo(collection.TryGetValue(L"0") == collection.TryGetValue(L"3"));
         },
         "no", "yes", "no"},
        {"read by key, they are one object", Sevens,
         [](const SV& c) {
             const IStoreCollection& collection = c->AsCollection();
             return YesOrNo(collection.GetValue(L"0") == collection.GetValue(L"3"));
         },
         "no", "no", "no"},
        {"special by key", Nulls,
         [](const SV& c) { return TextOf(c->AsCollection().GetValue(L"0")); }, "7", "0", "7"},

        // Storage.
        {"constant", Sevens, [](const SV& c) { return YesOrNo(c->AsArray().IsConstant()); }, "no",
         "yes", "no"},
        {"composite", Sevens, OfTyped([](const Typed& a) { return YesOrNo(a.IsComposite()); }),
         "no", "no", "yes"},
        {"constant when materialized", Sevens,
         [](const SV& c) { return YesOrNo(c->AsArray().Materialize()->AsArray().IsConstant()); },
         "no", "yes", "no"},
        {"stored values", Sevens,
         OfTyped([](const Typed& a) { return std::to_string(a.GetValues().GetSize()); }), "4", "1",
         "error 7"},
        {"stored kinds without specials", Sevens,
         OfTyped([](const Typed& a) { return std::to_string(a.GetSpecials().GetSize()); }),
         "error 97 (HasSpecialValues())", "error 97 (HasSpecialValues())", "error 7"},
        {"stored kinds", Nulls,
         [](const SV& c) {
             // The indices of the plain form are in the way of its storage.
             const SV stored = c->AsArray().WithIndices(nullptr, SortSpecOrder::UNKNOWN);
             return std::to_string(stored->AsTypedArray<unsigned>().GetSpecials().GetSize());
         },
         "2", "1", "error 7"},
        {"runs", Sevens,
         OfTyped([](const Typed& a) { return std::to_string(a.GetCompositeRanges().GetSize()); }),
         "error 7", "error 7", "2"},
        {"view of values", Sevens, OfTyped([](const Typed& a) {
             TemporaryRawData first;
             TemporaryRawData second;
             const auto view = a.GetValuesView(first, 0, 4).ViewAs<unsigned>();
             const auto again = a.GetValuesView(second, 0, 4).ViewAs<unsigned>();
             return view.GetData() == again.GetData() ? "in the storage" : "copied";
         }),
         "in the storage", "copied", "copied"},
        {"kinds behind the last one asked for", Sevens,
         [](const SV& c) {
             std::vector<SpecialKind> kinds(3, SpecialKind::Error);
             c->AsArray().CopySpecials(kinds, 0, 2);
             return TextOf(kinds[2]);
         },
         "!Normal", "!Error", "!Error"},

        // Arrays without elements.
        {"set of no elements", Empties,
         [](const SV& c) { return TextOf(c->AsArray().ToSet(/*includeSpecials=*/true)); },
         "S i:", "S i: 7", "S i:"},
        {"run of no elements", Empties,
         [](const SV& c) { return std::to_string(c->AsArray().FindRunEnd(0)); },
         "error 3 (startIndex < m_count)", "error 3 (startIndex < m_size)",
         "error 3 (startIndex < m_sizeAndHasSpecials.first)"},
        {"range of no elements", Empties, RangeOf(1, 2, 1), "i:", "i: 7 7", "i:"},
    };
    for (const Difference& difference : differences) {
        SCOPED_TRACE(difference.name);
        const Forms forms = difference.make();
        EXPECT_EQ(OutcomeOf([&] { return difference.run(forms.plain); }), difference.plain);
        EXPECT_EQ(OutcomeOf([&] { return difference.run(forms.constant); }), difference.constant);
        EXPECT_EQ(OutcomeOf([&] { return difference.run(forms.composite); }), difference.composite);
    }
}

}  // namespace
}  // namespace lum::core
