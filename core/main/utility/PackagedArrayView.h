#pragma once

#include <concepts>
#include <memory>
#include <utility>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/RawData.h"

namespace lum::core {

/// A read-only view of raw storage that also keeps the storage alive, or null. Copies and slices
/// share the storage.
template <typename T>
class PackagedArrayView {
public:
    PackagedArrayView() noexcept = default;
    /// All of `storage`; null for null. Errors: IllegalCast where the storage is no block of `T`.
    explicit PackagedArrayView(std::shared_ptr<const RawData> storage)
        : m_storage(std::move(storage)) {
        if (m_storage != nullptr) {
            m_view = m_storage->ViewAs<T>();
        }
    }
    /// A block of `T` by its own type, which needs no look at its width.
    template <std::derived_from<TypedRawData<T>> Block>
    explicit PackagedArrayView(std::shared_ptr<const Block> storage)
        : m_storage(std::move(storage)), m_view(static_cast<const Block&>(*m_storage).GetView()) {}
    /// A block whose view the caller has at hand.
    PackagedArrayView(std::shared_ptr<const TypedRawData<T>>&& storage,
                      ArrayView<const T> view) noexcept
        : m_storage(std::move(storage)), m_view(view) {}
    explicit PackagedArrayView(std::vector<T>&& elements)
        : PackagedArrayView(std::make_shared<const VectorRawData<T>>(std::move(elements))) {}
    /// `length` elements of `other` from `startIndex` on, which the caller has compared with the
    /// size; null of a null view.
    PackagedArrayView(const PackagedArrayView& other, lumsize_t startIndex,
                      lumsize_t length) noexcept
        : m_storage(other.m_storage) {
        if (m_storage != nullptr) {
            m_view = {other.m_view.GetData() + startIndex, length};
            m_startIndex = other.m_startIndex + startIndex;
        }
    }

    bool IsNull() const noexcept { return m_storage == nullptr; }
    lumsize_t GetSize() const noexcept { return static_cast<lumsize_t>(m_view.GetSize()); }
    const std::shared_ptr<const RawData>& GetStorage() const noexcept { return m_storage; }
    /// The storage, which the view no longer shares: it is good while the storage lives.
    std::shared_ptr<const RawData> TakeStorage() noexcept { return std::move(m_storage); }
    /// Where the view begins in the storage.
    lumsize_t GetStartIndex() const noexcept { return m_startIndex; }

    /// Errors: IllegalOperation where the view is null.
    ArrayView<const T> GetView() const {
        LUM_CHECK_NOT(IsNull(), LumError::IllegalOperation);
        return m_view;
    }
    /// The elements, or null.
    const T* GetData() const noexcept { return m_view.GetData(); }
    const T& operator[](lumsize_t index) const { return m_view[index]; }

private:
    std::shared_ptr<const RawData> m_storage;
    ArrayView<const T> m_view;
    lumsize_t m_startIndex = 0;
};

}  // namespace lum::core
