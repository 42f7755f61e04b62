#include "core/main/store/ValueKeyMap.h"

#include <typeinfo>
#include <utility>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/types/HeterogeneousTypes.h"

namespace lum::core {
namespace {

void CheckKey(const RInternString& key) {
    LUM_CHECK_NOT(key.GetValue().isEmpty(), LumError::EmptyKeyPath);
}

/// Whether the two values have one type. The type of a key map is made from all its members, and
/// stays in the registry, so it is only asked for where nothing simpler decides.
bool HaveSameType(const SV& value, const SV& other) {
    return value == other ||
           (value->GetStoreType() == other->GetStoreType() && value->GetType() == other->GetType());
}

void CheckSameType(const SV& value, const SV& stored) {
    LUM_CHECK_TEXT("(value->GetType() == itr->second->GetType())", HaveSameType(value, stored),
                   LumError::TypeMismatchExpected);
}

}  // namespace

// A chain of key maps may be as long as a key path. Members that nobody else holds are taken apart
// in a loop, since destroying them one inside the other would run out of stack.
ValueKeyMap::~ValueKeyMap() {
    std::vector<MemberMap> rest;
    const auto take = [&rest](const MemberMap& members) {
        for (const auto& [key, value] : members) {
            StoreValue& member = *value;
            if (&typeid(member) == &typeid(ValueKeyMap) && value.use_count() == 1) {
                rest.push_back(std::move(static_cast<ValueKeyMap&>(member).m_members));
            }
        }
    };
    take(m_members);
    while (!rest.empty()) {
        const MemberMap members = std::move(rest.back());
        rest.pop_back();
        take(members);
    }
}

lumsize_t ValueKeyMap::GetCount() const {
    return LumSizeCastSafe(m_members.size());
}

const Type* ValueKeyMap::GetType() const {
    std::vector<NamedHeterogeneousType::Member> members;
    members.reserve(m_members.size());
    for (const auto& [key, value] : m_members) {
        members.emplace_back(key, value->GetType());
    }
    return KeyMapType::Get(std::move(members));
}

std::unique_ptr<StoreValue> ValueKeyMap::Clone() const {
    MemberMap members;
    members.Reserve(m_members.size());
    for (const auto& [key, value] : m_members) {
        members.Insert(key, value->Clone());
    }
    return std::make_unique<ValueKeyMap>(std::move(members));
}

SV ValueKeyMap::GetMember(const RInternString& key) const {
    const SV* const member = FindMember(key);
    if (member == nullptr) {
        LUM_FAIL(LumError::KeyNotFound, key.GetValue());
    }
    return *member;
}

SV ValueKeyMap::TryGetValue(const RInternString& key) const {
    const SV* const member = FindMember(key);
    return member == nullptr ? nullptr : *member;
}

bool ValueKeyMap::HasKey(const RInternString& key) const {
    return FindMember(key) != nullptr;
}

void ValueKeyMap::AddValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    LUM_CHECK_TEXT("(result.second)", m_members.Insert(key, value), LumError::ImmutableValue);
}

void ValueKeyMap::UpdateValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    const SV* const stored = FindMember(key);
    LUM_CHECK_TEXT("(itr != m_dict->cend())", stored != nullptr, LumError::ValueNotYetComputed);
    CheckSameType(value, *stored);
    m_members.Replace(key, value);
}

void ValueKeyMap::SetValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    if (const SV* const stored = FindMember(key)) {
        CheckSameType(value, *stored);
        m_members.Replace(key, value);
    } else {
        m_members.Insert(key, value);
    }
}

const SV& ValueKeyMap::GetEntry(const RInternString& key) const {
    return EntryOf(m_members, key);
}

DictionaryCursor<RInternString, SV> ValueKeyMap::GetEntries() const {
    return {GetKeyType(), m_members};
}

SV factory::MakeKeyMap(std::unordered_map<RInternString, SV>&& values) {
    return MakeKeyMap(MemberMap(std::move(values)));
}

SV factory::MakeKeyMap(std::unique_ptr<std::unordered_map<RInternString, SV>> values) {
    return MakeKeyMap(values == nullptr ? MemberMap() : MemberMap(std::move(*values)));
}

SV factory::MakeKeyMap(MemberMap&& members) {
    return std::make_shared<ValueKeyMap>(std::move(members));
}

}  // namespace lum::core
