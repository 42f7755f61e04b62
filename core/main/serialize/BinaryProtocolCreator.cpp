#include "lum/core/serialize/BinaryProtocolCreator.h"

#include <array>
#include <string>

#include "core/main/serialize/BinaryBufferCreator.h"
#include "core/main/serialize/BinaryProtocolStateTracker.h"
#include "core/main/serialize/BinaryTypeTag.h"
#include "core/main/serialize/StringTableCreator.h"
#include "lum/core/Check.h"
#include "lumsys/Memory.h"

namespace lum::core {
namespace {

constexpr unsigned int kChecksumsFlag = 1;
constexpr unsigned int kBase128Flag = 2;
// Position and length of two sections, and the position of the data.
constexpr unsigned int kPositionCount = 5;
// A payload that stands at a multiple of it in memory has all words of its data at theirs.
constexpr unsigned char kSectionAlignment = 8;

constexpr uint64 AlignSection(uint64 position) {
    return (position + (kSectionAlignment - 1)) & ~uint64{kSectionAlignment - 1};
}

void AppendSection(std::vector<unsigned char>& payload, const BinaryBufferCreator& section) {
    payload.resize(AlignSection(payload.size()));
    payload.insert(payload.end(), section.GetBuffer().begin(), section.GetBuffer().end());
}

// Blocks below this are copied at once: to keep them would cost more.
constexpr uint64 kLeastShared = 4096;

void AppendCountTo(BinaryBufferCreator& buffer, lumsize_t count, bool useBase128) {
    if (useBase128) {
        buffer.AppendBase128(count);
    } else {
        buffer.Append(count);
    }
}

// What goes to the wire for a value.
template <typename T>
T WordOf(T value) {
    return value;
}
unsigned char WordOf(bool value) {
    return value ? 1 : 0;
}
unsigned char WordOf(SpecialKind kind) {
    return static_cast<unsigned char>(kind);
}
int WordOf(LumColor color) {
    return color.AsInt32();
}
uint64 WordOf(LumDateTime date) {
    return date.GetValue();
}

}  // namespace

// Writes tags as they come: the event that they are part of was announced before.
class BinaryProtocolCreator::TypeCreator final : public IBinaryProtocolTypeWriter {
public:
    explicit TypeCreator(BinaryProtocolCreator& creator) : m_creator(creator) {}

