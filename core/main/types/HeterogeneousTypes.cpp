#include "lum/core/types/HeterogeneousTypes.h"

#include <algorithm>

#include "core/main/types/Context.h"
#include "lum/core/Check.h"
#include "lum/core/utility/Fnv.h"
#include "lum/core/utility/LumLog.h"
#include "lum/core/utility/RFormatString.h"

namespace lum::core {
namespace {

using Member = NamedHeterogeneousType::Member;

void SortByName(std::vector<Member>& members) {
    std::sort(members.begin(), members.end(), [](const Member& a, const Member& b) {
        return TStringCore::compare(a.GetName(), b.GetName(), CaseSensitivity::Sensitive) == -1;
    });
}

std::vector<Member> Joined(const std::vector<Member>& own, std::vector<Member>&& added) {
    std::vector<Member> members = own;
    members.insert(members.end(), added.begin(), added.end());
    return members;
}

}  // namespace

NamedHeterogeneousType::Member::Member(const RInternString& name, const Type* type)
    : m_name(name), m_type(type) {
    LUM_CHECK_NOT_NULL(type, LumError::IllegalElementType);
    m_hash = HashCombine(name.GetStringId(), type->GetHashValue());
}

TStringCore NamedHeterogeneousType::Member::ToString() const {
    return RFormatString(L"(%1, %2)").arg(m_name.GetValue()).arg(m_type->ToString());
}

NamedHeterogeneousType::NamedHeterogeneousType(StoreType storeType, std::vector<Member>&& members)
    : HeterogeneousType(storeType), m_members(std::move(members)) {
    const auto duplicate = std::adjacent_find(
        m_members.begin(), m_members.end(),
        [](const Member& a, const Member& b) { return a.GetName() == b.GetName(); });
    if (duplicate != m_members.end()) {
        const TStringCore& name = duplicate->GetName();
        LumLog(LumLogLevel::Notice, L"Member " + name + L" is duplicated");
        LUM_FAIL(LumError::DuplicateMember, name);
    }
}

lumsize_t NamedHeterogeneousType::GetCount() const {
    return LumSizeCastSafe(m_members.size());
}

const Type* NamedHeterogeneousType::TryGetMemberType(const RInternString& name) const {
    const auto found = std::find_if(m_members.begin(), m_members.end(),
                                    [&](const Member& member) { return member.GetName() == name; });
    return found == m_members.end() ? nullptr : found->GetType();
}

TStringCore NamedHeterogeneousType::ToString() const {
    TStringCore text = Type::ToString();
    if (m_members.empty()) {
        return text;
    }
    text += u'{';
    for (const Member& member : m_members) {
        if (&member != &m_members.front()) {
            text += L", ";
        }
        text += member.GetName().GetValue();
        text += u':';
        text += member.GetType()->ToString();
    }
    text += u'}';
    return text;
}

std::vector<Member> NamedHeterogeneousType::GetBaseMembers() const {
    std::vector<Member> members;
    members.reserve(m_members.size());
    for (const Member& member : m_members) {
        members.emplace_back(member.GetName(), member.GetType()->GetBaseType());
    }
    return members;
}

KeyMapType::KeyMapType(std::vector<Member>&& members)
    : NamedHeterogeneousType(StoreType::KeyMap, std::move(members)) {
    std::vector<Member> base = GetBaseMembers();
    SetBaseType(base == GetMembers() ? this : Get(std::move(base)));
}

const KeyMapType* KeyMapType::Get(std::vector<Member>&& members) {
    SortByName(members);
    return Context::Get().GetKeyMap(std::move(members));
}

const KeyMapType* KeyMapType::With(std::vector<Member>&& members) const {
    return Get(Joined(GetMembers(), std::move(members)));
}

TableType::TableType(std::vector<Member>&& members)
    : NamedHeterogeneousType(StoreType::Table, std::move(members)) {
    for (const Member& member : GetMembers()) {
        LUM_CHECK(member.GetType()->Is(StoreType::Array), LumError::TableColumnNotArray);
    }
    std::vector<Member> base = GetBaseMembers();
    SetBaseType(base == GetMembers() ? this : Get(std::move(base)));
}

const TableType* TableType::Get(std::vector<Member>&& members) {
    SortByName(members);
    return Context::Get().GetTable(std::move(members));
}

const TableType* TableType::With(std::vector<Member>&& members) const {
    return Get(Joined(GetMembers(), std::move(members)));
}

}  // namespace lum::core
