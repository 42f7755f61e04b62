#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/serialize/BinaryProtocol.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class BinaryBufferCreator;
class BinaryProtocolStateTracker;
class IBinaryProtocolTypeWriter;
class StringTableCreator;
class Type;

/// Writes payloads of the binary form from a sequence of events, and refuses an event that is not
/// due. docs/wire-format.md tells the form and the order of events; a store is walked by
/// SerializeDataStore.
///
/// One creator writes a stream of payloads, one after another: events, FinalizePayload, events,
/// FinalizePayload. The payloads share a table of strings, of which each carries the new ones, so
/// they are read in the order in which they were written. A payload whose only new string is the
/// empty string loses it and cannot be read: such a payload is to be avoided.
///
/// Threads: a creator belongs to one thread at a time.
/// Ownership: the creator copies what it is given, or shares it where told; a payload belongs to
///   the caller.
/// Units: counts are elements. Words are little-endian, and stand at multiples of their size from
///   the start of the data.
/// Errors: LumRuntimeException, reported, with the code named below. A failed event may have been
///   written in part: the creator is then good for nothing but destruction. An event that the open
///   container never takes, or that needs one where none is open, fails with ProtocolStateMismatch;
///   one that it takes, but not now, with the code of what is due.
/// Cost: an event appends to a buffer; a new string is hashed and copied, a known one only hashed.
class LUM_CORE_API BinaryProtocolCreator {
public:
    /// With `useBase128`, counts and string indices take one byte below 128 and up to five bytes
    /// above, else four bytes. With `useChecksums`, a mark follows each container, by which a
    /// reader notices that it lost its way.
    explicit BinaryProtocolCreator(bool useBase128 = true, bool useChecksums = false);
    BinaryProtocolCreator(const BinaryProtocolCreator&) = delete;
    BinaryProtocolCreator& operator=(const BinaryProtocolCreator&) = delete;
    virtual ~BinaryProtocolCreator();

    /// The payload of all events since the last one; the creator is then ready for the next.
    /// Cost: one copy of the data. What was shared is let go. Errors: ProtocolStateMismatch while a
    /// container is open; EmptyPayload without any event; OutOfRange where the payload would pass
    /// 2^32 - 1 bytes.
    virtual std::vector<unsigned char> FinalizePayload();
    /// The same into a vector whose memory is used again where it suffices: new memory costs more
    /// than the copy, so this is for hosts that write payload after payload. Errors: the same;
    /// `payload` stays as it was.
    void FinalizePayload(std::vector<unsigned char>& payload);

    /// A list: one segment after another, each BeginListData, its items, EndListData. How many
    /// segments there are follows from the type.
    /// Errors: InvalidListType; where the container outside is not ready for a list,
    /// ListDataExpected in a list and in a table, else the code that AppendData would give there.
    virtual void BeginListType(BinaryListType type);
    /// Errors: ListSegmentCountMismatch, ListStartExpected.
    virtual void EndListType();
    /// A segment of `count` items: of a list, or of the entries of a key set.
    /// Errors: ListStartExpected, ListSegmentCountMismatch.
    virtual void BeginListData(lumsize_t count);
    /// Errors: ListDataExpected; ListValueCountMismatch where other than `count` items were
    /// written.
    virtual void EndListData();
    /// A dictionary of `count` entries, each AppendKey, AppendKeyType, a value.
    virtual void BeginDictionaryType(lumsize_t count);
    /// Errors: ProtocolKeyExpected, DictionaryValueCountMismatch.
    virtual void EndDictionaryType();
    /// A table: two lists, then `count` columns, each AppendKey, AppendKeyType, a list.
    virtual void BeginTableType(lumsize_t count);
    /// Errors: ProtocolKeyExpected, DictionaryValueCountMismatch.
    virtual void EndTableType();
    /// A key set: one or two segments, of entries that are each a key and a value. A list in place
    /// of a key is a tuple. Errors: LumLogicException with Unspecified for another type.
    virtual void BeginKeySetType(BinaryKeySetType type);
    /// Errors: KeySetKeyExpected, KeySetValueCountMismatch.
    virtual void EndKeySetType();

