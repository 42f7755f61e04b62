#include "lum/core/serialize/StoreValueBinarySerializer.h"

#include <algorithm>
#include <array>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "core/main/serialize/KeySetEntries.h"
#include "lum/core/Check.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {
namespace {

// A tag leaves the members of key maps and tables out, so that their types, which are made by a
// walk over all that is below, need not be made.
const Type* GetTaggedType(const StoreValue& value) {
    switch (value.GetStoreType()) {
        case StoreType::KeyMap:
            return KeyMapType::Get({});
        case StoreType::Table:
            return TableType::Get({});
        default:
            return value.GetType();
    }
}

// The walk. Containers of the form are begun and ended by the functions of the values that they
// hold, elements of a segment by WriteElement.
class BinaryValueWriter {
public:
    explicit BinaryValueWriter(BinaryProtocolCreator& creator)
        : m_creator(creator), m_hasOwnEvents(typeid(creator) != typeid(BinaryProtocolCreator)) {}

    void WriteKeyMap(const IStoreKeyMap& members);

private:
    void Write(const SV& value);
    void WriteMember(const TStringCore& name, const SV& value);
    void WriteTable(const IStoreTable& table);
    void WriteExternal(const ValueExternal& value);

    void WriteRow(const LumTuple& row);
    void WriteStored(const SV& value);
    template <StorageType T>
    void WriteElement(const T& element);

    // A segment of elements that stand in a row, and may be kept until the payload is made if they
    // have an owner.
    template <typename T>
    void WriteSegment(ArrayView<const T> elements, const SV& owner = nullptr);
    template <StorageType T>
    void WriteArray(const SV& value);
    template <StorageType T>
    void WriteConstantArray(const ITypedArray<T>& values);
    template <StorageType T>
    void WriteCompositeArray(const ITypedArray<T>& values, const StoreValue& value);
    template <StorageType T>
    void WritePlainArray(const ITypedArray<T>& values, const SV& owner);
    template <StorageType T>
    void WriteIndexed(const ITypedArray<T>& values);
    void WriteIndexedKinds(const IStoreArray& values);
    template <StorageType T>
    void WriteSet(const ITypedSet<T>& values);

    void WriteKeySet(const StoreValue& value);
    // A key or an element as a key set stores it.
    using StoredWriter = void (BinaryValueWriter::*)(const void*);
    template <StorageType T>
    void WriteStoredKey(const void* stored);
    template <StorageType T>
    void WriteStoredElement(const void* stored);

