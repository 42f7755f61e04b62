// Runs the program as a user does, with its output and its errors in files, and so in no terminal.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "TemporaryFolder.h"

namespace {

class ProgramTest : public ::testing::Test {
protected:
    struct Outcome {
        int status = -1;
        std::string out;
        std::string error;
    };

    ProgramTest() {
        // Files are named in the folder itself, so that messages show short names.
        std::filesystem::copy(LUMHOST_TEST_DATA, m_folder.GetPath(),
                              std::filesystem::copy_options::recursive);
        m_folder.WriteFile("small.csv", "n,t\n4,a b\n,\n");
        m_folder.WriteFile("wide.csv", "n,m,t,b\n4,1,sun,true\n,2,Null,\n-9,3,rain,false\n");
        m_folder.WriteFile("small.vtl",
                           "// twice\nn -> map (multiplyConstant :2:i) -> out/n\n"
                           "n -> reduce :0:i (sum) -> total\n");
    }

    /// `arguments` as a shell reads them; `producer` is a command whose output is the input.
    Outcome Run(const std::string& arguments, const std::string& producer = "true",
                const std::string& output = "out") const {
        const std::string command = "cd '" + m_folder.GetPath().string() + "' && " + producer +
                                    " | '" LUMHOST_TEST_PROGRAM "' " + arguments + " >" + output +
                                    " 2>error";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_folder.ReadFile("out"),
                m_folder.ReadFile("error")};
    }

    void ExpectPrint(const std::string& arguments, const std::string& out) const {
        SCOPED_TRACE(arguments);
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.out, out);
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.status, 0);
    }
    void ExpectFault(const std::string& arguments, int status, const std::string& error) const {
        SCOPED_TRACE(arguments);
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.error, error + '\n');
        EXPECT_EQ(outcome.out, "");
    }

    const lumhost::test::TemporaryFolder m_folder;
};

TEST_F(ProgramTest, Prints) {
    const std::pair<const char*, const char*> cases[] = {
        {"show small.csv --compact",
         "{\"n:A<i>\":[4,[0,\"Null\"]],\"t:A<s>\":[\"a b\",[\"\",\"Null\"]]}\n"},
        {"show --slim small.csv", "{\"n\":[4,[0,\"Null\"]],\"t\":[\"a b\",[\"\",\"Null\"]]}\n"},
        {"show small.csv",
         "{\n"
         "    \"n:A<i>\": [ 4,[ 0, \"Null\" ] ],\n"
         "    \"t:A<s>\": [ \"a b\",[ \"\", \"Null\" ] ]\n"
         "}\n"},
        {"show penguins.csv \"'Body Mass (g)'/3\"", "\"Null\"\n"},
        {"show seattle-weather.csv date/1460", "\"2015-12-31\"\n"},
        {"show --no-header --type c1=s penguins.csv c1/0", "\"Species\"\n"},
        {"show wide.csv --table / --rows 2",
         "     n  m  t     b\n"
         "------  -  ----  ------\n"
         "     4  1  sun   true\n"
         "<Null>  2  Null  <Null>\n"
         "... 1 more row\n"},
        // In the order of the file.
        {"types seattle-weather.csv --type wind=f",
         "date:A<d>\nprecipitation:A<r>\ntemp_max:A<r>\ntemp_min:A<r>\nwind:A<f>\n"
         "weather:A<s>\n"},
        {"functions keepOnlyFirst",
         "function       inputs   output  forms    flags\n"
         "keepOnlyFirst  Int32    Bool    regular  creator (), stateful\n"
         "keepOnlyFirst  Int64    Bool    regular  creator (), stateful\n"
         "keepOnlyFirst  String   Bool    regular  creator (), stateful\n"
         "keepOnlyFirst  AnyType  Bool    regular  creator (), stateful\n"},
        {"functions and",
         "function  inputs             output  forms    flags\n"
         "and       Bool, Bool         Bool    regular\n"
         "and       list (Bool, Bool)  Bool    -\n"},
        {"apply sqrt wide.csv n", "[2,[0,\"Null\"],[0,\"Null\"]]\n"},
        {"apply - wide.csv n m", "[3,[0,\"Null\"],-12]\n"},
        {"apply '<' wide.csv n --constant -2", "[false,[false,\"Null\"],true]\n"},
        {"apply isInSet wide.csv t --constant sun --constant \"'Null'\"", "[true,true,false]\n"},
        {"fold sum wide.csv m --initial 10", "16\n"},
        {"fold sum wide.csv n --initial Null --scan-right", "[-5,-9,-9]\n"},
        {"fold min wide.csv n --initial=Null --scan", "[4,4,-9]\n"},
        {"fold countAll wide.csv b --initial 0", "3\n"},
        {"fold sum seattle-weather.csv precipitation --initial 0", "4426.0000000000082\n"},
        {"fold max seattle-weather.csv date --initial Null", "\"2015-12-31\"\n"},
        {"run small.vtl small.csv --print out/n --print total --print out/n/1",
         "out/n: [8,[0,\"Null\"]]\ntotal: 4\nout/n/1: \"Null\"\n"},
        {"run small.vtl small.csv", "out/n:A<i>\ntotal:i\n"},
        {"run small.vtl small.csv --out all.lum", ""},
        {"show all.lum --slim",
         "{\"n\":[4,[0,\"Null\"]],\"out\":{\"n\":[8,[0,\"Null\"]]},\"t\":[\"a b\",[\"\",\"Null\"]],"
         "\"total\":4}\n"},
        {"run /dev/null small.csv", ""},
        {"check small.vtl",
         "// twice\nn -> map (multiplyConstant :2:i) -> out/n\nn -> reduce :0:i (sum) -> total\n"},
    };
    for (const auto& [arguments, out] : cases) {
        ExpectPrint(arguments, out);
    }
    const Outcome timed = Run("run small.vtl small.csv --time --print total");
    EXPECT_EQ(timed.out.find("line 2: map, 2 rows, "), 0u) << timed.out;
    EXPECT_NE(timed.out.find("\nline 3: reduce, 2 rows, "), std::string::npos) << timed.out;
    EXPECT_EQ(timed.out.substr(timed.out.rfind("\ntotal")), "\ntotal: 4\n");
    EXPECT_NE(Run("show --help").out.find("--no-header"), std::string::npos);
}

