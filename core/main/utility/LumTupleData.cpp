#include "lum/core/utility/LumTupleData.h"

#include <cstring>
#include <new>

#include "core/main/types/PackedStructOffsets.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/Fnv.h"
#include "lum/core/utility/LumTuple.h"

namespace lum::core {
namespace {

// A block is one allocation:
//
//   count of the shares   made by std::allocate_shared
//   BlockHead             how many members are handles with a destructor
//   HandleMember[...]     where these stand
//   values and specials   as PackedStructOffsets says, at the next multiple of 16
//
// The block goes with its last share. It then may not ask its type, since a host's static may
// outlive the registry, so it notes the members to destroy itself.

struct HandleMember {
    lumsize_t offset;
    bool isString;  // Else an SV.
};

constexpr std::size_t kBlockAlignment = 16;

struct alignas(kBlockAlignment) BlockHead {
    lumsize_t handleCapacity;
    lumsize_t handleCount = 0;  // Raised as the members are built, so that a failure undoes those.

    explicit BlockHead(lumsize_t capacity) : handleCapacity(capacity) {}
    BlockHead(const BlockHead&) = delete;
    BlockHead& operator=(const BlockHead&) = delete;
    ~BlockHead() {
        for (lumsize_t i = 0; i < handleCount; ++i) {
            const HandleMember& member = Handles()[i];
            if (member.isString) {
                std::launder(reinterpret_cast<RIndirectString*>(Data() + member.offset))
                    ->~RIndirectString();
            } else {
                std::launder(reinterpret_cast<SV*>(Data() + member.offset))->~SV();
            }
        }
    }

    HandleMember* Handles() { return reinterpret_cast<HandleMember*>(this + 1); }
    unsigned char* Data() {
        return reinterpret_cast<unsigned char*>(this + 1) + HandleBytes(handleCapacity);
    }
    static std::size_t HandleBytes(lumsize_t count) {
        const std::size_t bytes = count * sizeof(HandleMember);
        return (bytes + kBlockAlignment - 1) / kBlockAlignment * kBlockAlignment;
    }
};

/// Allocates one object with room for the rest of the block behind it.
template <typename T>
struct BlockAllocator {
    using value_type = T;

    std::size_t extraBytes;

    explicit BlockAllocator(std::size_t extra) : extraBytes(extra) {}
    template <typename U>
    BlockAllocator(const BlockAllocator<U>& other) : extraBytes(other.extraBytes) {}  // NOLINT

    T* allocate(std::size_t /*one*/) {
        return static_cast<T*>(
            ::operator new(sizeof(T) + extraBytes, std::align_val_t(kBlockAlignment)));
    }
    void deallocate(T* pointer, std::size_t /*one*/) noexcept {
        ::operator delete(pointer, std::align_val_t(kBlockAlignment));
    }
    friend bool operator==(const BlockAllocator& a, const BlockAllocator& b) {
        return a.extraBytes == b.extraBytes;
    }
};

bool IsHandle(const Type* type) {
    return type->Is(StoreType::String) || type->Is(StoreType::External);
}

/// A block for rows of `type`, its handles built from those of `source`, or empty without one.
std::shared_ptr<unsigned char> BuildBlock(const TupleType* type, const unsigned char* source) {
    const std::vector<const Type*>& members = type->GetMembers();
    const PackedStructOffsets& offsets = *type->GetOffsets();
    lumsize_t handleCount = 0;
    for (const Type* const member : members) {
        handleCount += IsHandle(member) ? 1 : 0;
    }
    const std::size_t extra = BlockHead::HandleBytes(handleCount) + offsets.GetSize();
    auto head = std::allocate_shared<BlockHead>(BlockAllocator<BlockHead>(extra), handleCount);
    unsigned char* const data = head->Data();
    if (source != nullptr) {
        std::memcpy(data, source, offsets.GetSize());
    } else {
        std::memset(data, 0, offsets.GetSize());
    }
    for (lumsize_t i = 0; i < members.size(); ++i) {
        const lumsize_t offset = offsets.GetValueOffset(i);
        if (IsHandle(members[i])) {
            const bool isString = members[i]->Is(StoreType::String);
            if (isString) {
                new (data + offset) RIndirectString(
                    source == nullptr ? RIndirectString()
                                      : *reinterpret_cast<const RIndirectString*>(source + offset));
            } else {
                new (data + offset)
                    SV(source == nullptr ? SV() : *reinterpret_cast<const SV*>(source + offset));
            }
            new (head->Handles() + head->handleCount) HandleMember{offset, isString};
            head->handleCount += 1;
        } else if (source == nullptr &&
                   (members[i]->Is(StoreType::Date) || members[i]->Is(StoreType::DateTime))) {
            new (data + offset) LumDateTime();
        }
    }
    return {std::move(head), data};
}

template <typename T>
const T& Read(const unsigned char* bytes) {
    return *reinterpret_cast<const T*>(bytes);
}

template <typename T>
int CompareAs(const unsigned char* a, const unsigned char* b) {
    const T& left = Read<T>(a);
    const T& right = Read<T>(b);
    return left < right ? -1 : left > right ? 1 : 0;
}

int CompareExternal(const SV& a, const SV& b) {
    if (a == nullptr || b == nullptr) {
        return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
    }
    const int order = a->Compare(*b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

const ICollator& CollatorOf(const Type* type) {
    return static_cast<const StringType*>(type)->GetCollation().GetCollator();
}

int CompareMember(const Type* type, const unsigned char* a, const unsigned char* b) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return (*a != 0 ? 1 : 0) - (*b != 0 ? 1 : 0);
        case StoreType::Int32:
            return CompareAs<int>(a, b);
        case StoreType::Int64:
            return CompareAs<int64>(a, b);
        case StoreType::Real32:
            return CompareAs<float>(a, b);
        case StoreType::Real64:
            return CompareAs<double>(a, b);
        case StoreType::String: {
            const int order =
                CollatorOf(type).Compare(Read<RIndirectString>(a), Read<RIndirectString>(b));
            return order < 0 ? -1 : order > 0 ? 1 : 0;
        }
        case StoreType::Date:
        case StoreType::DateTime:
            return CompareAs<LumDateTime>(a, b);
        case StoreType::Color:
            return CompareAs<LumColor>(a, b);
        default:
            return CompareExternal(Read<SV>(a), Read<SV>(b));
    }
}

uint64 HashMember(const Type* type, const unsigned char* bytes) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return FnvHash(static_cast<unsigned char>(*bytes != 0 ? 1 : 0));
        case StoreType::Int32:
        case StoreType::Real32:
        case StoreType::Color:
            return FnvHash(Read<unsigned int>(bytes));
        case StoreType::Int64:
        case StoreType::Real64:
        case StoreType::Date:
        case StoreType::DateTime:
            return FnvHash(Read<uint64>(bytes));
        case StoreType::String:
            return CollatorOf(type).Hash(Read<RIndirectString>(bytes));
        default:
            return std::hash<SV>()(Read<SV>(bytes));
    }
}

}  // namespace

