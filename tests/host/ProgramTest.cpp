// Runs the program as a user does, with its output and its errors in files, and so in no terminal.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

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
    }

    void WriteFile(const std::string& name, const std::string& text) const {
        m_folder.WriteFile(name, text);
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

    static void ExpectFault(const Outcome& outcome, int status, const std::string& error) {
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.error, error);
        EXPECT_EQ(outcome.out, "");
    }

    const lumhost::test::TemporaryFolder m_folder;
};

TEST_F(ProgramTest, ShowsAStoreInThreeStyles) {
    WriteFile("small.csv", "n,t\n1,a b\n,\n");
    const Outcome compact = Run("show small.csv --compact");
    EXPECT_EQ(compact.out, "{\"n:A<i>\":[1,[0,\"Null\"]],\"t:A<s>\":[\"a b\",[\"\",\"Null\"]]}\n");
    EXPECT_EQ(compact.error, "");
    EXPECT_EQ(compact.status, 0);
    EXPECT_EQ(Run("show --slim small.csv").out,
              "{\"n\":[1,[0,\"Null\"]],\"t\":[\"a b\",[\"\",\"Null\"]]}\n");
    EXPECT_EQ(Run("show small.csv").out,
              "{\n"
              "    \"n:A<i>\": [ 1,[ 0, \"Null\" ] ],\n"
              "    \"t:A<s>\": [ \"a b\",[ \"\", \"Null\" ] ]\n"
              "}\n");
}

TEST_F(ProgramTest, ShowsTheValueAtAKeyPath) {
    struct {
        const char* arguments;
        const char* out;
    } const cases[] = {
        {"show penguins.csv Species/0", "\"Adelie\"\n"},
        {"show penguins.csv \"'Body Mass (g)'/0\"", "3750\n"},
        {"show penguins.csv \"'Body Mass (g)'/3\"", "\"Null\"\n"},
        {"show penguins.csv Sex/336", "\".\"\n"},
        {"show seattle-weather.csv date/1460", "\"2015-12-31\"\n"},
        {"show --no-header --type c1=s penguins.csv c1/0", "\"Species\"\n"},
    };
    for (const auto& testCase : cases) {
        const Outcome outcome = Run(testCase.arguments);
        EXPECT_EQ(outcome.out, testCase.out) << testCase.arguments;
        EXPECT_EQ(outcome.error, "") << testCase.arguments;
        EXPECT_EQ(outcome.status, 0) << testCase.arguments;
    }
}

TEST_F(ProgramTest, ListsTypesInTheOrderOfTheFile) {
    EXPECT_EQ(Run("types penguins.csv").out,
              "Species:A<s>\n"
              "Island:A<s>\n"
              "'Beak Length (mm)':A<r>\n"
              "'Beak Depth (mm)':A<r>\n"
              "'Flipper Length (mm)':A<i>\n"
              "'Body Mass (g)':A<i>\n"
              "Sex:A<s>\n");
    EXPECT_EQ(Run("types --type 'Body Mass (g)=r' seattle-weather.csv --type wind=f").status, 1);
    EXPECT_EQ(Run("types seattle-weather.csv --type wind=f").out,
              "date:A<d>\n"
              "precipitation:A<r>\n"
              "temp_max:A<r>\n"
              "temp_min:A<r>\n"
              "wind:A<f>\n"
              "weather:A<s>\n");
}

TEST_F(ProgramTest, ShowsTables) {
    WriteFile("small.csv", "name,n\na b,1\n,-20\n<Null>,\n");
    EXPECT_EQ(Run("show small.csv --table / --rows 2").out,
              "name      n\n"
              "------  ---\n"
              "a b       1\n"
              "<Null>  -20\n"
              "... 1 more row\n");
    ExpectFault(Run("show --table name small.csv"), 1,
                "small.csv: what stands at \"name\" is not a table: it is of type Array\n");
}

// From hand to hand through all forms, by the endings.
TEST_F(ProgramTest, ConvertsFiles) {
    for (const char* arguments :
         {"convert penguins.csv a.lum", "convert a.lum b.json", "convert b.json a.lum",
          "convert a.lum c.csv", "convert c.csv d.json"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.error, "") << arguments;
        EXPECT_EQ(outcome.out, "") << arguments;
        EXPECT_EQ(outcome.status, 0) << arguments;
    }
    EXPECT_EQ(m_folder.ReadFile("d.json"), Run("show penguins.csv").out);
    for (const char* arguments : {"show FILE \"'Body Mass (g)'/3\"", "apply isNull FILE Sex",
                                  "fold sum FILE \"Body Mass (g)\" --initial Null"}) {
        const auto on = [&](const std::string& file) {
            return Run(std::string(arguments).replace(std::string(arguments).find("FILE"), 4, file))
                .out;
        };
        EXPECT_EQ(on("a.lum"), on("penguins.csv")) << arguments;
        EXPECT_EQ(on("b.json"), on("penguins.csv")) << arguments;
    }
    ExpectFault(Run("convert none.csv out.lu"), 2,
                "lumhost: the form of 'out.lu' is not known; its name has to end with .csv, .json "
                "or .lum\n");
    ExpectFault(Run("types a.lum --no-header"), 2,
                "lumhost: --no-header and --type are for comma-separated text, which 'a.lum' is "
                "not\n");
}