TEST_F(ProgramTest, TellsFaults) {
    struct {
        const char* arguments;
        int status;  // 2 where the command line is wrong.
        const char* error;
    } const cases[] = {
        {"", 2, "lumhost: a command is missing (see 'lumhost --help')"},
        {"show small.csv 'a key'", 2,
         "lumhost: 'a key' is not a key path; a name that is not one word stands in single quotes "
         "(see 'lumhost show --help')"},
        {"convert none.csv out.lu", 2,
         "lumhost: the form of 'out.lu' is not known; its name has to end with .csv, .json or "
         ".lum"},
        {"types a.lum --no-header", 2,
         "lumhost: --no-header and --type are for comma-separated text, which 'a.lum' is not"},
        {"functions foo", 2,
         "lumhost: there is no function \"foo\"; 'lumhost functions' lists all"},

        {"types none.csv", 1, "none.csv: No such file or directory"},
        {"types .", 1, ".: Is a directory"},
        {"types small.csv --type x=r", 1, "small.csv: there is no column \"x\""},
        {"show small.csv no", 1, "small.csv: there is no value at the key path \"no\""},
        {"show small.csv t/2", 1, "small.csv: there is no value at the key path \"t/2\""},
        {"show small.csv t/1/1", 1, "small.csv: there is no value at the key path \"t/1/1\""},
        {"show --table t small.csv", 1,
         "small.csv: what stands at \"t\" is not a table: it is of type Array"},

        {"apply sqrt small.csv t", 1,
         "lumhost: transform function not found: sqrt(s<ROOT>) (error 141)"},
        {"apply divideConstant small.csv n --constant 0", 1,
         "lumhost: divide by zero error (error 8)"},
        {"apply addConstant small.csv n --constant Null", 1,
         "lumhost: expected int32 but was Int32 (special kind: Null) (error 65)"},
        {"fold sum small.csv t --initial 0", 1,
         "lumhost: transform function not found: sum(s<ROOT>, s<ROOT>) (error 141)"},
        {"apply inc small.csv x", 1, "small.csv: there is no column \"x\""},
        {"apply foo none.csv n", 2,
         "lumhost: no function \"foo\" takes one column; 'lumhost functions' lists all"},
        {"apply inc none.csv n t", 2,
         "lumhost: no function \"inc\" takes two columns; 'lumhost functions' lists all"},
        {"fold isTrue none.csv n --initial 0", 2,
         "lumhost: no function \"isTrue\" folds one column; 'lumhost functions' lists all"},
        {"apply inc small.csv n --constant 1", 2, "lumhost: 'inc' takes no --constant here, not 1"},
        {"apply addConstant small.csv n", 2,
         "lumhost: 'addConstant' takes 1 --constant here, not 0"},
        {"apply isInSet small.csv n", 2,
         "lumhost: 'isInSet' takes at least one --constant here, not 0"},
        {"apply addConstant small.csv n --constant 1.5", 2,
         "lumhost: \"1.5\" cannot be read as Int32"},
        {"fold sum small.csv n --initial x", 2, "lumhost: \"x\" cannot be read as Int32"},

        {"run none.vtl small.csv", 1, "none.vtl: No such file or directory"},
        {"run small.vtl small.csv --print b", 1,
         "small.vtl: there is no value at the key path \"b\""},
    };
    for (const auto& row : cases) {
        ExpectFault(row.arguments, row.status, row.error);
    }
}

