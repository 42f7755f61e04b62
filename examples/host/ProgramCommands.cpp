#include "ProgramCommands.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FileError.h"
#include "FileForm.h"
#include "FunctionCommands.h"
#include "Program.h"
#include "ProgramText.h"
#include "StoreAccess.h"
#include "StoreInput.h"
#include "StoreOutput.h"
#include "TextOutput.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumThreadPool.h"
#include "lum/core/vtl/OperatorTypeText.h"

namespace lumhost {
namespace {

using namespace lum::core;
using lumengine::StatementRun;

std::string DescribeRun(const StatementRun& run, unsigned long long line,
                        const TransformSpec& statement) {
    const double seconds = std::chrono::duration<double>(run.time).count();
    const double rate = seconds > 0 ? run.rows / seconds : 0;
    char text[160];
    std::snprintf(text, sizeof(text), "line %llu: %s, %u rows, %.3g rows/s", line,
                  OperatorTypeToString(statement.GetOperatorType()).toStdString().c_str(), run.rows,
                  rate);
    return text;
}

// What the program wrote.
std::vector<std::string> DescribeOutputs(const std::vector<TransformSpec>& program,
                                         const IDataStore& store) {
    std::vector<std::string> lines;
    for (const TransformSpec& statement : program) {
        for (const KeyPath& output : statement.GetOutputs()) {
            if (const SV value = store.TryGetValue(output)) {
                lines.push_back(output.ToString().toStdString() + ":" +
                                value->GetType()->ToString().toStdString());
            }
        }
    }
    return lines;
}

std::vector<StatementRun> RunStatements(const ProgramText& text,
                                        const std::vector<TransformSpec>& program,
                                        IDataStore& store) {
    std::vector<StatementRun> runs;
    const std::unique_ptr<FunctionRegistry> registry = MakeRegistry();
    LumThreadPool::Initialize();
    lumengine::RunOptions options;
    options.isParallel = true;
    options.onStatement = [&](const StatementRun& run) { runs.push_back(run); };
    try {
        lumengine::RunProgram(program, store, *registry, options);
    } catch (const LumException& error) {
        throw FileError(text.GetName(), text.FindLine(runs.size()), MessageOf(error));
    }
    return runs;
}

}  // namespace

void CheckProgram(const Options& options, std::ostream& out) {
    const ProgramText text = ProgramText::Read(options.program);
    const std::vector<TransformSpec> program = text.Parse(/*keepComments=*/true);
    std::string lines = TransformsToString(program, /*includeComments=*/true).toStdString();
    if (!lines.empty()) {
        lines.pop_back();  // The line feed, which WriteLine adds.
    }
    WriteLine(out, TStringCore::fromUtf8(lines));
}

void RunProgramFile(const Options& options, std::ostream& out, Progress& progress) {
    if (options.out) {
        static_cast<void>(FormOfOutput(*options.out));
    }
    std::vector<KeyPath> prints;
    for (const std::string& print : options.prints) {
        prints.push_back(ParseKeyPath(print));
    }
    const ProgramText text = ProgramText::Read(options.program);
    const std::vector<TransformSpec> program = text.Parse(/*keepComments=*/false);
    const StoreInput input = ReadStore(options.file, {options.hasHeader, options.types}, progress);
    IDataStore& store = *input.store;
    const std::vector<StatementRun> runs = RunStatements(text, program, store);
    if (options.out) {
        WriteStore(*options.out, store, KeyPath(), input.names, options.file);
    }

    std::string lines;
    if (options.isTimed) {
        for (const StatementRun& run : runs) {
            lines += DescribeRun(run, text.FindLine(run.index), program[run.index]) + "\n";
        }
    }
    for (const KeyPath& print : prints) {
        lines += TextOf(print) + ": " +
                 SerializeValue(*FindValue(store, print, text.GetName())).toStdString() + "\n";
    }
    if (prints.empty() && !options.out) {
        for (const std::string& line : DescribeOutputs(program, store)) {
            lines += line + "\n";
        }
    }
    if (!lines.empty()) {
        lines.pop_back();  // The line feed, which WriteLine adds.
        WriteLine(out, TStringCore::fromUtf8(lines));
    }
}

}  // namespace lumhost
