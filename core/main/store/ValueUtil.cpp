#include "lum/core/store/ValueUtil.h"

#include <algorithm>
#include <bit>
#include <typeinfo>
#include <utility>

#include "core/main/store/ValueArray.h"
#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/Check.h"
#include "lum/core/store/ArrayAdapter.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

SV MakeReal32OfType(const Type* type, float value) {
    static const Type* const s_default = RealType::Get32();
    if (type == s_default) {
        return factory::MakeReal32(value);
    }
    const RealType& real = type->As<RealType>();
    return factory::MakeReal32(value, real.GetPrecision(), real.GetScale());
}

SV MakeReal64OfType(const Type* type, double value) {
    static const Type* const s_default = RealType::Get64();
    if (type == s_default) {
        return factory::MakeReal64(value);
    }
    const RealType& real = type->As<RealType>();
    return factory::MakeReal64(value, real.GetPrecision(), real.GetScale());
}

SV MakeStringOfType(const Type* type, const RIndirectString& value) {
    static const Type* const s_default = StringType::Get();
    return type == s_default ? factory::MakeString(value)
                             : factory::MakeString(value, type->As<StringType>().GetCollation());
}

/// The column as its own class, calls to which are direct; null for one of another form.
template <StorageType T>
const ValueArray<T>* TryAsStored(const StoreValue& column) {
    return typeid(column) == typeid(ValueArray<T>) ? static_cast<const ValueArray<T>*>(&column)
                                                   : nullptr;
}

/// Puts the elements behind `values`, which has room for them.
template <typename Array, StorageType T>
void AppendValues(const Array& array, std::vector<T>& values) {
    const lumsize_t count = array.GetCount();
    if (array.IsConstant()) {
        values.insert(values.end(), count, array.GetValueUnchecked(0));
    } else if (array.IsComposite() || array.HasIndices()) {
        const std::size_t start = values.size();
        values.resize(start + count);
        array.CopyValues({values.data() + start, count}, 0, count);
    } else {
        // A copy of the block: zeros that are written first would double what memory has to take.
        const ArrayView<const T> stored = array.GetValues();
        values.insert(values.end(), stored.begin(), stored.end());
    }
}

template <typename Array>
void AppendKinds(const Array& array, std::vector<SpecialKind>& kinds) {
    const lumsize_t count = array.GetCount();
    const std::size_t start = kinds.size();
    kinds.resize(start + count, SpecialKind::Normal);
    if (array.HasSpecialValues()) {
        array.CopySpecials({kinds.data() + start, count}, 0, count);
    }
}

template <StorageType T>
SV CopyTogether(const std::vector<SV>& arrays, std::unique_ptr<std::vector<unsigned>> indices,
                SortSpecOrder order) {
    uint64 count = 0;
    bool haveSpecials = false;
    for (const SV& array : arrays) {
        if (const ValueArray<T>* const stored = TryAsStored<T>(*array)) {
            count += stored->GetCount();
            haveSpecials |= stored->HasSpecialValues();
        } else {
            count += array->GetCount();
            haveSpecials |= array->AsArray().HasSpecialValues();
        }
    }
    const lumsize_t total = LumSizeCastSafe(count);
    auto values = std::make_unique<std::vector<T>>();
    values->reserve(total);
    std::unique_ptr<std::vector<SpecialKind>> kinds;
    if (haveSpecials) {
        kinds = std::make_unique<std::vector<SpecialKind>>();
        kinds->reserve(total);
    }
    const auto append = [&](const auto& array) {
        AppendValues(array, *values);
        if (haveSpecials) {
            AppendKinds(array, *kinds);
        }
    };
    for (const SV& array : arrays) {
        const ValueArray<T>* const stored = TryAsStored<T>(*array);
        stored != nullptr ? append(*stored) : append(ArrayAdapter<T>(array).GetArray());
    }
    return factory::MakeArray<T>(arrays.front()->AsArray().GetElementType(), std::move(values),
                                 std::move(indices), std::move(kinds), order);
}

}  // namespace

// The forms over strings and rows repeat the export mark: these classes have none of their own, and
// a specialisation is no more visible than what it is made from.
template <>
SV MakeStoreValue(const Type* type, bool value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Bool, LumError::ExpectedBool);
    return factory::MakeBool(value);
}

