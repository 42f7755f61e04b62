#include "StoreAccess.h"

#include <charconv>
#include <unordered_map>

#include "FileError.h"
#include "Options.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {

using namespace lum::core;

namespace {

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

}  // namespace

KeyPath ParseKeyPath(const std::string& text) {
    if (text == "/") {
        return KeyPath();
    }
    try {
        return KeyPath::ParseString(TStringCore::fromUtf8(text));
    } catch (const LumRuntimeException&) {
        throw UsageError("'" + text +
                         "' is not a key path; a name that is not one word stands in single "
                         "quotes (see 'lumhost show --help')");
    }
}

std::string TextOf(const KeyPath& path) {
    return path.GetCount() == 0 ? "/" : path.ToString().toStdString();
}

SV FindValue(const IDataStore& store, const KeyPath& path, const std::string& file) {
    try {
        return WalkTo(store, path);
    } catch (const LumRuntimeException&) {
        // Why not, the library's log says.
        throw FileError(file, 0,
                        "there is no value at the key path " + QuoteForMessage(TextOf(path)));
    }
}

std::unique_ptr<IDataStore> MakeStore(const std::vector<NamedColumn>& columns) {
    std::unordered_map<RInternString, SV> members;
    for (const NamedColumn& column : columns) {
        members.emplace(column.name, column.values);
    }
    return factory::MakeDataStore(std::move(members));
}

}  // namespace lumhost
