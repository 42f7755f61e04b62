#include "lum/core/functions/FunctionRegistry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "lum/core/functions/FunctionNames.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using ArgContainer = FunctionKey::ArgContainer;
using FunctionPointer = RegisteredFunctions::FunctionPointer;
using FunctionType = FunctionFormRegistry::FunctionType;
using Types = TypeRefVec<VariableTypeRef>;
using testing::ElementsAre;

constexpr VariableTypeRef kAny = VariableTypeRef::AnyType;
constexpr OptionalTypeRef kNoType = OptionalTypeRef::NoType;

// Which function is found matters here, not what it makes.
template <int kNumber>
std::unique_ptr<IRawUnaryFunctor> MakeUnary() {
    throw kNumber;
}
std::unique_ptr<IRawUnaryFunctor> CreateUnary(const std::vector<SV>& /*values*/) {
    throw 0;
}
std::unique_ptr<IRawBinaryFunctor> MakeBinary() {
    throw 0;
}
int CountValues(const std::vector<SV>& values) {
    return static_cast<int>(values.size());
}
bool HasValues(const std::vector<SV>& values) {
    return !values.empty();
}

const FunctionPointer kUnary = ToFunctionPointer(&MakeUnary<0>);
const FunctionPointer kBinary = ToFunctionPointer(&MakeBinary);

std::vector<std::string> KeysOf(const auto& registry) {
    std::vector<std::string> texts;
    registry.VisitFunctions([&](const FunctionKey& key, const auto& /*entry*/) {
        texts.push_back(key.ToString().toStdString());
    });
    return texts;
}

/// What a registry told its callback.
struct Told {
    std::vector<std::string> keys;
    std::vector<FunctionInfo> infos;

    FunctionFormRegistry::AddedCallback Callback() {
        return [this](const FunctionKey& key, FunctionInfo&& info) {
            keys.push_back(key.ToString().toStdString());
            infos.push_back(std::move(info));
        };
    }
};

TEST(FunctionRegistryTest, FormsShareAnEntryThatTheFirstFixes) {
    const Type* const real = RealType::Get64();
    const FunctionKey key(L"abs", real);
    Told told;
    RegistryOfUnaryFunctions registry(told.Callback());
    registry.Register(L"abs", real, real, FunctionType::Regular, kUnary);
    const RegisteredFunctions& entry = registry.GetFunctions(key);
    EXPECT_FALSE(entry.HasSpecialFunction());

    // An equal key of another precision, with another output and other flags.
    registry.Register(FunctionKey(L"abs", RealType::Get64(5, 1)), IntType::Get32(), {kAny},
                      FunctionType::CreatorSpecial, /*isStateful=*/true,
                      ToFunctionPointer(&MakeUnary<1>));
    EXPECT_EQ(&registry.GetFunctions(key), &entry);
    EXPECT_EQ(entry.GetFunctionName(), L"abs");
    EXPECT_EQ(entry.GetOutputType(), real);
    EXPECT_FALSE(entry.IsCreator());
    EXPECT_FALSE(entry.IsStateful());
    EXPECT_EQ(entry.GetFunction(), kUnary);
    EXPECT_EQ(entry.GetSpecialFunction(), ToFunctionPointer(&MakeUnary<1>));
    EXPECT_THAT(told.keys, ElementsAre("abs(r<-1,-1>)"));
    EXPECT_EQ(told.infos[0], FunctionInfo(real, false, false));

    const auto again = [&](FunctionType type) {
        registry.Register(L"abs", real, real, type, ToFunctionPointer(&MakeUnary<2>));
    };
    EXPECT_LUM_ERROR(FunctionExists, "abs", again(FunctionType::Regular));
    EXPECT_LUM_ERROR(SpecialFunctionExists, "abs", again(FunctionType::Special));
    EXPECT_LUM_ERROR(FunctionExists, "abs", again(FunctionType::CreatorRegular));
    EXPECT_LUM_ERROR(SpecialFunctionExists, "abs", again(FunctionType::CreatorSpecial));
    EXPECT_EQ(entry.GetFunction(), kUnary);
    EXPECT_EQ(entry.GetSpecialFunction(), ToFunctionPointer(&MakeUnary<1>));
    EXPECT_THAT(KeysOf(registry), ElementsAre("abs(r<-1,-1>)"));
    EXPECT_EQ(told.keys.size(), 1u);
}

