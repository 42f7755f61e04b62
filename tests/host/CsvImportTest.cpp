#include "CsvImport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "CellText.h"
#include "CsvExport.h"
#include "FileError.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/Random.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

std::vector<NamedColumn> Import(TextSource& source, const CsvImportOptions& options = {}) {
    RegisterDefaultCollatorPool();
    std::ostringstream out;
    Progress progress(out, /*isTerminal=*/false, "");
    return ImportCsv(source, options, progress);
}

std::vector<NamedColumn> Import(const std::string& text, const CsvImportOptions& options = {}) {
    MemorySource source("text.csv", text);
    return Import(source, options);
}

// Each column as name:type=JSON, one to a line.
std::string Show(const std::vector<NamedColumn>& columns) {
    std::string text;
    for (const NamedColumn& column : columns) {
        text += KeySegment(column.name, column.values->GetType()).ToString().toStdString() + '=' +
                SerializeValue(*column.values).toStdString() + '\n';
    }
    return text;
}

std::string FaultOf(TextSource& source, const CsvImportOptions& options = {}) {
    try {
        return "no fault: " + Show(Import(source, options));
    } catch (const FileError& error) {
        return error.what();
    }
}

std::string FaultOf(const std::string& text, const CsvImportOptions& options = {}) {
    MemorySource source("text.csv", text);
    return FaultOf(source, options);
}

TEST(CsvImportTest, MakesColumnsOfTheInferredTypes) {
    const std::pair<const char*, const char*> cases[] = {
        {"b,i,l,r,s,d,t\n"
         "true,1,3000000000,1.5,x,2024-02-29,2024-02-29\n"
         "FALSE,-2,-1,2,\"y,\"\"z\"\"\",0400-01-01,2024-02-29T09:05:00.25\n",
         "b:A<b>=[true,false]\ni:A<i>=[1,-2]\nl:A<l>=[3000000000,-1]\nr:A<r>=[1.5,2]\n"
         "s:A<s>=[\"x\",\"y,\\\"z\\\"\"]\nd:A<d>=[\"2024-02-29\",\"0400-01-01\"]\n"
         "t:A<t>=[\"2024-02-29\",\"2024-02-29T09:05:00.2500\"]\n"},
        // Cells without a value are Null.
        {"number,text,nothing\n1,\"\",\n,,NA\n\"\",\"NA\",\n",
         "number:A<i>=[1,[0,\"Null\"],[0,\"Null\"]]\n"
         "text:A<s>=[\"\",[\"\",\"Null\"],\"NA\"]\n"
         "nothing:A<s>=[[\"\",\"Null\"],[\"\",\"Null\"],[\"\",\"Null\"]]\n"},
        {"a\n\n1.5\n\n", "a:A<r>=[[0,\"Null\"],1.5,[0,\"Null\"]]\n"},
        {"\xEF\xBB\xBF\"a b\",\xC3\xA4", "'a b':A<s>=[]\n'\xC3\xA4':A<s>=[]\n"},
    };
    for (const auto& [text, columns] : cases) {
        EXPECT_EQ(Show(Import(text)), columns);
    }
    EXPECT_EQ(Show(Import("1,a\n2,b\n", {.hasHeader = false, .types = {}})),
              "c1:A<i>=[1,2]\nc2:A<s>=[\"a\",\"b\"]\n");
    EXPECT_EQ(Show(Import("", {.hasHeader = false, .types = {}})), "");
}

// The codes of the types are those of the library.
TEST(CsvImportTest, GivenTypesAreTaken) {
    CsvImportOptions options;
    for (const char code : std::string("bilfrsdtc")) {
        options.types.emplace_back(std::string(1, code), ColumnTypeFromCode(code).value());
    }
    EXPECT_EQ(Show(Import("b,i,l,f,r,s,d,t,c\n"
                          "true,007,007,0.5,9007199254740993,12,2024-01-01,2024-01-01,ff00ff80\n"
                          ",,,,,,,,\n",
                          options)),
              "b:A<b>=[true,[false,\"Null\"]]\n"
              "i:A<i>=[7,[0,\"Null\"]]\n"
              "l:A<l>=[7,[0,\"Null\"]]\n"
              "f:A<f>=[0.5,[0,\"Null\"]]\n"
              "r:A<r>=[9007199254740992,[0,\"Null\"]]\n"
              "s:A<s>=[\"12\",[\"\",\"Null\"]]\n"
              "d:A<d>=[\"2024-01-01\",[\"1900-01-01\",\"Null\"]]\n"
              "t:A<t>=[\"2024-01-01\",[\"1900-01-01\",\"Null\"]]\n"
              "c:A<c>=[\"ff00ff80\",[\"00000000\",\"Null\"]]\n");
    EXPECT_EQ(ColumnTypeFromCode('B'), std::nullopt);
}

