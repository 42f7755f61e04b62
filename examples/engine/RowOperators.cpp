#include <numeric>
#include <utility>
#include <vector>

#include "ColumnFunctions.h"
#include "Columns.h"
#include "Operators.h"
#include "RowGroups.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"

namespace lumengine {
namespace {

using namespace lum::core;

// The indices at which a column of Bool is true; specials are not.
Rows FindTrue(const SV& column) {
    const ColumnViews views(column);
    const auto values = views.GetValues().ViewAs<unsigned char>();
    const std::vector<SpecialKind> kinds = KindsOf(column);
    Rows rows;
    for (unsigned row = 0; row < values.GetSize(); ++row) {
        if (values[row] != 0 && (kinds.empty() || kinds[row] == SpecialKind::Normal)) {
            rows.push_back(row);
        }
    }
    return rows;
}

int ReadRangeNumber(const SV& value) {
    Require(IsNormal(value, StoreType::Int32), LumError::InvalidSliceRangeType);
    return value->AsInt32();
}

Rows ListRange(lumsize_t count, int start, int length, int step) {
    Rows rows;
    long long row = start;
    for (int taken = 0; taken < length && row >= 0 && row < count; ++taken, row += step) {
        rows.push_back(static_cast<unsigned>(row));
    }
    return rows;
}

unsigned CheckRow(int row, lumsize_t count) {
    Require(row >= 0 && static_cast<lumsize_t>(row) < count, LumError::OutOfBounds);
    return static_cast<unsigned>(row);
}

SV PickRow(const SV& value, const SV& position) {
    Require(IsNormal(position, StoreType::Int32), LumError::Int32Needed);
    const unsigned row = CheckRow(position->AsInt32(), CountRows(value));
    return IsTable(value) ? SelectRows(value, {row}, /*keepsOrder=*/true)
                          : value->AsArray().GetElement(row);
}

SV PickRows(const SV& value, const SV& positions) {
    Require(ElementTypeOf(positions)->Is(StoreType::Int32), LumError::Int32Needed);
    const auto& array = positions->AsTypedArray<unsigned>();
    Rows rows(array.GetCount());
    array.CopyValues({rows.data(), array.GetCount()}, 0, array.GetCount());
    const lumsize_t count = CountRows(value);
    for (lumsize_t index = 0; index < rows.size(); ++index) {
        Require(!array.IsSpecial(index), LumError::Int32Needed);
        CheckRow(static_cast<int>(rows[index]), count);
    }
    return SelectRows(value, std::move(rows));
}

// Arrays whose elements have the same storage would be joined whatever their types.
void RequireSameElements(const SV& column, const SV& other) {
    Require(ElementTypeOf(column)->GetBaseType() == ElementTypeOf(other)->GetBaseType(),
            LumError::TypeMismatch);
}

SV RunFilter(const Statement& statement) {
    const bool makesTable = statement.GetFlag(LumError::MakeTableFlagNeeded);
    const SV input = statement.ReadOneInput();
    const RInternString& name = statement.GetFunctionName();
    const SV column = ToColumn(input, LumError::FilterInputType);
    SV source = column;
    if (makesTable) {
        const KeyPath& key = statement.spec.GetInputs()[0];
        Require(key.GetCount() > 1, LumError::FilterKeyNotNested);
        source = ReadValue(statement.store, key.GetParent());
        Require(IsTable(source), LumError::FilterParentNotTable);
    }
    const std::vector<SV> constants = statement.ReadArguments();
    const FunctionInfo& function = statement.lookup.GetFunction(MakeQuery(name, {column}));
    Require(function.GetOutputType()->Is(StoreType::Bool), LumError::FilterFunctionNotBool);
    const SV flags = ApplyFunction(statement.lookup, name, {column}, constants);
    return ToFormOf(input, SelectRows(source, FindTrue(flags), /*keepsOrder=*/true));
}

SV RunDistinct(const Statement& statement) {
    const bool includeSpecials = statement.GetFlag(LumError::IncludeSpecialsFlagNeeded);
    const SV input = statement.ReadOneInput();
    if (input->GetStoreType() == StoreType::Set) {
        return includeSpecials ? input : input->AsSet().WithoutSpecials();
    }
    Require(IsArray(input), LumError::DistinctInputType);
    const Type* const type = ElementTypeOf(input);
    Require(IsPrimitive(type) || type->Is(StoreType::Tuple), LumError::DistinctTransformType);
    Rows rows = GroupRows({input}).firstRows;
    const std::vector<SpecialKind> kinds = KindsOf(input);
    if (!includeSpecials && !kinds.empty()) {
        std::erase_if(rows, [&](unsigned row) { return kinds[row] != SpecialKind::Normal; });
    }
    return SelectRows(input, std::move(rows), /*keepsOrder=*/true);
}

SV RunReverse(const Statement& statement) {
    const SV input = statement.ReadOneInput();
    Require(IsArray(input), LumError::ReverseInputType);
    Rows rows(CountRows(input));
    std::iota(rows.rbegin(), rows.rend(), 0u);
    return SelectRows(input, std::move(rows));
}

SV RunSlice(const Statement& statement) {
    const SV input = statement.ReadOneInput();
    Require(IsTable(input) || IsArray(input), LumError::SliceInputType);
    const RInternString& name = statement.GetFunctionName();
    const std::vector<SV> arguments = statement.ReadArguments();
    Require(name == RInternString(L"range") && (arguments.size() == 2 || arguments.size() == 3),
            LumError::InvalidSliceRangeType);
    const int start = ReadRangeNumber(arguments[0]);
    const int length = ReadRangeNumber(arguments[1]);
    const int step = arguments.size() == 3 ? ReadRangeNumber(arguments[2]) : 1;
    Require(start >= 0 && length >= 0 && step != 0, LumError::OutOfBounds);
    if (step == 1 && length > 0 && !IsTable(input) &&
        static_cast<lumsize_t>(start) < CountRows(input)) {
        return input->AsArray().GetRange(static_cast<lumsize_t>(start),
                                         static_cast<lumsize_t>(length), 1);  // Copies no indices.
    }
    return SelectRows(input, ListRange(CountRows(input), start, length, step),
                      /*keepsOrder=*/step > 0);
}

SV RunIndex(const Statement& statement) {
    const SV& literal = statement.spec.GetValue();
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(inputs.size() == (literal == nullptr ? 2u : 1u), LumError::ValueAndInputNeeded);
    Require(IsTable(inputs[0]) || IsArray(inputs[0]), LumError::IndexInputType);
    const SV& position = literal == nullptr ? inputs[1] : literal;
    return IsArray(position) ? PickRows(inputs[0], position) : PickRow(inputs[0], position);
}

SV RunConcat(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(!inputs.empty(), LumError::AtLeastOneInputNeeded);
    const bool areTables = IsTable(inputs[0]);
    for (const SV& input : inputs) {
        Require(areTables ? IsTable(input) : IsArray(input), LumError::ConcatInputType);
        if (!areTables) {
            RequireSameElements(inputs[0], input);
            continue;
        }
        for (const auto& [name, column] : input->AsTable().GetColumns()) {
            if (inputs[0]->AsTable().HasColumn(name)) {
                RequireSameElements(inputs[0]->AsTable().GetColumn(name), column);
            }
        }
    }
    return areTables ? ConcatenateTables(inputs)
                     : ConcatenateArrays(inputs, nullptr, SortSpecOrder::UNKNOWN);
}

constexpr Operator kOperators[] = {
    {OperatorType::Concat, Parts::None, RunConcat},
    {OperatorType::Distinct, Parts::Literal, RunDistinct},
    {OperatorType::Filter, Parts::LiteralAndFunction, RunFilter},
    {OperatorType::Index, Parts::Literal, RunIndex},
    {OperatorType::MultiSort, Parts::LiteralAndFunction, RunMultiSort},
    {OperatorType::Reverse, Parts::None, RunReverse},
    {OperatorType::Slice, Parts::Function, RunSlice},
};

}  // namespace

const std::span<const Operator> kRowOperators = kOperators;

}  // namespace lumengine
