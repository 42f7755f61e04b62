#include "Options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lumhost::test {
namespace {

TEST(OptionsTest, ReadsEverythingOfShow) {
    const Options options = ParseOptions({"show", "--no-header", "a.csv", "--type", "c1=i", "c1/0",
                                          "--slim", "--type=a=b=c", "--verbose"});
    EXPECT_EQ(options.command, Command::Show);
    EXPECT_EQ(options.file, "a.csv");
    EXPECT_EQ(options.keyPath, "c1/0");
    EXPECT_EQ(options.style, JsonStyle::Slim);
    EXPECT_FALSE(options.hasHeader);
    EXPECT_TRUE(options.isVerbose);
    EXPECT_EQ(options.types, (std::vector<std::pair<std::string, ColumnType>>{
                                 {"c1", ColumnType::Int32}, {"a=b", ColumnType::Color}}));
}

TEST(OptionsTest, DefaultsAreAHeaderAndReadableText) {
    const Options options = ParseOptions({"types", "a.csv"});
    EXPECT_EQ(options.command, Command::Types);
    EXPECT_EQ(options.style, JsonStyle::Readable);
    EXPECT_TRUE(options.hasHeader);
    EXPECT_FALSE(options.isVerbose);
    EXPECT_EQ(options.keyPath, std::nullopt);
}

TEST(OptionsTest, ReadsTheCommandsOfFunctions) {
    EXPECT_EQ(ParseOptions({"functions"}).function, std::nullopt);
    EXPECT_EQ(ParseOptions({"functions", "-"}).function, "-");

    const Options apply = ParseOptions({"apply", "keepOnly", "--constant", "-1", "a.csv", "x",
                                        "--constant=--help", "--type", "x=s", "y"});
    EXPECT_EQ(apply.command, Command::Apply);
    EXPECT_EQ(apply.function, "keepOnly");
    EXPECT_EQ(apply.file, "a.csv");
    EXPECT_EQ(apply.columns, (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(apply.constants, (std::vector<std::string>{"-1", "--help"}));
    EXPECT_EQ(apply.types.size(), 1u);

    const Options fold = ParseOptions({"fold", "sum", "a.csv", "x", "--initial=", "--no-header"});
    EXPECT_EQ(fold.command, Command::Fold);
    EXPECT_EQ(fold.columns, std::vector<std::string>{"x"});
    EXPECT_EQ(fold.initial, "");
    EXPECT_EQ(fold.fold, FoldResult::Value);
    EXPECT_FALSE(fold.hasHeader);
    EXPECT_EQ(ParseOptions({"fold", "--scan", "sum", "a", "x", "--initial", "0"}).fold,
              FoldResult::Scan);
    EXPECT_EQ(ParseOptions({"fold", "--scan-right", "sum", "a", "x", "--initial", "0"}).fold,
              FoldResult::ScanRight);
}

TEST(OptionsTest, ReadsTheCommandsOfPrograms) {
    const Options run = ParseOptions(
        {"run", "--time", "a.vtl", "--print", "x/y", "a.csv", "--print=z", "--type", "x=s"});
    EXPECT_EQ(run.command, Command::Run);
    EXPECT_EQ(run.program, "a.vtl");
    EXPECT_EQ(run.file, "a.csv");
    EXPECT_EQ(run.prints, (std::vector<std::string>{"x/y", "z"}));
    EXPECT_TRUE(run.isTimed);
    EXPECT_EQ(run.types.size(), 1u);
    EXPECT_EQ(ParseOptions({"check", "a.vtl"}).program, "a.vtl");
}

TEST(OptionsTest, ReadsTablesAndOutputs) {
    const Options show = ParseOptions({"show", "--table", "a/b", "x.lum", "--rows=0"});
    EXPECT_EQ(show.file, "x.lum");
    EXPECT_EQ(show.table, "a/b");
    EXPECT_EQ(show.rows, 0u);
    const Options convert = ParseOptions({"convert", "x.csv", "y.lum", "a/b", "--type", "n=l"});
    EXPECT_EQ(convert.file, "x.csv");
    EXPECT_EQ(convert.out, "y.lum");
    EXPECT_EQ(convert.keyPath, "a/b");
    EXPECT_EQ(ParseOptions({"run", "p.vtl", "x.lum", "--out", "y.json"}).out, "y.json");
    EXPECT_EQ(ParseOptions({"dump", "x.lum"}).file, "x.lum");
}

TEST(OptionsTest, OptionsEndAtTwoDashes) {
    const Options options = ParseOptions({"show", "--", "--help", "-x"});
    EXPECT_EQ(options.file, "--help");
    EXPECT_EQ(options.keyPath, "-x");
}

TEST(OptionsTest, HelpIsGivenWhateverElseStandsThere) {
    EXPECT_NE(ParseOptions({"--help"}).helpText.find("usage:"), std::string::npos);
    for (const std::string command :
         {"show", "types", "convert", "dump", "functions", "apply", "fold", "run", "check"}) {
        const Options options = ParseOptions({command, "a.csv", "--help", "--nonsense"});
        EXPECT_EQ(options.command, Command::Help);
        EXPECT_EQ(options.helpText.find("usage: lumhost " + command), 0u);
        EXPECT_EQ(options.helpText.find("--no-header") == std::string::npos,
                  command == "dump" || command == "functions" || command == "check");
    }
}

TEST(OptionsTest, HelpFitsATerminal) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"show", "--help"},
                                                      {"types", "--help"},
                                                      {"convert", "--help"},
                                                      {"dump", "--help"},
                                                      {"functions", "--help"},
                                                      {"apply", "--help"},
                                                      {"fold", "--help"},
                                                      {"run", "--help"},
                                                      {"check", "--help"}}) {
        std::size_t width = 0;
        for (const char byte : ParseOptions(arguments).helpText) {
            width = byte == '\n' ? 0 : width + 1;
            EXPECT_LE(width, 100u);
        }
    }
}

