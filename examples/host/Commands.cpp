#include "Commands.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "CsvImport.h"
#include "FileError.h"
#include "TextSource.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {
namespace {

using namespace lum::core;

TStringCore FromUtf8(const std::string& text) {
    return TStringCore::fromUtf8(text.data(), text.size());
}

// Writes the text as UTF-8 and ends the line. Piece by piece, since the text of a large store would
// otherwise stand in memory twice.
void WriteLine(std::ostream& out, const TStringCore& text) {
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    for (std::size_t position = 0; position < text.length();) {
        std::size_t count = std::min(kPiece, text.length() - position);
        const char16_t last = text[position + count - 1];
        const bool cutsPair = last >= 0xD800 && last < 0xDC00 && count > 1;
        count -= cutsPair ? 1 : 0;
        out << text.mid(position, count);
        position += count;
    }
    out << '\n' << std::flush;
    if (!out) {
        throw std::runtime_error("the output cannot be written");
    }
}

KeyPath ParseKeyPath(const std::string& text) {
    try {
        return KeyPath::ParseString(FromUtf8(text));
    } catch (const LumRuntimeException&) {
        throw UsageError("'" + text +
                         "' is not a key path; a name that is not one word stands in single "
                         "quotes (see 'lumhost show --help')");
    }
}

// Walked by a path, an array gives what is stored for a cell, which under a special is a
// placeholder; GetElement gives the special.
SV WalkTo(const IDataStore& store, const KeyPath& path) {
    const SV value = store.GetValue(path);
    if (path.GetCount() < 2) {
        return value;
    }
    const SV parent = store.GetValue(path.GetParent());
    const std::string leaf = path.GetLeaf().GetValue().toStdString();
    lumsize_t index = 0;
    const auto [end, error] = std::from_chars(leaf.data(), leaf.data() + leaf.size(), index);
    const bool isIndex = error == std::errc() && end == leaf.data() + leaf.size();
    return parent->GetStoreType() == StoreType::Array && isIndex
               ? parent->AsArray().GetElement(index)
               : value;
}

SV FindValue(const IDataStore& store, const KeyPath& path, const std::string& file) {
    try {
        return WalkTo(store, path);
    } catch (const LumRuntimeException&) {
        // Why not, the library's log says.
        throw FileError(
            file, 0,
            "there is no value at the key path " + QuoteForMessage(path.ToString().toStdString()));
    }
}

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
    std::unordered_map<RInternString, SV> members;
    for (const NamedColumn& column : columns) {
        members.emplace(column.name, column.values);
    }
    const std::unique_ptr<IDataStore> store = factory::MakeDataStore(std::move(members));
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
    // Before the file is read, which may take long.
    const std::optional<KeyPath> path =
        options.keyPath ? std::optional(ParseKeyPath(*options.keyPath)) : std::nullopt;

    const std::unique_ptr<TextSource> source = OpenTextSource(options.file);
    const std::vector<NamedColumn> columns =
        ImportCsv(*source, {options.hasHeader, options.types}, progress);
    progress.Finish();
    if (options.command == Command::Types) {
        ShowTypes(columns, out);
    } else {
        Show(options, path, columns, out);
    }
}

}  // namespace lumhost
