#include "Options.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace lumhost::test {
namespace {

// The words of a line; '' is an empty one.
Options Parse(const std::string& line) {
    std::vector<std::string> arguments;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        arguments.push_back(word == "''" ? "" : word);
    }
    return ParseOptions(arguments);
}

// What was asked for beside the command; what is as usual is left out.
std::string Show(const Options& options) {
    std::string text;
    const auto add = [&](const std::string& part, bool isAskedFor = true) {
        text += isAskedFor ? (text.empty() ? "" : " ") + part : "";
    };
    add("program[" + options.program + "]", !options.program.empty());
    add("file[" + options.file + "]", !options.file.empty());
    const std::pair<std::string, std::optional<std::string>> settings[] = {
        {"function", options.function}, {"key", options.keyPath},     {"table", options.table},
        {"out", options.out},           {"initial", options.initial},
    };
    for (const auto& [name, value] : settings) {
        add(name + "[" + value.value_or("") + "]", value.has_value());
    }
    const std::pair<std::string, std::vector<std::string>> lists[] = {
        {"column", options.columns}, {"constant", options.constants}, {"print", options.prints}};
    for (const auto& [name, values] : lists) {
        for (const std::string& value : values) {
            add(name + "[" + value + "]");
        }
    }
    for (const auto& [name, type] : options.types) {
        add("type[" + name + " " + GetName(type) + "]");
    }
    add("rows[" + std::to_string(options.rows.value_or(0)) + "]", options.rows.has_value());
    add("timed", options.isTimed);
    add("scan", options.fold == FoldResult::Scan);
    add("scan-right", options.fold == FoldResult::ScanRight);
    add("compact", options.style == JsonStyle::Compact);
    add("slim", options.style == JsonStyle::Slim);
    add("no-header", !options.hasHeader);
    add("verbose", options.isVerbose);
    return text;
}

TEST(OptionsTest, ReadsCommands) {
    const struct {
        const char* line;
        Command command;
        const char* options;
    } cases[] = {
        {"show --no-header a.csv --type c1=i c1/0 --slim --type=a=b=c --verbose", Command::Show,
         "file[a.csv] key[c1/0] type[c1 Int32] type[a=b Color] slim no-header verbose"},
        {"show a.csv --compact", Command::Show, "file[a.csv] compact"},
        {"show --table a/b x.lum --rows=0", Command::Show, "file[x.lum] table[a/b] rows[0]"},
        {"show -- --help -x", Command::Show, "file[--help] key[-x]"},
        {"types a.csv", Command::Types, "file[a.csv]"},
        {"convert x.csv y.lum a/b --type n=l", Command::Convert,
         "file[x.csv] key[a/b] out[y.lum] type[n Int64]"},
        {"dump x.lum", Command::Dump, "file[x.lum]"},
        {"functions", Command::Functions, ""},
        {"functions -", Command::Functions, "function[-]"},
        {"apply keepOnly --constant -1 a.csv x --constant=--help --type x=s y", Command::Apply,
         "file[a.csv] function[keepOnly] column[x] column[y] constant[-1] constant[--help] "
         "type[x String]"},
        {"fold sum a.csv x --initial= --no-header", Command::Fold,
         "file[a.csv] function[sum] initial[] column[x] no-header"},
        {"fold --scan sum a x --initial 0", Command::Fold,
         "file[a] function[sum] initial[0] column[x] scan"},
        {"fold --scan-right sum a x --initial 0", Command::Fold,
         "file[a] function[sum] initial[0] column[x] scan-right"},
        {"run --time a.vtl --print x/y a.csv --print=z --type x=s", Command::Run,
         "program[a.vtl] file[a.csv] print[x/y] print[z] type[x String] timed"},
        {"run p.vtl x.lum --out y.json", Command::Run, "program[p.vtl] file[x.lum] out[y.json]"},
        {"check a.vtl", Command::Check, "program[a.vtl]"},
    };
    for (const auto& [line, command, expected] : cases) {
        const Options options = Parse(line);
        EXPECT_EQ(options.command, command) << line;
        EXPECT_EQ(Show(options), expected) << line;
    }
}

