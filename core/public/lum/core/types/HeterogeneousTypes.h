#pragma once

#include <vector>

#include "lum/core/types/Type.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// The type of a collection whose members have types of their own. See Type for threads, ownership.
class LUM_CORE_API HeterogeneousType : public Type {
public:
    /// The type of the same members with their types' base types; this type if that is the same.
    const Type* GetBaseType() const override { return m_baseType; }

protected:
    using Type::Type;
    /// Called once, by the constructor of the concrete class.
    void SetBaseType(const HeterogeneousType* baseType) { m_baseType = baseType; }

private:
    const HeterogeneousType* m_baseType = nullptr;
};

/// The type of named members, in the order of their names' text.
///
/// Errors: IllegalElementType for a member without a type; DuplicateMember, with the name as
/// details, after a line of level Notice in the log.
class LUM_CORE_API NamedHeterogeneousType : public HeterogeneousType {
public:
    class LUM_CORE_API Member {
    public:
        Member(const RInternString& name, const Type* type);

        const RInternString& GetName() const noexcept { return m_name; }
        const Type* GetType() const noexcept { return m_type; }
        uint64 GetHashValue() const noexcept { return m_hash; }
        /// "(name, type)".
        TStringCore ToString() const;

        friend bool operator==(const Member& a, const Member& b) noexcept {
            return a.m_name == b.m_name && a.m_type == b.m_type;
        }

    private:
        RInternString m_name;
        const Type* m_type;
        uint64 m_hash;
    };

    /// The type of the member, or null where there is none. Cost: O(members).
    virtual const Type* TryGetMemberType(const RInternString& name) const;

    const std::vector<Member>& GetMembers() const noexcept { return m_members; }
    lumsize_t GetCount() const;
    /// For instance "M{a:i, b:b}"; the code alone without members.
    TStringCore ToString() const override;

protected:
    /// `members` in the order of their names.
    NamedHeterogeneousType(StoreType storeType, std::vector<Member>&& members);

    /// The members with their base types.
    std::vector<Member> GetBaseMembers() const;

private:
    const std::vector<Member> m_members;
};

/// The type of a key map. Get takes the members in any order.
class LUM_CORE_API KeyMapType final : public NamedHeterogeneousType {
public:
    static const KeyMapType* Get(std::vector<Member>&& members);
    /// This type's members and `members`.
    const KeyMapType* With(std::vector<Member>&& members) const;

private:
    friend class Context;
    explicit KeyMapType(std::vector<Member>&& members);
};

/// The type of a table, whose members are columns. Get takes them in any order.
/// Errors: TableColumnNotArray where a member's type is no array, after those of its base.
class LUM_CORE_API TableType final : public NamedHeterogeneousType {
public:
    static const TableType* Get(std::vector<Member>&& members);
    /// This type's members and `members`.
    const TableType* With(std::vector<Member>&& members) const;

private:
    friend class Context;
    explicit TableType(std::vector<Member>&& members);
};

}  // namespace lum::core