TEST_F(ProgramTest, DumpsPayloads) {
    WriteFile("small.csv", "n\n1\n2\n");
    Run("convert small.csv small.lum");
    const Outcome whole = Run("dump small.lum");
    EXPECT_EQ(whole.status, 0);
    EXPECT_EQ(whole.error, "");
    EXPECT_NE(whole.out.find("\n0032  0c 02                      type A<i>\n"), std::string::npos)
        << whole.out;
    WriteFile("small.lum", m_folder.ReadFile("small.lum").substr(0, 0x3E));
    const Outcome damaged = Run("dump small.lum");
    const std::string reason = "error reading outside of binary buffer bounds (error 200)\n";
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.error, "small.lum: damaged at 0x36: " + reason);
    EXPECT_EQ(damaged.out.substr(damaged.out.rfind("\n0036")),
              "\n0036  00 00 01 00 00 00 02 00  damaged: " + reason);
    ExpectFault(Run("dump ."), 1, ".: this is not a regular file, and cannot be mapped\n");
}

TEST_F(ProgramTest, ListsFunctions) {
    const Outcome one = Run("functions -");
    EXPECT_EQ(one.error, "");
    EXPECT_EQ(one.out,
              "function  inputs                 output  forms             flags\n"
              "-         Int32                  Int32   regular\n"
              "-         Int64                  Int64   regular\n"
              "-         Real32                 Real32  regular\n"
              "-         Real64                 Real64  regular\n"
              "-         Int32, Int32           Int32   regular, special\n"
              "-         Int64, Int64           Int64   regular, special\n"
              "-         Real32, Real32         Real32  regular, special\n"
              "-         Real64, Real64         Real64  regular, special\n"
              "-         list (Int32, Int32)    Int32   -\n"
              "-         list (Int64, Int64)    Int64   -\n"
              "-         list (Real32, Real32)  Real32  -\n"
              "-         list (Real64, Real64)  Real64  -\n");
    EXPECT_EQ(Run("functions keepOnlyFirst").out,
              "function       inputs   output  forms    flags\n"
              "keepOnlyFirst  Int32    Bool    regular  creator (), stateful\n"
              "keepOnlyFirst  Int64    Bool    regular  creator (), stateful\n"
              "keepOnlyFirst  String   Bool    regular  creator (), stateful\n"
              "keepOnlyFirst  AnyType  Bool    regular  creator (), stateful\n");
    ExpectFault(Run("functions foo"), 2,
                "lumhost: there is no function \"foo\"; 'lumhost functions' lists all\n");
}

TEST_F(ProgramTest, AppliesAndFoldsFunctions) {
    WriteFile("small.csv", "n,m,t,b\n4,1,sun,true\n,2,Null,\n-9,3,rain,false\n");
    struct {
        const char* arguments;
        const char* out;
    } const cases[] = {
        {"apply inc small.csv n", "[5,[0,\"Null\"],-8]\n"},
        {"apply sqrt small.csv n", "[2,[0,\"Null\"],[0,\"Null\"]]\n"},
        {"apply sqrt small.csv n --type n=r", "[2,[0,\"Null\"],[0,\"Null\"]]\n"},
        {"apply - small.csv n m", "[3,[0,\"Null\"],-12]\n"},
        {"apply - small.csv m", "[-1,-2,-3]\n"},
        {"apply '<' small.csv n --constant -2", "[false,[false,\"Null\"],true]\n"},
        {"apply isInSet small.csv t --constant sun --constant \"'Null'\"", "[true,true,false]\n"},
        {"apply keepOnlyTrue small.csv b", "[true,[false,\"Null\"],false]\n"},
        {"fold sum small.csv m --initial 10", "16\n"},
        {"fold sum small.csv n --initial Null", "-5\n"},
        {"fold sum small.csv n --initial Null --scan-right", "[-5,-9,-9]\n"},
        {"fold min small.csv n --initial=Null --scan", "[4,4,-9]\n"},
        {"fold and small.csv b --initial true --scan", "[true,true,false]\n"},
        {"fold countAll small.csv b --initial 0", "3\n"},
        {"fold sum seattle-weather.csv precipitation --initial 0", "4426.0000000000082\n"},
        {"fold max seattle-weather.csv temp_max --initial Null", "35.600000000000001\n"},
        {"fold sum penguins.csv 'Body Mass (g)' --initial 0", "1437000\n"},
        {"fold count penguins.csv 'Body Mass (g)' --initial 0", "342\n"},
        {"fold countNulls penguins.csv Sex --initial 0", "10\n"},
        {"fold max seattle-weather.csv date --initial Null", "\"2015-12-31\"\n"},
    };
    for (const auto& testCase : cases) {
        const Outcome outcome = Run(testCase.arguments);
        EXPECT_EQ(outcome.out, testCase.out) << testCase.arguments;
        EXPECT_EQ(outcome.error, "") << testCase.arguments;
        EXPECT_EQ(outcome.status, 0) << testCase.arguments;
    }
}

