// Values as payloads: their bytes, what of them stays in place, and what is refused.

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <numeric>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/ExactText.h"
#include "tests/support/RandomColumns.h"

namespace lum::core {
namespace {

class BinaryValueTest : public test::SerializeTest {};

std::shared_ptr<IDataStore> StoreOf(const SV& value) {
    return factory::MakeDataStore(test::MakeStoreOf(value));
}

std::string RootTextOf(const IDataStore& store) {
    return test::ExactText(store.GetValue(KeyPath()));
}

SV MemberOf(const IDataStore& store, const wchar_t* name) {
    return store.GetValue(KeyPath::ParseString(name));
}

TEST_F(BinaryValueTest, GoldenBytes) {
    test::ForEachGoldenPayload(
        [](const SV& value, unsigned int flags, const std::vector<unsigned char>& bytes) {
            const auto store = StoreOf(value);
            EXPECT_EQ(test::ToHex(test::WriteStore(*store, flags)), test::ToHex(bytes));
            for (const std::size_t shift : {0u, 1u, 4u}) {
                BinaryProtocolReader reader(test::MakePayload(bytes, shift));
                EXPECT_EQ(RootTextOf(*StoreValueParser::MakeDataStore(reader)), RootTextOf(*store));
                EXPECT_EQ(reader.GetRemainingBytes(), 0u);
            }
        });
}

// Nothing but the indices of plain arrays is lost.
TEST_F(BinaryValueTest, StreamsOfRandomStores) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    std::string allTexts;
    for (int stream = 0; stream < 100; ++stream) {
        const auto flags = random.Below(4);
        BinaryProtocolCreator creator((flags & 2) != 0, (flags & 1) != 0);
        std::unique_ptr<BinaryProtocolReader> reader;
        for (int payload = 0; payload < 10; ++payload) {
            const auto store = factory::MakeDataStore(test::MakeRandomStore(random, 2));
            // A string of its own, since a payload whose only new string is empty cannot be read.
            store->SetValue(KeyPath::ParseString(L"payload"),
                            factory::MakeString(TStringCore::number(payload) + L"."));
            SerializeDataStore(creator, *store);
            auto bytes = test::MakePayload(creator.FinalizePayload(), random.Below(9));
            if (reader == nullptr) {
                reader = std::make_unique<BinaryProtocolReader>(bytes);
            } else {
                reader->NextPayload(bytes);
            }
            bytes.reset();
            const auto read = StoreValueParser::MakeDataStore(*reader);
            ASSERT_EQ(reader->GetRemainingBytes(), 0u);
            if (payload == 9) {
                reader.reset();
            }
            ASSERT_EQ(RootTextOf(*read), RootTextOf(*store));
            allTexts += RootTextOf(*store);
        }
    }
    // What is compared is worth it.
    for (const char* const part : {"constant", "composite", "with kinds", "bytes", "!9", "x0("}) {
        EXPECT_NE(allTexts.find(part), std::string::npos) << part;
    }
}

// A host may look at the events on their way, one by one.
class CountingCreator final : public BinaryProtocolCreator {
public:
    using BinaryProtocolCreator::AppendArray;
    using BinaryProtocolCreator::AppendData;
    void AppendData(const TStringCore& value) override {
        events += 's';
        BinaryProtocolCreator::AppendData(value);
    }
    void AppendArray(ArrayView<const unsigned int> values) override {
        events += 'i';
        BinaryProtocolCreator::AppendArray(values);
    }
    std::string events;
};

class CountingReader final : public BinaryProtocolReader {
public:
    using BinaryProtocolReader::BinaryProtocolReader;
    const TStringCore& ReadString() override {
        events += 's';
        return BinaryProtocolReader::ReadString();
    }
    std::string events;
};

TEST_F(BinaryValueTest, SubclassesSeeEachEvent) {
    for (const auto& [column, events] : {std::pair("i: 1 2 3", "i"), std::pair("s: a b", "ss")}) {
        CountingCreator creator;
        const auto store = StoreOf(test::ColumnOf(column));
        SerializeDataStore(creator, *store);
        EXPECT_EQ(creator.events, events);
        CountingReader reader(test::MakePayload(creator.FinalizePayload()));
        EXPECT_EQ(RootTextOf(*StoreValueParser::MakeDataStore(reader)), RootTextOf(*store));
        EXPECT_EQ(reader.events, column[0] == 's' ? events : "");
    }
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
    const std::vector<unsigned char> bytes =
        test::WriteStore(*factory::MakeDataStore(std::move(members)));

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
        SV values = MemberOf(*store, L"values");
        SV runs = MemberOf(*store, L"runs");
        const SV text = MemberOf(*store, L"text");
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

// Heads of columns come in batches, which live as long as any of theirs, and readers of a host's
// own see each event of a list where others take it as a whole.
TEST_F(BinaryValueTest, ManyColumnsOfOnePayload) {
    constexpr int kColumns = 100;
    const auto nameOf = [](int i) { return RInternString(TStringCore::number(i)); };
    std::unordered_map<RInternString, SV> members;
    for (int i = 0; i < kColumns; ++i) {
        const char* const columns[] = {"i: 1 2", "l: 3 -", "b: true", "i:", "s: a", "r: 4"};
        members.emplace(nameOf(i),
                        test::ColumnOf(columns[static_cast<std::size_t>(i) % std::size(columns)]));
    }
    const auto store = factory::MakeDataStore(std::move(members));
    const std::vector<unsigned char> bytes = test::WriteStore(*store);
    CountingReader counting(test::MakePayload(bytes));
    EXPECT_EQ(RootTextOf(*StoreValueParser::MakeDataStore(counting)), RootTextOf(*store));

    for (const int kept : {0, 5, 61, kColumns - 1}) {
        auto payload = test::MakePayload(bytes);
        const std::weak_ptr<test::PayloadBytes> life = payload;
        const auto read = [&payload] {
            BinaryProtocolReader reader(std::exchange(payload, nullptr));
            return StoreValueParser::MakeDataStore(reader);
        };
        SV column = read()->GetValue(KeyPath(nameOf(kept)));
        EXPECT_FALSE(life.expired());
        EXPECT_EQ(test::TextOf(column), test::TextOf(store->GetValue(KeyPath(nameOf(kept)))));
        column.reset();
        EXPECT_TRUE(life.expired());
    }
}

// Large columns are not copied before the payload is made, and outlive their store until then. What
// is written is the same as for columns that are gathered on the way: those with indices.
TEST_F(BinaryValueTest, LargeColumns) {
    // Of the one column, and of one more behind it whose words would go astray.
    const auto makeHandlesOf = [](const SV& column) {
        const SV last = column->AsArray().GetRange(0, 3, 1);
        return factory::MakeArray<SV>(column->GetType(), {column, last}, SortSpecOrder::UNKNOWN);
    };
    for (const lumsize_t count : {511u, 512u, 513u, 4'097u, 9'001u}) {
        for (const char* const type : {"b", "i", "l"}) {
            std::vector<unsigned int> indices(count);
            std::iota(indices.begin(), indices.end(), 0u);
            test::Random random;
            SV column;
            do {
                column = test::MakeRandomColumn(random, test::TypeOf(type), count);
            } while (!column->AsArray().HasSpecialValues());
            const auto write = [&](const SV& form) {
                auto store = StoreOf(makeHandlesOf(form));
                BinaryProtocolCreator creator;
                SerializeDataStore(creator, *store);
                store.reset();
                return creator.FinalizePayload();
            };
            const SV indexed =
                column->AsArray().WithIndices(std::move(indices), SortSpecOrder::UNORD);
            EXPECT_EQ(write(column), write(indexed)) << type << count;
            const std::weak_ptr<StoreValue> life = std::exchange(column, nullptr);
            EXPECT_TRUE(life.expired());
        }
    }
}

}  // namespace
}  // namespace lum::core
