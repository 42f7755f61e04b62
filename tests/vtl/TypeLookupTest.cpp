#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lum/core/functions/FunctionKey.h"
#include "lum/core/store/ValueFactory.h"
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
    const KeyPathTypeLookup lookup;
    const struct {
        const char* path;
        const char* type;
        bool isKeyMap;
    } typed[] = {
        {"a:i", "i", false},
        {"a/b:A<i>", "A<i>", false},
        {"a:f/b:M{ x:A<i> }", "M{x:A<i>}", true},
        {"a:M", "M", true},
        {"a:T{ x:A<i> }", "T{x:A<i>}", false},
    };
    for (const auto& [path, type, isKeyMap] : typed) {
        EXPECT_TRUE(lookup.HasType(Key(path))) << path;
        EXPECT_EQ(lookup.GetType(Key(path))->ToString().toStdString(), type);
        EXPECT_EQ(lookup.IsKeyMap(Key(path)), isKeyMap) << path;
    }
    // In failures paths stand without their types.
    for (const std::string name : {"a", "a/b", "a/'two words'"}) {
        const KeyPath path = Key(name);
        EXPECT_FALSE(lookup.HasType(path)) << name;
        EXPECT_LUM_REPORT(KeyNotFound, name, "", lookup.GetType(path));
        EXPECT_LUM_REPORT(KeyNotFound, name, "", lookup.IsKeyMap(path));
    }
    EXPECT_LUM_REPORT(KeyNotFound, "a/b", "", lookup.GetType(Key("a:M/b")));
    const char* const condition = "!(m_segments->empty())";
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.HasType(KeyPath()));
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.GetType(KeyPath()));
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, lookup.IsKeyMap(KeyPath()));
}

// An engine's own record of types, which links against the interface alone.
class TypeOfOneKey final : public ITypeRecorder {
public:
    void RecordType(const KeyPath&, const Type* type) override { m_type = type; }
    void RecordChildType(const KeyPath&, const Type* type) override { m_type = type; }
    void RecordNestedType(const KeyPath&, const Type* type) override { m_type = type; }
    bool HasRecordedType(const KeyPath&) const override { return m_type != nullptr; }
    const Type* GetRecordedType(const KeyPath&) const override { return m_type; }

private:
    const Type* m_type = nullptr;
};

TEST(TypeLookupTest, InputTypesOfFunctions) {
    const KeyPathTypeLookup lookup;
    const auto function = FunctionSpec::Make(
        L"f", {ValueSpec(Key("b:A<r>")), ValueSpec(factory::MakeInt32(7)), ValueSpec(Key("a:b"))});
    const std::vector<const Type*> types = GetFunctionInputTypes(*function, lookup);
    EXPECT_EQ(FunctionKey::FromNonVariableInputs(L"f", types, FunctionKey::ArgContainer::Separate)
                  .ToString(),
              L"f(A<r<-1,-1>>, i, b)");

    const std::unique_ptr<ITypeRecorder> recorder = std::make_unique<TypeOfOneKey>();
    recorder->RecordType(Key("b"), types[0]);
    EXPECT_EQ(recorder->GetRecordedType(Key("b")), types[0]);

    EXPECT_TRUE(GetFunctionInputTypes(*FunctionSpec::Make(L"f"), lookup).empty());
    EXPECT_LUM_REPORT(KeyNotFound, "b", "",
                      GetFunctionInputTypes(*FunctionSpec::Make(L"f", Key("b")), lookup));
    EXPECT_LUM_LOGIC_REPORT(
        Unspecified, "", "(m_value) != nullptr",
        GetFunctionInputTypes(*FunctionSpec::Make(L"f", std::vector<ValueSpec>(1)), lookup));
}

}  // namespace
}  // namespace lum::core
