// The pages show what really happens: docs/vtl.md what its programs print, docs/functions.md which
// functions are registered, and what the program of examples/functions is and prints.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "CsvImport.h"
#include "FileError.h"
#include "FunctionCommands.h"
#include "Program.h"
#include "ProgramText.h"
#include "StoreAccess.h"
#include "TextInput.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/CollatorPoolGuard.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

using Lines = std::vector<std::string>;

Lines LinesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

Lines ReadLines(const std::string& file) {
    return LinesOf(ReadText(file).toStdString());
}

// The blocks of a page, each behind its language.
std::vector<std::pair<std::string, std::string>> BlocksOf(const Lines& page) {
    std::vector<std::pair<std::string, std::string>> blocks;
    bool isInside = false;
    for (const std::string& line : page) {
        if (line.starts_with("```")) {
            isInside = !isInside;
            if (isInside) {
                blocks.emplace_back(line.substr(3), "");
            }
        } else if (isInside) {
            blocks.back().second += line + "\n";
        }
    }
    return blocks;
}

// docs/vtl.md: a block of data, and then programs, each before what it prints.

// What the program prints of the keys that `expected` names, or how it fails.
std::string Print(const std::string& csv, const std::string& program, const std::string& expected) {
    MemorySource source("trips.csv", csv);
    std::ostringstream terminal;
    Progress progress(terminal, false, "");
    const std::unique_ptr<IDataStore> store = MakeStore(ImportCsv(source, {}, progress));
    const ProgramText text("page", TStringCore::fromUtf8(program));
    std::size_t finished = 0;
    lumengine::RunOptions options;
    options.onStatement = [&](const lumengine::StatementRun&) { ++finished; };
    try {
        lumengine::RunProgram(text.Parse(false), *store, *MakeRegistry(), options);
    } catch (const LumException& error) {
        return "line " + std::to_string(text.FindLine(finished)) + ": " + MessageOf(error) + "\n";
    }
    std::string printed;
    for (const std::string& line : LinesOf(expected)) {
        const std::string key = line.substr(0, line.find(": "));
        const SV value = FindValue(*store, ParseKeyPath(key), "page");
        printed += key + ": " + SerializeValue(*value).toStdString() + "\n";
    }
    return printed;
}

TEST(VtlPageTest, ProgramsPrintWhatThePageSays) {
    const lum::test::CollatorPoolGuard pool;
    const auto blocks = BlocksOf(ReadLines(LUMHOST_VTL_PAGE));
    ASSERT_GT(blocks.size(), 10u);
    ASSERT_EQ(blocks[0].first, "csv");
    for (std::size_t i = 1; i < blocks.size(); i += 2) {
        const auto& [language, program] = blocks[i];
        const auto& [expectedLanguage, expected] = blocks.at(i + 1);
        ASSERT_EQ(language + expectedLanguage, "vtltext");
        EXPECT_EQ(Print(blocks[0].second, program, expected), expected) << program;
    }
}

// docs/functions.md.

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + separator.size()) {
        end = text.find(separator, begin);
        std::string part = text.substr(begin, end - begin);
        part.erase(0, part.find_first_not_of(' '));
        part.erase(part.find_last_not_of(' ') + 1);
        parts.push_back(std::move(part));
    }
    return parts;
}

// A line of a table whose cells are at least two blanks apart, with '|' between them instead.
std::string WithBars(const std::string& line) {
    std::string text;
    for (const std::string& cell : Split(line, "  ")) {
        text += cell.empty() || text.empty() ? cell : '|' + cell;
    }
    return text;
}

using Cells = std::map<std::string, std::string>;

// What a row of a table says of one type, as `lumhost functions` lists it, with '|' between cells.
std::string ListingOf(const std::string& section, Cells row, const std::string& type) {
    const auto resolve = [&](const std::string& cell) { return cell == "same" ? type : cell; };
    std::string inputs = type;
    std::string output = resolve(row["output"]);
    std::string forms = row["forms"];
    if (section == "Folds") {
        output = resolve(row["accumulator"]);
        inputs = output + ", " + type;
    } else if (section == "Functions of two elements") {
        inputs = type + ", " + type;
    } else if (section == "Functions of a list") {
        inputs = "list (" + (row["values"] == "1" ? type : type + ", " + type) + ")";
        forms = "-";
    }
    const Cells flags = {{"", ""},
                         {"constant", "|creator (" + type + ")"},
                         {"set", "|creator (Set of " + type + ")"},
                         {"nothing, stateful", "|creator (), stateful"}};
    const std::string name = row["function"].substr(1, row["function"].size() - 2);
    return name + '|' + inputs + '|' + output + '|' + forms + flags.at(row["made from"]);
}

// All that the tables below "Built-in functions" say.
Lines ListingsOf(const Lines& page) {
    Lines listings;
    std::string section;
    Lines header;
    auto line = std::find(page.begin(), page.end(), "## Built-in functions");
    for (; line != page.end(); ++line) {
        if (line->starts_with("### ")) {
            section = line->substr(4);
            header.clear();
        } else if (line->starts_with("| ")) {
            // The first cell is the empty one before the first bar.
            const Lines cells = Split(*line, "|");
            if (header.empty()) {
                header = cells;
                continue;
            }
            Cells row;
            for (std::size_t i = 0; i < header.size(); ++i) {
                row[header[i]] = cells.at(i);
            }
            for (const std::string& type : Split(row["types"], ", ")) {
                listings.push_back(ListingOf(section, row, type));
            }
        }
    }
    return listings;
}

TEST(FunctionsPageTest, ListsTheBuiltInFunctionsAndNoOther) {
    std::ostringstream out;
    ListFunctions(Options(), out);
    Lines registered = LinesOf(out.str());
    std::transform(registered.begin(), registered.end(), registered.begin(), WithBars);
    ASSERT_FALSE(registered.empty());
    registered.erase(registered.begin());  // The header.
    EXPECT_THAT(ListingsOf(ReadLines(LUMHOST_FUNCTIONS_PAGE)),
                testing::UnorderedElementsAreArray(registered));
}

TEST(FunctionsPageTest, ShowsTheProgramAndWhatItPrints) {
    Cells shown;
    for (const auto& [language, text] : BlocksOf(ReadLines(LUMHOST_FUNCTIONS_PAGE))) {
        shown[language] += text;
    }
    // The page shows the program in pieces.
    Lines program = LinesOf(shown["cpp"]);
    Lines source = ReadLines(LUMHOST_OWN_FUNCTIONS_SOURCE);
    std::erase(program, "");
    std::erase(source, "");
    EXPECT_EQ(program, source);

    std::FILE* const pipe = popen("'" LUMHOST_OWN_FUNCTIONS_PROGRAM "'", "r");
    ASSERT_NE(pipe, nullptr);
    std::string printed;
    for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
        printed += static_cast<char>(byte);
    }
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(shown["text"], printed);
}

}  // namespace
}  // namespace lumhost::test