TEST(FunctionRegistryTest, FactoriesComeBackAsWhatTheyWere) {
    const Type* const i = IntType::Get32();
    const auto registry = FunctionRegistry::Make();
    RegistryOfUnaryFunctions& unary = registry->GetUnaryFunctions();
    unary.Register(L"plain", i, i, FunctionType::Special, ToFunctionPointer(&MakeUnary<1>));
    unary.Register(L"plain", i, i, FunctionType::Regular, ToFunctionPointer(&MakeUnary<2>));
    unary.Register(FunctionKey(L"made", i), i, {i}, FunctionType::CreatorSpecial,
                   /*isStateful=*/true, ToFunctionPointer(&CreateUnary));
    const LumRawUnaryFunctions plain = unary.GetRawFunctions(FunctionKey(L"plain", i));
    EXPECT_EQ(plain.GetSpecialFactory(), &MakeUnary<1>);
    EXPECT_EQ(plain.GetRegularFactory(), &MakeUnary<2>);
    EXPECT_EQ(plain.GetRegularCreatorFactory(), nullptr);
    EXPECT_EQ(plain.GetSpecialCreatorFactory(), nullptr);
    EXPECT_EQ(plain.GetFunctionName(), L"plain");
    EXPECT_EQ(plain.GetOutputType(), i);
    const LumRawUnaryFunctions made = unary.GetRawFunctions(FunctionKey(L"made", i));
    EXPECT_TRUE(made.IsCreator() && made.IsStateful() && !made.HasRegularForm());
    EXPECT_EQ(made.GetSpecialCreatorFactory(), &CreateUnary);
    EXPECT_EQ(made.GetRegularCreatorFactory(), nullptr);
    EXPECT_EQ(made.GetSpecialFactory(), nullptr);
}

TEST(FunctionRegistryTest, MultinaryFunctions) {
    const Type* const i = IntType::Get32();
    Told told;
    RegistryOfMultinaryFunctions registry(told.Callback());
    registry.Register(FunctionKey(L"count", i, i, ArgContainer::Separate), i,
                      ToFunctionPointer(&CountValues));
    registry.Register(FunctionKey(L"any", kAny), BoolType::Get(), ToFunctionPointer(&HasValues));
    EXPECT_THAT(told.keys, ElementsAre("count(vector {i, i})", "any(vector {AnyType})"));
    EXPECT_EQ(KeysOf(registry), told.keys);

    const RegisteredFunctions& count =
        registry.GetFunctions(FunctionKey(L"count", i, i, ArgContainer::Vector));
    EXPECT_TRUE(count.IsStateful());
    EXPECT_FALSE(told.infos[0].IsStateful());
    EXPECT_FALSE(count.IsCreator());
    ASSERT_NE(GetMultinaryFunction<int>(count), nullptr);
    EXPECT_EQ(GetMultinaryFunction<int>(count)({nullptr, nullptr, nullptr}), 3);
    EXPECT_EQ(GetMultinaryFunction<float>(count), nullptr);
    EXPECT_EQ(GetMultinaryFunction<long long>(count), nullptr);
    const RegisteredFunctions& any =
        registry.GetFunctions(FunctionKey(L"any", {StringType::Get()}, ArgContainer::Vector));
    ASSERT_NE(GetMultinaryFunction<bool>(any), nullptr);
    EXPECT_FALSE(GetMultinaryFunction<bool>(any)({}));

    EXPECT_LUM_ERROR(FunctionNotFound, "count(i, i)",
                     registry.GetFunctions(FunctionKey(L"count", i, i, ArgContainer::Separate)));
}

TEST(FunctionRegistryTest, RefusedRegistrations) {
    const Type* const i = IntType::Get32();
    const auto registry = FunctionRegistry::Make();
    RegistryOfUnaryFunctions& unary = registry->GetUnaryFunctions();
    RegistryOfBinaryFunctions& binary = registry->GetBinaryFunctions();
    RegistryOfMultinaryFunctions& multinary = registry->GetMultinaryFunctions();
    const auto one = [&] { return FunctionKey(L"f", i); };
    const auto two = [&] { return FunctionKey(L"f", i, i, ArgContainer::Separate); };
    const auto none = [&] { return FunctionKey(L"f", Types{}, ArgContainer::Separate); };
    constexpr FunctionType kRegular = FunctionType::Regular;

    EXPECT_LUM_ERROR(UnaryInputCount, "f", unary.Register(two(), i, kRegular, kUnary));
    EXPECT_LUM_ERROR(UnaryInputCount, "f", unary.Register(none(), kNoType, kRegular, nullptr));
    EXPECT_LUM_ERROR(BinaryInputCount, "f", binary.Register(one(), i, kRegular, kBinary));
    EXPECT_LUM_ERROR(BinaryInputCount, "f", binary.Register(none(), kNoType, kRegular, nullptr));
    EXPECT_LUM_ERROR(EmptyOutputType, "f", unary.Register(one(), kNoType, kRegular, nullptr));
    EXPECT_LUM_ERROR(EmptyOutputType, "f", binary.Register(two(), kNoType, kRegular, nullptr));
    EXPECT_LUM_ERROR(EmptyOutputType, "f", multinary.Register(one(), kNoType, nullptr));
    EXPECT_TRUE(KeysOf(*registry).empty() && KeysOf(unary).empty() && KeysOf(binary).empty() &&
                KeysOf(multinary).empty());

    // The key is known before its function is looked at.
    EXPECT_LUM_ERROR(NullTransformFunction, "f",
                     binary.Register(two(), i, FunctionType::Special, nullptr));
    EXPECT_THAT(KeysOf(*registry), ElementsAre("f(i, i)"));
    EXPECT_THAT(KeysOf(binary), ElementsAre("f(i, i)"));
    EXPECT_LUM_REPORT(NullTransformFunction, "f", "(m_regularFactory || m_specialFactory)",
                      binary.GetRawFunctions(two()));
    EXPECT_LUM_ERROR(NullTransformFunction, "f", multinary.Register(one(), i, nullptr));
    EXPECT_TRUE(KeysOf(multinary).empty());
    const FunctionKey known = FunctionKey(L"f", {i}, ArgContainer::Vector);
    EXPECT_TRUE(registry->HasFunction(known));
    EXPECT_LUM_ERROR(FunctionExists, "f",
                     multinary.Register(FunctionKey(known), i, ToFunctionPointer(&CountValues)));
}

