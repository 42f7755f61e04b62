#pragma once

#include <typeinfo>
#include <utility>
#include <vector>

#include "core/main/store/ValueSet.h"
#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"

namespace lum::core {

/// A walk over the values and then the special members of a set.
template <StorageType T>
class ValueSet<T>::SetStoreValueIterator final : public IStoreValueIterator {
public:
    enum class Stage { Begin = 0, Specials = 1, End = 2 };

    SetStoreValueIterator(const Type* elementType, Stage stage,
                          std::shared_ptr<const Values> values,
                          std::shared_ptr<const Kinds> specials)
        : m_elementType(elementType),
          m_stage(stage),
          m_values(std::move(values)),
          m_specials(std::move(specials)) {
        LUM_CHECK_TEXT("(stage == Stage::Begin || stage == Stage::End)",
                       stage == Stage::Begin || stage == Stage::End, LumError::InvalidIterator);
        LUM_CHECK_NOT_NULL(m_specials.get(), LumError::NullSpecials);
        const bool isEnd = stage == Stage::End;
        m_value = isEnd ? m_values->end() : m_values->begin();
        m_special = isEnd ? m_specials->end() : m_specials->begin();
        Settle();
    }

    std::unique_ptr<IStoreValueIterator> Clone() const override {
        return std::make_unique<SetStoreValueIterator>(*this);
    }
    bool operator!=(const std::unique_ptr<IStoreValueIterator>& other) const override {
        const IStoreValueIterator* const iterator = other.get();
        if (iterator == nullptr || typeid(*iterator) != typeid(*this)) {
            return false;
        }
        const auto& place = static_cast<const SetStoreValueIterator&>(*iterator);
        return m_stage != place.m_stage || m_value != place.m_value || m_special != place.m_special;
    }
    void Advance() override {
        LUM_CHECK(m_stage != Stage::End, LumError::IteratorOutOfBounds);
        if (m_stage == Stage::Begin) {
            ++m_value;
        } else {
            ++m_special;
        }
        Settle();
    }
    SV Dereference() const override {
        LUM_CHECK(m_stage != Stage::End, LumError::IteratorOutOfBounds);
        return m_stage == Stage::Begin ? MakeStoreValueFromStorageType<T>(m_elementType, *m_value)
                                       : factory::MakeSpecial(m_elementType, *m_special);
    }

private:
    /// Leaves a stage that has nothing more to visit.
    void Settle() {
        if (m_stage == Stage::Begin && m_value == m_values->end()) {
            m_stage = Stage::Specials;
        }
        if (m_stage == Stage::Specials && m_special == m_specials->end()) {
            m_stage = Stage::End;
        }
    }

    const Type* m_elementType;
    Stage m_stage;
    std::shared_ptr<const Values> m_values;
    std::shared_ptr<const Kinds> m_specials;
    typename Values::const_iterator m_value;
    Kinds::const_iterator m_special;
};

template <StorageType T>
ValueSet<T>::StoreValueIterableImpl::StoreValueIterableImpl(
    const Type* elementType, const std::shared_ptr<const Values>& values,
    const std::shared_ptr<const Kinds>& specials)
    : m_begin(std::make_unique<SetStoreValueIterator>(
          elementType, SetStoreValueIterator::Stage::Begin, values, specials)),
      m_end(std::make_unique<SetStoreValueIterator>(elementType, SetStoreValueIterator::Stage::End,
                                                    values, specials)) {}

template <StorageType T>
ValueSet<T>::ValueSet(const CollectionType* type, std::unique_ptr<Values> values,
                      std::unique_ptr<Kinds> specials)
    : ValueSet(type, std::shared_ptr<const Values>(std::move(values)),
               specials == nullptr ? std::make_shared<const Kinds>()
                                   : std::shared_ptr<const Kinds>(std::move(specials))) {}

template <StorageType T>
ValueSet<T>::ValueSet(const CollectionType* type, std::shared_ptr<const Values> values,
                      std::shared_ptr<const Kinds> specials)
    : m_type(type),
      m_values(std::move(values)),
      m_specials(std::move(specials)),
      m_kindIterable(m_specials.get()) {
    Validate();
}

template <StorageType T>
ValueSet<T>::ValueSet(const ValueSet& other)
    : StoreValue(other),
      IStoreCollection(other),
      ITypedSet<T>(other),
      m_type(other.m_type),
      m_values(other.m_values),
      m_specials(other.m_specials),
      m_kindIterable(m_specials.get()) {}

template <StorageType T>
void ValueSet<T>::Validate() const {
    LUM_CHECK_NOT_NULL(m_type, LumError::NullArgument);
    LUM_CHECK_NOT_NULL(m_values, LumError::NullSet);
    if constexpr (std::is_same_v<T, RIndirectString>) {
        // An element type that is no string fails the check below, which stands behind this one.
        if (m_type->GetElementType()->Is(StoreType::String)) {
            const Collation& c = m_type->GetElementType()->As<StringType>().GetCollation();
            const Values& set = *m_values;
            LUM_CHECK(c == set.hash_function().GetCollation(), LumError::CollationMismatch);
            LUM_CHECK(c == set.key_eq().GetCollation(), LumError::CollationMismatch);
        }
    }
    LUM_CHECK_NOT_NULL(m_specials, LumError::NullSpecials);
    if constexpr (!std::is_same_v<T, SV>) {
        using StorageT = T;
        LUM_CHECK(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()),
                  LumError::TypeMismatchExpected);
    }
    if (!m_specials->empty()) {
        LUM_CHECK_NOT(IsCollectionStoreType(m_type->GetElementType()->GetStoreType()),
                      LumError::NestedCollectionSpecials);
    }
}

