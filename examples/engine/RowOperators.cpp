#include "RowOperators.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <utility>

#include "ColumnFunctions.h"
#include "RowOrder.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TemporaryRawData.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {
namespace {

using namespace lum::core;
using Rows = std::vector<unsigned>;
using SortColumns = IStoreTable::SortColumns;

bool IsTable(const SV& value) {
    return value->GetStoreType() == StoreType::Table;
}

lumsize_t CountRows(const SV& value) {
    return IsTable(value) ? value->AsTable().GetRowCount() : value->AsArray().GetCount();
}

// Rows of an array or a table. `keepsOrder` says that they are chosen from first to last.
SV SelectRows(const SV& value, Rows&& rows, bool keepsOrder) {
    if (IsTable(value)) {
        const IStoreTable& table = value->AsTable();
        return table.ComposeRowIndices(
            std::move(rows),
            keepsOrder ? std::make_unique<SortColumns>(table.GetSortColumns()) : nullptr);
    }
    const IStoreArray& array = value->AsArray();
    return array.ComposeIndices(std::move(rows),
                                keepsOrder ? array.GetSortOrder() : SortSpecOrder::UNKNOWN);
}

// The indices at which a column of Bool is true; specials are not.
Rows FindTrue(const SV& column) {
    const IStoreArray& flags = column->AsArray();
    const lumsize_t count = flags.GetCount();
    TemporaryRawData scratch;
    const auto view = flags.GetValuesView(scratch, 0, count);
    const auto values = view.ViewAs<unsigned char>();
    std::vector<SpecialKind> kinds(flags.HasSpecialValues() ? count : 0);
    if (!kinds.empty()) {
        flags.CopySpecials({kinds.data(), count}, 0, count);
    }
    Rows rows;
    for (lumsize_t row = 0; row < count; ++row) {
        if (values[row] != 0 && (kinds.empty() || kinds[row] == SpecialKind::Normal)) {
            rows.push_back(row);
        }
    }
    return rows;
}

// The special kinds that were met, as bits.
class KindsMet {
public:
    bool Add(SpecialKind kind) {
        const unsigned bit = 1u << static_cast<unsigned>(kind);
        const bool isNew = (m_bits & bit) == 0;
        m_bits |= bit;
        return isNew;
    }

private:
    unsigned m_bits = 0;
};

template <StorageType T>
SetContainer<T> MakeEmptySet(const Type* type) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        const Collation& collation = type->As<StringType>().GetCollation();
        return SetContainer<T>(0, CollatorHash(collation), CollatorEqualTo(collation));
    } else {
        return {};
    }
}

template <StorageType T>
Rows FindFirstAppearances(const SV& column, bool includeSpecials) {
    const auto& array = column->AsTypedArray<T>();
    SetContainer<T> met = MakeEmptySet<T>(array.GetElementType());
    KindsMet kindsMet;
    Rows rows;
    for (lumsize_t row = 0; row < array.GetCount(); ++row) {
        const SpecialKind kind = array.GetSpecialKind(row);
        const bool isNew = kind == SpecialKind::Normal ? met.insert(array.GetValue(row)).second
                                                       : includeSpecials && kindsMet.Add(kind);
        if (isNew) {
            rows.push_back(row);
        }
    }
    return rows;
}

int ReadRangeNumber(const SV& value) {
    Require(value->GetStoreType() == StoreType::Int32 && !value->IsSpecial(),
            LumError::InvalidSliceRangeType);
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
    Require(position->GetStoreType() == StoreType::Int32 && !position->IsSpecial(),
            LumError::Int32Needed);
    const unsigned row = CheckRow(position->AsInt32(), CountRows(value));
    return IsTable(value) ? SelectRows(value, {row}, /*keepsOrder=*/true)
                          : value->AsArray().GetElement(row);
}

