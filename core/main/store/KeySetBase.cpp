#include "core/main/store/KeySetBase.h"

#include <optional>
#include <typeinfo>
#include <utility>

#include "core/main/store/UnorderedMapUtil.h"
#include "core/main/utility/Parser.h"
#include "core/main/utility/StandardErrors.h"
#include "lum/core/Check.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/StringType.h"

namespace lum::core {

// KeySetBase --------------------------------------------------------------------------------------

KeySetBase::KeySetBase(const KeySetType* type, ErasedContainer&& values, ErasedContainer&& specials)
    : m_type(type), m_values(std::move(values)), m_specials(std::move(specials)) {
    LUM_CHECK_NOT_NULL(m_values, LumError::NullArray);
    LUM_CHECK_NOT_NULL(m_specials, LumError::NullSpecials);
}

// A copy shares the containers, so its walk has the same ends.
KeySetBase::KeySetBase(const KeySetBase& other)
    : StoreValue(other),
      IStoreCollection(other),
      IUniformCollection(other),
      m_type(other.m_type),
      m_values(other.m_values),
      m_specials(other.m_specials) {
    SetElements(other.m_elements.m_begin->Clone(), other.m_elements.m_end->Clone());
}

KeySetBase::~KeySetBase() = default;

SV KeySetBase::Share(std::unique_ptr<KeySetBase>&& keySet) {
    return std::move(keySet);
}

void KeySetBase::CheckCollations(const CollatorHash& hash, const CollatorEqualTo& equality) const {
    const Collation& c = m_type->GetKeyType()->As<StringType>().GetCollation();
    LUM_CHECK_TEXT("(c == set.hash_function().GetCollation())", c == hash.GetCollation(),
                   LumError::CollationMismatch);
    LUM_CHECK_TEXT("(c == set.key_eq().GetCollation())", c == equality.GetCollation(),
                   LumError::CollationMismatch);
}

void KeySetBase::SetElements(std::unique_ptr<IStoreValueIterator> begin,
                             std::unique_ptr<IStoreValueIterator> end) {
    m_elements.m_begin = std::move(begin);
    m_elements.m_end = std::move(end);
}

lumsize_t KeySetBase::NarrowCount(uint64 count) {
    return LumSizeCastSafe(count);
}

// KeySetOverKeys ----------------------------------------------------------------------------------

namespace {

// Rows and handles have no text.
template <typename K>
constexpr bool kHasText = !std::is_same_v<K, LumTuple> && !std::is_same_v<K, SV>;

}  // namespace

template <StorageType K>
SV KeySetOverKeys<K>::GetValue([[maybe_unused]] const RInternString& key) const {
    if constexpr (kHasText<K>) {
        SV element;
        if (!FindElement(ReadStorage<K>(GetKeySetType().GetKeyType(), key.GetValue()), &element)) {
            ThrowInvalidMapKey();
        }
        return element;
    } else {
        LUM_FAIL(LumError::NotImplemented);
    }
}

template <StorageType K>
SV KeySetOverKeys<K>::TryGetValue([[maybe_unused]] const RInternString& key) const {
    SV element;
    if constexpr (kHasText<K>) {
        const auto stored = TryReadStorage<K>(GetKeySetType().GetKeyType(), key.GetValue());
        if (stored.has_value()) {
            FindElement(*stored, &element);
        }
    }
    return element;
}

template <StorageType K>
bool KeySetOverKeys<K>::HasKey([[maybe_unused]] const RInternString& key) const {
    if constexpr (kHasText<K>) {
        const auto stored = TryReadStorage<K>(GetKeySetType().GetKeyType(), key.GetValue());
        return stored.has_value() && FindElement(*stored, nullptr);
    } else {
        return false;
    }
}

template <StorageType K>
void KeySetOverKeys<K>::CheckKeyType() const {
    if constexpr (!std::is_same_v<K, SV>) {
        LUM_CHECK_TEXT("(StorageTypeTraits<StorageK>::IsMatchingType(m_type->GetKeyType()))",
                       StorageTypeTraits<K>::IsMatchingType(GetKeySetType().GetKeyType()),
                       LumError::TypeMismatchExpected);
    }
}

// KeySetElementUtil -------------------------------------------------------------------------------

template <StorageType V>
ErasedContainer KeySetElementUtil<V>::Erase(std::unique_ptr<Specials>&& specials) {
    return EraseContainer(std::move(specials));
}

template <StorageType V>
void KeySetElementUtil<V>::CheckElementType([[maybe_unused]] const KeySetType* type) {
    if constexpr (!std::is_same_v<V, SV>) {
        LUM_CHECK_TEXT("(StorageTypeTraits<StorageV>::IsMatchingType(m_type->GetElementType()))",
                       StorageTypeTraits<V>::IsMatchingType(type->GetElementType()),
                       LumError::TypeMismatchExpected);
    }
}

template <StorageType V>
bool KeySetElementUtil<V>::HasKey(const Specials* specials, SpecialKind kind) {
    return UnorderedMapUtil::Contains(specials, kind);
}

template <StorageType V>
const V& KeySetElementUtil<V>::GetValue(const Specials* specials, SpecialKind kind) {
    return UnorderedMapUtil::At(specials, kind);
}

template <StorageType V>
bool KeySetElementUtil<V>::BoxFound(const Type* elementType, const V* found, SV* element) {
    if (found != nullptr && element != nullptr) {
        *element = MakeStoreValueFromStorageType<V>(elementType, *found);
    }
    return found != nullptr;
}

// KeySetElementWalk -------------------------------------------------------------------------------

template <StorageType V>
KeySetElementWalk<V>::KeySetElementWalk(const Type* elementType, SpecialPosition special,
                                        SpecialPosition specialEnd)
    : m_elementType(elementType), m_special(special), m_specialEnd(specialEnd) {}

template <StorageType V>
void KeySetElementWalk<V>::MoveTo(const V* normal) {
    m_isAtNormal = normal != nullptr;
    m_element = m_isAtNormal ? normal : m_special == m_specialEnd ? nullptr : &m_special->second;
}

template <StorageType V>
bool KeySetElementWalk<V>::operator!=(const std::unique_ptr<IStoreValueIterator>& other) const {
    const IStoreValueIterator* const iterator = other.get();
    // No two elements stand at one address.
    return iterator != nullptr && typeid(*iterator) == typeid(*this) &&
           static_cast<const KeySetElementWalk&>(*iterator).m_element != m_element;
}

template <StorageType V>
void KeySetElementWalk<V>::Advance() {
    FailAtEnd();
    if (m_isAtNormal) {
        MoveTo(StepNormal());
    } else {
        ++m_special;
        MoveTo(nullptr);
    }
}

template <StorageType V>
SV KeySetElementWalk<V>::Dereference() const {
    FailAtEnd();
    return MakeStoreValueFromStorageType<V>(m_elementType, *m_element);
}

template <StorageType V>
void KeySetElementWalk<V>::FailAtEnd() const {
    if (m_element == nullptr) {
        LUM_FAIL(LumError::IteratorOutOfBounds);
    }
}

#define LUM_INSTANTIATE_KEY_SET_PARTS(T)  \
    template class KeySetOverKeys<T>;     \
    template struct KeySetElementUtil<T>; \
    template class KeySetElementWalk<T>;

LUM_FOR_EACH_STORAGE_TYPE(LUM_INSTANTIATE_KEY_SET_PARTS)

}  // namespace lum::core
