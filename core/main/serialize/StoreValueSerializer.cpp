#include "lum/core/serialize/StoreValueSerializer.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/main/serialize/JsonItemWriter.h"
#include "core/main/serialize/KeyPathSerializer.h"
#include "core/main/serialize/KeySetEntries.h"
#include "core/main/serialize/NumberWriter.h"
#include "core/main/serialize/QuotedText.h"
#include "core/main/serialize/VtlScanner.h"
#include "core/main/serialize/WrittenOrder.h"
#include "lum/core/Check.h"
#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/serialize/JsonSerializer.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"
#include "lum/core/utility/FloatUtil.h"

namespace lum::core {
namespace {

// Walks over elements -----------------------------------------------------------------------------

// Elements that stand in a row, with their kinds beside them if there are any.
template <typename T>
class StoredElements {
public:
    StoredElements(const T* values, const SpecialKind* kinds) : m_values(values), m_kinds(kinds) {}
    const T& GetValue() const { return m_values[m_position]; }
    SpecialKind GetKind() const { return m_kinds[m_position]; }
    void Advance() { ++m_position; }

private:
    const T* m_values;
    const SpecialKind* m_kinds;
    std::size_t m_position = 0;
};

template <typename T>
class PointedElements {
public:
    explicit PointedElements(const T* const* elements) : m_elements(elements) {}
    const T& GetValue() const { return **m_elements; }
    void Advance() { ++m_elements; }

private:
    const T* const* m_elements;
};

// Elements of an array in whatever form.
template <typename T>
class CursorElements {
public:
    explicit CursorElements(const ArrayCursor<T>& cursor) : m_cursor(cursor) {}
    const T& GetValue() const { return *m_cursor; }
    SpecialKind GetKind() const { return m_cursor.GetSpecialKind(); }
    void Advance() { ++m_cursor; }

private:
    ArrayCursor<T> m_cursor;
};

// Texts -------------------------------------------------------------------------------------------

// Whether a string would be read back as a special value or as a literal.
bool NeedsGuard(const TStringCore& text) {
    if (text.isEmpty()) {
        return false;
    }
    VtlToken token;
    return text[0] == u'\'' || VtlScanner::IsSingleToken(text, VtlTokenKind::SpecialLiteral, token);
}

TStringCore MakeGuarded(const TStringCore& text) {
    TStringCore guarded;
    AppendQuotedUntilZero(guarded, text);
    return guarded;
}

TStringCore MakeHexText(const std::vector<unsigned char>& bytes) {
    TStringCore text;
    char16_t* out = text.prepareAppend(2 * bytes.size());
    for (const unsigned char byte : bytes) {
        out = WriteHex2(byte, out);
    }
    text.commitAppend(2 * bytes.size());
    return text;
}

bool HasExternalMember(const TupleType& type) {
    const auto& members = type.GetMembers();
    return std::any_of(members.begin(), members.end(),
                       [](const Type* member) { return member->Is(StoreType::External); });
}

// The walk ----------------------------------------------------------------------------------------

template <typename Cell>
struct CellTag {};

class ValueWriter {
public:
    ValueWriter(JsonSerializer& serializer, const JsonOptions& options)
        : m_serializer(serializer), m_options(options) {}

    void Write(const StoreValue& value);
    void WriteDictionary(const IStoreKeyMap& members);

private:
    // Calls `function` with the cell by which elements of a type are written.
    // Errors: UnsupportedPrimitiveKey for a type that is none of an element.
    template <typename F>
    void DispatchCell(StoreType elementType, const F& function) const;

    void WriteReal(const StoreValue& value, bool isFinite);
    void WriteArray(const StoreValue& value);
    template <typename Cell>
    void WriteArrayElements(const ITypedArray<typename Cell::Storage>& array);
    void WriteSet(const StoreValue& value);
    template <typename Cell>
    void WriteSetMembers(const ITypedSet<typename Cell::Storage>& set);
    template <typename Cell>
    void WriteSetValues(const ITypedSet<typename Cell::Storage>& set);
    void WriteKinds(const SpecialKindIterable& kinds);
    void WriteKeySet(const StoreValue& value);

    // A stored key or element of a key set, as the next item of the dictionary.
    using StoredWriter = void (ValueWriter::*)(const void*);
    StoredWriter GetElementWriter(StoreType elementType) const;
    template <typename Cell>
    void WriteStoredKey(const void* stored);
    template <typename Cell>
    void WriteStoredElement(const void* stored);

