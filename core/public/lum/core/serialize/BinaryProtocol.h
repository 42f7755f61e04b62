#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/SortSpecOrder.h"

namespace lum::core {

/// What every payload of the binary form agrees on. docs/wire-format.md tells the whole form.
struct BinaryProtocol {
    /// The first field of a payload.
    static constexpr unsigned short Version = 1;
    /// Stands behind each container where a payload has checksums.
    static constexpr unsigned short SentinelValue = 0xF00D;
};

/// What a list of the binary form holds. A byte from outside may name no enumerator.
enum class BinaryContainerType : unsigned char {
    INVALID = 0,
    Array = 1,
    ByteBlob = 2,
    CompositeArray = 3,
    ConstantArray = 4,
    Set = 5,
    Tuple = 6,
    COUNT = 7,
};

/// The byte in front of a list: bits 0 to 2 the container, bit 3 whether it has specials, bit 4
/// whether it has indices, bits 5 and 6 the order of its elements.
///
/// Threads: a plain value.
/// Errors: none; any byte can be held. A payload's reader refuses containers that do not exist.
class LUM_CORE_API BinaryListType {
public:
    constexpr BinaryListType() noexcept = default;
    explicit constexpr BinaryListType(unsigned char raw) noexcept : m_raw(raw) {}

    static constexpr BinaryListType Array(bool hasSpecials, SortSpecOrder order) noexcept {
        return {BinaryContainerType::Array, hasSpecials, /*hasIndices=*/false, order};
    }
    static constexpr BinaryListType CompositeArray(bool hasIndices, SortSpecOrder order) noexcept {
        return {BinaryContainerType::CompositeArray, /*hasSpecials=*/false, hasIndices, order};
    }
    static constexpr BinaryListType ConstantArray(bool hasSpecials) noexcept {
        return {BinaryContainerType::ConstantArray, hasSpecials, false, SortSpecOrder::UNKNOWN};
    }
    static constexpr BinaryListType Set(bool hasSpecials) noexcept {
        return {BinaryContainerType::Set, hasSpecials, false, SortSpecOrder::UNKNOWN};
    }
    static constexpr BinaryListType Tuple(bool hasSpecials) noexcept {
        return {BinaryContainerType::Tuple, hasSpecials, false, SortSpecOrder::UNKNOWN};
    }

    static const BinaryListType ArrayNoSpecials;
    static const BinaryListType ArrayWithSpecials;
    static const BinaryListType ByteBlob;
    static const BinaryListType CompositeArrayNoIndices;
    static const BinaryListType CompositeArrayWithIndices;
    static const BinaryListType ConstantArrayNoSpecials;
    static const BinaryListType ConstantArrayWithSpecials;
    static const BinaryListType SetNoSpecials;
    static const BinaryListType SetWithSpecials;
    static const BinaryListType TupleNoSpecials;
    static const BinaryListType TupleWithSpecials;

    constexpr BinaryContainerType GetContainerType() const noexcept {
        return static_cast<BinaryContainerType>(m_raw & 0x07);
    }
    constexpr bool HasSpecials() const noexcept { return (m_raw & 0x08) != 0; }
    constexpr bool HasIndices() const noexcept { return (m_raw & 0x10) != 0; }
    constexpr SortSpecOrder GetSortOrder() const noexcept {
        return static_cast<SortSpecOrder>(m_raw >> 5 & 0x03);
    }
    explicit constexpr operator signed char() const noexcept {
        return static_cast<signed char>(m_raw);
    }

    /// Compares the bytes.
    friend constexpr bool operator==(BinaryListType, BinaryListType) noexcept = default;

private:
    constexpr BinaryListType(BinaryContainerType container, bool hasSpecials, bool hasIndices,
                             SortSpecOrder order) noexcept
        : m_raw(static_cast<unsigned char>(static_cast<unsigned int>(container) |
                                           (hasSpecials ? 0x08u : 0u) | (hasIndices ? 0x10u : 0u) |
                                           (static_cast<unsigned int>(order) & 0x03u) << 5)) {}

    unsigned char m_raw = 0;
};

inline constexpr BinaryListType BinaryListType::ArrayNoSpecials{0x01};
inline constexpr BinaryListType BinaryListType::ArrayWithSpecials{0x09};
inline constexpr BinaryListType BinaryListType::ByteBlob{0x02};
inline constexpr BinaryListType BinaryListType::CompositeArrayNoIndices{0x03};
inline constexpr BinaryListType BinaryListType::CompositeArrayWithIndices{0x13};
inline constexpr BinaryListType BinaryListType::ConstantArrayNoSpecials{0x04};
inline constexpr BinaryListType BinaryListType::ConstantArrayWithSpecials{0x0C};
inline constexpr BinaryListType BinaryListType::SetNoSpecials{0x05};
inline constexpr BinaryListType BinaryListType::SetWithSpecials{0x0D};
inline constexpr BinaryListType BinaryListType::TupleNoSpecials{0x06};
inline constexpr BinaryListType BinaryListType::TupleWithSpecials{0x0E};

/// The byte in front of a key set: whether a second segment, that of special keys, follows. A byte
/// from outside may name neither.
enum class BinaryKeySetType : unsigned char { NoSpecialKeys = 1, WithSpecialKeys = 2 };

}  // namespace lum::core