    void AppendRaw(const TStringCore& text) override { m_creator.AppendStringIndex(text); }
    void AppendRaw(unsigned char value) override { m_creator.m_dataBuffer->Append(value); }
    void AppendRaw(signed char value) override { m_creator.m_dataBuffer->Append(value); }

private:
    BinaryProtocolCreator& m_creator;
};

struct BinaryProtocolCreator::SharedBytes {
    uint64 position;  // In the data buffer: they stand in front of what it has from there on.
    const unsigned char* bytes;
    uint64 count;  // A multiple of 8, so that they do not matter to the alignment of what follows.
    std::shared_ptr<const void> owner;
};

BinaryProtocolCreator::BinaryProtocolCreator(bool useBase128, bool useChecksums)
    : m_path(L"/"),
      m_useBase128(useBase128),
      m_useChecksums(useChecksums),
      m_typeCreator(std::make_unique<TypeCreator>(*this)),
      m_state(std::make_unique<BinaryProtocolStateTracker>()),
      m_stringTable(std::make_unique<StringTableCreator>()) {
    Reset();
}

BinaryProtocolCreator::~BinaryProtocolCreator() = default;

void BinaryProtocolCreator::Reset() {
    m_dataBuffer = std::make_unique<BinaryBufferCreator>();
    m_sharedBytes.clear();
    m_stringTable->ResetBuffers();
}

std::vector<unsigned char> BinaryProtocolCreator::FinalizePayload() {
    std::vector<unsigned char> payload;
    FinalizePayload(payload);
    return payload;
}

void BinaryProtocolCreator::FinalizePayload(std::vector<unsigned char>& payload) {
    LUM_CHECK_NOT(m_state->HasStates(), LumError::ProtocolStateMismatch);
    LUM_CHECK(m_dataBuffer->GetLength() > 0, LumError::EmptyPayload);

    BinaryBufferCreator header;
    header.Append(m_version);
    header.Append((m_useChecksums ? kChecksumsFlag : 0u) | (m_useBase128 ? kBase128Flag : 0u));
    const std::string path = m_path.toStdString();
    AppendCountTo(header, LumSizeCastSafe(path.size()), m_useBase128);
    header.AppendBytes(path.data(), LumSizeCastSafe(path.size()), 1);
    header.Align(4);
    const buffersize_t positions = header.GetLength();
    header.AppendBytes(std::array<unsigned int, kPositionCount>{}.data(),
                       kPositionCount * sizeof(unsigned int), 4);
    header.Align(kSectionAlignment);

    // Where everything comes to stand is known before anything is placed, so that a payload that
    // would grow too long fails before it is copied.
    const BinaryBufferCreator& indices = *m_stringTable->GetIndicesBuffer();
    const BinaryBufferCreator& strings = *m_stringTable->GetStringsBuffer();
    uint64 dataPosition = header.GetLength();
    // Judged by the bytes: new strings that are all empty are no strings.
    const bool hasStrings = strings.GetLength() > 0;
    if (hasStrings) {
        const uint64 indicesPosition = dataPosition;
        const uint64 stringsPosition = AlignSection(indicesPosition + indices.GetLength());
        dataPosition = AlignSection(stringsPosition + strings.GetLength());
        header.SetValueAt(positions, LumSizeCastSafe(indicesPosition));
        header.SetValueAt(positions + 4, indices.GetLength());
        header.SetValueAt(positions + 8, LumSizeCastSafe(stringsPosition));
        header.SetValueAt(positions + 12, strings.GetLength());
    }
    header.SetValueAt(positions + 16, LumSizeCastSafe(dataPosition));

    const lumsize_t length = LumSizeCastSafe(dataPosition + GetDataLength());
    if (payload.capacity() < length) {
        std::vector<unsigned char> room;
        room.reserve(length);
        lumsys::AdviseLargePages(room.data(), room.capacity());
        payload.swap(room);
    }
    payload.clear();
    AppendSection(payload, header);
    if (hasStrings) {
        AppendSection(payload, indices);
        AppendSection(payload, strings);
    }
    payload.resize(dataPosition);
    AppendDataTo(payload);
    Reset();
}

uint64 BinaryProtocolCreator::GetDataLength() const {
    uint64 length = m_dataBuffer->GetLength();
    for (const SharedBytes& shared : m_sharedBytes) {
        length += shared.count;
    }
    return length;
}

void BinaryProtocolCreator::AppendDataTo(std::vector<unsigned char>& payload) const {
    const unsigned char* next = m_dataBuffer->GetBuffer().begin();
    for (const SharedBytes& shared : m_sharedBytes) {
        const unsigned char* const end = m_dataBuffer->GetBuffer().begin() + shared.position;
        payload.insert(payload.end(), next, end);
        payload.insert(payload.end(), shared.bytes, shared.bytes + shared.count);
        next = end;
    }
    payload.insert(payload.end(), next, m_dataBuffer->GetBuffer().end());
}

void BinaryProtocolCreator::AppendCount(lumsize_t count) {
    AppendCountTo(*m_dataBuffer, count, m_useBase128);
}

void BinaryProtocolCreator::AppendStringIndex(const TStringCore& text) {
    AppendCount(m_stringTable->Add(text));
}

void BinaryProtocolCreator::AppendChecksum() {
    if (m_useChecksums) {
        m_dataBuffer->Append(BinaryProtocol::SentinelValue);
    }
}

void BinaryProtocolCreator::BeginListType(BinaryListType type) {
    m_state->BeginListType(type);
    m_dataBuffer->Append(static_cast<signed char>(type));
}

void BinaryProtocolCreator::EndListType() {
    m_state->EndListType();
    AppendChecksum();
}

void BinaryProtocolCreator::BeginListData(lumsize_t count) {
    m_state->BeginListData(count);
    AppendCount(count);
}

void BinaryProtocolCreator::EndListData() {
    m_state->EndListData();
}

void BinaryProtocolCreator::BeginDictionaryType(lumsize_t count) {
    m_state->BeginDictionaryType(count);
    AppendCount(count);
}

void BinaryProtocolCreator::EndDictionaryType() {
    m_state->EndDictionaryType();
    AppendChecksum();
}

void BinaryProtocolCreator::BeginTableType(lumsize_t count) {
    m_state->BeginTableType(count);
    AppendCount(count);
}

void BinaryProtocolCreator::EndTableType() {
    m_state->EndTableType();
    AppendChecksum();
}

void BinaryProtocolCreator::BeginKeySetType(BinaryKeySetType type) {
    m_state->BeginKeySetType(type);
    m_dataBuffer->Append(static_cast<unsigned char>(type));
}

void BinaryProtocolCreator::EndKeySetType() {
    m_state->EndKeySetType();
    AppendChecksum();
}

template <typename T>
void BinaryProtocolCreator::AppendKeyOf(T key) {
    m_state->AppendKey();
    m_dataBuffer->Append(WordOf(key));
}

void BinaryProtocolCreator::AppendKey(SpecialKind key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(const TStringCore& key) {
    m_state->AppendKey();
    AppendStringIndex(key);
}
void BinaryProtocolCreator::AppendKey(LumDateTime key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(LumColor key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(double key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(float key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(int64 key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(int key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(bool key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(uint64 key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(unsigned int key) {
    AppendKeyOf(key);
}
void BinaryProtocolCreator::AppendKey(unsigned char key) {
    AppendKeyOf(key);
}

void BinaryProtocolCreator::AppendKeyType(const Type* type, bool isSpecial) {
    LUM_CHECK_NOT_NULL(type, LumError::NullArgument);
    m_state->AppendKeyType();
    WriteTypeTag(*m_typeCreator, *type, isSpecial);
}

template <typename T>
void BinaryProtocolCreator::AppendDataOf(T value) {
    m_state->AppendData();
    m_dataBuffer->Append(WordOf(value));
}

void BinaryProtocolCreator::AppendData(SpecialKind value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(const TStringCore& value) {
    m_state->AppendData();
    AppendStringIndex(value);
}
void BinaryProtocolCreator::AppendData(LumDateTime value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(LumColor value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(double value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(float value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(int64 value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(int value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(bool value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(uint64 value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(unsigned int value) {
    AppendDataOf(value);
}
void BinaryProtocolCreator::AppendData(unsigned char value) {
    AppendDataOf(value);
}

template <typename T>
void BinaryProtocolCreator::AppendArrayOf(ArrayView<const T> values) {
    m_state->AppendArrayData(LumSizeCastSafe(values.GetSize()));
    m_dataBuffer->AppendLongBytes(values.GetData(), values.GetSize() * sizeof(T), sizeof(T));
}

void BinaryProtocolCreator::AppendArray(ArrayView<const int> values) {
    AppendArrayOf(values);
}
void BinaryProtocolCreator::AppendArray(ArrayView<const SpecialKind> kinds) {
    AppendArray(ArrayView<const unsigned char>(
        reinterpret_cast<const unsigned char*>(kinds.GetData()), kinds.GetSize()));
}
void BinaryProtocolCreator::AppendArray(ArrayView<const uint64> values) {
    AppendArrayOf(values);
}
void BinaryProtocolCreator::AppendArray(ArrayView<const unsigned int> values) {
    AppendArrayOf(values);
}
void BinaryProtocolCreator::AppendArray(ArrayView<const unsigned char> values) {
    AppendArrayOf(values);
}

void BinaryProtocolCreator::AppendSharedBytes(const unsigned char* bytes, uint64 count,
                                              unsigned char wordSize,
                                              std::shared_ptr<const void> owner) {
    m_state->AppendArrayData(LumSizeCastSafe(count));
    const uint64 byteCount = count * wordSize;
    if (byteCount < kLeastShared) {
        return m_dataBuffer->AppendLongBytes(bytes, byteCount, wordSize);
    }
    m_dataBuffer->Align(wordSize);
    const uint64 sharedCount = byteCount & ~uint64{kSectionAlignment - 1};
    m_sharedBytes.push_back(
        {m_dataBuffer->GetBuffer().size(), bytes, sharedCount, std::move(owner)});
    m_dataBuffer->AppendLongBytes(bytes + sharedCount, byteCount - sharedCount, 1);
}

void BinaryProtocolCreator::AppendStrings(ArrayView<const RIndirectString> values) {
    m_state->AppendArrayData(LumSizeCastSafe(values.GetSize()));
    for (const RIndirectString& value : values) {
        AppendStringIndex(value);
    }
}

}  // namespace lum::core