    BinaryProtocolCreator& m_creator;
    const bool m_hasOwnEvents;         // A subclass, which is to see each event.
    std::vector<SpecialKind> m_kinds;  // Of the row that is begun; kept for its room.
};

// Single values -----------------------------------------------------------------------------------

void BinaryValueWriter::Write(const SV& owner) {
    const StoreValue& value = *owner;
    if (value.IsSpecial()) {
        m_creator.AppendData(value.GetSpecialKind());
        return;
    }
    switch (value.GetStoreType()) {
        case StoreType::Bool:
            return m_creator.AppendData(value.AsBool());
        case StoreType::Int32:
            return m_creator.AppendData(value.AsInt32());
        case StoreType::Int64:
            return m_creator.AppendData(value.AsInt64());
        case StoreType::Real32:
            return m_creator.AppendData(value.AsReal32());
        case StoreType::Real64:
            return m_creator.AppendData(value.AsReal64());
        case StoreType::String:
            return m_creator.AppendData(value.AsString().GetRString());
        case StoreType::Date:
            return m_creator.AppendData(value.AsDate());
        case StoreType::DateTime:
            return m_creator.AppendData(value.AsDateTime());
        case StoreType::Color:
            return m_creator.AppendData(value.AsColor());
        case StoreType::Tuple:
            return WriteRow(value.AsTuple());
        case StoreType::External:
            return WriteExternal(value.AsExternal());
        case StoreType::Array:
            return DispatchStorage(value.AsArray().GetElementType()->GetStoreType(),
                                   [&]<typename T>(StorageTag<T>) { WriteArray<T>(owner); });
        case StoreType::Set:
            return DispatchStorage(
                value.AsSet().GetElementType()->GetStoreType(),
                [&]<typename T>(StorageTag<T>) { WriteSet(value.AsTypedSet<T>()); });
        case StoreType::KeySet:
            return WriteKeySet(value);
        case StoreType::KeyMap:
            return WriteKeyMap(value.AsKeyMap());
        case StoreType::Table:
            return WriteTable(value.AsTable());
    }
    PrimitiveErrorFunction(value.GetStoreType());
}

void BinaryValueWriter::WriteMember(const TStringCore& name, const SV& value) {
    LUM_CHECK_NOT_NULL(value, LumError::NullSerializedValue);
    m_creator.AppendKey(name);
    m_creator.AppendKeyType(GetTaggedType(*value), value->IsSpecial());
    Write(value);
}

void BinaryValueWriter::WriteKeyMap(const IStoreKeyMap& members) {
    m_creator.BeginDictionaryType(members.GetCount());
    for (const auto& [name, value] : members.GetEntries()) {
        WriteMember(name.GetValue(), value);
    }
    m_creator.EndDictionaryType();
}

void BinaryValueWriter::WriteTable(const IStoreTable& table) {
    std::vector<RIndirectString> names;
    std::vector<unsigned int> orders;
    for (const auto& [name, order] : table.GetSortColumns()) {
        names.emplace_back(name.GetValue());
        orders.push_back(static_cast<unsigned int>(order));
    }
    m_creator.BeginTableType(table.GetColumnCount());
    m_creator.BeginListType(BinaryListType::ArrayNoSpecials);
    WriteSegment<RIndirectString>(names);
    m_creator.EndListType();
    m_creator.BeginListType(BinaryListType::ArrayNoSpecials);
    WriteSegment<unsigned int>(orders);
    m_creator.EndListType();
    for (const auto& [name, column] : table.GetColumns()) {
        WriteMember(name.GetValue(), column);
    }
    m_creator.EndTableType();
}

void BinaryValueWriter::WriteExternal(const ValueExternal& value) {
    const std::vector<unsigned char> bytes = SerializeExternalType(value);
    m_creator.BeginListType(BinaryListType::ByteBlob);
    WriteSegment<unsigned char>(bytes);
    m_creator.EndListType();
}

// Elements ----------------------------------------------------------------------------------------

void BinaryValueWriter::WriteRow(const LumTuple& row) {
    const std::vector<const Type*>& types = row.GetType()->GetMembers();
    const lumsize_t memberCount = row.GetCount();
    m_kinds.clear();
    lumsize_t specialCount = 0;
    for (lumsize_t i = 0; i < memberCount; ++i) {
        const SpecialKind kind = row.GetNthSpecialUnsafe(i);
        m_kinds.push_back(kind);
        specialCount += kind != SpecialKind::Normal ? 1 : 0;
    }
    m_creator.BeginListType(BinaryListType::Tuple(/*hasSpecials=*/specialCount != 0));
    if (specialCount != 0) {
        WriteSegment<SpecialKind>(m_kinds);
    }
    m_creator.BeginListData(memberCount - specialCount);
    for (lumsize_t i = 0; i < memberCount; ++i) {
        if (row.GetNthSpecialUnsafe(i) == SpecialKind::Normal) {
            DispatchStorage(types[i]->GetStoreType(), [&]<typename T>(StorageTag<T>) {
                if constexpr (!std::is_same_v<T, LumTuple>) {  // No member is a row.
                    WriteElement<T>(row.GetNthValueUnsafe<T>(i));
                }
            });
        }
    }
    m_creator.EndListData();
    m_creator.EndListType();
}

// A value among others of its type: no tag stands in front of it that could say that it is special.
void BinaryValueWriter::WriteStored(const SV& value) {
    LUM_CHECK_NOT_NULL(value, LumError::NullSerializedValue);
    LUM_CHECK_NOT(value->IsSpecial(), LumError::CollectionArraySpecials);
    Write(value);
}

template <StorageType T>
void BinaryValueWriter::WriteElement(const T& element) {
    if constexpr (std::is_same_v<T, SV>) {
        WriteStored(element);
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        WriteRow(element);
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        m_creator.AppendData(element.GetRString());
    } else {
        m_creator.AppendData(element);
    }
}

// Arrays and sets ---------------------------------------------------------------------------------

template <typename T>
void BinaryValueWriter::WriteSegment(ArrayView<const T> elements, const SV& owner) {
    m_creator.BeginListData(LumSizeCastSafe(elements.GetSize()));
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        if (owner != nullptr && !m_hasOwnEvents) {
            m_creator.AppendSharedArray(elements, owner);
        } else {
            m_creator.AppendArray(elements);
        }
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        if (m_hasOwnEvents) {
            for (const RIndirectString& element : elements) {
                m_creator.AppendData(element.GetRString());
            }
        } else {
            m_creator.AppendStrings(elements);
        }
    } else {
        for (const T& element : elements) {
            WriteElement(element);
        }
    }
    m_creator.EndListData();
}

