// docs/functions.md against the library: its tables list what is registered, and its program is the
// one that stands in examples/functions and prints what the page says.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "FunctionCommands.h"

namespace lumhost::test {
namespace {

std::string ReadFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

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

// The lines, but for blank ones, of the page's blocks in a language.
std::vector<std::string> BlocksOf(const std::vector<std::string>& page,
                                  const std::string& language) {
    std::vector<std::string> lines;
    bool isInside = false;
    for (const std::string& line : page) {
        if (line.starts_with("```")) {
            isInside = !isInside && line == "```" + language;
        } else if (isInside && !line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
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
    const std::map<std::string, std::string> flags = {
        {"", ""},
        {"constant", "|creator (" + type + ")"},
        {"set", "|creator (Set of " + type + ")"},
        {"nothing, stateful", "|creator (), stateful"}};
    const std::string name = row["function"].substr(1, row["function"].size() - 2);
    return name + '|' + inputs + '|' + output + '|' + forms + flags.at(row["made from"]);
}

// All that the tables below "Built-in functions" say.
std::vector<std::string> ListingsOf(const std::vector<std::string>& page) {
    std::vector<std::string> listings;
    std::string section;
    std::vector<std::string> header;
    auto line = std::find(page.begin(), page.end(), "## Built-in functions");
    for (; line != page.end(); ++line) {
        if (line->starts_with("### ")) {
            section = line->substr(4);
            header.clear();
        } else if (line->starts_with("| ")) {
            // The first cell is the empty one before the first bar.
            const std::vector<std::string> cells = Split(*line, "|");
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
    Options options;
    options.command = Command::Functions;
    std::ostringstream out;
    ListFunctions(options, out);
    std::vector<std::string> registered;
    for (const std::string& line : LinesOf(out.str())) {
        registered.push_back(WithBars(line));
    }
    ASSERT_FALSE(registered.empty());
    registered.erase(registered.begin());  // The header.

    EXPECT_THAT(ListingsOf(LinesOf(ReadFile(LUMHOST_FUNCTIONS_PAGE))),
                testing::UnorderedElementsAreArray(registered));
}

TEST(FunctionsPageTest, ShowsTheProgramAndWhatItPrints) {
    const std::vector<std::string> page = LinesOf(ReadFile(LUMHOST_FUNCTIONS_PAGE));
    std::vector<std::string> program = LinesOf(ReadFile(LUMHOST_OWN_FUNCTIONS_SOURCE));
    std::erase(program, "");
    EXPECT_EQ(BlocksOf(page, "cpp"), program);

    std::FILE* const pipe = popen("'" LUMHOST_OWN_FUNCTIONS_PROGRAM "'", "r");
    ASSERT_NE(pipe, nullptr);
    std::string printed;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        printed += buffer.data();
    }
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(BlocksOf(page, "text"), LinesOf(printed));
}

}  // namespace
}  // namespace lumhost::test
