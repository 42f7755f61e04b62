#include "CsvImport.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "CellText.h"
#include "FileError.h"
#include "RandomTest.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumException.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

std::vector<NamedColumn> Import(TextSource& source, const CsvImportOptions& options) {
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

std::string FaultOf(const std::string& text, const CsvImportOptions& options = {}) {
    try {
        return "no fault: " + Show(Import(text, options));
    } catch (const FileError& error) {
        return error.what();
    }
}

TEST(CsvImportTest, MakesColumnsOfTheInferredTypes) {
    EXPECT_EQ(Show(Import("b,i,l,r,s,d,t\n"
                          "true,1,3000000000,1.5,x,2024-02-29,2024-02-29\n"
                          "FALSE,-2,-1,2,\"y,\"\"z\"\"\",0400-01-01,2024-02-29T09:05:00.25\n")),
              "b:A<b>=[true,false]\n"
              "i:A<i>=[1,-2]\n"
              "l:A<l>=[3000000000,-1]\n"
              "r:A<r>=[1.5,2]\n"
              "s:A<s>=[\"x\",\"y,\\\"z\\\"\"]\n"
              "d:A<d>=[\"2024-02-29\",\"0400-01-01\"]\n"
              "t:A<t>=[\"2024-02-29\",\"2024-02-29T09:05:00.2500\"]\n");
}

TEST(CsvImportTest, CellsWithoutAValueAreNull) {
    EXPECT_EQ(Show(Import("number,text,nothing\n"
                          "1,\"\",\n"
                          ",,NA\n"
                          "NA,NA,\n"
                          "\"\",\"NA\",\n")),
              "number:A<i>=[1,[0,\"Null\"],[0,\"Null\"],[0,\"Null\"]]\n"
              "text:A<s>=[\"\",[\"\",\"Null\"],[\"\",\"Null\"],\"NA\"]\n"
              "nothing:A<s>=[[\"\",\"Null\"],[\"\",\"Null\"],[\"\",\"Null\"],[\"\",\"Null\"]]\n");
}

TEST(CsvImportTest, NullsAtTheStartAndTheEnd) {
    EXPECT_EQ(Show(Import("a\n\n1.5\n\n")), "a:A<r>=[[0,\"Null\"],1.5,[0,\"Null\"]]\n");
}

TEST(CsvImportTest, NamesColumnsWithoutAHeader) {
    EXPECT_EQ(Show(Import("1,a\n2,b\n", {.hasHeader = false, .types = {}})),
              "c1:A<i>=[1,2]\nc2:A<s>=[\"a\",\"b\"]\n");
    EXPECT_EQ(Show(Import("", {.hasHeader = false, .types = {}})), "");
}

TEST(CsvImportTest, AHeaderAloneMakesEmptyColumns) {
    EXPECT_EQ(Show(Import("\xEF\xBB\xBF\"a b\",\xC3\xA4")), "'a b':A<s>=[]\n'\xC3\xA4':A<s>=[]\n");
}

TEST(CsvImportTest, GivenTypesAreTaken) {
    const CsvImportOptions options{.hasHeader = true,
                                   .types = {{"zip", ColumnType::String},
                                             {"n", ColumnType::Int64},
                                             {"f", ColumnType::Real32},
                                             {"r", ColumnType::Real64},
                                             {"t", ColumnType::DateTime},
                                             {"c", ColumnType::Color}}};
    EXPECT_EQ(Show(Import("zip,n,f,r,t,c\n"
                          "12,007,0.5,9007199254740993,2024-01-01,ff00ff80\n"
                          ",,,,,\n",
                          options)),
              "zip:A<s>=[\"12\",[\"\",\"Null\"]]\n"
              "n:A<l>=[7,[0,\"Null\"]]\n"
              "f:A<f>=[0.5,[0,\"Null\"]]\n"
              "r:A<r>=[9007199254740992,[0,\"Null\"]]\n"
              "t:A<t>=[\"2024-01-01\",[\"1900-01-01\",\"Null\"]]\n"
              "c:A<c>=[\"ff00ff80\",[\"00000000\",\"Null\"]]\n");
}

TEST(CsvImportTest, FaultsNameFileAndLine) {
    const auto typed = [](const char* name, ColumnType type) {
        return CsvImportOptions{.hasHeader = true, .types = {{name, type}}};
    };
    EXPECT_EQ(FaultOf(""), "text.csv:1: the file is empty; its first row should name the columns");
    EXPECT_EQ(FaultOf("a,,b\n1,2,3\n"), "text.csv:1: column 2 has no name");
    EXPECT_EQ(FaultOf("\n1\n"), "text.csv:1: column 1 has no name");
    EXPECT_EQ(FaultOf("a,b,a\n1,2,3\n"), "text.csv:1: two columns have the name \"a\"");
    EXPECT_EQ(FaultOf("a,\xE9\n1,2\n"), "text.csv:1: the name of column 2 is not UTF-8");
    EXPECT_EQ(FaultOf("a,b\n1,2\n1\n"),
              "text.csv:3: the row has 1 field, but the first row has 2 fields");
    EXPECT_EQ(FaultOf("a\n\"x\ny\"\ncaf\xE9\n"),
              "text.csv:4: column \"a\": \"caf\xE9\" is not UTF-8");
    EXPECT_EQ(FaultOf("a\n1\n", typed("b", ColumnType::Int32)),
              "text.csv: there is no column \"b\"");
    EXPECT_EQ(FaultOf("a\n1\n\n2147483648\n", typed("a", ColumnType::Int32)),
              "text.csv:4: column \"a\": \"2147483648\" cannot be read as Int32");
    EXPECT_EQ(FaultOf("a\n2023-02-29\n", typed("a", ColumnType::Date)),
              "text.csv:2: column \"a\": \"2023-02-29\" cannot be read as Date");
    EXPECT_EQ(FaultOf("a\n\"\x1B[2J\n\"\n", typed("a", ColumnType::Bool)),
              "text.csv:2: column \"a\": \"?[2J?\" cannot be read as Bool");
    EXPECT_EQ(
        FaultOf("a\n" + std::string(39, 'x') + "\xC3\xA4y\n", typed("a", ColumnType::Color)),
        "text.csv:2: column \"a\": \"" + std::string(39, 'x') + "...\" cannot be read as Color");
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
    for (const char* changed : {"a\n1\n", "a\n1\n2\n3\n", "a,b\n1,2\n3,4\n", "", "a\n1\nx\n"}) {
        ChangingSource source("a\n1\n2\n", changed);
        EXPECT_THROW(Import(source, {}), FileError) << changed;
    }
    // One that still fits the types is taken as it is, Nulls included.
    ChangingSource source("a\n1\n2\n", "a\n\n2\n");
    EXPECT_EQ(Show(Import(source, {})), "a:A<i>=[[0,\"Null\"],2]\n");
}

TEST(CsvImportTest, ReadsFilesOfManyBuffers) {
    constexpr int kRows = 60000;
    std::string text = "i,s\n";
    for (int row = 0; row < kRows; ++row) {
        text += std::to_string(row) + ",\"line\nof " + std::to_string(row) + "\"\n";
    }
    const std::vector<NamedColumn> columns = Import(text);
    const auto& numbers = columns[0].values->AsTypedArray<unsigned int>();
    const auto& texts = columns[1].values->AsTypedArray<RIndirectString>();
    ASSERT_EQ(columns[0].values->GetCount(), static_cast<lumsize_t>(kRows));
    for (int row = 0; row < kRows; ++row) {
        const auto index = static_cast<lumsize_t>(row);
        ASSERT_EQ(numbers.GetValue(index), static_cast<unsigned>(row));
        ASSERT_EQ(texts.GetValue(index).toStdString(), "line\nof " + std::to_string(row));
    }
    text += "x\n";
    EXPECT_EQ(FaultOf(text), "text.csv:" + std::to_string(2 * kRows + 2) +
                                 ": the row has 1 field, but the first row has 2 fields");
}

// The calendar of the cell reader is its own, so that a column of texts that are no dates costs no
// exceptions; it has to be that of the library.
TEST(CsvImportTest, DaysAreThoseOfTheLibrary) {
    const auto isDay = [](int year, int month, int day) {
        try {
            const LumDateTime date(year, month, day, 0, 0, 0, 0);
            return date.IsValid();
        } catch (const LumRuntimeException&) {
            return false;
        }
    };
    const auto twoDigits = [](int number) {
        return std::string(number < 10 ? "0" : "").append(std::to_string(number));
    };
    const auto check = [&](int year) {
        for (int month = 0; month <= 13; ++month) {
            for (const int day : {0, 1, 4, 5, 14, 15, 28, 29, 30, 31, 32}) {
                const std::string text = std::string(year < 1000 ? "0" : "") +
                                         std::to_string(year) + '-' + twoDigits(month) + '-' +
                                         twoDigits(day);
                ASSERT_EQ(ReadDate(text).has_value(), isDay(year, month, day)) << text;
            }
        }
    };
    for (int year = 390; year < 2450; year += year < 1580 || year > 1584 ? 10 : 1) {
        check(year);
    }
    for (const int year : {2400, 2401, 9999, 10000, 23828, 23829, 23830}) {
        check(year);
    }
}

using CsvImportRandomTest = RandomTest;

TEST_F(CsvImportRandomTest, ValuesComeBackBitByBit) {
    constexpr std::size_t kRows = 500;
    std::vector<std::optional<long long>> integers;
    std::vector<std::optional<double>> reals;
    std::vector<std::optional<unsigned long long>> times;
    std::string text = "l,r,t\n";
    for (std::size_t row = 0; row < kRows; ++row) {
        const std::uint64_t bits = (std::uint64_t{Below(1u << 31)} << 33) ^ Below(~0u);
        char number[32];
        if (Below(8) == 0) {
            integers.emplace_back();
        } else {
            integers.emplace_back(std::bit_cast<long long>(bits) >> Below(64));
            text += std::to_string(*integers.back());
        }
        text += ',';
        const double real = std::bit_cast<double>(bits);
        if (!std::isfinite(real)) {
            reals.emplace_back();
        } else {
            reals.emplace_back(real);
            text.append(number, std::to_chars(number, number + sizeof(number), real).ptr);
            // Reals such as 1e22 are written without a point or exponent where that is shorter.
            text += text.find_last_of(".e") < text.find_last_of(",\n") ? ".0" : "";
        }
        text += ',';
        const unsigned long long first = LumDateTime::DateTimeMinimum.GetValue();
        const unsigned long long span = LumDateTime::DateTimeMaximum.GetValue() - first;
        times.emplace_back(first + bits % span);
        text += LumDateTime::FromValue(*times.back()).ToString().toStdString() + '\n';
    }
    text += "9223372036854775807,0.5,2024-01-01\n";  // The types do not hang on the draw.

    const std::vector<NamedColumn> columns = Import(text);
    const auto& integerColumn = columns[0].values->AsTypedArray<unsigned long long>();
    const auto& realColumn = columns[1].values->AsTypedArray<unsigned long long>();
    const auto& timeColumn = columns[2].values->AsTypedArray<unsigned long long>();
    ASSERT_EQ(columns[0].values->GetType(), ArrayType::Get(IntType::Get64())) << Trace(text);
    ASSERT_EQ(columns[1].values->GetType(), ArrayType::Get(RealType::Get64())) << Trace(text);
    ASSERT_EQ(columns[2].values->GetType(), ArrayType::Get(DateTimeType::Get())) << Trace(text);
    for (lumsize_t row = 0; row < kRows; ++row) {
        ASSERT_EQ(integerColumn.IsSpecial(row), !integers[row]) << Trace(text);
        ASSERT_EQ(realColumn.IsSpecial(row), !reals[row]) << Trace(text);
        ASSERT_EQ(integerColumn.GetValue(row),
                  std::bit_cast<unsigned long long>(integers[row].value_or(0)))
            << Trace(text);
        ASSERT_EQ(realColumn.GetValue(row),
                  std::bit_cast<unsigned long long>(reals[row].value_or(0.0)))
            << Trace(text);
        ASSERT_EQ(timeColumn.GetValue(row), *times[row]) << Trace(text);
    }
}

}  // namespace
}  // namespace lumhost::test
