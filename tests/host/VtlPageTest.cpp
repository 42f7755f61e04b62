// docs/vtl.md shows what really happens: each program of the page is run.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "FileError.h"
#include "FunctionCommands.h"
#include "Program.h"
#include "ProgramText.h"
#include "StoreAccess.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/CollatorPoolGuard.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

struct Block {
    std::string language;
    std::string text;
};

std::vector<Block> ReadBlocks() {
    std::vector<Block> blocks;
    std::ifstream page(LUMHOST_VTL_PAGE);
    std::string line;
    bool isInside = false;
    while (std::getline(page, line)) {
        if (line.starts_with("```")) {
            isInside = !isInside;
            if (isInside) {
                blocks.push_back({line.substr(3), ""});
            }
        } else if (isInside) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

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
    std::istringstream lines(expected);
    for (std::string line; std::getline(lines, line);) {
        const std::string key = line.substr(0, line.find(": "));
        printed += key + ": " +
                   SerializeValue(*FindValue(*store, ParseKeyPath(key), "page")).toStdString() +
                   "\n";
    }
    return printed;
}

TEST(VtlPageTest, ProgramsPrintWhatThePageSays) {
    const lum::test::CollatorPoolGuard pool;
    const std::vector<Block> blocks = ReadBlocks();
    ASSERT_GT(blocks.size(), 10u);
    ASSERT_EQ(blocks[0].language, "csv");
    for (std::size_t i = 1; i < blocks.size(); i += 2) {
        ASSERT_EQ(blocks[i].language, "vtl");
        ASSERT_EQ(blocks.at(i + 1).language, "text");
        EXPECT_EQ(Print(blocks[0].text, blocks[i].text, blocks[i + 1].text), blocks[i + 1].text)
            << blocks[i].text;
    }
}

}  // namespace
}  // namespace lumhost::test
