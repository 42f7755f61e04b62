// The bytes in the document of the form are those that are written.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/TableFactory.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"

namespace lum::core {
namespace {

bool IsHex(const std::string& text, std::size_t start, std::size_t count) {
    return text.size() >= start + count &&
           text.find_first_not_of("0123456789abcdef", start) >= start + count;
}

// Each line of a dump is a position, bytes, and what they are; the first position is 0.
std::vector<std::vector<unsigned char>> ReadDumps(std::istream& document) {
    std::vector<std::vector<unsigned char>> dumps;
    std::string line;
    while (std::getline(document, line)) {
        if (!IsHex(line, 0, 4) || line.substr(4, 2) != "  ") {
            continue;
        }
        if (line.substr(0, 4) == "0000") {
            dumps.emplace_back();
        }
        EXPECT_EQ(std::stoul(line.substr(0, 4), nullptr, 16), dumps.back().size()) << line;
        for (std::size_t i = 6; IsHex(line, i, 2) && line[i + 2] == ' '; i += 3) {
            dumps.back().push_back(test::FromHex(line.substr(i, 2)).front());
        }
    }
    return dumps;
}

// The bytes of the rows of the table of values: code spans in their last cell.
std::vector<std::string> ReadRows(std::istream& document) {
    std::vector<std::string> rows;
    std::string line;
    while (std::getline(document, line) && line != "| value | data |") {
    }
    std::getline(document, line);
    while (std::getline(document, line) && line.front() == '|') {
        std::string digits = line.substr(line.find("| `01 01`"));
        std::erase_if(digits, [](char c) { return c == '|' || c == '`' || c == ' '; });
        rows.push_back(test::ToHex(test::FromHex(digits)));
    }
    return rows;
}

class WireFormatPageTest : public test::SerializeTest {
protected:
    std::ifstream m_document{LUM_SOURCE_DIR "/docs/wire-format.md"};
};

TEST_F(WireFormatPageTest, Dumps) {
    const std::vector<std::vector<unsigned char>> dumps = ReadDumps(m_document);
    ASSERT_EQ(dumps.size(), 2u);
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        if (golden.name == "SortedArrayBase128") {
            EXPECT_EQ(test::ToHex(dumps[0]), test::ToHex(golden.GetBytes()));
        }
    }
    const RInternString city(L"city");
    IStoreTable::Columns columns{{city, test::ColumnOf("s: Oslo Oslo -", SortSpecOrder::ASC)}};
    IStoreTable::Columns members{
        {RInternString(L"t"),
         factory::MakeTable(std::move(columns), {{city, SortSpecOrder::ASC}})}};
    const auto store = factory::MakeDataStore(std::move(members));
    EXPECT_EQ(test::ToHex(dumps[1]), test::ToHex(test::WriteStore(*store, /*flags=*/3)));
}

// The rows are data sections of golden payloads, which are what the library writes.
TEST_F(WireFormatPageTest, Values) {
    std::set<std::string> written;
    test::ForEachGoldenPayload([&](const SV&, unsigned int flags, const auto& bytes) {
        if (flags == 2) {
            written.insert(
                test::ToHex(std::vector<unsigned char>(bytes.begin() + bytes[28], bytes.end())));
        }
    });
    const std::vector<std::string> rows = ReadRows(m_document);
    EXPECT_EQ(rows.size(), 13u);
    for (const std::string& row : rows) {
        EXPECT_EQ(written.count(row), 1u) << row;
    }
}

}  // namespace
}  // namespace lum::core