// Kinds have no room beside elements that are lists or dictionaries themselves.
void CheckKinds(const IUniformCollection& values, LumError error) {
    LUM_CHECK_NOT(IsCollectionStoreType(values.GetElementType()->GetStoreType()), error);
}

template <StorageType T>
void BinaryValueWriter::WriteArray(const SV& value) {
    const ITypedArray<T>& values = value->AsTypedArray<T>();
    if (values.IsConstant()) {
        WriteConstantArray(values);
    } else if (values.IsComposite()) {
        WriteCompositeArray(values, *value);
    } else {
        WritePlainArray(values, value);
    }
    m_creator.EndListType();
}

// One item stands for all elements, and for those of an array without any, too.
template <StorageType T>
void BinaryValueWriter::WriteConstantArray(const ITypedArray<T>& values) {
    const lumsize_t count = values.GetCount();
    m_creator.BeginListType(BinaryListType::ConstantArray(values.HasSpecialValues()));
    m_creator.BeginListData(count);
    if (values.HasSpecialValues()) {
        CheckKinds(values, LumError::CollectionArraySpecials);
        m_creator.AppendData(count == 0 ? SpecialKind::Normal : values.GetSpecialKind(0));
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        // A row that only fills the place has no members of its own.
        const LumTuple& row = values.GetValueUnchecked(0);
        const TupleType& type = values.GetElementType()->template As<TupleType>();
        WriteElement(count != 0 && row.GetCount() != 0 ? row : LumTuple(&type));
    } else if constexpr (std::is_same_v<T, SV>) {
        WriteElement<T>(values.GetValueUnchecked(0));
    } else {
        WriteElement<T>(count != 0 ? values.GetValue(0) : T());
    }
    m_creator.EndListData();
}

template <StorageType T>
void BinaryValueWriter::WriteCompositeArray(const ITypedArray<T>& values, const StoreValue& value) {
    const bool hasIndices = values.HasIndices();
    const ArrayView<const ValueCompositeArrayRange<T>> ranges = values.GetCompositeRanges();
    const lumsize_t rangeCount = LumSizeCastSafe(ranges.GetSize());
    m_creator.BeginListType(BinaryListType::CompositeArray(hasIndices, values.GetSortOrder()));
    m_creator.BeginListData(rangeCount);
    for (const ValueCompositeArrayRange<T>& range : ranges) {
        WriteElement(range.value);
    }
    m_creator.EndListData();
    m_creator.BeginListData(rangeCount);
    for (const ValueCompositeArrayRange<T>& range : ranges) {
        m_creator.AppendData(range.kind);
    }
    m_creator.EndListData();
    m_creator.BeginListData(rangeCount);
    for (const ValueCompositeArrayRange<T>& range : ranges) {
        m_creator.AppendData(range.count);
    }
    m_creator.EndListData();
    if (hasIndices) {
        WriteSegment<unsigned int>(dynamic_cast<const ArrayWithIndices&>(value).GetIndices());
    }
}

template <StorageType T>
void BinaryValueWriter::WritePlainArray(const ITypedArray<T>& values, const SV& owner) {
    const bool hasIndices = values.HasIndices();
    m_creator.BeginListType(
        BinaryListType::Array(values.HasSpecialValues(), values.GetSortOrder()));
    if (hasIndices) {
        WriteIndexed(values);
    } else {
        WriteSegment<T>(values.GetValues(), owner);
    }
    if (values.HasSpecialValues()) {
        CheckKinds(values, LumError::CollectionArraySpecials);
        if (hasIndices) {
            WriteIndexedKinds(values);
        } else {
            WriteSegment<SpecialKind>(values.GetSpecials(), owner);
        }
    }
}

constexpr lumsize_t kBlock = 1024;

// Calls `function` with the start and the length of one block of elements after the other.
template <typename F>
void ForEachBlock(lumsize_t count, const F& function) {
    for (lumsize_t start = 0; start < count;) {
        const lumsize_t length = std::min(kBlock, count - start);
        function(start, length);
        start += length;
    }
}