SV PickRows(const SV& value, const SV& positions) {
    Require(positions->AsArray().GetElementType()->Is(StoreType::Int32), LumError::Int32Needed);
    const auto& array = positions->AsTypedArray<unsigned>();
    Rows rows(array.GetCount());
    array.CopyValues({rows.data(), array.GetCount()}, 0, array.GetCount());
    for (lumsize_t index = 0; index < rows.size(); ++index) {
        Require(!array.IsSpecial(index), LumError::Int32Needed);
        CheckRow(static_cast<int>(rows[index]), CountRows(value));
    }
    return SelectRows(value, std::move(rows), /*keepsOrder=*/false);
}

SV ConcatArrays(const std::vector<SV>& arrays) {
    const Type* const type = arrays[0]->AsArray().GetElementType();
    unsigned long long count = 0;
    bool hasSpecials = false;
    for (const SV& array : arrays) {
        Require(array->AsArray().GetElementType()->GetBaseType() == type->GetBaseType(),
                LumError::TypeMismatch);
        count += array->AsArray().GetCount();
        hasSpecials = hasSpecials || array->AsArray().HasSpecialValues();
    }
    const lumsize_t total = LumSizeCastSafe(count);
    return DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        auto values = std::make_unique<std::vector<T>>(total);
        auto kinds = hasSpecials ? std::make_unique<std::vector<SpecialKind>>(total) : nullptr;
        lumsize_t start = 0;
        for (const SV& part : arrays) {
            const auto& array = part->AsTypedArray<T>();
            const lumsize_t length = array.GetCount();
            if (length == 0) {
                continue;
            }
            array.CopyValues({values->data() + start, length}, 0, length);
            if (kinds != nullptr) {
                array.CopySpecials({kinds->data() + start, length}, 0, length);
            }
            start += length;
        }
        return factory::MakeArray<T>(type, std::move(values), nullptr, std::move(kinds),
                                     SortSpecOrder::UNKNOWN);
    });
}

SV ConcatTables(const std::vector<SV>& tables) {
    std::unordered_map<RInternString, SV> columns;
    for (const auto& [name, first] : tables[0]->AsTable().GetColumns()) {
        std::vector<SV> parts;
        for (const SV& table : tables) {
            Require(table->AsTable().GetColumnCount() == tables[0]->AsTable().GetColumnCount() &&
                        table->AsTable().HasColumn(name),
                    LumError::TypeMismatch);
            parts.push_back(table->AsTable().GetColumn(name));
        }
        columns.emplace(name, ConcatArrays(parts));
    }
    return factory::MakeTable(std::move(columns), {});
}

}  // namespace

SV RunFilter(const Statement& statement) {
    const bool makesTable = statement.GetFlag(LumError::MakeTableFlagNeeded);
    const SV input = statement.ReadOneInput();
    const RInternString& name = statement.GetFunctionName();
    const bool isSet = input->GetStoreType() == StoreType::Set;
    Require(isSet || input->GetStoreType() == StoreType::Array, LumError::FilterInputType);
    SV source = isSet ? input->AsSet().ToArray(/*includeSpecials=*/true) : input;
    const SV column = source;
    if (makesTable) {
        const KeyPath& key = statement.GetSpec().GetInputs()[0];
        Require(key.GetCount() > 1, LumError::FilterKeyNotNested);
        source = statement.GetStore().GetValue(key.GetParent());
        Require(IsTable(source), LumError::FilterParentNotTable);
    }
    const std::vector<SV> constants = statement.ReadArguments();
    const FunctionInfo& function = statement.GetLookup().GetFunction(MakeQuery(name, {column}));
    Require(function.GetOutputType()->Is(StoreType::Bool), LumError::FilterFunctionNotBool);
    const SV flags = ApplyFunction(statement.GetLookup(), name, {column}, constants);
    const SV result = SelectRows(source, FindTrue(flags), /*keepsOrder=*/true);
    return isSet ? result->AsArray().ToSet(/*includeSpecials=*/true) : result;
}

SV RunDistinct(const Statement& statement) {
    statement.ExpectNoFunction();
    const bool includeSpecials = statement.GetFlag(LumError::IncludeSpecialsFlagNeeded);
    const SV input = statement.ReadOneInput();
    if (input->GetStoreType() == StoreType::Set) {
        return includeSpecials ? input : input->AsSet().WithoutSpecials();
    }
    Require(input->GetStoreType() == StoreType::Array, LumError::DistinctInputType);
    const Type* const type = input->AsArray().GetElementType();
    Require(IsPrimitive(type), LumError::DistinctTransformType);
    return DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        return SelectRows(input, FindFirstAppearances<T>(input, includeSpecials),
                          /*keepsOrder=*/true);
    });
}

