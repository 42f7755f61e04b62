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

TEST(OptionsTest, OptionsEndAtTwoDashes) {
    const Options options = ParseOptions({"show", "--", "--help", "-x"});
    EXPECT_EQ(options.file, "--help");
    EXPECT_EQ(options.keyPath, "-x");
}

TEST(OptionsTest, HelpIsGivenWhateverElseStandsThere) {
    EXPECT_NE(ParseOptions({"--help"}).helpText.find("usage:"), std::string::npos);
    for (const char* command : {"show", "types"}) {
        const Options options = ParseOptions({command, "a.csv", "--help", "--nonsense"});
        EXPECT_EQ(options.command, Command::Help);
        EXPECT_EQ(options.helpText.find(std::string("usage: lumhost ") + command), 0u);
        EXPECT_NE(options.helpText.find("--no-header"), std::string::npos);
    }
}

TEST(OptionsTest, HelpFitsATerminal) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"show", "--help"}, {"types", "--help"}}) {
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
