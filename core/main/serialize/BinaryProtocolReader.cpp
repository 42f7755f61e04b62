#include "lum/core/serialize/BinaryProtocolReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "core/main/serialize/BinaryBufferReader.h"
#include "core/main/serialize/BinaryProtocolStateTracker.h"
#include "core/main/serialize/BinaryTypeTag.h"
#include "core/main/serialize/StringTableReader.h"
#include "lum/core/Check.h"
#include "lumsys/Memory.h"

namespace lum::core {
namespace {

constexpr unsigned int kChecksumsFlag = 1;
constexpr unsigned int kBase128Flag = 2;

// The data of a payload, copied to where its words can be used in place.
class AlignedData final : public ISharedDataBuffer {
public:
    explicit AlignedData(ArrayView<const unsigned char> data)
        : m_words(std::make_unique_for_overwrite<uint64[]>((data.GetSize() + 7) / 8)) {
        std::memcpy(m_words.get(), data.GetData(), data.GetSize());
    }

    const unsigned char* GetBytes() const {
        return reinterpret_cast<const unsigned char*>(m_words.get());
    }

private:
    std::unique_ptr<uint64[]> m_words;
};

bool IsAligned(const unsigned char* address) {
    return reinterpret_cast<std::uintptr_t>(address) % sizeof(uint64) == 0;
}

// What comes from the wire for a value, and the value of it.
template <typename T>
struct Wire {
    using Word = T;
    static T ValueOf(T word) { return word; }
};
template <>
struct Wire<bool> {
    using Word = unsigned char;
    static bool ValueOf(unsigned char word) { return word != 0; }
};
template <>
struct Wire<LumColor> {
    using Word = int;
    static LumColor ValueOf(int word) { return LumColor::FromInt32(word); }
};
template <>
struct Wire<LumDateTime> {
    using Word = uint64;
    static LumDateTime ValueOf(uint64 word) { return LumDateTime::FromValue(word); }
};

template <typename T>
T ReadValue(BinaryBufferReader& reader) {
    return Wire<T>::ValueOf(reader.Read<typename Wire<T>::Word>());
}

}  // namespace

// Reads tags as they come: the event that they are part of was announced before.
//
// The columns of a table mostly have few types, and those of one type stand side by side. So the
// last tag of few bytes is kept with what it means, and where the same bytes come again nothing is
// read or looked up. No tag is the beginning of another. One with a text in it is not kept: the
// padding around the number of the text depends on where it stands.
class BinaryProtocolReader::TypeReader final : public IBinaryProtocolTypeReader {
public:
    explicit TypeReader(BinaryProtocolReader& reader) : m_reader(reader) {}

    std::pair<const Type*, bool> ReadTag() {
        BinaryBufferReader& data = *m_reader.m_data;
        const uint64 before = data.GetRemaining();
        uint64 bytes = 0;
        const bool isKnowable = data.PeekWord(bytes);
        if (isKnowable && m_tagLength != 0 && (bytes & GetMask(m_tagLength)) == m_tag) {
            data.Skip(m_tagLength);
            return m_type;
        }
        m_hasText = false;
        const std::pair<const Type*, bool> type = ReadTypeTag(*this);
        const uint64 length = before - data.GetRemaining();
        if (isKnowable && !m_hasText && length <= sizeof(bytes)) {
            m_tagLength = static_cast<unsigned int>(length);
            m_tag = bytes & GetMask(m_tagLength);
            m_type = type;
        }
        return type;
    }

    signed char RawReadInt8() override { return m_reader.m_data->Read<signed char>(); }
    unsigned char RawReadUInt8() override { return m_reader.m_data->Read<unsigned char>(); }
    const TStringCore& RawReadString() override {
        m_hasText = true;
        return m_reader.ReadTableString();
    }

private:
    // Of the first `byteCount` bytes of a word, 1 to 8.
    static uint64 GetMask(unsigned int byteCount) { return ~uint64{0} >> (64 - 8 * byteCount); }

