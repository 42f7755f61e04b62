#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"
#include "lum/core/utility/LumException.h"

namespace lum::test {

/// Reads a payload event by event as the form tells it, touching every byte that is read, and gives
/// the same events to a creator: a payload written in the order in which strings are first used is
/// written again byte for byte.
///
/// Refuses what a reader of values refuses: a container where the type tells another one, and
/// values that nest too deep.
class PayloadWalk {
public:
    PayloadWalk(core::BinaryProtocolReader& reader, core::BinaryProtocolCreator& copy)
        : m_reader(reader), m_copy(copy) {}

    /// From the root to its end. Gives what was read, in a text of no special form.
    std::string Walk() {
        WalkDictionary();
        return std::move(m_trace);
    }

    /// Whether `written`, the creator's payload of these events, may lack an empty string: that is
    /// lost where it is the only new one. Also where it was known before, so nothing should be made
    /// of the answer but to leave the payload alone.
    bool MayHaveLostString(const std::vector<unsigned char>& written) const {
        const std::size_t tablePosition = (written[4] & 2) != 0 ? 12 : 16;
        return m_hasEmptyString && written[tablePosition] == 0;
    }

private:
    static constexpr unsigned int kMaxLevels = 256;

    template <typename T>
    T Note(T value) {
        m_trace += '|';
        m_trace.append(reinterpret_cast<const char*>(&value), sizeof(value));
        return value;
    }
    const core::TStringCore& Note(const core::TStringCore& text) {
        m_hasEmptyString = m_hasEmptyString || text.isEmpty();
        m_trace += '"' + text.toStdString() + '"';
        return text;
    }
    template <typename T>
    core::ArrayView<const T> NoteArray(core::ArrayView<const T> values) {
        m_trace += '[';
        if (!values.IsEmpty()) {
            m_trace.append(reinterpret_cast<const char*>(values.GetData()),
                           values.GetSize() * sizeof(T));
        }
        return values;
    }

    static void Require(bool condition) {
        if (!condition) {
            throw core::LumRuntimeException(core::LumError::InvalidBinaryData);
        }
    }

    core::lumsize_t BeginSegment() {
        const core::lumsize_t count = Note(m_reader.BeginListData());
        m_copy.BeginListData(count);
        return count;
    }
    void EndSegment() {
        m_reader.EndListData();
        m_copy.EndListData();
    }
    void EndList() {
        m_reader.EndListType();
        m_copy.EndListType();
    }
    core::BinaryListType BeginList() {
        const core::BinaryListType type = Note(m_reader.BeginListType());
        m_copy.BeginListType(type);
        return type;
    }

    void WalkMembers(core::lumsize_t count) {
        for (core::lumsize_t i = 0; i < count; ++i) {
            m_copy.AppendKey(Note(m_reader.ReadStringKey()));
            const auto [type, isSpecial] = m_reader.ReadKeyType();
            Note(type);
            m_copy.AppendKeyType(type, Note(isSpecial));
            WalkValue(*type, isSpecial);
        }
    }

    void WalkDictionary() {
        const core::lumsize_t count = Note(m_reader.BeginDictionaryType());
        m_copy.BeginDictionaryType(count);
        WalkMembers(count);
        m_reader.EndDictionaryType();
        m_copy.EndDictionaryType();
    }

    void WalkTable() {
        const core::lumsize_t count = Note(m_reader.BeginTableType());
        m_copy.BeginTableType(count);
        WalkArray(*core::StringType::Get());
        WalkArray(*core::IntType::Get32());
        WalkMembers(count);
        m_reader.EndTableType();
        m_copy.EndTableType();
    }

    void WalkValue(const core::Type& type, bool isSpecial) {
        Require(m_level < kMaxLevels);
        ++m_level;
        if (isSpecial) {
            m_copy.AppendData(Note(m_reader.ReadSpecial()));
        } else {
            WalkNormalValue(type);
        }
        --m_level;
    }

