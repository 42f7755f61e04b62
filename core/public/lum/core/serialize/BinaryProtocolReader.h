#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/serialize/BinaryProtocol.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/SharedBuffer.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class BinaryBufferReader;
class BinaryProtocolStateTracker;
class StringTableReader;
class Type;

/// Reads payloads of the binary form, one read for each event of the BinaryProtocolCreator that
/// wrote them, in the same order; a read that is not due is refused. docs/wire-format.md tells the
/// form; stores are read by StoreValueParser::MakeDataStore.
///
/// One reader reads the payloads of one stream, none left out: NextPayload opens the next once the
/// one before was read to the end of its root. What follows the root is not looked at.
///
/// Threads: a reader belongs to one thread at a time. Views that it gave out may be read on any.
/// Ownership: the reader holds the buffer of its current payload. A view into the payload is good
///   while a share of GetSharedBufferReference lives, whatever becomes of the reader; a string is
///   good while the reader lives.
/// Units: counts are elements.
/// Errors: LumRuntimeException, reported, with the code named below; LumLogicException for a key
///   set of no known type, std::out_of_range for a kind of value that nobody registered,
///   std::length_error for a text of more than 2^30 bytes. A payload may be any bytes: whatever is
///   wrong with it is refused in this way, and nothing is allocated by a count that the payload's
///   own length does not bear out. After a failure the reader is good for nothing but destruction.
///   Every read can fail with BufferReadOutOfBounds at the end of the payload, and with
///   ProtocolStateMismatch where no container is open; those of strings with InvalidStringIndex;
///   those of counts and strings with OutOfRange. Where a state is wrong, the codes are those of
///   the creator's operation of the same name, keys failing as AppendKey and single values as
///   AppendData.
/// Cost: columns are views into the payload. Only where the data does not stand at a multiple of 8
///   in memory is it copied, once, when the payload is opened. Strings are decoded when the payload
///   that brings them is opened, each once a stream.
class LUM_CORE_API BinaryProtocolReader {
public:
    /// Opens the first payload. Errors: those of NextPayload.
    explicit BinaryProtocolReader(const std::shared_ptr<ISharedArrayBuffer>& buffer);
    BinaryProtocolReader(const BinaryProtocolReader&) = delete;
    BinaryProtocolReader& operator=(const BinaryProtocolReader&) = delete;

    /// Opens the next payload of the stream and gives its path.
    /// Errors: NullArgument; OutOfRange for a buffer of 2^32 bytes or more; ProtocolStateMismatch
    /// while a container is open, or where a section would lie outside of the buffer;
    /// ProtocolVersionMismatch; Unspecified where a payload of the stream was left out.
    TStringCore NextPayload(const std::shared_ptr<ISharedArrayBuffer>& buffer);

    virtual ~BinaryProtocolReader();
    virtual BinaryListType BeginListType();
    /// The ends of lists, dictionaries, tables and key sets fail with Unspecified where the mark
    /// that should follow them is not there.
    virtual void EndListType();
    virtual lumsize_t BeginListData();
    virtual void EndListData();
    virtual lumsize_t BeginDictionaryType();
    virtual void EndDictionaryType();
    virtual lumsize_t BeginTableType();
    virtual void EndTableType();
    virtual BinaryKeySetType BeginKeySetType();
    virtual void EndKeySetType();

    virtual unsigned char ReadStorage8BitKey();
    virtual unsigned int ReadStorage32BitKey();
    virtual uint64 ReadStorage64BitKey();
    /// True for any byte but 0.
    virtual bool ReadBoolKey();
    virtual int ReadInt32Key();
    virtual int64 ReadInt64Key();
    virtual float ReadReal32Key();
    virtual double ReadReal64Key();
    virtual LumColor ReadColorKey();
    virtual LumDateTime ReadDateTimeKey();
    virtual const TStringCore& ReadStringKey();
    /// Any byte: it may name no enumerator.
    virtual SpecialKind ReadSpecialKey();
    /// The type of the value behind a key, and whether that value is a special.
    /// Errors: InvalidStoreType for what is no type; InvalidBinaryData beyond 256 levels of types
    /// in types; SpecialKindNeedsPrimitive where a nested type is marked as special;
    /// InvalidExternalTypeId; those of the Get of the type that is named.
    virtual std::pair<const Type*, bool> ReadKeyType();

    virtual unsigned char ReadStorage8Bit();
    virtual unsigned int ReadStorage32Bit();
    virtual uint64 ReadStorage64Bit();
    /// True for any byte but 0.
    virtual bool ReadBool();
    virtual int ReadInt32();
    virtual int64 ReadInt64();
    virtual float ReadReal32();
    virtual double ReadReal64();
    virtual const TStringCore& ReadString();
    virtual LumColor ReadColor();
    virtual LumDateTime ReadDateTime();
    /// Any byte: it may name no enumerator.
    virtual SpecialKind ReadSpecial();

    /// `count` items of a segment of a list, in place.
    virtual ArrayView<const unsigned char> ReadStorage8BitArray(lumsize_t count);
    virtual ArrayView<const unsigned int> ReadStorage32BitArray(lumsize_t count);
    virtual ArrayView<const uint64> ReadStorage64BitArray(lumsize_t count);
    virtual ArrayView<const SpecialKind> ReadSpecialArray(lumsize_t count);

    /// What keeps the views of the current payload good; empty before the first payload.
    virtual std::shared_ptr<ISharedDataBuffer> GetSharedBufferReference() const;

    /// `count` items of a segment of a list: what a ReadString for each would give, with one look
    /// at the state. Not for subclasses that have reads of their own: StoreValueParser calls this
    /// and the next on a BinaryProtocolReader itself alone.
    std::vector<RIndirectString> ReadStrings(lumsize_t count);
    /// How many bytes of the payload were not read yet. Each item takes at least one, so no count
    /// beyond this can be true.
    uint64 GetRemainingBytes() const;

protected:
    /// A reader without a payload.
    BinaryProtocolReader();

private:
    friend class BinaryValueReader;
    class TypeReader;

    // A whole list with one look at the state, if the next is an array of Ts without specials: what
    // the reads from BeginListType to EndListType would give. Otherwise false, and nothing is read.
    // Not for subclasses that have reads of their own.
    template <typename T>
    bool TryReadPlainList(BinaryListType& type, ArrayView<const T>& items);

    void OpenData(const std::shared_ptr<ISharedArrayBuffer>& buffer,
                  ArrayView<const unsigned char> data);
    void ValidateChecksum();
    lumsize_t ReadBase128Data(BinaryBufferReader& reader) const;
    const TStringCore& ReadTableString();
    template <typename T>
    T ReadKeyOf();
    template <typename T>
    T ReadDataOf();
    template <typename T>
    ArrayView<const T> ReadArrayOf(lumsize_t count);

    unsigned short m_version = 0;
    bool m_useBase128 = false;
    bool m_useChecksums = false;
    const std::unique_ptr<TypeReader> m_typeReader;
    const std::unique_ptr<BinaryProtocolStateTracker> m_state;
    std::unique_ptr<BinaryBufferReader> m_data;
    const std::unique_ptr<StringTableReader> m_strings;
    std::shared_ptr<ISharedDataBuffer> m_buffer;
};

}  // namespace lum::core