SV RunReverse(const Statement& statement) {
    statement.ExpectNoFunction();
    statement.ExpectNoLiteral();
    const SV input = statement.ReadOneInput();
    Require(input->GetStoreType() == StoreType::Array, LumError::ReverseInputType);
    Rows rows(CountRows(input));
    for (lumsize_t row = 0; row < rows.size(); ++row) {
        rows[row] = static_cast<unsigned>(rows.size()) - 1 - row;
    }
    return SelectRows(input, std::move(rows), /*keepsOrder=*/false);
}

SV RunSlice(const Statement& statement) {
    statement.ExpectNoLiteral();
    const SV input = statement.ReadOneInput();
    Require(IsTable(input) || input->GetStoreType() == StoreType::Array, LumError::SliceInputType);
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
    statement.ExpectNoFunction();
    const SV& literal = statement.GetSpec().GetValue();
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(inputs.size() == (literal == nullptr ? 2u : 1u), LumError::ValueAndInputNeeded);
    Require(IsTable(inputs[0]) || inputs[0]->GetStoreType() == StoreType::Array,
            LumError::IndexInputType);
    const SV& position = literal == nullptr ? inputs[1] : literal;
    return position->GetStoreType() == StoreType::Array ? PickRows(inputs[0], position)
                                                        : PickRow(inputs[0], position);
}

SV RunConcat(const Statement& statement) {
    statement.ExpectNoFunction();
    statement.ExpectNoLiteral();
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(!inputs.empty(), LumError::AtLeastOneInputNeeded);
    const StoreType type = inputs[0]->GetStoreType();
    for (const SV& input : inputs) {
        Require(input->GetStoreType() == type && (IsTable(input) || type == StoreType::Array),
                LumError::ConcatInputType);
    }
    return type == StoreType::Table ? ConcatTables(inputs) : ConcatArrays(inputs);
}

SV RunCreateTable(const Statement& statement) {
    statement.ExpectNoFunction();
    statement.ExpectNoLiteral();
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(!inputs.empty(), LumError::AtLeastOneInputNeeded);
    std::unordered_map<RInternString, SV> columns;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        Require(inputs[i]->GetStoreType() == StoreType::Array, LumError::CreateTableInputType);
        Require(inputs[i]->AsArray().GetCount() == inputs[0]->AsArray().GetCount(),
                LumError::TableArraySize);
        const RInternString& name = statement.GetSpec().GetInputs()[i].GetLeaf();
        Require(columns.emplace(name, inputs[i]).second, LumError::DuplicateTableKey, name);
    }
    return factory::MakeTable(std::move(columns), {});
}

SV RunMultiSort(const Statement& statement) {
    const bool includeSpecials = statement.GetFlag(LumError::IncludeSpecialsFlagNeeded);
    const std::vector<SV> columns = statement.ReadInputs();
    Require(!columns.empty(), LumError::MultiSortInputType);
    for (const SV& column : columns) {
        Require(column->GetStoreType() == StoreType::Array, LumError::MultiSortInputType);
        Require(IsPrimitive(column->AsArray().GetElementType()), LumError::MultiSortElementType);
        Require(CountRows(column) == CountRows(columns[0]), LumError::TableArraySize);
    }
    std::vector<SortSpecOrder> orders(columns.size(), SortSpecOrder::ASC);
    if (statement.GetSpec().GetFunctionSpec() != nullptr) {
        Require(statement.GetFunctionName() == RInternString(L"order"),
                LumError::InvalidSortAlgorithm);
        orders = ReadSortOrders(statement.ReadArguments());
        Require(orders.size() == columns.size(), LumError::InvalidSortOrderOption);
    }
    return factory::MakeArray<unsigned>(
        IntType::Get32(), SortRows(columns, orders, includeSpecials), SortSpecOrder::UNKNOWN);
}

}  // namespace lumengine
