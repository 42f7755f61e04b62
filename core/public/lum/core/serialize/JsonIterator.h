#pragma once

#include <memory>
#include <utility>

#include "lum/core/Export.h"

namespace lum::core {

/// A place among the items of a JSON array or dictionary; `T` is what it gives for an item.
///
/// Threads: one at a time, together with the items that were taken from it.
/// Ownership: an iterator and its items keep the parsed text alive.
/// Errors: LumRuntimeException with IteratorOutOfBounds for Get and MoveNext at the end.
template <typename T>
class LUM_CORE_API IJsonIteratorAdapter {
public:
    virtual ~IJsonIteratorAdapter() = default;
    /// Whether both stand at the same place. Only places of one walk can be compared.
    virtual bool IsEqual(const IJsonIteratorAdapter<T>& other) const = 0;
    /// The item, good for as long as the caller keeps it.
    virtual T Get() = 0;
    virtual void MoveNext() = 0;
};

/// The handle of such a place, for range-based loops. Copies share the place: what moves one of
/// them moves all.
template <typename T>
class JsonIterator {
public:
    explicit JsonIterator(std::shared_ptr<IJsonIteratorAdapter<T>> adapter) noexcept
        : m_adapter(std::move(adapter)) {}

    T operator*() const { return m_adapter->Get(); }
    JsonIterator& operator++() {
        m_adapter->MoveNext();
        return *this;
    }
    friend bool operator==(const JsonIterator& left, const JsonIterator& right) {
        return left.m_adapter->IsEqual(*right.m_adapter);
    }

private:
    std::shared_ptr<IJsonIteratorAdapter<T>> m_adapter;
};

}  // namespace lum::core
