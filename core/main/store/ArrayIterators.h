#pragma once

#include <memory>
#include <typeinfo>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/ArrayCursor.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"

namespace lum::core {

/// A walk over the boxed elements of an array. Places compare by position alone.
template <typename T>
class ArrayStoreValueIterator final : public IStoreValueIterator {
public:
    /// `cursor` stands at the first element; the iterator at `position`.
    ArrayStoreValueIterator(const Type* elementType, const ArrayCursor<T>& cursor,
                            lumsize_t position)
        : m_elementType(elementType), m_cursor(cursor), m_pos(position), m_size(cursor.GetSize()) {}

    std::unique_ptr<IStoreValueIterator> Clone() const override {
        return std::make_unique<ArrayStoreValueIterator>(*this);
    }
    bool operator!=(const std::unique_ptr<IStoreValueIterator>& other) const override {
        const IStoreValueIterator* const place = other.get();
        return place != nullptr && typeid(*place) == typeid(*this) &&
               static_cast<const ArrayStoreValueIterator*>(place)->m_pos != m_pos;
    }
    void Advance() override {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        ++m_pos;
        ++m_cursor;
    }
    SV Dereference() const override {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        const SpecialKind kind = m_cursor.GetSpecialKind();
        return kind != SpecialKind::Normal
                   ? factory::MakeSpecial(m_elementType, kind)
                   : MakeStoreValueFromStorageType<T>(m_elementType, *m_cursor);
    }

private:
    const Type* m_elementType;
    ArrayCursor<T> m_cursor;  // At m_pos, but for the end.
    lumsize_t m_pos;
    lumsize_t m_size;
};

/// A walk over an array whose elements are all the one object.
class ConstantStoreValueIterator final : public IStoreValueIterator {
public:
    ConstantStoreValueIterator(SV element, lumsize_t position, lumsize_t size)
        : m_element(std::move(element)), m_pos(position), m_size(size) {}

    std::unique_ptr<IStoreValueIterator> Clone() const override {
        return std::make_unique<ConstantStoreValueIterator>(*this);
    }
    bool operator!=(const std::unique_ptr<IStoreValueIterator>& other) const override {
        const IStoreValueIterator* const place = other.get();
        return place != nullptr && typeid(*place) == typeid(*this) &&
               static_cast<const ConstantStoreValueIterator*>(place)->m_pos != m_pos;
    }
    void Advance() override {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        ++m_pos;
    }
    SV Dereference() const override {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        return m_element;
    }

private:
    SV m_element;
    lumsize_t m_pos;
    lumsize_t m_size;
};

/// The two ends of a walk over an array.
class ArrayStoreValueIterable final : public IUniformCollection::StoreValueIterable {
public:
    template <typename T>
    ArrayStoreValueIterable(const Type* elementType, const ArrayCursor<T>& cursor)
        : m_begin(std::make_unique<ArrayStoreValueIterator<T>>(elementType, cursor, 0)),
          m_end(std::make_unique<ArrayStoreValueIterator<T>>(elementType, cursor,
                                                             cursor.GetSize())) {}
    /// `size` times the same element.
    ArrayStoreValueIterable(const SV& element, lumsize_t size)
        : m_begin(std::make_unique<ConstantStoreValueIterator>(element, 0, size)),
          m_end(std::make_unique<ConstantStoreValueIterator>(element, size, size)) {}

    const std::unique_ptr<IStoreValueIterator>& begin() const override { return m_begin; }
    const std::unique_ptr<IStoreValueIterator>& end() const override { return m_end; }

private:
    std::unique_ptr<IStoreValueIterator> m_begin;
    std::unique_ptr<IStoreValueIterator> m_end;
};

}  // namespace lum::core