LumTupleData::LumTupleData() : m_ownsData(true) {
    static const TupleType* const s_empty = TupleType::Get({});
    m_type = s_empty;
}

LumTupleData::LumTupleData(const LumTupleData& other, bool owns)
    : TupleOperations(other), m_type(other.m_type), m_ownsData(owns) {
    CopyData(other);
}

LumTupleData::LumTupleData(LumTupleData&& other) noexcept
    : m_type(other.m_type),
      m_ownsData(std::exchange(other.m_ownsData, true)),
      m_data(std::move(other.m_data)) {}

LumTupleData& LumTupleData::operator=(const LumTupleData& other) {
    if (this != &other) {
        *this = LumTupleData(other, m_ownsData);
    }
    return *this;
}

LumTupleData& LumTupleData::operator=(LumTupleData&& other) noexcept {
    if (this != &other) {
        m_type = other.m_type;
        m_ownsData = std::exchange(other.m_ownsData, true);
        m_data = std::move(other.m_data);
    }
    return *this;
}

void LumTupleData::CopyData(const LumTupleData& other) {
    LUM_INVARIANT(m_type == other.m_type, LumError::TypeMismatchExpected);
    if (other.m_data != nullptr) {
        m_data = m_ownsData ? BuildBlock(m_type, other.m_data.get()) : other.m_data;
    }
}

void LumTupleData::MakeBlock() const {
    LUM_INVARIANT(m_ownsData, LumError::Unspecified);
    m_data = BuildBlock(m_type, nullptr);
}

lumsize_t LumTupleData::GetBlockSize() const {
    return m_type->GetOffsets()->GetSize();
}

const Type* LumTupleData::GetMemberType(lumsize_t index) const {
    const std::vector<const Type*>& members = m_type->GetMembers();
    LUM_CHECK(index < members.size(), LumError::OutOfBounds);
    return members[index];
}

unsigned char* LumTupleData::ValueAt(lumsize_t index) const {
    return Block() + m_type->GetOffsets()->GetValueOffset(index);
}

SpecialKind* LumTupleData::SpecialAt(lumsize_t index) const {
    return reinterpret_cast<SpecialKind*>(Block() + m_type->GetOffsets()->GetSpecialOffset(index));
}

int LumTupleData::CompareTo(const LumTupleData& other) const {
    LUM_CHECK(m_type == other.m_type, LumError::TypeMismatch);
    const std::vector<const Type*>& members = m_type->GetMembers();
    const PackedStructOffsets& offsets = *m_type->GetOffsets();
    const unsigned char* const block = Block();
    const unsigned char* const otherBlock = other.Block();
    for (lumsize_t i = 0; i < members.size(); ++i) {
        const unsigned char kind = block[offsets.GetSpecialOffset(i)];
        const unsigned char otherKind = otherBlock[offsets.GetSpecialOffset(i)];
        if (kind != otherKind) {
            return kind < otherKind ? 1 : -1;
        }
        const lumsize_t offset = offsets.GetValueOffset(i);
        const int order = CompareMember(members[i], block + offset, otherBlock + offset);
        if (order != 0) {
            return order;
        }
    }
    return 0;
}

uint64 LumTupleData::ComputeHash() const {
    const std::vector<const Type*>& members = m_type->GetMembers();
    const PackedStructOffsets& offsets = *m_type->GetOffsets();
    const unsigned char* const block = Block();
    uint64 hash = 0;
    for (lumsize_t i = 0; i < members.size(); ++i) {
        const uint64 kind = FnvHash(block[offsets.GetSpecialOffset(i)]);
        const uint64 value = HashMember(members[i], block + offsets.GetValueOffset(i));
        hash ^= (hash >> 2) + (hash << 6) + kind + 0x9e3779b9 + value;
    }
    return hash;
}

}  // namespace lum::core