TEST_F(ProgramTest, RunsPrograms) {
    WriteFile("small.csv", "n,t\n4,sun\n,rain\n");
    WriteFile("small.vtl",
              "// twice\nn -> map (multiplyConstant :2:i) -> out/n\n"
              "n -> reduce :0:i (sum) -> total\n");
    EXPECT_EQ(Run("run small.vtl small.csv --print out/n --print total --print out/n/1").out,
              "out/n: [8,[0,\"Null\"]]\ntotal: 4\nout/n/1: \"Null\"\n");
    EXPECT_EQ(Run("run small.vtl small.csv").out, "out/n:A<i>\ntotal:i\n");
    const Outcome timed = Run("run small.vtl small.csv --time --print total");
    EXPECT_EQ(timed.out.find("line 2: map, 2 rows, "), 0u) << timed.out;
    EXPECT_NE(timed.out.find("\nline 3: reduce, 2 rows, "), std::string::npos) << timed.out;
    EXPECT_EQ(timed.out.substr(timed.out.rfind("\ntotal")), "\ntotal: 4\n");
    EXPECT_EQ(Run("run small.vtl small.csv --out all.lum").out, "");
    EXPECT_EQ(Run("show all.lum --slim").out,
              "{\"n\":[4,[0,\"Null\"]],\"out\":{\"n\":[8,[0,\"Null\"]]},\"t\":[\"sun\",\"rain\"],"
              "\"total\":4}\n");
    EXPECT_EQ(Run("run small.vtl all.lum --out all.json").status, 1);  // What it writes is there.
    WriteFile("empty.vtl", "");
    EXPECT_EQ(Run("run empty.vtl small.csv").out, "");
    const Outcome check = Run("check small.vtl");
    EXPECT_EQ(check.out,
              "// twice\nn -> map (multiplyConstant :2:i) -> out/n\n"
              "n -> reduce :0:i (sum) -> total\n");
    EXPECT_EQ(check.status, 0);
}

// The place is that of the word with which no statement can go on.
TEST_F(ProgramTest, FaultsOfPrograms) {
    WriteFile("small.csv", "n,t\n4,sun\n");
    struct {
        const char* text;
        const char* error;
    } const cases[] = {
        {"n -> copy -> a\n\nn -> nosuch -> b\n", "3:6: unknown type name nosuch (error 196)"},
        {"n copy -> a", "1:11: unknown type name a (error 196)"},
        {"n -> map (inc :1:i -> b", "1:20: unexpected token n -> map (inc :1:i -> b (error 163)"},
        {"n -> map", "1:9: unexpected token n -> map (error 163)"},
        {"n -> constant :1 -> b", "1:15: operator argument type spec not found (error 268)"},
        {"-> constant :'a\nb':s -> x\nn -> ) -> y",
         "1:13: unexpected token -> constant :'a b':s -> x (error 163)"},
        {"n -> copy -> a\n  n -> copy -> b\n", "2:3: unexpected child transform found (error 257)"},
        {"  n -> copy -> a", "1:3: invalid nesting of transforms (error 258)"},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.text);
        WriteFile("small.vtl", testCase.text);
        ExpectFault(Run("check small.vtl"), 1, std::string("small.vtl:") + testCase.error + "\n");
        ExpectFault(Run("run small.vtl small.csv"), 1,
                    std::string("small.vtl:") + testCase.error + "\n");
    }
    WriteFile("small.vtl",
              "// first\nn -> copy -> a\n\na b -> block :f ->\n  a -> map (no) -> c\n"
              "n n -> call :f -> d\n");
    ExpectFault(Run("run small.vtl small.csv"), 1,
                "small.vtl:6: transform function not found: no(i) (error 141)\n");
    ExpectFault(Run("run none.vtl small.csv"), 1, "none.vtl: No such file or directory\n");
    WriteFile("small.vtl", "n -> copy -> a");
    ExpectFault(Run("run small.vtl small.csv --print b"), 1,
                "small.vtl: there is no value at the key path \"b\"\n");
    WriteFile("small.vtl", "\xff -> copy -> a");
    ExpectFault(Run("check small.vtl"), 1, "small.vtl: the text is not UTF-8\n");
}