    /// A key of a dictionary or table, which is a string, or of a key set.
    /// Errors: ProtocolKeyExpected in a dictionary, ListDataExpected in a table, KeySetKeyExpected
    /// in a key set, ProtocolStateMismatch in a list.
    virtual void AppendKey(SpecialKind key);
    virtual void AppendKey(const TStringCore& key);
    virtual void AppendKey(LumDateTime key);
    virtual void AppendKey(LumColor key);
    virtual void AppendKey(double key);
    virtual void AppendKey(float key);
    virtual void AppendKey(int64 key);
    virtual void AppendKey(int key);
    virtual void AppendKey(bool key);
    virtual void AppendKey(uint64 key);
    virtual void AppendKey(unsigned int key);
    virtual void AppendKey(unsigned char key);
    /// A literal would be taken for a bool.
    template <typename T>
    void AppendKey(const T*) = delete;

    /// The type of the value behind a key, and whether that value is a special.
    /// Errors: DictionaryTypeInfoExpected in a dictionary or a table where no type is due;
    /// NullArgument; those of ExternalType::GetExternalTypeName.
    virtual void AppendKeyType(const Type* type, bool isSpecial);

    /// An item of a segment, or the value of a dictionary or key set.
    /// Errors: ListDataExpected in a list, DictionaryDataExpected in a dictionary,
    /// KeySetDataExpected in a key set, ProtocolStateMismatch in a table.
    virtual void AppendData(SpecialKind value);
    virtual void AppendData(const TStringCore& value);
    virtual void AppendData(LumDateTime value);
    virtual void AppendData(LumColor value);
    virtual void AppendData(double value);
    virtual void AppendData(float value);
    virtual void AppendData(int64 value);
    virtual void AppendData(int value);
    virtual void AppendData(bool value);
    virtual void AppendData(uint64 value);
    virtual void AppendData(unsigned int value);
    virtual void AppendData(unsigned char value);
    /// A literal would be taken for a bool.
    template <typename T>
    void AppendData(const T*) = delete;

    /// Items of a segment of a list in one block, copied as they stand in memory. An empty view
    /// writes nothing. Errors: ListDataExpected in a list, ProtocolStateMismatch elsewhere;
    /// OutOfRange from 2^32 elements on.
    virtual void AppendArray(ArrayView<const int> values);
    virtual void AppendArray(ArrayView<const SpecialKind> kinds);
    virtual void AppendArray(ArrayView<const uint64> values);
    virtual void AppendArray(ArrayView<const unsigned int> values);
    virtual void AppendArray(ArrayView<const unsigned char> values);

    /// Items of a segment of a list: writes what an AppendData for each would write, with one look
    /// at the state. Not for subclasses that have events of their own: SerializeDataStore calls
    /// this and the next on a BinaryProtocolCreator itself alone. Errors: those of AppendArray.
    void AppendStrings(ArrayView<const RIndirectString> values);
    /// Items of a segment of a list in one block that is copied once, by FinalizePayload: `owner`
    /// keeps them until then, and they must not change. Writes what AppendArray would write, and
    /// does as it does with small blocks. Errors: those of AppendArray.
    template <typename T>
    void AppendSharedArray(ArrayView<const T> values, std::shared_ptr<const void> owner) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>);
        AppendSharedBytes(reinterpret_cast<const unsigned char*>(values.GetData()),
                          values.GetSize(), sizeof(T), std::move(owner));
    }

private:
    class TypeCreator;
    // Bytes that stand elsewhere, and their place in the data.
    struct SharedBytes;

    void Reset();
    void AppendChecksum();
    void AppendCount(lumsize_t count);
    void AppendStringIndex(const TStringCore& text);
    template <typename T>
    void AppendKeyOf(T key);
    template <typename T>
    void AppendDataOf(T value);
    template <typename T>
    void AppendArrayOf(ArrayView<const T> values);
    void AppendSharedBytes(const unsigned char* bytes, uint64 count, unsigned char wordSize,
                           std::shared_ptr<const void> owner);
    uint64 GetDataLength() const;
    void AppendDataTo(std::vector<unsigned char>& payload) const;

    const unsigned short m_version = BinaryProtocol::Version;
    const TStringCore m_path;
    const bool m_useBase128;
    const bool m_useChecksums;
    const std::unique_ptr<IBinaryProtocolTypeWriter> m_typeCreator;
    const std::unique_ptr<BinaryProtocolStateTracker> m_state;
    std::unique_ptr<BinaryBufferCreator> m_dataBuffer;
    std::vector<SharedBytes> m_sharedBytes;  // By their places.
    const std::unique_ptr<StringTableCreator> m_stringTable;
};

}  // namespace lum::core