template <StorageType T>
lumsize_t ValueSet<T>::GetCount() const {
    return LumSizeCastSafe(uint64{m_values->size()} + m_specials->size());
}

template <StorageType T>
std::unique_ptr<StoreValue> ValueSet<T>::Clone() const {
    return std::make_unique<ValueSet>(*this);
}

template <StorageType T>
SV ValueSet<T>::GetValue(const RInternString& key) const {
    if constexpr (std::is_same_v<T, SV>) {
        LUM_FAIL(LumError::ValueSetStringLookup);
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        LUM_FAIL(LumError::NotImplemented);
    } else {
        return factory::MakeBool(Contains(ReadStorage<T>(GetElementType(), key.GetValue())));
    }
}

template <StorageType T>
SV ValueSet<T>::TryGetValue([[maybe_unused]] const RInternString& key) const {
    if constexpr (std::is_same_v<T, SV> || std::is_same_v<T, LumTuple>) {
        return nullptr;
    } else {
        const std::optional<T> value = TryReadStorage<T>(GetElementType(), key.GetValue());
        return value.has_value() ? factory::MakeBool(Contains(*value)) : nullptr;
    }
}

template <StorageType T>
bool ValueSet<T>::HasKey(const RInternString& /*key*/) const {
    return true;
}

template <StorageType T>
const IUniformCollection::StoreValueIterable& ValueSet<T>::GetStoreValueIterable() const {
    std::call_once(m_iterableFlag, [this] {
        m_iterable =
            std::make_unique<StoreValueIterableImpl>(GetElementType(), m_values, m_specials);
    });
    return *m_iterable;
}

template <StorageType T>
lumsize_t ValueSet<T>::GetSpecialCount() const {
    return LumSizeCastSafe(m_specials->size());
}

template <StorageType T>
bool ValueSet<T>::HasSpecial(SpecialKind kind) const {
    return m_specials->count(kind) != 0;
}

template <StorageType T>
SV ValueSet<T>::ToArray(bool includeSpecials) const {
    std::vector<T> values;
    if (!includeSpecials || m_specials->empty()) {
        values.assign(m_values->begin(), m_values->end());
        return factory::MakeArray<T>(GetElementType(), std::move(values), SortSpecOrder::UNKNOWN);
    }
    const lumsize_t count = GetCount();
    values.reserve(count);
    values.assign(m_values->begin(), m_values->end());
    auto kinds = std::make_unique<std::vector<SpecialKind>>(values.size(), SpecialKind::Normal);
    kinds->insert(kinds->end(), m_specials->begin(), m_specials->end());
    values.resize(count);
    return factory::MakeArray<T>(GetElementType(),
                                 std::make_unique<std::vector<T>>(std::move(values)), nullptr,
                                 std::move(kinds), SortSpecOrder::UNKNOWN);
}

template <StorageType T>
SV ValueSet<T>::WithoutSpecials() const {
    return std::make_shared<ValueSet>(m_type, m_values, std::make_shared<const Kinds>());
}

template <StorageType T>
bool ValueSet<T>::Contains(const T& value) const {
    return m_lookup.Contains(*m_values, value);
}

template <StorageType T>
void ValueSet<T>::ContainsEach(ArrayView<const T> values, ArrayView<unsigned char> out) const {
    LUM_CHECK(out.GetSize() >= values.GetSize(), LumError::OutOfBounds);
    m_lookup.ContainsEach(*m_values, values.GetData(), out.GetData(), values.GetSize());
}

template <StorageType T>
SetCursor<T> ValueSet<T>::GetValuesCursor() const {
    return {m_type, *m_values};
}

template <StorageType T>
SV factory::MakeSet(const Type* elementType, std::unique_ptr<SetContainer<T>> values,
                    std::unique_ptr<std::unordered_set<SpecialKind>> specials) {
    const CollectionType* const type = SetType::Get(elementType);
    if constexpr (std::is_same_v<T, LumTuple>) {
        if (values != nullptr) {
            // Rows make their blocks when they are first read, which must not happen on two
            // threads.
            for (const LumTuple& row : *values) {
                row.GetTupleData().EnsureBlock();
            }
        }
    }
    return std::make_shared<ValueSet<T>>(type, std::move(values), std::move(specials));
}

// A class and its maker for one storage type.
#define LUM_INSTANTIATE_VALUE_SET(T)                   \
    template class ValueSet<T>;                        \
    template LUM_CORE_API SV factory::MakeSet<T>(      \
        const Type*, std::unique_ptr<SetContainer<T>>, \
        std::unique_ptr<std::unordered_set<SpecialKind>>);

}  // namespace lum::core
