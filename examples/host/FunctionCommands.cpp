#include "FunctionCommands.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>

#include "AlignedText.h"
#include "ColumnFunctions.h"
#include "FileError.h"
#include "Literal.h"
#include "TextOutput.h"
#include "lum/core/functions/BuiltinFunctions.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/TypeUtil.h"

namespace lumhost {
namespace {

using namespace lum::core;
using namespace lumengine;

std::string NameOf(const Type* type) {
    if (type == nullptr) {
        return "AnyType";
    }
    const std::string name = StoreTypeToString(type->GetStoreType()).toStdString();
    const CollectionType* const collection = type->TryAs<CollectionType>();
    return collection == nullptr ? name : name + " of " + NameOf(collection->GetElementType());
}

std::string NamesOf(const TypeRefVec<VariableTypeRef>& types) {
    std::string names;
    for (const VariableTypeRef& type : types) {
        names += (names.empty() ? "" : ", ") + NameOf(type);
    }
    return names;
}

// The numbers of the types, with the wild card last.
std::vector<unsigned> NumbersOf(const TypeRefVec<VariableTypeRef>& types) {
    std::vector<unsigned> numbers;
    for (const VariableTypeRef& type : types) {
        numbers.push_back(type.IsAnyType() ? 0xFFu : static_cast<unsigned>(type->GetStoreType()));
    }
    return numbers;
}

using Row = std::array<std::string, 5>;
struct SortedRow {
    std::tuple<std::string, FunctionKey::ArgContainer, std::size_t, std::vector<unsigned>> order;
    Row cells;
};

SortedRow MakeRow(const FunctionKey& key, const FunctionInfo& info, const std::string& forms) {
    const bool isList = key.GetInputArgContainer() == FunctionKey::ArgContainer::Vector;
    const std::string name = TStringCore(key.GetName()).toStdString();
    const std::string inputs = NamesOf(key.GetInputTypes());
    std::string flags;
    if (info.IsCreator()) {
        flags = "creator (" + NamesOf(info.GetCreatorInputTypes()) + ")";
    }
    if (info.IsStateful()) {
        flags += flags.empty() ? "stateful" : ", stateful";
    }
    return {{name, key.GetInputArgContainer(), key.GetInputTypes().size(),
             NumbersOf(key.GetInputTypes())},
            {name, isList ? "list (" + inputs + ")" : inputs, NameOf(info.GetOutputType()), forms,
             flags}};
}

std::vector<SortedRow> CollectRows(const FunctionRegistry& registry) {
    std::vector<SortedRow> rows;
    const auto addForms = [&](const FunctionKey& key, const RegisteredFunctions& functions) {
        std::string forms = functions.HasFunction() ? "regular" : "";
        if (functions.HasSpecialFunction()) {
            forms += forms.empty() ? "special" : ", special";
        }
        rows.push_back(MakeRow(key, registry.GetFunction(key), forms));
    };
    registry.GetUnaryFunctions().VisitFunctions(addForms);
    registry.GetBinaryFunctions().VisitFunctions(addForms);
    registry.GetMultinaryFunctions().VisitFunctions(
        [&](const FunctionKey& key, const RegisteredFunctions&) {
            // A function of a list of values works on no column, so it has no forms.
            rows.push_back(MakeRow(key, registry.GetFunction(key), "-"));
        });
    std::sort(rows.begin(), rows.end(),
              [](const SortedRow& a, const SortedRow& b) { return a.order < b.order; });
    return rows;
}

std::string FormatRows(const std::vector<SortedRow>& rows) {
    std::vector<TextColumn> columns(std::tuple_size_v<Row>);
    for (const SortedRow& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            columns[i].cells.push_back(row.cells[i]);
        }
    }
    return AlignColumns(columns);
}

SV FindColumn(const Options& options, const IDataStore& store, const std::string& name) {
    const SV column = store.TryGetValue(KeyPath(RInternString(TStringCore::fromUtf8(name))));
    if (column == nullptr) {
        throw FileError(options.file, 0, "there is no column " + QuoteForMessage(name));
    }
    if (column->IsSpecial() || column->GetStoreType() != StoreType::Array) {
        throw FileError(options.file, 0, QuoteForMessage(name) + " is not a column");
    }
    return column;
}

// The values that the function of `query` is made from: one for each text, or a set of all.
std::vector<SV> ReadConstants(const Options& options, const TypeRefVec<VariableTypeRef>& types) {
    const std::vector<std::string>& texts = options.constants;
    const bool isSet = types.size() == 1 && types[0]->Is(StoreType::Set);
    if (isSet ? texts.empty() : texts.size() != types.size()) {
        const std::string count = isSet           ? "at least one"
                                  : types.empty() ? "no"
                                                  : std::to_string(types.size());
        throw UsageError("'" + *options.function + "' takes " + count + " --constant here, not " +
                         std::to_string(texts.size()));
    }
    if (isSet) {
        return {ReadSet(texts, types[0]->As<SetType>().GetElementType())};
    }
    std::vector<SV> values;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        values.push_back(ReadLiteral(texts[i], types[i]));
    }
    return values;
}

