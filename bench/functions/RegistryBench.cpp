// An overload look-up among about as many keys as there are built-in functions: at most 2.0 of one
// find of the name in a std::unordered_map.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

using ArgContainer = FunctionKey::ArgContainer;
using Names = std::vector<const wchar_t*>;

constexpr VariableTypeRef kAny = VariableTypeRef::AnyType;

const Names kElementNames = {
    L"-",           L"<",          L"=",         L">",         L">=",
    L"abs",         L"inc",        L"dec",       L"floor",     L"sqrt",
    L"ln",          L"exp",        L"symlog",    L"symloginv", L"normalize",
    L"addConstant", L"isInSet",    L"keepOnly",  L"toInt32",   L"multiplyConstant",
    L"toInt64",     L"toReal32",   L"toReal64",  L"toColor",   L"divideConstant",
    L"toDateTime",  L"isNotInSet", L"getMonth",  L"getYear",   L"equalToValue",
    L"getISOYear",  L"getISOWeek", L"keepFalse", L"keepTrue",  L"filterNullAndMissing"};
const Names kElementAndAnyNames = {L"keepOnlyFirst", L"first", L"last"};
const Names kFoldNames = {L"min",      L"max",        L"sum",           L"and",           L"or",
                          L"countAll", L"countNulls", L"countSpecials", L"countNegatives"};
const Names kArithmeticNames = {L"+", L"-", L"*", L"/", L"bitor"};
const Names kComparisonNames = {L"==", L"!=", L"<", L"<=", L">", L">="};
const Names kTestNames = {L"isTrue", L"isFalse"};

/// About as many keys, of as many names, as there are built-in functions.
std::vector<FunctionKey> MakeKeys() {
    const std::vector<const Type*> numbers = {IntType::Get32(), IntType::Get64(), RealType::Get32(),
                                              RealType::Get64()};
    std::vector<FunctionKey> keys;
    const auto addUnary = [&](const Names& names) {
        for (const wchar_t* const name : names) {
            for (const Type* const type : numbers) {
                keys.emplace_back(name, type);
            }
        }
    };
    const auto addBinary = [&](const Names& names, ArgContainer container) {
        for (const wchar_t* const name : names) {
            for (const Type* const type : numbers) {
                keys.emplace_back(name, type, type, container);
            }
        }
    };
    addUnary(kElementNames);
    addUnary(kElementAndAnyNames);
    for (const wchar_t* const name : kElementAndAnyNames) {
        keys.emplace_back(name, StringType::Get());
        keys.emplace_back(name, kAny);
    }
    addBinary(kFoldNames, ArgContainer::Separate);
    addBinary(kArithmeticNames, ArgContainer::Vector);
    for (const wchar_t* const name : kComparisonNames) {
        keys.emplace_back(name, kAny, kAny, ArgContainer::Vector);
    }
    for (const wchar_t* const name : kTestNames) {
        keys.emplace_back(name, TypeRefVec<VariableTypeRef>{kAny}, ArgContainer::Vector);
    }
    addBinary(kArithmeticNames, ArgContainer::Separate);
    return keys;
}

/// A query of real types, as those of columns are, that finds the key.
FunctionKey WithoutAnyType(const FunctionKey& key) {
    TypeRefVec<VariableTypeRef> types = key.GetInputTypes();
    for (VariableTypeRef& type : types) {
        if (type.IsAnyType()) {
            type = ArrayType::Get(IntType::Get32());
        }
    }
    return FunctionKey(key.GetName(), types, key.GetInputArgContainer());
}

struct Query {
    FunctionKey key;
    const FunctionInfo* info;
    int name;
};

struct Input {
    std::unique_ptr<FunctionRegistry> registry = FunctionRegistry::Make();
    std::unordered_map<RInternString, int> names;
    // Out of order, as the functions of a program come.
    std::vector<Query> queries;

    Input() {
        for (const FunctionKey& key : MakeKeys()) {
            registry->AddFunction(key, FunctionInfo(key.GetInputTypes()[0].Get(), false, false));
            names.emplace(key.GetName(), static_cast<int>(names.size()));
        }
        std::vector<Query> all;
        registry->VisitFunctions([&](const FunctionKey& key, const FunctionInfo& info) {
            all.push_back({WithoutAnyType(key), &info, names.at(key.GetName())});
        });
        std::mt19937 random(1);
        for (int i = 0; i < 4096; ++i) {
            queries.push_back(all[random() % all.size()]);
        }
    }
};

const Input& GetInput() {
    static const Input s_input;
    return s_input;
}

struct Overload {
    static const FunctionInfo* Find(const Input& input, const Query& query) {
        const IFunctionLookup& lookup = *input.registry;
        return &lookup.GetFunction(query.key);
    }
    static bool IsRight(const FunctionInfo* found, const Query& query) {
        return found == query.info;
    }
};

/// The same, by a key that is made for the look-up.
struct OverloadOfNewKey {
    static const FunctionInfo* Find(const Input& input, const Query& query) {
        const IFunctionLookup& lookup = *input.registry;
        return &lookup.GetFunction(FunctionKey(query.key));
    }
    static bool IsRight(const FunctionInfo* found, const Query& query) {
        return found == query.info;
    }
};

struct Name {
    static int Find(const Input& input, const Query& query) {
        return input.names.find(query.key.GetName())->second;
    }
    static bool IsRight(int found, const Query& query) { return found == query.name; }
};

template <typename LookUp>
void BM_FunctionLookUp(benchmark::State& state) {
    const Input& input = GetInput();
    for (const Query& query : input.queries) {
        if (!LookUp::IsRight(LookUp::Find(input, query), query)) {
            return state.SkipWithError("a query does not find its function");
        }
    }
    for (auto _ : state) {
        for (const Query& query : input.queries) {
            benchmark::DoNotOptimize(LookUp::Find(input, query));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(input.queries.size()));
}
BENCHMARK(BM_FunctionLookUp<Overload>)->Name("BM_FunctionLookUp/Lum");
BENCHMARK(BM_FunctionLookUp<OverloadOfNewKey>)->Name("BM_FunctionLookUp/LumWithNewKey");
BENCHMARK(BM_FunctionLookUp<Name>)->Name("BM_FunctionLookUp/NameInMap");

}  // namespace
}  // namespace lum::core
