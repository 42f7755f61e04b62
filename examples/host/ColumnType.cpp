#include "ColumnType.h"

namespace lumhost {
namespace {

struct TypeRow {
    ColumnType type;
    char code;
    const char* name;
};

// In the order of the enumerators.
constexpr TypeRow kTypes[] = {
    {ColumnType::Bool, 'b', "Bool"},     {ColumnType::Int32, 'i', "Int32"},
    {ColumnType::Int64, 'l', "Int64"},   {ColumnType::Real32, 'f', "Real32"},
    {ColumnType::Real64, 'r', "Real64"}, {ColumnType::String, 's', "String"},
    {ColumnType::Date, 'd', "Date"},     {ColumnType::DateTime, 't', "DateTime"},
    {ColumnType::Color, 'c', "Color"},
};

}  // namespace

std::optional<ColumnType> ColumnTypeFromCode(char code) {
    for (const TypeRow& row : kTypes) {
        if (row.code == code) {
            return row.type;
        }
    }
    return std::nullopt;
}

const char* GetName(ColumnType type) {
    return kTypes[static_cast<int>(type)].name;
}

}  // namespace lumhost
