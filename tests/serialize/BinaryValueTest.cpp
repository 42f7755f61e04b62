// Values as payloads: their bytes, what of them stays in place, and what is refused.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <numeric>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/ExactText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/RandomColumns.h"
#include "tests/support/RandomStores.h"

namespace lum::core {
namespace {

class BinaryValueTest : public testing::Test {
protected:
    BinaryValueTest() { test::RegisterBytesKind(); }
    ~BinaryValueTest() override { ClearExternalTypes(); }

private:
    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

// A column of the one column, and of one more behind it whose words would go astray.
SV MakeHandlesOf(const SV& column) {
    const SV last = column->AsArray().GetRange(0, 3, 1);
    return factory::MakeArray<SV>(column->GetType(), {column, last}, SortSpecOrder::UNKNOWN);
}

TEST_F(BinaryValueTest, WritesGoldenBytes) {
    test::ForEachGoldenPayload(
        [](const SV& value, unsigned int flags, const std::vector<unsigned char>& bytes) {
            BinaryProtocolCreator creator((flags & 2) != 0, (flags & 1) != 0);
            SerializeDataStore(creator, *factory::MakeDataStore(test::MakeStoreOf(value)));
            EXPECT_EQ(test::ToHex(creator.FinalizePayload()), test::ToHex(bytes));
        });
}

// A host may look at the events on their way, one by one.
class CountingCreator final : public BinaryProtocolCreator {
public:
    using BinaryProtocolCreator::AppendArray;
    using BinaryProtocolCreator::AppendData;
    void AppendData(const TStringCore& value) override {
        ++stringCount;
        BinaryProtocolCreator::AppendData(value);
    }
    void AppendArray(ArrayView<const unsigned int> values) override {
        ++blockCount;
        BinaryProtocolCreator::AppendArray(values);
    }
    int stringCount = 0;
    int blockCount = 0;
};

class CountingReader final : public BinaryProtocolReader {
public:
    using BinaryProtocolReader::BinaryProtocolReader;
    const TStringCore& ReadString() override {
        ++stringCount;
        return BinaryProtocolReader::ReadString();
    }
    int stringCount = 0;
};

TEST_F(BinaryValueTest, SubclassesSeeEachEvent) {
    CountingCreator creator;
    const auto store = factory::MakeDataStore(
        std::unordered_map<RInternString, SV>({{RInternString(L"i"), test::ColumnOf("i: 1 2 3")},
                                               {RInternString(L"s"), test::ColumnOf("s: a b")}}));
    SerializeDataStore(creator, *store);
    EXPECT_EQ(creator.stringCount, 2);
    EXPECT_EQ(creator.blockCount, 1);
    CountingReader reader(test::MakePayload(creator.FinalizePayload()));
    EXPECT_EQ(test::ExactText(StoreValueParser::MakeDataStore(reader)->GetValue(KeyPath())),
              test::ExactText(store->GetValue(KeyPath())));
    EXPECT_EQ(reader.stringCount, 2);
}

TEST_F(BinaryValueTest, ReadsGoldenBytes) {
    test::ForEachGoldenPayload(
        [](const SV& value, unsigned int, const std::vector<unsigned char>& bytes) {
            for (const std::size_t shift : {0u, 1u, 4u}) {
                BinaryProtocolReader reader(test::MakePayload(bytes, shift));
                const auto store = StoreValueParser::MakeDataStore(reader);
                EXPECT_EQ(test::ExactText(store->GetValue(KeyPath())),
                          test::ExactText(test::MakeStoreOf(value)));
                EXPECT_EQ(reader.GetRemainingBytes(), 0u);
            }
        });
}

// Where a column stands, and what keeps it there. The payload stands at a multiple of 16, so that
// its data is used in place, or 3 behind one, so that a copy of it is.
TEST_F(BinaryValueTest, ColumnsStandInThePayload) {
    std::unordered_map<RInternString, SV> members;
    members.emplace(RInternString(L"values"), test::ColumnOf("l: 1 -"));
    members.emplace(RInternString(L"runs"),
                    MakeCompositeArray<unsigned char>(
                        BoolType::Get(), {{1, SpecialKind::Normal, 3}},
                        std::make_unique<std::vector<unsigned int>>(2, 2u), SortSpecOrder::ASC));
    members.emplace(RInternString(L"text"), test::ColumnOf("s: a 'longer than the handle'"));
    BinaryProtocolCreator creator;
    SerializeDataStore(creator, *factory::MakeDataStore(std::move(members)));
    const std::vector<unsigned char> bytes = creator.FinalizePayload();

    for (const std::size_t shift : {0u, 3u}) {
        auto payload = test::MakePayload(bytes, shift);
        const std::weak_ptr<test::PayloadBytes> life = payload;
        const ArrayView<const unsigned char> block = payload->GetView();
        const auto isInPayload = [&](const auto* element) {
            const auto* const address = reinterpret_cast<const unsigned char*>(element);
            return address >= block.begin() && address < block.end();
        };
        std::shared_ptr<IDataStore> store;
        {
            BinaryProtocolReader reader(std::exchange(payload, nullptr));
            store = StoreValueParser::MakeDataStore(reader);
        }
        SV values = store->GetValue(KeyPath::ParseString(L"values"));
        SV runs = store->GetValue(KeyPath::ParseString(L"runs"));
        const SV text = store->GetValue(KeyPath::ParseString(L"text"));
        store.reset();

        const bool isInPlace = shift == 0;
        const auto& array = values->AsTypedArray<unsigned long long>();
        EXPECT_EQ(isInPayload(array.GetValues().GetData()), isInPlace);
        EXPECT_EQ(isInPayload(array.GetSpecials().GetData()), isInPlace);
        const auto& indexed = dynamic_cast<const ArrayWithIndices&>(*runs);
        EXPECT_EQ(isInPayload(indexed.GetIndices().GetData()), isInPlace);
        EXPECT_EQ(life.expired(), !isInPlace);

        EXPECT_EQ(test::TextOf(values), "l: 1 -");
        EXPECT_EQ(test::TextOf(runs), "b: true true");
        SV lastShare = values->AsArray().GetRange(1, 1, 1);
        values.reset();
        runs.reset();
        EXPECT_EQ(life.expired(), !isInPlace);
        EXPECT_EQ(test::TextOf(lastShare), "l: -");
        lastShare.reset();
        EXPECT_TRUE(life.expired());
        EXPECT_EQ(test::TextOf(text), "s: a 'longer than the handle'");
    }
}

// Large columns are not copied before the payload is made, and outlive their store until then. What
// is written is the same as for columns that are gathered on the way: those with indices.
TEST_F(BinaryValueTest, LargeColumns) {
    for (const lumsize_t count : {511u, 512u, 513u, 4'097u, 9'001u}) {
        for (const char* const type : {"b", "i", "l"}) {
            std::vector<unsigned int> indices(count);
            std::iota(indices.begin(), indices.end(), 0u);
            test::Random random;
            SV column;
            do {
                column = test::MakeRandomColumn(random, test::TypeOf(type), count);
            } while (!column->AsArray().HasSpecialValues());
            std::vector<unsigned char> payloads[2];
            for (const SV& form : {column, column->AsArray().WithIndices(std::move(indices),
                                                                         SortSpecOrder::UNORD)}) {
                auto store = factory::MakeDataStore(test::MakeStoreOf(MakeHandlesOf(form)));
                BinaryProtocolCreator creator;
                SerializeDataStore(creator, *store);
                store.reset();
                payloads[form == column ? 0 : 1] = creator.FinalizePayload();
            }
            EXPECT_EQ(payloads[0], payloads[1]) << type << count;
            const std::weak_ptr<StoreValue> life = std::exchange(column, nullptr);
            EXPECT_TRUE(life.expired());
        }
    }
}

// Its count costs nothing, neither on the wire nor in memory.
TEST_F(BinaryValueTest, ConstantArrayOfMostElements) {
    constexpr lumsize_t kMost = std::numeric_limits<lumsize_t>::max();
    BinaryProtocolCreator creator;
    SerializeDataStore(creator,
                       *factory::MakeDataStore(test::MakeStoreOf(
                           factory::MakeConstantArray<unsigned char>(BoolType::Get(), 1, kMost))));
    const std::vector<unsigned char> bytes = creator.FinalizePayload();
    EXPECT_LT(bytes.size(), 64u);
    BinaryProtocolReader reader(test::MakePayload(bytes));
    const SV read = StoreValueParser::MakeDataStore(reader)->GetValue(KeyPath::ParseString(L"v"));
    EXPECT_TRUE(read->AsArray().IsConstant());
    EXPECT_EQ(read->GetCount(), kMost);
}

}  // namespace
}  // namespace lum::core