// In any order of the cells.
TEST(CsvImportTest, InfersTheNarrowestType) {
    const std::string exact = "9007199254740992";
    const std::string wide = "9007199254740993";
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "A<s>"},
        {{"", "NA"}, "A<s>"},
        {{"\"\"", ""}, "A<s>"},
        {{"true", "FALSE", ""}, "A<b>"},
        {{"true", "1"}, "A<s>"},
        {{"1", "-2", "NA", ""}, "A<i>"},
        {{"\"1\"", "\"-2\""}, "A<i>"},
        {{"1", "\"\"", ""}, "A<i>"},
        {{"1", "\"NA\""}, "A<s>"},
        {{"1", "na"}, "A<s>"},
        {{"1", wide}, "A<l>"},
        {{"1", "2147483648", "0.5"}, "A<r>"},
        {{exact, "0.5"}, "A<r>"},
        {{wide, "0.5"}, "A<s>"},
        {{"0.5", "99999999999999999999"}, "A<s>"},
        {{"1", "007"}, "A<s>"},
        {{"1.5", "2024-01-01"}, "A<s>"},
        {{"2024-01-01", "NA"}, "A<d>"},
        {{"2024-01-01", "2024-01-01T00:00:00"}, "A<t>"},
        {{"2024-01-01", "2024"}, "A<s>"},
        {{"2024-01-01", "today"}, "A<s>"},
    };
    for (auto [cells, type] : cases) {
        std::sort(cells.begin(), cells.end());
        do {
            std::string text = "a\n";
            for (const std::string& cell : cells) {
                text += cell + '\n';
            }
            EXPECT_TRUE(Show(Import(text)).starts_with("a:" + std::string(type))) << text;
        } while (std::next_permutation(cells.begin(), cells.end()));
    }
}

TEST(CsvImportTest, FaultsNameFileAndLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ":1: the file is empty; its first row should name the columns"},
        {"a,,b\n1,2,3\n", ":1: column 2 has no name"},
        {"\n1\n", ":1: column 1 has no name"},
        {"a,b,a\n1,2,3\n", ":1: two columns have the name \"a\""},
        {"a,\xE9\n1,2\n", ":1: the name of column 2 is not UTF-8"},
        {"a\n\"x\ny\"\ncaf\xE9\n", ":4: column \"a\": \"caf\xE9\" is not UTF-8"},
    };
    for (const auto& [text, fault] : cases) {
        EXPECT_EQ(FaultOf(text), "text.csv" + std::string(fault));
    }
    const std::string longText(39, 'x');
    const struct {
        std::string text;
        ColumnType type;  // Of column "a".
        std::string fault;
    } typedCases[] = {
        {"b\n1\n", ColumnType::Int32, ": there is no column \"a\""},
        {"a\n1\n\n2147483648\n", ColumnType::Int32,
         ":4: column \"a\": \"2147483648\" cannot be read as Int32"},
        {"a\n2023-02-29\n", ColumnType::Date,
         ":2: column \"a\": \"2023-02-29\" cannot be read as Date"},
        {"a\n\"\x1B[2J\n\"\n", ColumnType::Bool,
         ":2: column \"a\": \"?[2J?\" cannot be read as Bool"},
        {"a\n" + longText + "\xC3\xA4y\n", ColumnType::Color,
         ":2: column \"a\": \"" + longText + "...\" cannot be read as Color"},
    };
    for (const auto& [text, type, fault] : typedCases) {
        EXPECT_EQ(FaultOf(text, {.hasHeader = true, .types = {{"a", type}}}), "text.csv" + fault);
    }
}

// What a source gives the second time.
class ChangingSource : public MemorySource {
public:
    ChangingSource(const std::string& first, std::string second)
        : MemorySource("text.csv", first), m_second("text.csv", std::move(second)) {}
    std::size_t Read(char* buffer, std::size_t size) override {
        return m_isRewound ? m_second.Read(buffer, size) : MemorySource::Read(buffer, size);
    }
    void Rewind() override { m_isRewound = true; }

private:
    MemorySource m_second;
    bool m_isRewound = false;
};

TEST(CsvImportTest, AFileThatChangesMeanwhileIsRefused) {
    const std::string changed = "text.csv: the file changed while it was being read";
    const std::pair<const char*, std::string> cases[] = {
        {"a\n1\n", changed},
        {"a\n1\n2\nx\n", changed},
        {"a,b\n1,2\n3,4\n", changed},
        {"", changed},
        {"a\n1\nx\n", "text.csv:3: column \"a\": \"x\" cannot be read as Int32"},
    };
    for (const auto& [second, fault] : cases) {
        ChangingSource source("a\n1\n2\n", second);
        EXPECT_EQ(FaultOf(source), fault);
    }
    // One that still fits the types is taken as it is, Nulls included.
    ChangingSource source("a\n1\n2\n", "a\n\n2\n");
    EXPECT_EQ(Show(Import(source)), "a:A<i>=[[0,\"Null\"],2]\n");
}

