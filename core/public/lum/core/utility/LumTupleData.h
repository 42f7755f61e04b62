#pragma once

#include <functional>
#include <memory>

#include "lum/core/Export.h"
#include "lum/core/utility/TupleOperations.h"

namespace lum::core {

/// A row of primitives, each with a special kind of its own, packed into one block of bytes. It
/// owns its block, or refers to that of another row; see TupleOperations for what it can be asked.
///
/// Threads: rows are independent; rows that share a block follow the rules of one object.
/// Ownership: an owner has its block alone until somebody refers to it. A reference shares the
///   block, keeps it alive, and sees what is written to it.
/// Errors: those of TupleOperations; std::bad_alloc, and the row stays as it was.
/// Cost: one allocation a block, whatever the number of members.
class LUM_CORE_API LumTupleData : public TupleOperations<LumTupleData> {
public:
    /// An owner of the type without members.
    LumTupleData();
    /// An owner, whose block is made by the first access: kinds Normal, numbers 0, strings empty,
    /// dates LumDateTime(), external values missing.
    explicit LumTupleData(const TupleType* type) : m_type(type), m_ownsData(true) {}
    /// An owner with a copy of the other's block.
    LumTupleData(const LumTupleData& other) : LumTupleData(other, /*owns=*/true) {}
    /// Takes the other's block and ownership; the other stays an owner without a block.
    LumTupleData(LumTupleData&& other) noexcept;
    /// Takes the other's type; an owner copies its block, a reference shares it.
    LumTupleData& operator=(const LumTupleData& other);
    LumTupleData& operator=(LumTupleData&& other) noexcept;
    ~LumTupleData() = default;

    /// An owner with a copy of the block.
    LumTupleData CloneOf() const { return {*this, /*owns=*/true}; }
    /// A reference that shares the block, if it was made by now.
    LumTupleData ReferenceTo() const { return {*this, /*owns=*/false}; }
    bool IsReference() const noexcept { return !m_ownsData; }
    /// Makes the block now, so that threads may share the row.
    /// Errors: LumLogicException Unspecified for a reference without a block.
    void EnsureBlock() const { Block(); }

    LumTupleData& GetTupleData() noexcept { return *this; }
    const LumTupleData& GetTupleData() const noexcept { return *this; }

private:
    friend class TupleOperations<LumTupleData>;
    friend class TupleOperations<LumTuple>;

    LumTupleData(const LumTupleData& other, bool owns);

    lumsize_t GetBlockSize() const;
    const Type* GetMemberType(lumsize_t index) const;
    int CompareTo(const LumTupleData& other) const;
    uint64 ComputeHash() const;

    unsigned char* Block() const {
        if (m_data == nullptr) {
            MakeBlock();
        }
        return m_data.get();
    }
    void MakeBlock() const;
    void CopyData(const LumTupleData& other);
    unsigned char* ValueAt(lumsize_t index) const;
    SpecialKind* SpecialAt(lumsize_t index) const;
    template <typename T>
    T& At(lumsize_t index) const {
        return *reinterpret_cast<T*>(ValueAt(index));
    }

    const TupleType* m_type;
    bool m_ownsData;
    mutable std::shared_ptr<unsigned char> m_data;  // Null until first touched.
};

}  // namespace lum::core

template <>
struct std::hash<lum::core::LumTupleData> {
    std::size_t operator()(const lum::core::LumTupleData& tuple) const {
        return tuple.GetHashValue();
    }
};
