#include "TabularValue.h"

#include <algorithm>
#include <unordered_set>

#include "FileError.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/TypeUtil.h"

namespace lumhost {
namespace {

using namespace lum::core;

std::string KindOf(const StoreValue& value) {
    const std::string type = StoreTypeToString(value.GetStoreType()).toStdString();
    return value.IsSpecial() ? "a special value of " + type : "of type " + type;
}

std::string Quote(const RInternString& name) {
    return QuoteForMessage(TStringCore(name).toStdString());
}

// Why the members are not the columns of a table; empty where they are.
std::string FindFault(const std::vector<NamedColumn>& columns) {
    if (columns.empty()) {
        return "it has no members";
    }
    for (const NamedColumn& column : columns) {
        if (column.values->IsSpecial() || column.values->GetStoreType() != StoreType::Array) {
            return "its member " + Quote(column.name) + " is " + KindOf(*column.values) +
                   ", not an array";
        }
    }
    for (const NamedColumn& column : columns) {
        if (column.values->GetCount() != columns[0].values->GetCount()) {
            return "its arrays differ in length: " + Quote(columns[0].name) + " has " +
                   std::to_string(columns[0].values->GetCount()) + ", " + Quote(column.name) +
                   " has " + std::to_string(column.values->GetCount());
        }
    }
    return "";
}

[[noreturn]] void Fail(const std::string& file, const std::string& path, const std::string& why) {
    throw FileError(file, 0, "what stands at " + QuoteForMessage(path) + " is not a table: " + why);
}

}  // namespace

std::vector<RInternString> SortedNames(const IStoreKeyMap& members) {
    std::vector<RInternString> names;
    for (const auto& [name, value] : members.GetEntries()) {
        names.push_back(name);
    }
    std::sort(names.begin(), names.end(), [](const RInternString& a, const RInternString& b) {
        return TStringCore(a) < TStringCore(b);
    });
    return names;
}

std::vector<NamedColumn> TakeColumns(const SV& value, const std::vector<RInternString>& order,
                                     const std::string& file, const std::string& path) {
    const StoreType type = value->GetStoreType();
    if (value->IsSpecial() || (type != StoreType::Table && type != StoreType::KeyMap)) {
        Fail(file, path, "it is " + KindOf(*value));
    }
    // A table can be seen as a key map.
    const IStoreKeyMap& members = value->AsKeyMap();
    std::vector<NamedColumn> columns;
    std::unordered_set<RInternString> taken;
    for (const std::vector<RInternString>& names : {order, SortedNames(members)}) {
        for (const RInternString& name : names) {
            if (members.HasKey(name) && taken.insert(name).second) {
                columns.push_back({name, members.GetValue(name)});
            }
        }
    }
    if (const std::string fault = FindFault(columns); !fault.empty()) {
        Fail(file, path, fault);
    }
    return columns;
}

}  // namespace lumhost