    BinaryProtocolReader& m_reader;
    bool m_hasText = false;        // Whether the tag that is being read has a text.
    unsigned int m_tagLength = 0;  // Of the tag that is kept, in bytes; 0 for none.
    uint64 m_tag = 0;
    std::pair<const Type*, bool> m_type;
};

BinaryProtocolReader::BinaryProtocolReader()
    : m_typeReader(std::make_unique<TypeReader>(*this)),
      m_state(std::make_unique<BinaryProtocolStateTracker>()),
      m_data(std::make_unique<BinaryBufferReader>(nullptr, 0)),
      m_strings(std::make_unique<StringTableReader>()) {}

BinaryProtocolReader::BinaryProtocolReader(const std::shared_ptr<ISharedArrayBuffer>& buffer)
    : BinaryProtocolReader() {
    static_cast<void>(NextPayload(buffer));
}

BinaryProtocolReader::~BinaryProtocolReader() = default;

TStringCore BinaryProtocolReader::NextPayload(const std::shared_ptr<ISharedArrayBuffer>& buffer) {
    LUM_CHECK_NOT(m_state->HasStates(), LumError::ProtocolStateMismatch);
    LUM_CHECK_NOT_NULL(buffer, LumError::NullArgument);
    const ArrayView<const unsigned char> view = buffer->GetView();
    const buffersize_t length = LumSizeCastSafe(view.GetSize());
    BinaryBufferReader header(view.GetData(), length);

    const auto version = header.Read<unsigned short>();
    if (m_version == 0) {
        m_version = version;
        LUM_CHECK(m_version == BinaryProtocol::Version, LumError::ProtocolVersionMismatch);
    } else {
        LUM_CHECK(m_version == version, LumError::ProtocolVersionMismatch);
    }
    const auto flags = header.Read<unsigned int>();
    m_useBase128 = (flags & kBase128Flag) != 0;
    m_useChecksums = (flags & kChecksumsFlag) != 0;
    TStringCore path = header.ReadStringBytes(ReadBase128Data(header));

    const auto strIndicesPos = header.Read<buffersize_t>();
    const auto strIndicesLen = header.Read<buffersize_t>();
    const auto strTablePos = header.Read<buffersize_t>();
    const auto strTableLen = header.Read<buffersize_t>();
    const auto dataTablePos = header.Read<buffersize_t>();
    if (strIndicesPos != 0 && strTablePos != 0) {
        LUM_CHECK(strIndicesPos < length, LumError::ProtocolStateMismatch);
        LUM_CHECK(length - strIndicesPos >= strIndicesLen, LumError::ProtocolStateMismatch);
        LUM_CHECK(strTablePos < length, LumError::ProtocolStateMismatch);
        LUM_CHECK(length - strTablePos >= strTableLen, LumError::ProtocolStateMismatch);
        BinaryBufferReader indices(view.GetData() + strIndicesPos, strIndicesLen);
        BinaryBufferReader strings(view.GetData() + strTablePos, strTableLen);
        m_strings->AppendPayloadStrings(indices, strings);
    }
    LUM_CHECK(dataTablePos < length, LumError::ProtocolStateMismatch);
    OpenData(buffer, {view.GetData() + dataTablePos, length - dataTablePos});
    return path;
}

// Columns are used in place, so their words have to stand at multiples of their size in memory too.
// Both the buffer's address and the position of the data are the sender's.
void BinaryProtocolReader::OpenData(const std::shared_ptr<ISharedArrayBuffer>& buffer,
                                    ArrayView<const unsigned char> data) {
    const unsigned char* start = data.GetData();
    if (IsAligned(start)) {
        m_buffer = buffer;
    } else {
        auto aligned = std::make_shared<AlignedData>(data);
        start = aligned->GetBytes();
        m_buffer = std::move(aligned);
    }
    *m_data = BinaryBufferReader(start, LumSizeCastSafe(data.GetSize()));
}

lumsize_t BinaryProtocolReader::ReadBase128Data(BinaryBufferReader& reader) const {
    return m_useBase128 ? reader.ReadBase128Count() : reader.Read<lumsize_t>();
}

const TStringCore& BinaryProtocolReader::ReadTableString() {
    return m_strings->GetString(ReadBase128Data(*m_data));
}

void BinaryProtocolReader::ValidateChecksum() {
    if (m_useChecksums) {
        const auto checksum = m_data->Read<unsigned short>();
        LUM_CHECK(checksum == BinaryProtocol::SentinelValue, LumError::Unspecified);
    }
}

// Containers are opened by what was read, so the bytes come before the event; where the event is
// refused, the reader is done with either way.

BinaryListType BinaryProtocolReader::BeginListType() {
    const BinaryListType type(m_data->Read<unsigned char>());
    m_state->BeginListType(type);
    return type;
}

void BinaryProtocolReader::EndListType() {
    m_state->EndListType();
    ValidateChecksum();
}

lumsize_t BinaryProtocolReader::BeginListData() {
    const lumsize_t count = ReadBase128Data(*m_data);
    m_state->BeginListData(count);
    return count;
}

void BinaryProtocolReader::EndListData() {
    m_state->EndListData();
}

lumsize_t BinaryProtocolReader::BeginDictionaryType() {
    const lumsize_t count = ReadBase128Data(*m_data);
    m_state->BeginDictionaryType(count);
    return count;
}

void BinaryProtocolReader::EndDictionaryType() {
    m_state->EndDictionaryType();
    ValidateChecksum();
}

lumsize_t BinaryProtocolReader::BeginTableType() {
    const lumsize_t count = ReadBase128Data(*m_data);
    m_state->BeginTableType(count);
    return count;
}

void BinaryProtocolReader::EndTableType() {
    m_state->EndTableType();
    ValidateChecksum();
}

BinaryKeySetType BinaryProtocolReader::BeginKeySetType() {
    const auto type = static_cast<BinaryKeySetType>(m_data->Read<unsigned char>());
    m_state->BeginKeySetType(type);
    return type;
}

void BinaryProtocolReader::EndKeySetType() {
    m_state->EndKeySetType();
    ValidateChecksum();
}

template <typename T>
T BinaryProtocolReader::ReadKeyOf() {
    m_state->AppendKey();
    return ReadValue<T>(*m_data);
}

unsigned char BinaryProtocolReader::ReadStorage8BitKey() {
    return ReadKeyOf<unsigned char>();
}
unsigned int BinaryProtocolReader::ReadStorage32BitKey() {
    return ReadKeyOf<unsigned int>();
}
uint64 BinaryProtocolReader::ReadStorage64BitKey() {
    return ReadKeyOf<uint64>();
}
bool BinaryProtocolReader::ReadBoolKey() {
    return ReadKeyOf<bool>();
}
int BinaryProtocolReader::ReadInt32Key() {
    return ReadKeyOf<int>();
}
int64 BinaryProtocolReader::ReadInt64Key() {
    return ReadKeyOf<int64>();
}
float BinaryProtocolReader::ReadReal32Key() {
    return ReadKeyOf<float>();
}
double BinaryProtocolReader::ReadReal64Key() {
    return ReadKeyOf<double>();
}
LumColor BinaryProtocolReader::ReadColorKey() {
    return ReadKeyOf<LumColor>();
}
LumDateTime BinaryProtocolReader::ReadDateTimeKey() {
    return ReadKeyOf<LumDateTime>();
}
const TStringCore& BinaryProtocolReader::ReadStringKey() {
    m_state->AppendKey();
    return ReadTableString();
}
SpecialKind BinaryProtocolReader::ReadSpecialKey() {
    return ReadKeyOf<SpecialKind>();
}

std::pair<const Type*, bool> BinaryProtocolReader::ReadKeyType() {
    m_state->AppendKeyType();
    return m_typeReader->ReadTag();
}

template <typename T>
T BinaryProtocolReader::ReadDataOf() {
    m_state->AppendData();
    return ReadValue<T>(*m_data);
}

unsigned char BinaryProtocolReader::ReadStorage8Bit() {
    return ReadDataOf<unsigned char>();
}
unsigned int BinaryProtocolReader::ReadStorage32Bit() {
    return ReadDataOf<unsigned int>();
}
uint64 BinaryProtocolReader::ReadStorage64Bit() {
    return ReadDataOf<uint64>();
}
bool BinaryProtocolReader::ReadBool() {
    return ReadDataOf<bool>();
}
int BinaryProtocolReader::ReadInt32() {
    return ReadDataOf<int>();
}
int64 BinaryProtocolReader::ReadInt64() {
    return ReadDataOf<int64>();
}
float BinaryProtocolReader::ReadReal32() {
    return ReadDataOf<float>();
}
double BinaryProtocolReader::ReadReal64() {
    return ReadDataOf<double>();
}
const TStringCore& BinaryProtocolReader::ReadString() {
    m_state->AppendData();
    return ReadTableString();
}
LumColor BinaryProtocolReader::ReadColor() {
    return ReadDataOf<LumColor>();
}
LumDateTime BinaryProtocolReader::ReadDateTime() {
    return ReadDataOf<LumDateTime>();
}
SpecialKind BinaryProtocolReader::ReadSpecial() {
    return ReadDataOf<SpecialKind>();
}

template <typename T>
ArrayView<const T> BinaryProtocolReader::ReadArrayOf(lumsize_t count) {
    m_state->AppendArrayData(count);
    return {m_data->ReadPointer<T>(uint64{count} * sizeof(T)), count};
}

ArrayView<const unsigned char> BinaryProtocolReader::ReadStorage8BitArray(lumsize_t count) {
    return ReadArrayOf<unsigned char>(count);
}
ArrayView<const unsigned int> BinaryProtocolReader::ReadStorage32BitArray(lumsize_t count) {
    return ReadArrayOf<unsigned int>(count);
}
ArrayView<const uint64> BinaryProtocolReader::ReadStorage64BitArray(lumsize_t count) {
    return ReadArrayOf<uint64>(count);
}
ArrayView<const SpecialKind> BinaryProtocolReader::ReadSpecialArray(lumsize_t count) {
    return ReadArrayOf<SpecialKind>(count);
}

// Columns of a table are mostly lists of this kind, and short ones are less work than the events of
// a list.
template <typename T>
bool BinaryProtocolReader::TryReadPlainList(BinaryListType& type, ArrayView<const T>& items) {
    unsigned char byte = 0;
    if (!m_data->PeekByte(byte)) {
        return false;
    }
    type = BinaryListType(byte);
    if (type.GetContainerType() != BinaryContainerType::Array || type.HasSpecials()) {
        return false;
    }
    m_data->Skip(1);
    m_state->AppendList();
    const lumsize_t count = ReadBase128Data(*m_data);
    items = {m_data->ReadPointer<T>(uint64{count} * sizeof(T)), count};
    ValidateChecksum();
    return true;
}

template bool BinaryProtocolReader::TryReadPlainList(BinaryListType&,
                                                     ArrayView<const unsigned char>&);
template bool BinaryProtocolReader::TryReadPlainList(BinaryListType&,
                                                     ArrayView<const unsigned int>&);
template bool BinaryProtocolReader::TryReadPlainList(BinaryListType&,
                                                     ArrayView<const unsigned long long>&);

std::shared_ptr<ISharedDataBuffer> BinaryProtocolReader::GetSharedBufferReference() const {
    return m_buffer;
}

std::vector<RIndirectString> BinaryProtocolReader::ReadStrings(lumsize_t count) {
    m_state->AppendArrayData(count);
    std::vector<RIndirectString> strings;
    strings.reserve(std::min<uint64>(count, m_data->GetRemaining()));
    lumsys::AdviseLargePages(strings.data(), strings.capacity() * sizeof(RIndirectString));
    // The table is larger than the cache where there are many strings, so a batch of them is on its
    // way before the first is looked at.
    constexpr lumsize_t kBatch = 32;
    std::array<const TStringCore*, kBatch> batch;
    for (lumsize_t left = count; left > 0;) {
        const lumsize_t length = std::min(left, kBatch);
        for (lumsize_t i = 0; i < length; ++i) {
            batch[i] = &ReadTableString();
            __builtin_prefetch(batch[i]);
        }
        for (lumsize_t i = 0; i < length; ++i) {
            strings.emplace_back(*batch[i]);
        }
        left -= length;
    }
    return strings;
}

uint64 BinaryProtocolReader::GetRemainingBytes() const {
    return m_data->GetRemaining();
}

}  // namespace lum::core
