#include "StoreInput.h"

#include <stdexcept>

#include "FileError.h"
#include "FileForm.h"
#include "MemoryMap.h"
#include "Options.h"
#include "PayloadBuffers.h"
#include "StoreAccess.h"
#include "TabularValue.h"
#include "TextInput.h"
#include "TextSource.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {
namespace {

using namespace lum::core;

StoreInput ReadColumns(const std::string& file, const CsvImportOptions& options,
                       Progress& progress) {
    const std::unique_ptr<TextSource> source = OpenTextSource(file);
    const std::vector<NamedColumn> columns = ImportCsv(*source, options, progress);
    progress.Finish();
    StoreInput input{MakeStore(columns), {}};
    for (const NamedColumn& column : columns) {
        input.names.push_back(column.name);
    }
    return input;
}

std::shared_ptr<IDataStore> ParseStore(const std::string& file, FileForm form) {
    try {
        if (form == FileForm::Json) {
            return StoreValueParser::MakeDataStore(ReadText(file));
        }
        BinaryProtocolReader reader(std::make_shared<MappedBuffer>(MemoryMap::Open(file)));
        return StoreValueParser::MakeDataStore(reader);
    } catch (const LumException& error) {
        throw FileError(file, 0, MessageOf(error));
    } catch (const std::out_of_range& error) {
        // What the library says of names that nobody registered, and of rows that are too long.
        throw FileError(file, 0, error.what());
    }
}

}  // namespace

StoreInput ReadStore(const std::string& file, const CsvImportOptions& options, Progress& progress) {
    const FileForm form = FormOfInput(file);
    if (form == FileForm::Csv) {
        return ReadColumns(file, options, progress);
    }
    if (!options.hasHeader || !options.types.empty()) {
        throw UsageError("--no-header and --type are for comma-separated text, which '" + file +
                         "' is not");
    }
    const std::shared_ptr<IDataStore> store = ParseStore(file, form);
    return {store, SortedNames(*store->GetRootKeyMap())};
}

}  // namespace lumhost
