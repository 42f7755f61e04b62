#include "Commands.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "FunctionCommands.h"
#include "ProgramCommands.h"
#include "StoreAccess.h"
#include "TextOutput.h"
#include "TextSource.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"

namespace lumhost {
namespace {

using namespace lum::core;

TStringCore FormatStore(const IDataStore& store, JsonStyle style) {
    switch (style) {
        case JsonStyle::Compact:
            return SerializeDataStoreCompact(store);
        case JsonStyle::Slim:
            return SerializeDataStore(store, JsonOptions::SlimWebFormat());
        case JsonStyle::Readable:
            break;
    }
    return SerializeDataStore(store, JsonOptions());
}

void Show(const Options& options, const std::optional<KeyPath>& path,
          const std::vector<NamedColumn>& columns, std::ostream& out) {
    const std::unique_ptr<IDataStore> store = MakeStore(columns);
    WriteLine(out, path ? SerializeValue(*FindValue(*store, *path, options.file))
                        : FormatStore(*store, options.style));
}

void ShowTypes(const std::vector<NamedColumn>& columns, std::ostream& out) {
    TStringCore text;
    for (const NamedColumn& column : columns) {
        text += text.isEmpty() ? L"" : L"\n";
        text += KeySegment(column.name, column.values->GetType()).ToString();
    }
    WriteLine(out, text);
}

}  // namespace

void RunCommand(const Options& options, std::ostream& out, Progress& progress) {
    if (options.command == Command::Functions) {
        return ListFunctions(options, out);
    }
    if (options.command == Command::Check) {
        return CheckProgram(options, out);
    }
    if (options.command == Command::Run) {
        return RunProgramFile(options, out, progress);
    }
    // Before the file is read, which may take long.
    const std::optional<KeyPath> path =
        options.keyPath ? std::optional(ParseKeyPath(*options.keyPath)) : std::nullopt;
    if (options.function) {
        CheckFunctionName(options);
    }

    const std::unique_ptr<TextSource> source = OpenTextSource(options.file);
    const std::vector<NamedColumn> columns =
        ImportCsv(*source, {options.hasHeader, options.types}, progress);
    progress.Finish();
    if (options.function) {
        RunFunction(options, columns, out);
    } else if (options.command == Command::Types) {
        ShowTypes(columns, out);
    } else {
        Show(options, path, columns, out);
    }
}

}  // namespace lumhost
