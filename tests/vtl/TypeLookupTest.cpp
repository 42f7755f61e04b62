#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/vtl/FunctionInputTypes.h"
#include "lum/core/vtl/FunctionSpec.h"
#include "lum/core/vtl/ITypeRecorder.h"
#include "lum/core/vtl/KeyPathTypeLookup.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using test::Key;

TEST(TypeLookupTest, TypesOfKeysStandOnTheirLastSegment) {
    const Type* const column = ArrayType::Get(IntType::Get32());
    const struct {
        const char* path;
        const Type* type;  // Null where there is none.
        bool isKeyMap = false;
        const char* text = "";  // Of the path, in failures.
    } cases[] = {
        {"a:i", IntType::Get32()},
        {"a/b:A<i>", column},
        {"a:f/b:M{ x:A<i> }", KeyMapType::Get({{L"x", column}}), true},
        {"a:M", KeyMapType::Get({}), true},
        {"a:T{ x:A<i> }", TableType::Get({{L"x", column}})},
        {"a", nullptr, false, "a"},
        {"a:M/b", nullptr, false, "a/b"},
        {"a:i/'two words'", nullptr, false, "a/'two words'"},
    };
    const KeyPathTypeLookup lookup;
    for (const auto& test : cases) {
        SCOPED_TRACE(test.path);
        const KeyPath path = Key(test.path);
        EXPECT_EQ(lookup.HasType(path), test.type != nullptr);
        if (test.type != nullptr) {
            EXPECT_EQ(lookup.GetType(path), test.type);
            EXPECT_EQ(lookup.IsKeyMap(path), test.isKeyMap);
        } else {
            EXPECT_LUM_REPORT(KeyNotFound, test.text, "", lookup.GetType(path));
            EXPECT_LUM_REPORT(KeyNotFound, test.text, "", lookup.IsKeyMap(path));
        }
    }
    const char* const condition = "!(m_segments->empty())";
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.HasType(KeyPath()));
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.GetType(KeyPath()));
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.IsKeyMap(KeyPath()));
}

// What an engine has: types are recorded while a program is planned, and looked up for the next
// function.
class PlannedTypes final : public ITypeLookup, public ITypeRecorder {
public:
    bool HasType(const KeyPath& path) const override { return HasRecordedType(path); }
    const Type* GetType(const KeyPath& path) const override { return GetRecordedType(path); }
    bool IsKeyMap(const KeyPath& path) const override {
        return GetType(path)->Is(StoreType::KeyMap);
    }

    void RecordType(const KeyPath& path, const Type* type) override {
        LUM_CHECK(m_types.emplace(path, type).second, LumError::KeyTypeAlreadySet);
    }
    void RecordChildType(const KeyPath& path, const Type* type) override {
        RecordType(path, ArrayType::Get(type));
    }
    void RecordNestedType(const KeyPath& path, const Type* type) override {
        RecordChildType(path, ArrayType::Get(type));
    }
    bool HasRecordedType(const KeyPath& path) const override { return m_types.count(path) != 0; }
    const Type* GetRecordedType(const KeyPath& path) const override {
        LUM_CHECK(HasRecordedType(path), LumError::PathTypeNotFound);
        return m_types.at(path);
    }

private:
    std::unordered_map<KeyPath, const Type*> m_types;
};

TEST(TypeLookupTest, InputTypesOfFunctions) {
    PlannedTypes planned;
    ITypeRecorder& recorder = planned;
    recorder.RecordType(Key("a"), BoolType::Get());
    recorder.RecordChildType(Key("b"), RealType::Get64());
    const auto function = FunctionSpec::Make(
        L"f", {ValueSpec(Key("b")), ValueSpec(factory::MakeInt32(7)), ValueSpec(Key("a"))});
    const std::vector<const Type*> types = GetFunctionInputTypes(*function, planned);
    EXPECT_EQ(types, (std::vector<const Type*>{ArrayType::Get(RealType::Get64()), IntType::Get32(),
                                               BoolType::Get()}));
    EXPECT_EQ(
        FunctionKey::FromNonVariableInputs(L"f", {types[1]}, FunctionKey::ArgContainer::Separate)
            .ToString(),
        L"f(i)");

    const KeyPathTypeLookup written;
    EXPECT_TRUE(GetFunctionInputTypes(*FunctionSpec::Make(L"f"), written).empty());
    EXPECT_EQ(GetFunctionInputTypes(*FunctionSpec::Make(L"f", Key("x/y:i")), written),
              std::vector<const Type*>{IntType::Get32()});
    EXPECT_LUM_REPORT(KeyNotFound, "b", "", GetFunctionInputTypes(*function, written));
    EXPECT_LUM_LOGIC_REPORT(
        Unspecified, "", "(m_value) != nullptr",
        GetFunctionInputTypes(*FunctionSpec::Make(L"f", std::vector<ValueSpec>(1)), written));
}

}  // namespace
}  // namespace lum::core
