#include "core/main/serialize/BinaryTypeTag.h"

#include <vector>

#include "core/main/serialize/NestingLimit.h"
#include "lum/core/Check.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {
namespace {

// The first byte of a tag. The byte 0 is none, and ends the members of a tuple.
class BinaryType {
public:
    explicit BinaryType(unsigned char raw) : m_raw(raw) {}
    BinaryType(StoreType type, bool isSpecial, bool hasExtraTypeInfo)
        : m_raw(static_cast<unsigned char>((static_cast<unsigned int>(type) + 1) |
                                           (isSpecial ? kSpecialBit : 0u) |
                                           (hasExtraTypeInfo ? kExtraBit : 0u))) {}

    unsigned char GetRaw() const { return m_raw; }
    bool IsNull() const { return m_raw == 0; }
    bool IsSpecial() const { return (m_raw & kSpecialBit) != 0; }
    bool HasExtraTypeInfo() const { return (m_raw & kExtraBit) != 0; }
    // May name no enumerator: 63 and above for a tag without a type.
    StoreType GetStoreType() const {
        return static_cast<StoreType>(static_cast<unsigned char>((m_raw & kTypeBits) - 1u));
    }

private:
    static constexpr unsigned int kTypeBits = 0x3F;
    static constexpr unsigned int kSpecialBit = 0x40;
    static constexpr unsigned int kExtraBit = 0x80;

    unsigned char m_raw;
};

bool IsReal(StoreType type) {
    return type == StoreType::Real32 || type == StoreType::Real64;
}

bool HasExtraTypeInfo(const Type& type) {
    switch (type.GetStoreType()) {
        case StoreType::Real32:
        case StoreType::Real64: {
            const auto& real = type.As<RealType>();
            return real.GetPrecision() != -1 || real.GetScale() != -1;
        }
        case StoreType::String:
            return &type != StringType::Get();
        case StoreType::Tuple:
            return !type.As<TupleType>().GetMembers().empty();
        case StoreType::External:
            return true;
        default:
            return false;
    }
}

void WriteParameters(IBinaryProtocolTypeWriter& writer, const Type& type) {
    if (IsReal(type.GetStoreType())) {
        const auto& real = type.As<RealType>();
        writer.AppendRaw(real.GetPrecision());
        writer.AppendRaw(real.GetScale());
    } else if (type.Is(StoreType::String)) {
        writer.AppendRaw(type.As<StringType>().GetCollation().GetLocale().GetValue());
    } else if (type.Is(StoreType::External)) {
        writer.AppendRaw(type.As<ExternalType>().GetExternalTypeName());
    } else {
        for (const Type* const member : type.As<TupleType>().GetMembers()) {
            WriteTypeTag(writer, *member, /*isSpecial=*/false);
        }
        writer.AppendRaw(static_cast<unsigned char>(0));
    }
}

// Reads tags within tags, to a limit: each level takes a frame of the stack and a byte of input.
class TagReader {
public:
    explicit TagReader(IBinaryProtocolTypeReader& reader) : m_reader(reader) {}

    const Type* ReadType(BinaryType binaryType) {
        LUM_CHECK(m_level < kMaxNestingLevels, LumError::InvalidBinaryData);
        ++m_level;
        const Type* const type = ReadTypeOfLevel(binaryType);
        --m_level;
        return type;
    }

private:
    const Type* ReadTypeOfLevel(BinaryType binaryType) {
        const StoreType storeType = binaryType.GetStoreType();
        if (IsPrimitiveStoreType(storeType)) {
            return ReadPrimitive(storeType, binaryType.HasExtraTypeInfo());
        }
        if (IsUniformCollectionStoreType(storeType)) {
            LUM_CHECK_NOT(binaryType.HasExtraTypeInfo(), LumError::InvalidStoreType);
            const Type* const nested = ReadNested();
            if (storeType == StoreType::KeySet) {
                return KeySetType::Get(nested, ReadNested());
            }
            return CollectionType::Get(storeType, nested);
        }
        switch (storeType) {
            case StoreType::Tuple:
                return ReadTuple(binaryType);
            case StoreType::KeyMap:
                return KeyMapType::Get({});
            case StoreType::Table:
                return TableType::Get({});
            default:
                LUM_FAIL(LumError::InvalidStoreType);
        }
    }

    const Type* ReadPrimitive(StoreType storeType, bool hasExtraInfo) {
        if (IsReal(storeType)) {
            const signed char precision = hasExtraInfo ? m_reader.RawReadInt8() : -1;
            const signed char scale = hasExtraInfo ? m_reader.RawReadInt8() : -1;
            return storeType == StoreType::Real32 ? RealType::Get32(precision, scale)
                                                  : RealType::Get64(precision, scale);
        }
        if (storeType == StoreType::String) {
            return hasExtraInfo ? StringType::Get(Collation(m_reader.RawReadString()))
                                : StringType::Get();
        }
        if (storeType == StoreType::External) {
            LUM_CHECK(hasExtraInfo, LumError::InvalidExternalTypeId);
            return ExternalType::Get(m_reader.RawReadString());
        }
        LUM_CHECK_NOT(hasExtraInfo, LumError::InvalidStoreType);
        return MakePrimitiveType(storeType);
    }

    const Type* ReadNested() {
        const BinaryType binaryType(m_reader.RawReadUInt8());
        LUM_CHECK_NOT(binaryType.IsNull(), LumError::InvalidStoreType);
        LUM_CHECK_NOT(binaryType.IsSpecial(), LumError::SpecialKindNeedsPrimitive);
        return ReadType(binaryType);
    }

    // Whether a member is marked as special is not looked at.
    const Type* ReadTuple(BinaryType tuple) {
        std::vector<const Type*> members;
        if (tuple.HasExtraTypeInfo()) {
            for (BinaryType member(m_reader.RawReadUInt8()); !member.IsNull();
                 member = BinaryType(m_reader.RawReadUInt8())) {
                members.push_back(ReadType(member));
            }
        }
        return TupleType::Get(std::move(members));
    }

    IBinaryProtocolTypeReader& m_reader;
    unsigned int m_level = 0;
};

}  // namespace

void WriteTypeTag(IBinaryProtocolTypeWriter& writer, const Type& type, bool isSpecial) {
    const bool hasExtraTypeInfo = HasExtraTypeInfo(type);
    writer.AppendRaw(BinaryType(type.GetStoreType(), isSpecial, hasExtraTypeInfo).GetRaw());
    if (hasExtraTypeInfo) {
        WriteParameters(writer, type);
    } else if (IsUniformCollectionStoreType(type.GetStoreType())) {
        if (type.Is(StoreType::KeySet)) {
            WriteTypeTag(writer, *type.As<KeySetType>().GetKeyType(), /*isSpecial=*/false);
        }
        WriteTypeTag(writer, *type.As<CollectionType>().GetElementType(), /*isSpecial=*/false);
    }
}

std::pair<const Type*, bool> ReadTypeTag(IBinaryProtocolTypeReader& reader) {
    const BinaryType binaryType(reader.RawReadUInt8());
    return {TagReader(reader).ReadType(binaryType), binaryType.IsSpecial()};
}

}  // namespace lum::core
