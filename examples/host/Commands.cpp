#include "Commands.h"

#include <memory>
#include <optional>
#include <string>

#include "FileForm.h"
#include "FunctionCommands.h"
#include "PayloadDump.h"
#include "ProgramCommands.h"
#include "StoreAccess.h"
#include "StoreInput.h"
#include "StoreOutput.h"
#include "TableText.h"
#include "TabularValue.h"
#include "TextOutput.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"

namespace lumhost {
namespace {

using namespace lum::core;

constexpr lumsize_t kRowsOfTable = 20;

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

void ShowTable(const Options& options, const KeyPath& path, const StoreInput& input,
               std::ostream& out) {
    const SV value = FindValue(*input.store, path, options.file);
    const std::string table =
        FormatTable(TakeColumns(value, input.names, options.file, TextOf(path)),
                    options.rows.value_or(kRowsOfTable));
    WriteLine(out, TStringCore::fromUtf8(table));
}

void Show(const Options& options, const std::optional<KeyPath>& path, const StoreInput& input,
          std::ostream& out) {
    if (options.table) {
        return ShowTable(options, *path, input, out);
    }
    WriteLine(out, path ? SerializeValue(*FindValue(*input.store, *path, options.file))
                        : FormatStore(*input.store, options.style));
}

void ShowTypes(const StoreInput& input, std::ostream& out) {
    TStringCore text;
    const std::shared_ptr<IStoreKeyMap> members = input.store->GetRootKeyMap();
    for (const RInternString& name : input.names) {
        text += text.isEmpty() ? L"" : L"\n";
        text += KeySegment(name, members->GetValue(name)->GetType()).ToString();
    }
    WriteLine(out, text);
}

void RunOverStore(const Options& options, std::ostream& out, Progress& progress) {
    // Before the file is read, which may take long.
    const std::optional<std::string>& pathText = options.table ? options.table : options.keyPath;
    const std::optional<KeyPath> path =
        pathText ? std::optional(ParseKeyPath(*pathText)) : std::nullopt;
    if (options.function) {
        CheckFunctionName(options);
    }
    if (options.out) {
        static_cast<void>(FormOfOutput(*options.out));
    }

    const StoreInput input = ReadStore(options.file, {options.hasHeader, options.types}, progress);
    if (options.function) {
        RunFunction(options, *input.store, out);
    } else if (options.command == Command::Types) {
        ShowTypes(input, out);
    } else if (options.command == Command::Convert) {
        WriteStore(*options.out, *input.store, path.value_or(KeyPath()), input.names, options.file);
    } else {
        Show(options, path, input, out);
    }
}

}  // namespace

void RunCommand(const Options& options, std::ostream& out, Progress& progress) {
    switch (options.command) {
        case Command::Functions:
            return ListFunctions(options, out);
        case Command::Check:
            return CheckProgram(options, out);
        case Command::Run:
            return RunProgramFile(options, out, progress);
        case Command::Dump:
            return PrintPayload(options.file, out);
        default:
            return RunOverStore(options, out, progress);
    }
}

}  // namespace lumhost
