#include "ColumnInference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "CsvReader.h"

namespace lumhost::test {
namespace {

ColumnType Infer(const std::vector<std::string>& cells) {
    std::string text;
    for (const std::string& cell : cells) {
        text += cell + '\n';
    }
    MemorySource source("text.csv", text);
    CsvReader reader(source);
    CsvRows rows;
    ColumnInference inference;
    while (reader.ReadRows(rows, 1)) {
        inference.Add(rows, 0);
    }
    return inference.GetType();
}

struct ColumnCase {
    std::vector<std::string> cells;
    ColumnType type;
};

TEST(ColumnInferenceTest, FindsTheNarrowestTypeInAnyOrder) {
    const std::string exact = "9007199254740992";
    const std::string wide = "9007199254740993";
    const ColumnCase cases[] = {
        {{}, ColumnType::String},
        {{"", "NA"}, ColumnType::String},
        {{"\"\"", ""}, ColumnType::String},
        {{"true", "FALSE", ""}, ColumnType::Bool},
        {{"true", "1"}, ColumnType::String},
        {{"1", "-2", "NA", ""}, ColumnType::Int32},
        {{"\"1\"", "\"-2\""}, ColumnType::Int32},
        {{"1", "\"\"", ""}, ColumnType::Int32},
        {{"1", "\"NA\""}, ColumnType::String},
        {{"1", "na"}, ColumnType::String},
        {{"1", "2147483648"}, ColumnType::Int64},
        {{"1", wide}, ColumnType::Int64},
        {{"1", "2147483648", "0.5"}, ColumnType::Real64},
        {{exact, "0.5"}, ColumnType::Real64},
        {{wide, "0.5"}, ColumnType::String},
        {{"1", "99999999999999999999"}, ColumnType::String},
        {{"0.5", "99999999999999999999"}, ColumnType::String},
        {{"1", "007"}, ColumnType::String},
        {{"1.5", "2024-01-01"}, ColumnType::String},
        {{"2024-01-01", "NA"}, ColumnType::Date},
        {{"2024-01-01", "2024-01-01T00:00:00"}, ColumnType::DateTime},
        {{"2024-01-01T10:00:00"}, ColumnType::DateTime},
        {{"2024-01-01", "2024"}, ColumnType::String},
        {{"2024-01-01", "today"}, ColumnType::String},
    };
    for (const ColumnCase& testCase : cases) {
        std::vector<std::string> cells = testCase.cells;
        std::sort(cells.begin(), cells.end());
        do {
            EXPECT_STREQ(GetName(Infer(cells)), GetName(testCase.type))
                << testing::PrintToString(cells);
        } while (std::next_permutation(cells.begin(), cells.end()));
    }
}

TEST(ColumnInferenceTest, TypeCodesNameEachTypeOnce) {
    std::vector<std::string> names;
    for (const char code : std::string("bilfrsdtc")) {
        names.emplace_back(GetName(ColumnTypeFromCode(code).value()));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Bool", "Int32", "Int64", "Real32", "Real64",
                                               "String", "Date", "DateTime", "Color"}));
    EXPECT_EQ(ColumnTypeFromCode('B'), std::nullopt);
    EXPECT_EQ(ColumnTypeFromCode('P'), std::nullopt);
}

}  // namespace
}  // namespace lumhost::test