// The place is that of the word with which no statement can go on.
TEST_F(ProgramTest, TellsFaultsOfPrograms) {
    const std::pair<const char*, const char*> cases[] = {
        {"n -> copy -> a\n\nn -> nosuch -> b\n", "3:6: unknown type name nosuch (error 196)"},
        {"n copy -> a", "1:11: unknown type name a (error 196)"},
        {"n -> map (inc :1:i -> b", "1:20: unexpected token n -> map (inc :1:i -> b (error 163)"},
        {"n -> map", "1:9: unexpected token n -> map (error 163)"},
        {"n -> constant :1 -> b", "1:15: operator argument type spec not found (error 268)"},
        {"-> constant :'a\nb':s -> x\nn -> ) -> y",
         "1:13: unexpected token -> constant :'a b':s -> x (error 163)"},
        {"n -> copy -> a\n  n -> copy -> b\n", "2:3: unexpected child transform found (error 257)"},
        {"  n -> copy -> a", "1:3: invalid nesting of transforms (error 258)"},
        {"\xff -> copy -> a", " the text is not UTF-8"},
    };
    for (const auto& [text, error] : cases) {
        m_folder.WriteFile("bad.vtl", text);
        ExpectFault("check bad.vtl", 1, std::string("bad.vtl:") + error);
        ExpectFault("run bad.vtl small.csv", 1, std::string("bad.vtl:") + error);
    }
    // Of a statement that cannot run, the line; of one in a block, that of the call.
    m_folder.WriteFile("bad.vtl",
                       "// first\nn -> copy -> a\n\na b -> block :f ->\n  a -> map (no) -> c\n"
                       "n n -> call :f -> d\n");
    ExpectFault("run bad.vtl small.csv", 1,
                "bad.vtl:6: transform function not found: no(i) (error 141)");
}

// From hand to hand through all forms, by the endings.
TEST_F(ProgramTest, ConvertsFiles) {
    for (const char* arguments :
         {"convert penguins.csv a.lum", "convert a.lum b.json", "convert b.json a.lum",
          "convert a.lum c.csv", "convert c.csv d.json"}) {
        ExpectPrint(arguments, "");
    }
    EXPECT_EQ(m_folder.ReadFile("d.json"), Run("show penguins.csv").out);
    EXPECT_EQ(Run("apply isNull a.lum Sex").out, Run("apply isNull penguins.csv Sex").out);
}

TEST_F(ProgramTest, DumpsPayloads) {
    m_folder.WriteFile("small.csv", "n\n1\n2\n");
    Run("convert small.csv small.lum");
    const std::string whole = Run("dump small.lum").out;
    EXPECT_NE(whole.find("\n0032  0c 02                      type A<i>\n"), std::string::npos)
        << whole;
    m_folder.WriteFile("small.lum", m_folder.ReadFile("small.lum").substr(0, 0x3E));
    const Outcome damaged = Run("dump small.lum");
    const std::string reason = "error reading outside of binary buffer bounds (error 200)\n";
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.error, "small.lum: damaged at 0x36: " + reason);
    EXPECT_EQ(damaged.out.substr(damaged.out.rfind("\n0036")),
              "\n0036  00 00 01 00 00 00 02 00  damaged: " + reason);
}

// A pipe cannot be read twice.
TEST_F(ProgramTest, ReadsFromAPipe) {
    EXPECT_EQ(Run("show /dev/stdin n/1", "printf 'n\\n1\\n2\\n'").out, "2\n");
    EXPECT_EQ(Run("types /dev/stdin", "cat seattle-weather.csv").out,
              Run("types seattle-weather.csv").out);
}

TEST_F(ProgramTest, AFullDeviceIsAFault) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    const Outcome outcome = Run("types penguins.csv", "true", "/dev/full");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "lumhost: the output cannot be written\n");
}

TEST_F(ProgramTest, TheLogIsShownWhenAskedFor) {
    EXPECT_EQ(Run("show penguins.csv nothing").error.find("Validation failed"), std::string::npos);
    EXPECT_NE(Run("show penguins.csv nothing --verbose").error.find("Validation failed"),
              std::string::npos);
}

}  // namespace
