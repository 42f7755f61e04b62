#include <memory>
#include <utility>
#include <vector>

#include "Columns.h"
#include "Operators.h"
#include "RowGroups.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/types/TupleType.h"

namespace lumengine {
namespace {

using namespace lum::core;

template <StorageType K, StorageType V>
SV MakeKeySetOf(const ITypedArray<K>& keys, const ITypedArray<V>& elements) {
    auto values = std::make_unique<MapContainer<K, V>>(MakeEmptyMap<K, V>(keys.GetElementType()));
    auto specials = std::make_unique<MapContainer<SpecialKind, V>>();
    values->reserve(keys.GetCount());
    auto element = elements.GetAdapter();
    for (auto key = keys.GetAdapterWithSpecials(); !key.IsAtEnd(); ++key, ++element) {
        const bool isNew = key.IsSpecial()
                               ? specials->emplace(key.GetSpecialKind(), *element).second
                               : values->emplace(*key, *element).second;
        Require(isNew, LumError::DuplicateMapKey);
    }
    return factory::MakeKeySet<K, V>(keys.GetElementType(), elements.GetElementType(),
                                     std::move(values), std::move(specials));
}

void RequireOneLength(const std::vector<SV>& columns) {
    for (const SV& column : columns) {
        Require(CountRows(column) == CountRows(columns[0]), LumError::ArraySizeMismatch);
    }
}

// Writes a column to a member of rows. Below a special there is no value, so that rows are equal
// whose members are special alike.
void WriteMember(const SV& column, lumsize_t member, std::vector<LumTuple>& rows) {
    const std::vector<SpecialKind> kinds = KindsOf(column);
    const auto count = static_cast<lumsize_t>(rows.size());
    for (lumsize_t begin = 0; begin < count;) {
        lumsize_t end = begin;
        while (end < count && (kinds.empty() || kinds[end] == SpecialKind::Normal)) {
            ++end;
        }
        if (end > begin) {
            column->AsArray().CopyToTuples({rows.data() + begin, end - begin}, begin, end - begin,
                                           member);
        }
        for (; end < count && kinds[end] != SpecialKind::Normal; ++end) {
            rows[end].SetNthSpecial(member, kinds[end]);
        }
        begin = end;
    }
}

SV RunCreateKeySet(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadArrays(LumError::CreateKeySetInputType);
    Require(inputs.size() == 2, LumError::TwoInputsNeeded);
    RequireOneLength(inputs);
    const Type* const keyType = ElementTypeOf(inputs[0]);
    Require(IsPrimitive(keyType) || keyType->Is(StoreType::Tuple),
            LumError::CreateKeySetTransformType);
    Require(KindsOf(inputs[1]).empty(), LumError::ArrayHasSpecials);
    const Type* const elementType = ElementTypeOf(inputs[1]);
    return DispatchStorage(keyType->GetStoreType(), [&]<typename K>(StorageTag<K>) -> SV {
        if constexpr (!std::is_same_v<K, SV>) {
            const auto& keys = inputs[0]->AsTypedArray<K>();
            return DispatchStorage(elementType->GetStoreType(), [&]<typename V>(StorageTag<V>) {
                return MakeKeySetOf<K, V>(keys, inputs[1]->AsTypedArray<V>());
            });
        }
        return nullptr;  // No primitive and no row is stored so.
    });
}

SV RunCreateTable(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(!inputs.empty(), LumError::AtLeastOneInputNeeded);
    IStoreTable::Columns columns;
    const auto add = [&](const RInternString& name, const SV& column) {
        Require(columns.emplace(name, column).second, LumError::DuplicateTableKey, name);
    };
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        Require(IsTable(inputs[i]) || IsArray(inputs[i]), LumError::CreateTableInputType);
        Require(CountRows(inputs[i]) == CountRows(inputs[0]), LumError::TableArraySize);
        if (IsArray(inputs[i])) {
            add(statement.spec.GetInputs()[i].GetLeaf(), inputs[i]);
            continue;
        }
        for (const auto& [name, column] : inputs[i]->AsTable().GetColumns()) {
            add(name, column);
        }
    }
    return factory::MakeTable(std::move(columns), {});
}

SV RunZip(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadArrays(LumError::ZipInputType);
    Require(inputs.size() >= 2, LumError::AtLeastTwoInputsNeeded);
    RequireOneLength(inputs);
    std::vector<const Type*> members;
    for (const SV& input : inputs) {
        members.push_back(ElementTypeOf(input));
        Require(IsPrimitive(members.back()), LumError::ZipInputType);
    }
    const TupleType* const type = TupleType::Get(std::move(members));
    std::vector<LumTuple> rows(CountRows(inputs[0]), LumTuple(type));
    for (lumsize_t member = 0; member < inputs.size(); ++member) {
        WriteMember(inputs[member], member, rows);
    }
    return factory::MakeArray<LumTuple>(type, std::move(rows), SortSpecOrder::UNKNOWN);
}

constexpr Operator kOperators[] = {
    {OperatorType::CreateKeySet, Parts::None, RunCreateKeySet},
    {OperatorType::CreateTable, Parts::None, RunCreateTable},
    {OperatorType::Zip, Parts::None, RunZip},
};

}  // namespace

const std::span<const Operator> kCollectionOperators = kOperators;

}  // namespace lumengine