SV Apply(const Options& options, const IFunctionLookup& lookup, const RInternString& name,
         const std::vector<SV>& columns) {
    const FunctionInfo& info = lookup.GetFunction(MakeQuery(name, columns));
    return ApplyFunction(lookup, name, columns,
                         ReadConstants(options, info.GetCreatorInputTypes()));
}

SV Fold(const Options& options, const IFunctionLookup& lookup, const RInternString& name,
        const SV& column) {
    const SV initial = ReadLiteral(*options.initial, FindAccumulatorType(lookup, name, column));
    switch (options.fold) {
        case FoldResult::Scan:
            return FoldColumn(lookup, name, column, initial, FoldDirection::Forward);
        case FoldResult::ScanRight:
            return FoldColumn(lookup, name, column, initial, FoldDirection::Backward);
        case FoldResult::Value:
            break;
    }
    return FoldColumn(lookup, name, column, initial);
}

}  // namespace

std::unique_ptr<FunctionRegistry> MakeRegistry() {
    std::unique_ptr<FunctionRegistry> registry = FunctionRegistry::Make();
    RegisterAllBuiltinFunctions(*registry);
    return registry;
}

void ListFunctions(const Options& options, std::ostream& out) {
    std::vector<SortedRow> rows = CollectRows(*MakeRegistry());
    if (options.function) {
        std::erase_if(rows,
                      [&](const SortedRow& row) { return row.cells[0] != *options.function; });
        if (rows.empty()) {
            throw UsageError("there is no function " + QuoteForMessage(*options.function) +
                             "; 'lumhost functions' lists all");
        }
    }
    const Row header = {"function", "inputs", "output", "forms", "flags"};
    rows.insert(rows.begin(), SortedRow{{}, header});
    WriteLine(out, TStringCore::fromUtf8(FormatRows(rows)));
}

void CheckFunctionName(const Options& options) {
    const std::size_t inputCount = options.command == Command::Fold ? 2 : options.columns.size();
    bool isKnown = false;
    MakeRegistry()->VisitFunctions([&](const FunctionKey& key, const FunctionInfo&) {
        isKnown = isKnown || (key.GetInputArgContainer() == FunctionKey::ArgContainer::Separate &&
                              key.GetInputTypes().size() == inputCount &&
                              TStringCore(key.GetName()).toStdString() == *options.function);
    });
    if (!isKnown) {
        const char* const what = options.command == Command::Fold ? "folds one column"
                                 : inputCount == 1                ? "takes one column"
                                                                  : "takes two columns";
        throw UsageError("no function " + QuoteForMessage(*options.function) + " " + what +
                         "; 'lumhost functions' lists all");
    }
}

void RunFunction(const Options& options, const IDataStore& store, std::ostream& out) {
    const std::unique_ptr<FunctionRegistry> registry = MakeRegistry();
    const RInternString name(TStringCore::fromUtf8(*options.function));
    std::vector<SV> inputs;
    for (const std::string& column : options.columns) {
        inputs.push_back(FindColumn(options, store, column));
    }
    const SV result = options.command == Command::Fold ? Fold(options, *registry, name, inputs[0])
                                                       : Apply(options, *registry, name, inputs);
    WriteLine(out, SerializeValue(*result));
}

}  // namespace lumhost
