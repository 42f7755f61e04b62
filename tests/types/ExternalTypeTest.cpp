#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "lum/core/store/ExternalTypeRegistry.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using Bytes = std::vector<unsigned char>;

/// A value of the host's own kind: a few bytes.
class Blob final : public ValueExternal {
public:
    Blob(const TStringCore& typeName, Bytes bytes)
        : ValueExternal(typeName), m_bytes(std::move(bytes)) {}
    std::unique_ptr<StoreValue> Clone() const override { return std::make_unique<Blob>(*this); }
    const Bytes& GetBytes() const { return m_bytes; }

private:
    Bytes m_bytes;
};

Bytes ToBytes(const ValueExternal& value) {
    return static_cast<const Blob&>(value).GetBytes();
}

std::shared_ptr<ValueExternal> FromBytes(const ArrayView<const unsigned char>& bytes) {
    return std::make_shared<Blob>(L"blob", Bytes(bytes.begin(), bytes.end()));
}

class ExternalTypeTest : public testing::Test {
protected:
    ExternalTypeTest() { RegisterExternalType(40, L"blob", ToBytes, FromBytes); }
    ~ExternalTypeTest() override { ClearExternalTypes(); }
};

TEST_F(ExternalTypeTest, TypeOfAnIdAndOfItsName) {
    const ExternalType* const type = ExternalType::Get(40);
    EXPECT_EQ(ExternalType::Get(TStringCore(L"blob")), type);
    EXPECT_EQ(type->GetBaseType(), type);
    EXPECT_TRUE(type->GetExternalTypeId() == 40 && type->GetExternalTypeName() == L"blob");
    EXPECT_EQ(type->ToString(), L"x<blob>");
    EXPECT_EQ(GetExternalTypeId(L"blob"), 40);
    EXPECT_EQ(GetExternalTypeName(40), L"blob");
    EXPECT_NE(ExternalType::Get(41), type);  // An id need not be registered.
}

TEST_F(ExternalTypeTest, ValuesGoToBytesAndBack) {
    const Blob blob(L"blob", {1, 2, 3});
    const Bytes bytes = SerializeExternalType(blob);
    const std::shared_ptr<ValueExternal> back =
        DeserializeExternalType(40, ArrayView<const unsigned char>(bytes.data(), 3));
    EXPECT_EQ(back->GetType(), ExternalType::Get(40));
    EXPECT_EQ(static_cast<const Blob&>(back->AsExternal()).GetBytes(), blob.GetBytes());
    EXPECT_EQ(back->GetCount(), 1u);
    EXPECT_EQ(back->GetHashValue(), 0u);
    EXPECT_LUM_PLAIN_ERROR(IllegalComparison, "", back->Compare(blob));
    EXPECT_LUM_REPORT(IllegalCast, "", "", back->Cast(back->GetType()));
    EXPECT_LUM_PLAIN_ERROR(ExpectedBool, "External", back->AsBool());
}

TEST_F(ExternalTypeTest, RefusedRegistrationsInTheOrderOfTheirTests) {
    const char taken[] =
        "(m_typeIds.find(typeName) == m_typeIds.end() && "
        "m_externalTypeRegistrations.find(typeId) == m_externalTypeRegistrations.end())";
    EXPECT_LUM_REPORT(ExternalTypeExists, "", taken,
                      RegisterExternalType(40, L"", nullptr, nullptr));
    EXPECT_LUM_REPORT(ExternalTypeExists, "", taken,
                      RegisterExternalType(41, L"blob", nullptr, nullptr));
    EXPECT_LUM_REPORT(EmptyTypeName, "", "!(typeName.isEmpty())",
                      RegisterExternalType(41, L"", nullptr, nullptr));
    EXPECT_LUM_REPORT(NullSerializeFunction, "", "(serializeValueFunction) != nullptr",
                      RegisterExternalType(41, L"other", nullptr, nullptr));
    EXPECT_LUM_REPORT(NullDeserializeFunction, "", "(deserializeValueFunction) != nullptr",
                      RegisterExternalType(41, L"other", ToBytes, nullptr));
    // Neither the id nor the name was taken by the failures.
    RegisterExternalType(41, L"other", ToBytes, FromBytes);
    EXPECT_EQ(GetExternalTypeId(L"other"), 41);
}

TEST_F(ExternalTypeTest, UnknownKinds) {
    EXPECT_NO_SUCH_KEY(GetExternalTypeId(L"Blob"));
    EXPECT_NO_SUCH_KEY(GetExternalTypeName(41));
    EXPECT_NO_SUCH_KEY(ExternalType::Get(TStringCore(L"no")));
    EXPECT_NO_SUCH_KEY(ExternalType::Get(41)->ToString());
    EXPECT_NO_SUCH_KEY(DeserializeExternalType(41, {}));
    EXPECT_NO_SUCH_KEY(Blob(L"no", {}));
}

TEST_F(ExternalTypeTest, ClearingForgetsNamesAndKeepsTypes) {
    const Blob blob(L"blob", {1});
    const ExternalType* const type = blob.GetType();
    ClearExternalTypes();
    EXPECT_NO_SUCH_KEY(SerializeExternalType(blob));
    EXPECT_NO_SUCH_KEY(type->ToString());
    EXPECT_EQ(ExternalType::Get(40), type);
    RegisterExternalType(40, L"blob again", ToBytes, FromBytes);
    EXPECT_EQ(type->ToString(), L"x<blob again>");
}

}  // namespace
}  // namespace lum::core