    void WalkNormalValue(const core::Type& type) {
        switch (type.GetStoreType()) {
            case core::StoreType::Bool:
                return m_copy.AppendData(Note(m_reader.ReadBool()));
            case core::StoreType::Int32:
                return m_copy.AppendData(Note(m_reader.ReadInt32()));
            case core::StoreType::Int64:
                return m_copy.AppendData(Note(m_reader.ReadInt64()));
            case core::StoreType::Real32:
                return m_copy.AppendData(Note(m_reader.ReadReal32()));
            case core::StoreType::Real64:
                return m_copy.AppendData(Note(m_reader.ReadReal64()));
            case core::StoreType::String:
                return m_copy.AppendData(Note(m_reader.ReadString()));
            case core::StoreType::Date:
            case core::StoreType::DateTime:
                return m_copy.AppendData(Note(m_reader.ReadDateTime()));
            case core::StoreType::Color:
                return m_copy.AppendData(Note(m_reader.ReadColor()));
            case core::StoreType::Tuple:
                return WalkTuple(type);
            case core::StoreType::External:
                return WalkBlob();
            case core::StoreType::Array:
                return WalkArray(*type.As<core::CollectionType>().GetElementType());
            case core::StoreType::Set:
                return WalkSet(*type.As<core::CollectionType>().GetElementType());
            case core::StoreType::KeySet:
                return WalkKeySet(type.As<core::KeySetType>());
            case core::StoreType::KeyMap:
                return WalkDictionary();
            case core::StoreType::Table:
                return WalkTable();
        }
    }

    void WalkElement(const core::Type& type) {
        switch (core::GetTypeSize(&type)) {
            case 1:
                return m_copy.AppendData(Note(m_reader.ReadStorage8Bit()));
            case 4:
                return m_copy.AppendData(Note(m_reader.ReadStorage32Bit()));
            case 8:
                return m_copy.AppendData(Note(m_reader.ReadStorage64Bit()));
            default:  // Elements of a form of their own.
                return WalkValue(type, /*isSpecial=*/false);
        }
    }

    void WalkKey(const core::Type& type) {
        switch (type.GetStoreType()) {
            case core::StoreType::Bool:
                return m_copy.AppendKey(Note(m_reader.ReadBoolKey()));
            case core::StoreType::Int32:
                return m_copy.AppendKey(Note(m_reader.ReadInt32Key()));
            case core::StoreType::Int64:
                return m_copy.AppendKey(Note(m_reader.ReadInt64Key()));
            case core::StoreType::Real32:
                return m_copy.AppendKey(Note(m_reader.ReadReal32Key()));
            case core::StoreType::Real64:
                return m_copy.AppendKey(Note(m_reader.ReadReal64Key()));
            case core::StoreType::String:
                return m_copy.AppendKey(Note(m_reader.ReadStringKey()));
            case core::StoreType::Date:
                return m_copy.AppendKey(Note(m_reader.ReadDateTimeKey()));
            case core::StoreType::DateTime:
                return m_copy.AppendKey(Note(m_reader.ReadStorage64BitKey()));
            case core::StoreType::Color:
                return m_copy.AppendKey(Note(m_reader.ReadColorKey()));
            default:
                return WalkTuple(type);
        }
    }

    void WalkElements(const core::Type& type, core::lumsize_t count) {
        for (core::lumsize_t i = 0; i < count; ++i) {
            WalkElement(type);
        }
    }

    void WalkKinds(core::lumsize_t count) {
        for (core::lumsize_t i = 0; i < count; ++i) {
            m_copy.AppendData(Note(m_reader.ReadSpecial()));
        }
    }

    void WalkBlock(const core::Type& type, core::lumsize_t count) {
        switch (core::GetTypeSize(&type)) {
            case 1:
                return m_copy.AppendArray(NoteArray(m_reader.ReadStorage8BitArray(count)));
            case 4:
                return m_copy.AppendArray(NoteArray(m_reader.ReadStorage32BitArray(count)));
            case 8:
                return m_copy.AppendArray(NoteArray(m_reader.ReadStorage64BitArray(count)));
            default:
                break;
        }
        if (type.Is(core::StoreType::String)) {
            const std::vector<core::RIndirectString> strings = m_reader.ReadStrings(count);
            for (const core::RIndirectString& text : strings) {
                Note(text.GetRString());
            }
            return m_copy.AppendStrings(strings);
        }
        WalkElements(type, count);
    }

