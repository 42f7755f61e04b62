#include "StoreOutput.h"

#include <memory>

#include "CsvExport.h"
#include "FileError.h"
#include "FileForm.h"
#include "OutputFile.h"
#include "StoreAccess.h"
#include "TabularValue.h"
#include "TextOutput.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"

namespace lumhost {
namespace {

using namespace lum::core;

// A store over the value, which is a key map, or over the columns of a table.
std::unique_ptr<IDataStore> MakeStoreOf(const SV& value, const std::string& source,
                                        const std::string& path) {
    const bool isTable = !value->IsSpecial() && value->GetStoreType() == StoreType::Table;
    if (!isTable && (value->IsSpecial() || value->GetStoreType() != StoreType::KeyMap)) {
        throw FileError(source, 0,
                        "what stands at " + QuoteForMessage(path) +
                            " is neither a key map nor a table, and cannot be a file's root");
    }
    return isTable ? MakeStore(TakeColumns(value, {}, source, path))
                   : factory::MakeDataStore(value);
}

void WriteForm(FileForm form, const SV& value, const std::string& path,
               const std::vector<RInternString>& order, const std::string& source,
               std::ostream& out) {
    switch (form) {
        case FileForm::Csv:
            return ExportCsv(TakeColumns(value, order, source, path), out, source);
        case FileForm::Json:
            return WriteLine(out,
                             SerializeDataStore(*MakeStoreOf(value, source, path), JsonOptions()));
        case FileForm::Payload: {
            const std::vector<unsigned char> payload =
                MakePayload(*MakeStoreOf(value, source, path));
            out.write(reinterpret_cast<const char*>(payload.data()),
                      static_cast<std::streamsize>(payload.size()));
        }
    }
}

}  // namespace

std::vector<unsigned char> MakePayload(const IDataStore& store) {
    BinaryProtocolCreator creator;
    SerializeDataStore(creator, store);
    return creator.FinalizePayload();
}

void WriteStore(const std::string& file, const IDataStore& store, const KeyPath& path,
                const std::vector<RInternString>& order, const std::string& source) {
    const FileForm form = FormOfOutput(file);
    const SV value = FindValue(store, path, source);
    OutputFile output(file);
    WriteForm(form, value, TextOf(path), order, source, output.GetStream());
    output.Publish();
}

}  // namespace lumhost