// The calendar of the cell reader is its own, so that a column of texts that are no dates costs no
// exceptions; it has to be that of the library.
TEST(CsvImportTest, DaysAreThoseOfTheLibrary) {
    const auto isDay = [](int year, int month, int day) {
        try {
            return LumDateTime(year, month, day, 0, 0, 0, 0).IsValid();
        } catch (const LumRuntimeException&) {
            return false;
        }
    };
    const auto digits = [](int number, std::size_t count) {
        const std::string text = std::to_string(number);
        return std::string(count - std::min(count, text.size()), '0') + text;
    };
    std::vector<int> years = {2400, 2401, 9999, 10000, 23828, 23829, 23830};
    for (int year = 390; year < 2450; year += year < 1580 || year > 1584 ? 10 : 1) {
        years.push_back(year);
    }
    for (const int year : years) {
        for (int month = 0; month <= 13; ++month) {
            for (const int day : {0, 1, 4, 5, 14, 15, 28, 29, 30, 31, 32}) {
                const std::string text =
                    digits(year, 4) + '-' + digits(month, 2) + '-' + digits(day, 2);
                ASSERT_EQ(ReadDate(text).has_value(), isDay(year, month, day)) << text;
            }
        }
    }
}

// Over a file of many buffers: all values come back bit by bit.
TEST(CsvImportTest, IsExportedAsItWas) {
    lum::test::Random random;
    constexpr std::size_t kRows = 20'000;
    const unsigned long long firstTime = LumDateTime::DateTimeMinimum.GetValue();
    const unsigned long long lastTime = LumDateTime::DateTimeMaximum.GetValue();
    std::string text = "l,r,t,s\n";
    for (std::size_t row = 0; row < kRows; ++row) {
        const std::uint64_t bits =
            (std::uint64_t{random.Below(1u << 31)} << 33) ^ random.Below(~0u);
        if (random.Below(8) != 0) {
            text += std::to_string(std::bit_cast<long long>(bits) >> random.Below(64));
        }
        text += ',';
        if (const double real = std::bit_cast<double>(bits); std::isfinite(real)) {
            char number[32];
            text.append(number, std::to_chars(number, number + sizeof(number), real).ptr);
            // Reals such as 1e22 are written without a point or exponent where that is shorter.
            text += text.find_last_of(".e") < text.find_last_of(",\n") ? ".0" : "";
        }
        // None is a midnight, which a cell may write as a date.
        const auto time = LumDateTime::FromValue((firstTime + bits % (lastTime - firstTime)) | 1);
        text += ',' + time.ToString().toStdString() + ",\"line\nof " + std::to_string(row) + "\"\n";
    }
    text += "9223372036854775807,0.5,2024-01-01T00:00:00,\n";  // For the types, whatever the draw.
    std::ostringstream out;
    ExportCsv(Import(text), out, "text.csv");
    EXPECT_TRUE(out.str() == text) << random.Trace();
    EXPECT_EQ(FaultOf(text + "x\n"), "text.csv:" + std::to_string(2 * kRows + 3) +
                                         ": the row has 1 field, but the first row has 4 fields");
}

// Whatever the type that is found for a cell, the reader of that type takes it.
TEST(CsvImportTest, AnyCellIsRead) {
    lum::test::Random random;
    constexpr const char* kPieces[] = {"0",   "1",   "9",         "12",         "2024", "-",
                                       "+",   ".",   "e",         "E",          ":",    "T",
                                       "-01", "00:", "123456789", "2147483647", "true"};
    std::map<std::string, int> counts;
    for (int round = 0; round < 600; ++round) {
        std::string row = "1";
        for (int cell = 0; cell < 500; ++cell) {
            row += random.Below(4) != 0   ? ","
                   : random.Below(2) == 0 ? ",2023-11-"
                                          : ",1999-02-03T10:";
            for (std::size_t pieces = 1 + random.Below(5); pieces > 0; --pieces) {
                row += random.OneOf(kPieces);
            }
        }
        std::vector<NamedColumn> columns;
        ASSERT_NO_THROW(columns = Import(row, {.hasHeader = false, .types = {}}))
            << random.Trace() << row;
        for (const NamedColumn& column : columns) {
            ++counts[column.values->GetType()->ToString().toStdString()];
        }
    }
    for (const char* const type : {"A<b>", "A<i>", "A<l>", "A<r<-1,-1>>", "A<d>", "A<t>"}) {
        EXPECT_GT(counts[type], 20) << type;
    }
}

}  // namespace
}  // namespace lumhost::test