    void WalkArray(const core::Type& elementType) {
        const core::BinaryListType type = BeginList();
        const core::lumsize_t count = BeginSegment();
        switch (type.GetContainerType()) {
            case core::BinaryContainerType::Array:
                WalkBlock(elementType, count);
                EndSegment();
                if (type.HasSpecials()) {
                    m_copy.AppendArray(NoteArray(m_reader.ReadSpecialArray(BeginSegment())));
                    EndSegment();
                }
                break;
            case core::BinaryContainerType::ConstantArray:
                if (type.HasSpecials()) {
                    WalkKinds(1);
                } else {
                    WalkElement(elementType);
                }
                EndSegment();
                break;
            case core::BinaryContainerType::CompositeArray:
                WalkElements(elementType, count);
                EndSegment();
                WalkKinds(BeginSegment());
                EndSegment();
                WalkElements(*core::IntType::Get32(), BeginSegment());
                EndSegment();
                if (type.HasIndices()) {
                    WalkBlock(*core::IntType::Get32(), BeginSegment());
                    EndSegment();
                }
                break;
            default:
                Require(false);
        }
        EndList();
    }

    void WalkSet(const core::Type& elementType) {
        const core::BinaryListType type = BeginList();
        Require(type.GetContainerType() == core::BinaryContainerType::Set);
        WalkElements(elementType, BeginSegment());
        EndSegment();
        if (type.HasSpecials()) {
            WalkKinds(BeginSegment());
            EndSegment();
        }
        EndList();
    }

    void WalkTuple(const core::Type& type) {
        const auto& members = type.As<core::TupleType>().GetMembers();
        const core::BinaryListType list = BeginList();
        Require(list.GetContainerType() == core::BinaryContainerType::Tuple);
        core::lumsize_t count = BeginSegment();
        Require(count == members.size());
        core::ArrayView<const core::SpecialKind> kinds;
        if (list.HasSpecials()) {
            kinds = m_reader.ReadSpecialArray(count);
            m_copy.AppendArray(NoteArray(kinds));
            EndSegment();
            BeginSegment();
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (kinds.IsEmpty() || kinds[i] == core::SpecialKind::Normal) {
                WalkValue(*members[i], /*isSpecial=*/false);
            }
        }
        EndSegment();
        EndList();
    }

    void WalkBlob() {
        Require(BeginList().GetContainerType() == core::BinaryContainerType::ByteBlob);
        m_copy.AppendArray(NoteArray(m_reader.ReadStorage8BitArray(BeginSegment())));
        EndSegment();
        EndList();
    }

    void WalkKeySet(const core::KeySetType& type) {
        const core::BinaryKeySetType kind = Note(m_reader.BeginKeySetType());
        m_copy.BeginKeySetType(kind);
        for (core::lumsize_t left = BeginSegment(); left > 0; --left) {
            WalkKey(*type.GetKeyType());
            WalkElement(*type.GetElementType());
        }
        EndSegment();
        if (kind == core::BinaryKeySetType::WithSpecialKeys) {
            for (core::lumsize_t left = BeginSegment(); left > 0; --left) {
                m_copy.AppendKey(Note(m_reader.ReadSpecialKey()));
                WalkElement(*type.GetElementType());
            }
            EndSegment();
        }
        m_reader.EndKeySetType();
        m_copy.EndKeySetType();
    }

    core::BinaryProtocolReader& m_reader;
    core::BinaryProtocolCreator& m_copy;
    std::string m_trace;
    unsigned int m_level = 0;
    bool m_hasEmptyString = false;
};

}  // namespace lum::test