TEST(OptionsTest, RefusesInOneClearLine) {
    struct {
        std::vector<std::string> arguments;
        const char* message;
    } const cases[] = {
        {{}, "a command is missing (see 'lumhost --help')"},
        {{"print"}, "'print' is not a command (see 'lumhost --help')"},
        {{"show"}, "'show' needs the name of a file (see 'lumhost --help')"},
        {{"show", ""}, "the file name is empty (see 'lumhost --help')"},
        {{"show", "a", "b", "c"}, "'c' is one argument too many (see 'lumhost --help')"},
        {{"types", "a", "b"}, "'b' is one argument too many (see 'lumhost --help')"},
        {{"show", "a", "--slin"}, "'--slin' is not an option of show (see 'lumhost --help')"},
        {{"types", "a", "--slim"}, "'--slim' is not an option of types (see 'lumhost --help')"},
        {{"show", "a", "--slim", "--compact"}, "--compact and --slim exclude each other"},
        {{"show", "a", "--type"}, "--type needs NAME=CODE behind it (see 'lumhost --help')"},
        {{"show", "a", "--type", "i"},
         "'--type i' is not of the form NAME=CODE (see 'lumhost --help')"},
        {{"show", "a", "--type==i"},
         "'--type =i' is not of the form NAME=CODE (see 'lumhost --help')"},
        {{"show", "a", "--type", "x=P"},
         "'P' is not a type code; one of b i l f r s d t c (see 'lumhost --help')"},
        {{"show", "a", "--type", "x="},
         "'' is not a type code; one of b i l f r s d t c (see 'lumhost --help')"},
        {{"show", "a", "--type", "x=i", "--type", "x=l"}, "--type is given twice for 'x'"},
        {{"show", "a", "--rows", "5"}, "--rows needs --table"},
        {{"show", "a", "--table", "/", "--rows", "-1"},
         "'-1' is not a number of rows (see 'lumhost --help')"},
        {{"show", "a", "x", "--table", "/"},
         "--table excludes a second KEYPATH, --compact and --slim"},
        {{"convert", "a"}, "'convert' needs the name of a file to write (see 'lumhost --help')"},
        {{"dump", "a", "b"}, "'b' is one argument too many (see 'lumhost --help')"},
        {{"functions", "a", "b"}, "'b' is one argument too many (see 'lumhost --help')"},
        {{"functions", "--no-header"},
         "'--no-header' is not an option of functions (see 'lumhost --help')"},
        {{"run"}, "'run' needs the name of a program (see 'lumhost --help')"},
        {{"run", "a.vtl"}, "'run' needs the name of a file (see 'lumhost --help')"},
        {{"run", "a.vtl", "a.csv", "--print"},
         "--print needs a KEYPATH behind it (see 'lumhost --help')"},
        {{"check", "a.vtl", "a.csv"}, "'a.csv' is one argument too many (see 'lumhost --help')"},
        {{"check", "a.vtl", "--time"}, "'--time' is not an option of check (see 'lumhost --help')"},
        {{"apply"}, "'apply' needs the name of a function (see 'lumhost --help')"},
        {{"apply", "inc", "a"}, "'apply' needs the name of a column (see 'lumhost --help')"},
        {{"apply", "inc", "a", "x", "y", "z"},
         "'z' is one argument too many (see 'lumhost --help')"},
        {{"apply", "inc", "a", "x", "--initial", "0"},
         "'--initial' is not an option of apply (see 'lumhost --help')"},
        {{"apply", "inc", "a", "x", "--constant"},
         "--constant needs a LITERAL behind it (see 'lumhost --help')"},
        {{"fold", "sum", "a", "x"}, "'fold' needs --initial LITERAL (see 'lumhost --help')"},
        {{"fold", "sum", "a", "x", "y", "--initial", "0"},
         "'y' is one argument too many (see 'lumhost --help')"},
        {{"fold", "sum", "a", "x", "--initial", "0", "--initial=1"}, "--initial is given twice"},
        {{"fold", "sum", "a", "x", "--initial", "0", "--scan", "--scan-right"},
         "--scan and --scan-right exclude each other"},
        {{"fold", "sum", "a", "x", "--constant", "0"},
         "'--constant' is not an option of fold (see 'lumhost --help')"},
    };
    for (const auto& testCase : cases) {
        try {
            ParseOptions(testCase.arguments);
            ADD_FAILURE() << "taken: " << testing::PrintToString(testCase.arguments);
        } catch (const UsageError& error) {
            EXPECT_STREQ(error.what(), testCase.message);
        }
    }
}

}  // namespace
}  // namespace lumhost::test