// Whatever else stands there, and in lines that fit a terminal.
TEST(OptionsTest, GivesHelp) {
    EXPECT_NE(Parse("--help").helpText.find("usage:"), std::string::npos);
    for (const std::string command : {"show", "types", "convert", "dump", "functions", "apply",
                                      "fold", "run", "check", "--help"}) {
        const Options options = Parse(command + " a.csv --help --nonsense");
        EXPECT_EQ(options.command, Command::Help);
        std::istringstream lines(options.helpText);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 100u) << line;
        }
        if (command != "--help") {
            EXPECT_TRUE(options.helpText.starts_with("usage: lumhost " + command)) << command;
            EXPECT_EQ(options.helpText.find("--no-header") == std::string::npos,
                      command == "dump" || command == "functions" || command == "check");
        }
    }
}

TEST(OptionsTest, RefusesInOneClearLine) {
    const std::pair<const char*, const char*> withHint[] = {
        {"", "a command is missing"},
        {"print", "'print' is not a command"},
        {"show", "'show' needs the name of a file"},
        {"show ''", "the file name is empty"},
        {"show a b c", "'c' is one argument too many"},
        {"types a --slim", "'--slim' is not an option of types"},
        {"show a --type", "--type needs NAME=CODE behind it"},
        {"show a --type i", "'--type i' is not of the form NAME=CODE"},
        {"show a --type==i", "'--type =i' is not of the form NAME=CODE"},
        {"show a --type x=P", "'P' is not a type code; one of b i l f r s d t c"},
        {"show a --type x=", "'' is not a type code; one of b i l f r s d t c"},
        {"show a --table / --rows -1", "'-1' is not a number of rows"},
        {"convert a", "'convert' needs the name of a file to write"},
        {"functions a b", "'b' is one argument too many"},
        {"functions --no-header", "'--no-header' is not an option of functions"},
        {"run", "'run' needs the name of a program"},
        {"run a.vtl", "'run' needs the name of a file"},
        {"run a.vtl a.csv --print", "--print needs a KEYPATH behind it"},
        {"check a.vtl a.csv", "'a.csv' is one argument too many"},
        {"check a.vtl --time", "'--time' is not an option of check"},
        {"apply", "'apply' needs the name of a function"},
        {"apply inc a", "'apply' needs the name of a column"},
        {"apply inc a x y z", "'z' is one argument too many"},
        {"apply inc a x --initial 0", "'--initial' is not an option of apply"},
        {"fold sum a x", "'fold' needs --initial LITERAL"},
        {"fold sum a x y --initial 0", "'y' is one argument too many"},
        {"fold sum a x --constant 0", "'--constant' is not an option of fold"},
    };
    const std::pair<const char*, const char*> plain[] = {
        {"show a --slim --compact", "--compact and --slim exclude each other"},
        {"show a --type x=i --type x=l", "--type is given twice for 'x'"},
        {"show a --rows 5", "--rows needs --table"},
        {"show a x --table /", "--table excludes a second KEYPATH, --compact and --slim"},
        {"fold sum a x --initial 0 --initial=1", "--initial is given twice"},
        {"fold sum a x --initial 0 --scan --scan-right",
         "--scan and --scan-right exclude each other"},
    };
    const auto faultOf = [](const char* line) -> std::string {
        try {
            Parse(line);
            return "none";
        } catch (const UsageError& error) {
            return error.what();
        }
    };
    for (const auto& [line, fault] : withHint) {
        EXPECT_EQ(faultOf(line), fault + std::string(" (see 'lumhost --help')")) << line;
    }
    for (const auto& [line, fault] : plain) {
        EXPECT_EQ(faultOf(line), fault) << line;
    }
}

}  // namespace
}  // namespace lumhost::test