template <>
SV MakeStoreValue(const Type* type, int value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Int32, LumError::ExpectedInt32);
    return factory::MakeInt32(value);
}

template <>
SV MakeStoreValue(const Type* type, long long value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Int64, LumError::ExpectedInt64);
    return factory::MakeInt64(value);
}

template <>
SV MakeStoreValue(const Type* type, float value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Real32, LumError::ExpectedReal32);
    return MakeReal32OfType(type, value);
}

template <>
SV MakeStoreValue(const Type* type, double value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Real64, LumError::ExpectedReal64);
    return MakeReal64OfType(type, value);
}

template <>
LUM_CORE_API SV MakeStoreValue(const Type* type, RIndirectString value) {
    LUM_CHECK(type->GetStoreType() == StoreType::String, LumError::ExpectedString);
    return MakeStringOfType(type, value);
}

template <>
SV MakeStoreValue(const Type* type, LumColor value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Color, LumError::ExpectedColor);
    return factory::MakeColor(value);
}

template <>
SV MakeStoreValue(const Type* type, LumDateTime value) {
    switch (type->GetStoreType()) {
        case StoreType::Date:
            return factory::MakeDate(value);
        case StoreType::DateTime:
            return factory::MakeDateTime(value);
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
LUM_CORE_API SV MakeStoreValue(const Type* type, LumTuple value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Tuple, LumError::TypeMismatchExpected);
    return factory::MakeTuple(std::move(value));
}

template <>
SV MakeStoreValue(const Type* /*type*/, SV value) {
    return value;
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned char& stored) {
    return MakeStoreValue<bool>(type, stored != 0);
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned int& stored) {
    switch (type->GetStoreType()) {
        case StoreType::Int32:
            return factory::MakeInt32(std::bit_cast<int>(stored));
        case StoreType::Real32:
            return MakeReal32OfType(type, std::bit_cast<float>(stored));
        case StoreType::Color:
            return factory::MakeColor(LumColor::FromInt32(std::bit_cast<int>(stored)));
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned long long& stored) {
    switch (type->GetStoreType()) {
        case StoreType::Int64:
            return factory::MakeInt64(std::bit_cast<int64>(stored));
        case StoreType::Real64:
            return MakeReal64OfType(type, std::bit_cast<double>(stored));
        case StoreType::Date:
            return factory::MakeDate(LumDateTime::FromValue(stored));
        case StoreType::DateTime:
            return factory::MakeDateTime(LumDateTime::FromValue(stored));
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
LUM_CORE_API SV MakeStoreValueFromStorageType(const Type* type, const RIndirectString& stored) {
    LUM_CHECK(type->GetStoreType() == StoreType::String, LumError::ExpectedString);
    return MakeStringOfType(type, stored);
}

template <>
LUM_CORE_API SV MakeStoreValueFromStorageType(const Type* type, const LumTuple& stored) {
    return MakeStoreValue<LumTuple>(type, stored);
}

template <>
SV MakeStoreValueFromStorageType(const Type* /*type*/, const SV& stored) {
    return stored;
}

template <>
bool FetchStoreValue(const SV& value) {
    return value->AsBool();
}

template <>
unsigned char FetchStoreValue(const SV& value) {
    return value->AsBool() ? 1 : 0;
}

template <>
int FetchStoreValue(const SV& value) {
    return value->AsInt32();
}

template <>
long long FetchStoreValue(const SV& value) {
    return value->AsInt64();
}

template <>
float FetchStoreValue(const SV& value) {
    return value->AsReal32();
}

template <>
double FetchStoreValue(const SV& value) {
    return value->AsReal64();
}

template <>
LUM_CORE_API const RIndirectString& FetchStoreValue(const SV& value) {
    return value->AsString();
}

template <>
LUM_CORE_API RIndirectString FetchStoreValue(const SV& value) {
    return value->AsString();
}

template <>
TStringCore FetchStoreValue(const SV& value) {
    return value->AsString().GetRString();
}

template <>
LumColor FetchStoreValue(const SV& value) {
    return value->AsColor();
}

template <>
LumDateTime FetchStoreValue(const SV& value) {
    return value->GetStoreType() == StoreType::Date ? value->AsDate() : value->AsDateTime();
}

template <>
LUM_CORE_API const LumTuple& FetchStoreValue(const SV& value) {
    return value->AsTuple();
}

template <>
LUM_CORE_API LumTuple FetchStoreValue(const SV& value) {
    return value->AsTuple();
}

template <>
const SV& FetchStoreValue(const SV& value) {
    return value;
}

template <>
SV FetchStoreValue(const SV& value) {
    return value;
}

template <>
unsigned int FetchStoreValue(const SV& value) {
    switch (value->GetStoreType()) {
        case StoreType::Int32:
            return std::bit_cast<unsigned int>(value->AsInt32());
        case StoreType::Real32:
            return std::bit_cast<unsigned int>(value->AsReal32());
        case StoreType::Color:
            return std::bit_cast<unsigned int>(value->AsColor().AsInt32());
        default:
            LUM_FAIL(LumError::IllegalOperation);
    }
}

template <>
unsigned long long FetchStoreValue(const SV& value) {
    switch (value->GetStoreType()) {
        case StoreType::Int64:
            return std::bit_cast<unsigned long long>(value->AsInt64());
        case StoreType::Real64:
            return std::bit_cast<unsigned long long>(value->AsReal64());
        case StoreType::Date:
            return value->AsDate().GetValue();
        case StoreType::DateTime:
            return value->AsDateTime().GetValue();
        default:
            LUM_FAIL(LumError::IllegalOperation);
    }
}

SV FetchStoreValueFromTuple(const LumTuple& tuple, lumsize_t index) {
    const Type* const type = tuple.GetNthType(index);
    const SpecialKind kind = tuple.GetNthSpecialUnsafe(index);
    if (kind != SpecialKind::Normal) {
        return factory::MakeSpecial(type, kind);
    }
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return factory::MakeBool(tuple.GetNthBoolUnsafe(index));
        case StoreType::Int32:
        case StoreType::Real32:
        case StoreType::Color:
            return MakeStoreValueFromStorageType(type,
                                                 tuple.GetNthValueUnsafe<unsigned int>(index));
        case StoreType::String:
            return MakeStoreValueFromStorageType(type, tuple.GetNthStringUnsafe(index));
        case StoreType::External:
            return tuple.GetNthExternalUnsafe(index);
        default:
            return MakeStoreValueFromStorageType(
                type, tuple.GetNthValueUnsafe<unsigned long long>(index));
    }
}

SV ConcatenateArrays(const std::vector<SV>& arrays, std::unique_ptr<std::vector<unsigned>> indices,
                     SortSpecOrder order) {
    LUM_CHECK_TEXT("(arrays).size() >= (1)", !arrays.empty(), LumError::EmptyComposition);
    for (const SV& value : arrays) {
        LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    }
    return DispatchStorage(
        arrays.front()->AsArray().GetElementType()->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            const bool areConstant = std::all_of(arrays.begin(), arrays.end(), [](const SV& array) {
                return array->AsArray().IsConstant();
            });
            return areConstant ? MakeCompositeArray<T>(arrays, std::move(indices), order)
                               : CopyTogether<T>(arrays, std::move(indices), order);
        });
}

SV ConcatenateTables(const std::vector<SV>& tables) {
    LUM_CHECK_NOT(tables.empty(), LumError::EmptyConcatenation);
    for (const SV& value : tables) {
        LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    }
    if (tables.size() == 1) {
        return tables.front();
    }
    const lumsize_t colCount = tables.front()->GetCount();
    for (const SV& table : tables) {
        LUM_CHECK(table->GetCount() == colCount, LumError::ConcatenatedColumnsDiffer);
    }
    MemberMap columns;
    columns.Reserve(colCount);
    for (const auto& [columnName, firstColumn] : tables.front()->AsTable().GetColumns()) {
        std::vector<SV> parts;
        parts.reserve(tables.size());
        for (const SV& value : tables) {
            const IStoreTable& table = value->AsTable();
            LUM_CHECK(table.HasColumn(columnName), LumError::ConcatenatedColumnsDiffer);
            parts.push_back(table.GetColumn(columnName));
        }
        columns.Insert(columnName, ConcatenateArrays(parts, nullptr, SortSpecOrder::UNKNOWN));
    }
    return factory::MakeTable(std::move(columns), nullptr);
}

}  // namespace lum::core