    // Elements as items of the innermost array of the serializer.
    template <typename Cell, typename Source>
    void WriteElements(Source source, lumsize_t count);
    template <typename Cell, typename Source>
    void WriteElementsWithKinds(Source source, lumsize_t count);
    void WriteElement(const SV& value);
    template <typename Source>
    void WriteRows(Source source, lumsize_t count);
    void WriteRow(const LumTuple& row);
    // A member that is special or a scalar.
    void AppendMember(JsonItemWriter& items, const LumTuple& row, lumsize_t index) const;

    JsonSerializer& m_serializer;
    const JsonOptions& m_options;
};

void ValueWriter::Write(const StoreValue& value) {
    if (value.IsSpecial()) {
        m_serializer.AppendString(SpecialKindToString(value.GetSpecialKind()));
        return;
    }
    switch (value.GetStoreType()) {
        case StoreType::Bool:
        case StoreType::Int32:
        case StoreType::Int64:
            m_serializer.AppendUnquotedString(FormatPrimitive(value));
            return;
        case StoreType::Real32:
            WriteReal(value, /*isFinite=*/!FloatUtil::IsSpecial(value.AsReal32()));
            return;
        case StoreType::Real64:
            WriteReal(value, /*isFinite=*/!FloatUtil::IsSpecial(value.AsReal64()));
            return;
        case StoreType::String: {
            const TStringCore& text = value.AsString();
            m_serializer.AppendString(NeedsGuard(text) ? MakeGuarded(text) : text);
            return;
        }
        case StoreType::Color:
            if (m_options.colorsAsIntegers) {
                m_serializer.AppendUnquotedString(TStringCore::number(value.AsColor().AsInt32()));
                return;
            }
            [[fallthrough]];
        case StoreType::Date:
        case StoreType::DateTime:
            m_serializer.AppendString(FormatPrimitive(value));
            return;
        case StoreType::Tuple:
            WriteRow(value.AsTuple());
            return;
        case StoreType::External:
            m_serializer.AppendString(MakeHexText(SerializeExternalType(value.AsExternal())));
            return;
        case StoreType::Array:
            WriteArray(value);
            return;
        case StoreType::Set:
            WriteSet(value);
            return;
        case StoreType::KeySet:
            WriteKeySet(value);
            return;
        case StoreType::KeyMap:
        case StoreType::Table:
            WriteDictionary(value.AsKeyMap());
            return;
        default:
            PrimitiveErrorFunction(value.GetStoreType());
    }
}

void ValueWriter::WriteReal(const StoreValue& value, bool isFinite) {
    if (isFinite) {
        m_serializer.AppendUnquotedString(FormatPrimitive(value));
    } else {
        m_serializer.AppendString(FormatPrimitive(value));
    }
}

void ValueWriter::WriteDictionary(const IStoreKeyMap& members) {
    std::vector<std::pair<RInternString, const StoreValue*>> sorted;
    sorted.reserve(members.GetCount());
    for (const auto& [key, value] : members.GetEntries()) {
        LUM_CHECK_NOT_NULL(value, LumError::NullSerializedValue);
        sorted.emplace_back(key, value.get());
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& a, const auto& b) { return a.first.GetValue() < b.first.GetValue(); });
    m_serializer.BeginDictionary();
    for (const auto& [key, value] : sorted) {
        if (m_options.typedKeys) {
            TStringCore text;
            AppendKeySegment(text, KeySegment(key, value->GetType()), /*includeType=*/true,
                             /*fullForm=*/true, /*cache=*/nullptr);
            m_serializer.AppendKey(text);
        } else {
            m_serializer.AppendKey(key);
        }
        Write(*value);
    }
    m_serializer.EndDictionary();
}

// Arrays and sets ---------------------------------------------------------------------------------

template <typename F>
void ValueWriter::DispatchCell(StoreType elementType, const F& function) const {
    switch (elementType) {
        case StoreType::Bool:
            return function(CellTag<BoolCell>());
        case StoreType::Int32:
            return function(CellTag<Int32Cell>());
        case StoreType::Int64:
            return function(CellTag<Int64Cell>());
        case StoreType::Real32:
            return function(CellTag<Real32Cell>());
        case StoreType::Real64:
            return function(CellTag<Real64Cell>());
        case StoreType::String:
            return function(CellTag<StringCell>());
        case StoreType::Date:
        case StoreType::DateTime:
            return function(CellTag<DateCell>());
        case StoreType::Color:
            return m_options.colorsAsIntegers ? function(CellTag<Int32Cell>())
                                              : function(CellTag<ColorCell>());
        case StoreType::Tuple:
            return function(CellTag<RowCell>());
        case StoreType::External:
        case StoreType::Array:
        case StoreType::Set:
        case StoreType::KeyMap:
            return function(CellTag<ValueCell>());
        default:
            PrimitiveErrorFunction(elementType);
    }
}

void ValueWriter::WriteArray(const StoreValue& value) {
    const IUniformCollection& values = value.AsUniformCollection();
    const StoreType elementType = values.GetElementType()->GetStoreType();
    m_serializer.BeginArray(/*multiline=*/IsCollectionStoreType(elementType));
    if (IsCollectionStoreType(elementType)) {
        LUM_CHECK_NOT(values.HasSpecialValues(), LumError::CollectionArraySpecials);
    }
    DispatchCell(elementType, [&]<typename Cell>(CellTag<Cell>) {
        WriteArrayElements<Cell>(value.AsTypedArray<typename Cell::Storage>());
    });
    m_serializer.EndArray();
}

template <typename Cell>
void ValueWriter::WriteArrayElements(const ITypedArray<typename Cell::Storage>& array) {
    using Storage = typename Cell::Storage;
    const lumsize_t count = array.GetCount();
    const bool isStoredInRow = !array.HasIndices() && !array.IsComposite() && !array.IsConstant();
    if (array.HasSpecialValues()) {
        if (isStoredInRow) {
            const SpecialKind* const kinds = array.GetSpecials().GetData();
            WriteElementsWithKinds<Cell>(StoredElements(array.GetValues().GetData(), kinds), count);
        } else {
            WriteElementsWithKinds<Cell>(CursorElements(array.GetAdapterWithSpecials()), count);
        }
    } else if (isStoredInRow) {
        WriteElements<Cell>(StoredElements<Storage>(array.GetValues().GetData(), nullptr), count);
    } else {
        WriteElements<Cell>(CursorElements(array.GetAdapter()), count);
    }
}

void ValueWriter::WriteSet(const StoreValue& value) {
    const IUniformCollection& values = value.AsUniformCollection();
    const StoreType elementType = values.GetElementType()->GetStoreType();
    m_serializer.BeginArray(/*multiline=*/elementType == StoreType::Tuple);
    if (elementType == StoreType::Tuple) {
        LUM_CHECK_NOT(values.HasSpecialValues(), LumError::TupleSetSpecials);
    }
    DispatchCell(elementType, [&]<typename Cell>(CellTag<Cell>) {
        WriteSetMembers<Cell>(value.AsTypedSet<typename Cell::Storage>());
    });
    m_serializer.EndArray();
}

template <typename Cell>
void ValueWriter::WriteSetMembers(const ITypedSet<typename Cell::Storage>& set) {
    if (!set.HasSpecialValues()) {
        WriteSetValues<Cell>(set);
        return;
    }
    m_serializer.BeginArray(/*multiline=*/false);
    WriteSetValues<Cell>(set);
    m_serializer.EndArray();
    WriteKinds(set.GetSpecialKinds());
}

template <typename Cell>
void ValueWriter::WriteSetValues(const ITypedSet<typename Cell::Storage>& set) {
    using Storage = typename Cell::Storage;
    if constexpr (std::is_arithmetic_v<Storage>) {
        std::vector<Storage> values;
        values.reserve(set.GetCount());
        for (const Storage value : set.GetValuesCursor()) {
            values.push_back(value);
        }
        SortForWriting<Cell>(values);
        WriteElements<Cell>(StoredElements<Storage>(values.data(), nullptr),
                            LumSizeCastSafe(values.size()));
    } else {
        std::vector<const Storage*> values;
        values.reserve(set.GetCount());
        for (const Storage& value : set.GetValuesCursor()) {
            values.push_back(&value);
        }
        SortForWriting<Cell>(values);
        WriteElements<Cell>(PointedElements<Storage>(values.data()),
                            LumSizeCastSafe(values.size()));
    }
}

void ValueWriter::WriteKinds(const SpecialKindIterable& kinds) {
    std::vector<SpecialKind> sorted(kinds.begin(), kinds.end());
    std::sort(sorted.begin(), sorted.end());
    m_serializer.BeginArray(/*multiline=*/false);
    for (const SpecialKind kind : sorted) {
        m_serializer.AppendString(SpecialKindToString(kind));
    }
    m_serializer.EndArray();
}

// Key sets ----------------------------------------------------------------------------------------

// The text of a scalar, for a writer that adds the quotes itself or for one that does not.
template <typename Cell>
TStringCore MakeScalarText(const typename Cell::Storage& stored, bool withQuotes) {
    char16_t units[Cell::kMaxUnits + kNumberCapacity];
    const char16_t* const end = Cell::Write(stored, units);
    const bool cutsQuotes = !withQuotes && units[0] == u'"';
    return TStringCore(cutsQuotes ? std::u16string_view(units + 1, end - 1)
                                  : std::u16string_view(units, end));
}

void ValueWriter::WriteKeySet(const StoreValue& value) {
    const KeySetType& type = value.GetType()->As<KeySetType>();
    KeySetEntries keySet = CollectKeySetEntries(value);
    const StoredWriter writeElement = GetElementWriter(type.GetElementType()->GetStoreType());
    if (!keySet.specialEntries.empty()) {
        m_serializer.BeginArray(/*multiline=*/false);
    }
    m_serializer.BeginDictionary();
    DispatchCell(type.GetKeyType()->GetStoreType(), [&]<typename Cell>(CellTag<Cell>) {
        using Storage = typename Cell::Storage;
        SortKeySetEntries(keySet, [](const void* a, const void* b) {
            return IsWrittenBefore<Cell>(*static_cast<const Storage*>(a),
                                         *static_cast<const Storage*>(b));
        });
        for (const KeySetEntries::Entry& entry : keySet.entries) {
            WriteStoredKey<Cell>(entry.key);
            (this->*writeElement)(entry.value);
        }
    });
    m_serializer.EndDictionary();
    if (keySet.specialEntries.empty()) {
        return;
    }
    m_serializer.BeginDictionary();
    for (const KeySetEntries::SpecialEntry& entry : keySet.specialEntries) {
        m_serializer.AppendKey(SpecialKindToString(entry.kind));
        (this->*writeElement)(entry.value);
    }
    m_serializer.EndDictionary();
    m_serializer.EndArray();
}

ValueWriter::StoredWriter ValueWriter::GetElementWriter(StoreType elementType) const {
    StoredWriter writer = nullptr;
    DispatchCell(elementType, [&]<typename Cell>(CellTag<Cell>) {
        writer = &ValueWriter::WriteStoredElement<Cell>;
    });
    return writer;
}

template <typename Cell>
void ValueWriter::WriteStoredKey(const void* stored) {
    const auto& key = *static_cast<const typename Cell::Storage*>(stored);
    if constexpr (std::is_same_v<Cell, StringCell>) {
        m_serializer.AppendKey(key);
    } else if constexpr (std::is_same_v<Cell, RowCell>) {
        JsonSerializer row;
        ValueWriter(row, m_options).WriteRow(key);
        m_serializer.AppendKey(row.Build());
    } else if constexpr (std::is_same_v<Cell, ValueCell>) {
        PrimitiveErrorFunction(key->GetStoreType());  // No type of such values may be a key's.
    } else {
        m_serializer.AppendKey(MakeScalarText<Cell>(key, /*withQuotes=*/false));
    }
}

template <typename Cell>
void ValueWriter::WriteStoredElement(const void* stored) {
    const auto& element = *static_cast<const typename Cell::Storage*>(stored);
    if constexpr (std::is_same_v<Cell, StringCell>) {
        m_serializer.AppendString(element);
    } else if constexpr (std::is_same_v<Cell, RowCell>) {
        WriteRow(element);
    } else if constexpr (std::is_same_v<Cell, ValueCell>) {
        WriteElement(element);
    } else {
        m_serializer.AppendUnquotedString(MakeScalarText<Cell>(element, /*withQuotes=*/true));
    }
}

// Elements ----------------------------------------------------------------------------------------

template <typename Cell, typename Source>
void ValueWriter::WriteElements(Source source, lumsize_t count) {
    if constexpr (std::is_same_v<Cell, RowCell>) {
        WriteRows(source, count);
    } else if constexpr (std::is_same_v<Cell, ValueCell>) {
        for (; count > 0; --count) {
            WriteElement(source.GetValue());
            source.Advance();
        }
    } else if (count > 0) {
        JsonItemWriter items(m_serializer);
        items.AppendColumn<Cell>(source, count);
        items.End();
    }
}

template <typename Cell, typename Source>
void ValueWriter::WriteElementsWithKinds(Source source, lumsize_t count) {
    if constexpr (std::is_same_v<Cell, RowCell>) {
        WriteRows(source, count);  // An array of rows with kinds was refused.
    } else if constexpr (std::is_same_v<Cell, ValueCell>) {
        for (; count > 0; --count) {
            const SpecialKind kind = source.GetKind();
            if (kind == SpecialKind::Normal) {
                WriteElement(source.GetValue());
            } else {
                m_serializer.BeginArray(/*multiline=*/false);
                WriteElement(source.GetValue());
                m_serializer.AppendString(SpecialKindToString(kind));
                m_serializer.EndArray();
            }
            source.Advance();
        }
    } else if (count > 0) {
        JsonItemWriter items(m_serializer);
        items.AppendColumnWithKinds<Cell>(source, count);
        items.End();
    }
}

void ValueWriter::WriteElement(const SV& value) {
    LUM_CHECK_NOT_NULL(value, LumError::NullSerializedValue);
    Write(*value);
}

// Rows --------------------------------------------------------------------------------------------

// Rows of scalars go straight into the text. An external member may be any value, so a row with one
// is an array like others.
template <typename Source>
void ValueWriter::WriteRows(Source source, lumsize_t count) {
    std::optional<JsonItemWriter> items;
    const TupleType* type = nullptr;
    bool isOfScalars = false;
    for (lumsize_t done = 0; done < count; ++done) {
        const LumTuple& row = source.GetValue();
        if (row.GetType() != type) {
            type = row.GetType();
            isOfScalars = !HasExternalMember(*type);
        }
        if (isOfScalars) {
            if (!items.has_value()) {
                items.emplace(m_serializer);
            }
            if (done % JsonItemWriter::kBlock == 0) {
                items->PlanMemory(count - done);
            }
            items->BeginChild();
            for (lumsize_t i = 0; i < type->GetMembers().size(); ++i) {
                AppendMember(*items, row, i);
            }
            items->EndChild();
        } else {
            if (items.has_value()) {
                items->End();
                items.reset();
            }
            WriteRow(row);
        }
        source.Advance();
    }
    if (items.has_value()) {
        items->End();
    }
}

void ValueWriter::WriteRow(const LumTuple& row) {
    m_serializer.BeginArray(/*multiline=*/false);
    for (lumsize_t i = 0; i < row.GetCount(); ++i) {
        if (row.GetNthType(i)->Is(StoreType::External) &&
            row.GetNthSpecialUnsafe(i) == SpecialKind::Normal) {
            WriteElement(row.GetNthExternalUnsafe(i));
        } else {
            JsonItemWriter items(m_serializer);
            AppendMember(items, row, i);
            items.End();
        }
    }
    m_serializer.EndArray();
}

void ValueWriter::AppendMember(JsonItemWriter& items, const LumTuple& row, lumsize_t index) const {
    const SpecialKind kind = row.GetNthSpecialUnsafe(index);
    if (kind != SpecialKind::Normal) {
        items.Append<KindCell>(kind);
        return;
    }
    const StoreType type = row.GetType()->GetMembers()[index]->GetStoreType();
    DispatchCell(type, [&]<typename Cell>(CellTag<Cell>) {
        using Storage = typename Cell::Storage;
        if constexpr (std::is_same_v<Cell, StringCell>) {
            const RIndirectString& text = row.GetNthStringUnsafe(index);
            if (NeedsGuard(text)) {
                items.Append<Cell>(MakeGuarded(text));
            } else {
                items.Append<Cell>(text);
            }
        } else if constexpr (std::is_arithmetic_v<Storage>) {
            items.Append<Cell>(row.GetNthValueUnsafe<Storage>(index));
        }
    });
}

void WriteStore(JsonSerializer& serializer, const IDataStore& store, const JsonOptions& options) {
    const std::shared_ptr<IStoreKeyMap> root = store.GetRootKeyMap();
    LUM_CHECK_NOT_NULL(root, LumError::NullArgument);
    ValueWriter(serializer, options).WriteDictionary(*root);
}

}  // namespace

// Entry points ------------------------------------------------------------------------------------

TStringCore SerializeValue(const StoreValue& value) {
    JsonSerializer serializer;
    SerializeValue(serializer, value);
    return serializer.Build();
}

void SerializeValue(JsonSerializer& serializer, const StoreValue& value) {
    const JsonOptions options;
    ValueWriter(serializer, options).Write(value);
}

TStringCore SerializeDataStore(const IDataStore& store, const JsonOptions& options) {
    JsonSerializer serializer(options.compact ? JsonSerializerType::Compact
                                              : JsonSerializerType::Readable);
    WriteStore(serializer, store, options);
    return serializer.Build();
}

void SerializeDataStore(JsonSerializer& serializer, const IDataStore& store) {
    WriteStore(serializer, store, JsonOptions());
}

TStringCore SerializeDataStoreCompact(const IDataStore& store) {
    JsonOptions options;
    options.compact = true;
    return SerializeDataStore(store, options);
}

}  // namespace lum::core