TEST(FunctionRegistryTest, EntryStaysWhereTheCallbackFails) {
    const Type* const i = IntType::Get32();
    int calls = 0;
    RegistryOfUnaryFunctions registry([&](const FunctionKey&, FunctionInfo&&) {
        ++calls;
        throw std::runtime_error("refused");
    });
    const FunctionKey key(L"f", i);
    const auto add = [&] { registry.Register(L"f", i, i, FunctionType::Regular, kUnary); };
    EXPECT_THROW(add(), std::runtime_error);
    EXPECT_FALSE(registry.GetFunctions(key).HasFunction());
    EXPECT_LUM_ERROR(NullTransformFunction, "f", registry.GetRawFunctions(key));
    add();
    EXPECT_TRUE(registry.GetFunctions(key).HasFunction());
    EXPECT_EQ(calls, 1);
}

TEST(FunctionRegistryTest, CommonMapKnowsAllInOrder) {
    const test::CollatorPoolGuard pool;
    const Type* const i = IntType::Get32();
    const Type* const text = StringType::Get();
    const auto registry = FunctionRegistry::Make();
    registry->GetMultinaryFunctions().Register(FunctionKey(L"z", i), i,
                                               ToFunctionPointer(&CountValues));
    registry->GetUnaryFunctions().Register(L"z", text, i, FunctionType::Regular, kUnary);
    registry->AddFunction(FunctionKey(L"host", kAny), FunctionInfo({i}, text, true, true));
    registry->GetBinaryFunctions().Register(L"a", i, i, i, FunctionType::Special, kBinary);
    registry->GetUnaryFunctions().Register(L"z", i, text, FunctionType::CreatorRegular,
                                           ToFunctionPointer(&CreateUnary));
    const std::vector<std::string> all = {"z(vector {i})", "z(s<ROOT>)", "host(AnyType)", "a(i, i)",
                                          "z(i)"};
    EXPECT_EQ(KeysOf(*registry), all);
    EXPECT_THAT(KeysOf(registry->GetUnaryFunctions()), ElementsAre("z(s<ROOT>)", "z(i)"));

    const IFunctionLookup& lookup = *registry;
    EXPECT_EQ(lookup.GetFunction(FunctionKey(L"z", i)), FunctionInfo(text, true, false));
    EXPECT_EQ(lookup.GetFunction(FunctionKey(L"host", ArrayType::Get(i))),
              FunctionInfo({i}, text, true, false));
    EXPECT_TRUE(lookup.HasFunction(FunctionKey(L"z", {i}, ArgContainer::Vector)));
    EXPECT_FALSE(lookup.HasFunction(FunctionKey(L"a", i)));
    EXPECT_LUM_ERROR(FunctionNotFound, "a(i)", lookup.GetFunction(FunctionKey(L"a", i)));

    const Type* const otherText = StringType::Get(Collation(RInternString(L"FunctionRegistry")));
    EXPECT_LUM_ERROR(
        FunctionExists, "z",
        registry->AddFunction(FunctionKey(L"z", otherText), FunctionInfo(i, false, false)));
    EXPECT_EQ(KeysOf(*registry), all);

    // Keys that are not equal and yet fit one query.
    const Type* const ints = ArrayType::Get(i);
    const Type* const texts = ArrayType::Get(text);
    registry->AddFunction(FunctionKey(L"len", ints), FunctionInfo(i, false, false));
    registry->AddFunction(FunctionKey(L"len", texts), FunctionInfo(i, false, false));
    EXPECT_FALSE(lookup.HasFunction(FunctionKey(L"len", ints)));
    EXPECT_LUM_ERROR(AmbiguousOverload, "len(A<i>)", lookup.GetFunction(FunctionKey(L"len", ints)));
}

}  // namespace
}  // namespace lum::core
