// The bytes in the document of the form are those that are written.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
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

class WireFormatPageTest : public test::SerializeTest {
protected:
    // Of each line of the page that is of that form, the groups that are bytes.
    static std::vector<std::string> FindLines(const std::string& form) {
        std::ifstream page(LUM_SOURCE_DIR "/docs/wire-format.md");
        std::vector<std::string> found;
        std::smatch match;
        for (std::string line; std::getline(page, line);) {
            if (std::regex_match(line, match, std::regex(form))) {
                found.push_back(match[1]);
            }
        }
        return found;
    }
};

// Each line of a dump is a position, bytes, and what they are.
TEST_F(WireFormatPageTest, Dumps) {
    std::string digits;
    for (const std::string& bytes : FindLines("[0-9a-f]{4}  ((?:[0-9a-f]{2} )+).*")) {
        digits += bytes;
    }
    const RInternString city(L"city");
    IStoreTable::Columns columns{{city, test::ColumnOf("s: Oslo Oslo -", SortSpecOrder::ASC)}};
    IStoreTable::Columns members{
        {RInternString(L"t"),
         factory::MakeTable(std::move(columns), {{city, SortSpecOrder::ASC}})}};
    const auto store = factory::MakeDataStore(std::move(members));
    std::vector<unsigned char> expected = test::GoldenBytes(
        /*flags=*/2, "#1 'a' 0c02 29 #2 4: 01000000 07000000 #2 0001 ; ;");
    const std::vector<unsigned char> second = test::WriteStore(*store, /*flags=*/3);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(test::ToHex(test::FromHex(digits)), test::ToHex(expected));
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
    const std::vector<std::string> rows = FindLines(R"(\|.*\| (`01 01`.*) \|)");
    EXPECT_EQ(rows.size(), 13u);
    for (std::string row : rows) {
        std::erase_if(row, [](char c) { return c == '`' || c == '|'; });
        EXPECT_EQ(written.count(test::ToHex(test::FromHex(row))), 1u) << row;
    }
}

}  // namespace
}  // namespace lum::core