template <StorageType T>
void BinaryValueWriter::WriteIndexed(const ITypedArray<T>& values) {
    m_creator.BeginListData(values.GetCount());
    if constexpr (std::is_arithmetic_v<T>) {
        std::array<T, kBlock> block;
        ForEachBlock(values.GetCount(), [&](lumsize_t start, lumsize_t length) {
            values.CopyValues({block.data(), length}, start, length);
            m_creator.AppendArray(ArrayView<const T>(block.data(), length));
        });
    } else {
        for (ArrayCursor<T> cursor = values.GetAdapter(); !cursor.IsAtEnd(); ++cursor) {
            WriteElement<T>(*cursor);
        }
    }
    m_creator.EndListData();
}

void BinaryValueWriter::WriteIndexedKinds(const IStoreArray& values) {
    std::array<SpecialKind, kBlock> block;
    m_creator.BeginListData(values.GetCount());
    ForEachBlock(values.GetCount(), [&](lumsize_t start, lumsize_t length) {
        values.CopySpecials({block.data(), length}, start, length);
        m_creator.AppendArray(ArrayView<const SpecialKind>(block.data(), length));
    });
    m_creator.EndListData();
}

template <StorageType T>
void BinaryValueWriter::WriteSet(const ITypedSet<T>& values) {
    m_creator.BeginListType(BinaryListType::Set(values.HasSpecialValues()));
    m_creator.BeginListData(values.GetCount() - values.GetSpecialCount());
    for (SetCursor<T> cursor = values.GetValuesCursor(); !cursor.IsAtEnd(); ++cursor) {
        WriteElement<T>(*cursor);
    }
    m_creator.EndListData();
    if (values.HasSpecialValues()) {
        CheckKinds(values, LumError::TupleSetSpecials);
        m_creator.BeginListData(values.GetSpecialCount());
        for (const SpecialKind kind : values.GetSpecialKinds()) {
            m_creator.AppendData(kind);
        }
        m_creator.EndListData();
    }
    m_creator.EndListType();
}

// Key sets ----------------------------------------------------------------------------------------

void BinaryValueWriter::WriteKeySet(const StoreValue& value) {
    const KeySetType& type = value.GetType()->As<KeySetType>();
    const KeySetEntries keySet = CollectKeySetEntries(value);
    StoredWriter writeKey = nullptr;
    DispatchStorage(type.GetKeyType()->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        writeKey = &BinaryValueWriter::WriteStoredKey<T>;
    });
    StoredWriter writeElement = nullptr;
    DispatchStorage(type.GetElementType()->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        writeElement = &BinaryValueWriter::WriteStoredElement<T>;
    });
    const bool hasSpecialKeys = !keySet.specialEntries.empty();
    m_creator.BeginKeySetType(hasSpecialKeys ? BinaryKeySetType::WithSpecialKeys
                                             : BinaryKeySetType::NoSpecialKeys);
    m_creator.BeginListData(LumSizeCastSafe(keySet.entries.size()));
    for (const KeySetEntries::Entry& entry : keySet.entries) {
        (this->*writeKey)(entry.key);
        (this->*writeElement)(entry.value);
    }
    m_creator.EndListData();
    if (hasSpecialKeys) {
        m_creator.BeginListData(LumSizeCastSafe(keySet.specialEntries.size()));
        for (const KeySetEntries::SpecialEntry& entry : keySet.specialEntries) {
            m_creator.AppendKey(entry.kind);
            (this->*writeElement)(entry.value);
        }
        m_creator.EndListData();
    }
    m_creator.EndKeySetType();
}

template <StorageType T>
void BinaryValueWriter::WriteStoredKey(const void* stored) {
    const T& key = *static_cast<const T*>(stored);
    if constexpr (std::is_same_v<T, SV>) {
        PrimitiveErrorFunction(key->GetStoreType());  // No type of such values may be a key's.
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        WriteRow(key);  // A list where a key is due is one.
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        m_creator.AppendKey(key.GetRString());
    } else {
        m_creator.AppendKey(key);
    }
}

template <StorageType T>
void BinaryValueWriter::WriteStoredElement(const void* stored) {
    WriteElement(*static_cast<const T*>(stored));
}

}  // namespace

void SerializeDataStore(BinaryProtocolCreator& creator, const IDataStore& store) {
    const std::shared_ptr<IStoreKeyMap> root = store.GetRootKeyMap();
    LUM_CHECK_NOT_NULL(root, LumError::NullArgument);
    BinaryValueWriter(creator).WriteKeyMap(*root);
}

}  // namespace lum::core
