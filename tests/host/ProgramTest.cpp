// Runs the program as a user does, with its output and its errors in files, and so in no terminal.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

class ProgramTest : public ::testing::Test {
protected:
    struct Outcome {
        int status = -1;
        std::string out;
        std::string error;
    };

    ProgramTest() {
        std::filesystem::create_directories(m_folder);
        // Files are named in the folder itself, so that messages show short names.
        std::filesystem::copy(LUMHOST_TEST_DATA, m_folder,
                              std::filesystem::copy_options::recursive);
    }
    ~ProgramTest() override { std::filesystem::remove_all(m_folder); }

    void WriteFile(const std::string& name, const std::string& text) const {
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }

    /// `arguments` as a shell reads them; `producer` is a command whose output is the input.
    Outcome Run(const std::string& arguments, const std::string& producer = "true",
                const std::string& output = "out") const {
        const std::string command = "cd '" + m_folder.string() + "' && " + producer +
                                    " | '" LUMHOST_TEST_PROGRAM "' " + arguments + " >" + output +
                                    " 2>error";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile("out"), ReadFile("error")};
    }

    static void ExpectFault(const Outcome& outcome, int status, const std::string& error) {
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.error, error);
        EXPECT_EQ(outcome.out, "");
    }

private:
    std::string ReadFile(const std::string& name) const {
        std::ifstream file(m_folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("lumhost_test_" + std::to_string(getpid()));
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