TEST_F(ProgramTest, FaultsOfFunctions) {
    WriteFile("small.csv", "n,t\n4,sun\n0,rain\n");
    struct {
        const char* arguments;
        int status;
        const char* error;
    } const cases[] = {
        {"apply sqrt small.csv t", 1,
         "lumhost: transform function not found: sqrt(s<ROOT>) (error 141)\n"},
        {"apply / small.csv n n", 1, "lumhost: divide by zero error (error 8)\n"},
        {"apply divideConstant small.csv n --constant 0", 1,
         "lumhost: divide by zero error (error 8)\n"},
        {"apply addConstant small.csv n --constant Null", 1,
         "lumhost: expected int32 but was Int32 (special kind: Null) (error 65)\n"},
        {"fold sum small.csv t --initial 0", 1,
         "lumhost: transform function not found: sum(s<ROOT>, s<ROOT>) (error 141)\n"},
        {"apply inc small.csv x", 1, "small.csv: there is no column \"x\"\n"},
        {"apply foo none.csv n", 2,
         "lumhost: no function \"foo\" takes one column; 'lumhost functions' lists all\n"},
        {"apply inc none.csv n t", 2,
         "lumhost: no function \"inc\" takes two columns; 'lumhost functions' lists all\n"},
        {"fold isTrue none.csv n --initial 0", 2,
         "lumhost: no function \"isTrue\" folds one column; 'lumhost functions' lists all\n"},
        {"apply inc small.csv n --constant 1", 2,
         "lumhost: 'inc' takes no --constant here, not 1\n"},
        {"apply addConstant small.csv n", 2,
         "lumhost: 'addConstant' takes 1 --constant here, not 0\n"},
        {"apply isInSet small.csv n", 2,
         "lumhost: 'isInSet' takes at least one --constant here, not 0\n"},
        {"apply addConstant small.csv n --constant 1.5", 2,
         "lumhost: \"1.5\" cannot be read as Int32\n"},
        {"fold sum small.csv n --initial x", 2, "lumhost: \"x\" cannot be read as Int32\n"},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.arguments);
        ExpectFault(Run(testCase.arguments), testCase.status, testCase.error);
    }
}

// A pipe cannot be read twice.
TEST_F(ProgramTest, ReadsFromAPipe) {
    EXPECT_EQ(Run("show /dev/stdin n/1", "printf 'n\\n1\\n2\\n'").out, "2\n");
    EXPECT_EQ(Run("types /dev/stdin", "cat seattle-weather.csv").out,
              Run("types seattle-weather.csv").out);
}

TEST_F(ProgramTest, FaultsOfTheData) {
    WriteFile("ragged.csv", "a,b\n1,2\n3\n");
    ExpectFault(Run("show ragged.csv"), 1,
                "ragged.csv:3: the row has 1 field, but the first row has 2 fields\n");
    ExpectFault(Run("types none.csv"), 1, "none.csv: No such file or directory\n");
    ExpectFault(Run("types ."), 1, ".: Is a directory\n");
    ExpectFault(Run("show penguins.csv nothing"), 1,
                "penguins.csv: there is no value at the key path \"nothing\"\n");
    ExpectFault(Run("show penguins.csv Sex/344"), 1,
                "penguins.csv: there is no value at the key path \"Sex/344\"\n");
    ExpectFault(Run("show penguins.csv Sex/3/1"), 1,
                "penguins.csv: there is no value at the key path \"Sex/3/1\"\n");
}

TEST_F(ProgramTest, FaultsOfTheCommandLine) {
    ExpectFault(Run(""), 2, "lumhost: a command is missing (see 'lumhost --help')\n");
    ExpectFault(Run("show penguins.csv --fast"), 2,
                "lumhost: '--fast' is not an option of show (see 'lumhost --help')\n");
    ExpectFault(Run("show penguins.csv 'Body Mass (g)'"), 2,
                "lumhost: 'Body Mass (g)' is not a key path; a name that is not one word stands "
                "in single quotes (see 'lumhost show --help')\n");
}

TEST_F(ProgramTest, AFullDeviceIsAFault) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    const Outcome outcome = Run("types penguins.csv", "true", "/dev/full");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "lumhost: the output cannot be written\n");
}

TEST_F(ProgramTest, HelpGoesToTheOutput) {
    const Outcome outcome = Run("show --help");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_NE(outcome.out.find("--no-header"), std::string::npos);
}

TEST_F(ProgramTest, TheLogIsShownWhenAskedFor) {
    EXPECT_EQ(Run("show penguins.csv nothing").error.find("Validation failed"), std::string::npos);
    EXPECT_NE(Run("show penguins.csv nothing --verbose").error.find("Validation failed"),
              std::string::npos);
}

}  // namespace
