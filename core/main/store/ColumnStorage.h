#pragma once

#include <memory>
#include <utility>

#include "core/main/utility/PackagedArrayView.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"

namespace lum::core {

/// The stored values of an array and, where it has any, a kind for each of them; or a slice of
/// both. Small and with a single owner, since each slice of a column makes one.
template <StorageType T>
class ColumnStorage {
public:
    /// `kinds` may be null; else it has the size of `values`.
    ColumnStorage(PackagedArrayView<T>&& values, PackagedArrayView<SpecialKind>&& kinds)
        : m_valueBlock(values.GetStorage().get()),
          m_kindBlock(kinds.GetStorage().get()),
          m_values(values.GetData()),
          m_kinds(kinds.GetData()),
          m_size(values.GetSize()) {
        m_owner = MakeOwner(values.TakeStorage(), kinds.TakeStorage());
    }
    /// `count` elements of `other` from `startIndex` on, which the caller has compared with the
    /// size.
    ColumnStorage(const ColumnStorage& other, lumsize_t startIndex, lumsize_t count) noexcept
        : m_owner(other.m_owner),
          m_valueBlock(other.m_valueBlock),
          m_kindBlock(other.m_kindBlock),
          m_values(other.m_values + startIndex),
          m_kinds(other.HasKinds() ? other.m_kinds + startIndex : nullptr),
          m_size(count) {}

    lumsize_t GetSize() const noexcept { return m_size; }
    bool HasKinds() const noexcept { return m_kindBlock != nullptr; }

    ArrayView<const T> GetValues() const noexcept { return {m_values, m_size}; }
    /// Empty without kinds.
    ArrayView<const SpecialKind> GetKinds() const noexcept {
        return {m_kinds, HasKinds() ? m_size : 0};
    }
    const T* GetValueData() const noexcept { return m_values; }
    /// Null without kinds.
    const SpecialKind* GetKindData() const noexcept { return m_kinds; }

    /// Views of the blocks; the caller has compared the range with the size, and asked HasKinds.
    ConstRawDataView GetRawValues(lumsize_t startIndex, lumsize_t length) const {
        return MakeView(*m_valueBlock, m_values, startIndex, length);
    }
    ConstRawDataView GetRawKinds(lumsize_t startIndex, lumsize_t length) const {
        return MakeView(*m_kindBlock, m_kinds, startIndex, length);
    }

private:
    using Block = std::shared_ptr<const RawData>;
    using Owner = std::shared_ptr<const void>;

    static Owner MakeOwner(Block&& values, Block&& kinds) {
        return kinds == nullptr ? Owner(std::move(values))
                                : std::make_shared<const std::pair<Block, Block>>(std::move(values),
                                                                                  std::move(kinds));
    }

    template <typename Element>
    static ConstRawDataView MakeView(const RawData& block, const Element* elements,
                                     lumsize_t startIndex, lumsize_t length) {
        const auto offset =
            static_cast<lumsize_t>(elements - block.template ViewAs<Element>().GetData());
        return {block, offset + startIndex, length};
    }

    Owner m_owner;  // Keeps both blocks alive.
    const RawData* m_valueBlock;
    const RawData* m_kindBlock;
    const T* m_values;
    const SpecialKind* m_kinds;
    lumsize_t m_size;
};

}  // namespace lum::core
