#include "core/main/store/ValueKeyMap.h"

#include <typeinfo>
#include <utility>
#include <vector>

#include "core/main/utility/StandardErrors.h"
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

ValueKeyMap::ValueKeyMap(std::unique_ptr<Members> members)
    : m_dict(members == nullptr ? Members() : std::move(*members)) {
    m_index.Reserve(m_dict.size());
    for (const auto& [key, value] : m_dict) {
        LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
        m_index.Put(key, value);
    }
}

// A chain of key maps may be as long as a key path. Members that nobody else holds are taken apart
// in a loop, since destroying them one inside the other would run out of stack.
ValueKeyMap::~ValueKeyMap() {
    struct Content {
        Members members;
        NameIndex index;
    };
    std::vector<Content> rest;
    const auto take = [&rest](const Members& members) {
        for (const auto& [key, value] : members) {
            StoreValue& member = *value;
            // One share is the map's, one its index's.
            if (value.use_count() == 2 && typeid(member) == typeid(ValueKeyMap)) {
                auto& inner = static_cast<ValueKeyMap&>(member);
                rest.push_back({std::move(inner.m_dict), std::move(inner.m_index)});
                inner.m_dict.clear();
            }
        }
    };
    take(m_dict);
    while (!rest.empty()) {
        const Content content = std::move(rest.back());
        rest.pop_back();
        take(content.members);
    }
}

lumsize_t ValueKeyMap::GetCount() const {
    return LumSizeCastSafe(m_dict.size());
}

const Type* ValueKeyMap::GetType() const {
    std::vector<NamedHeterogeneousType::Member> members;
    members.reserve(m_dict.size());
    for (const auto& [key, value] : m_dict) {
        members.emplace_back(key, value->GetType());
    }
    return KeyMapType::Get(std::move(members));
}

std::unique_ptr<StoreValue> ValueKeyMap::Clone() const {
    auto members = std::make_unique<Members>();
    members->reserve(m_dict.size());
    for (const auto& [key, value] : m_dict) {
        members->emplace(key, value->Clone());
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

void ValueKeyMap::Insert(const RInternString& key, const SV& value) {
    m_index.Reserve(m_dict.size() + 1);
    m_index.Put(key, m_dict.emplace(key, value).first->second);
}

void ValueKeyMap::AddValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    LUM_CHECK_TEXT("(result.second)", !HasKey(key), LumError::ImmutableValue);
    Insert(key, value);
}

void ValueKeyMap::UpdateValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    const auto itr = m_dict.find(key);
    LUM_CHECK_TEXT("(itr != m_dict->cend())", itr != m_dict.end(), LumError::ValueNotYetComputed);
    CheckSameType(value, itr->second);
    itr->second = value;
    m_index.Put(key, itr->second);
}

void ValueKeyMap::SetValue(RInternString key, const SV& value) {
    CheckKey(key);
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    const auto itr = m_dict.find(key);
    if (itr == m_dict.end()) {
        return Insert(key, value);
    }
    CheckSameType(value, itr->second);
    itr->second = value;
    m_index.Put(key, itr->second);
}

const SV& ValueKeyMap::GetEntry(const RInternString& key) const {
    return MapAt(m_dict, key);
}

DictionaryCursor<RInternString, SV> ValueKeyMap::GetEntries() const {
    return {GetKeyType(), m_dict};
}

SV factory::MakeKeyMap(std::unordered_map<RInternString, SV>&& values) {
    return MakeKeyMap(std::make_unique<ValueKeyMap::Members>(std::move(values)));
}

SV factory::MakeKeyMap(std::unique_ptr<std::unordered_map<RInternString, SV>> values) {
    return std::make_shared<ValueKeyMap>(std::move(values));
}

}  // namespace lum::core
