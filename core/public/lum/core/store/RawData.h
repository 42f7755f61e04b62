#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/SharedBuffer.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/store/ValueCompositeArrayRange.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

class LumTuple;
class RIndirectString;
template <typename T>
class TypedRawData;

/// The raw storage of a column: a block of elements of one width.
///
/// Threads: a block is written before it stands in a collection, by one thread; from then on any
///   number of threads read it.
/// Ownership: a block owns its elements or keeps alive the memory that they stand in.
/// Units: sizes and indices are elements; widths are bytes.
/// Errors: as told at the operations; the data stays as it was.
class LUM_CORE_API RawData {
public:
    virtual ~RawData();
    RawData(const RawData&) = delete;
    RawData& operator=(const RawData&) = delete;

    /// The elements as bytes. The view's count is that of the elements, not of the bytes.
    virtual ArrayView<const unsigned char> GetByteView() const = 0;
    virtual ArrayView<unsigned char> GetByteView() = 0;

    lumsize_t GetSize() const noexcept { return m_size; }
    lumsize_t GetTypeSize() const noexcept { return m_typeSize; }

    /// The elements as `T`. Only the width is compared for plain numbers, since integers, reals,
    /// dates and colours share storage by design; any other `T` must be the block's own. Bools are
    /// read as unsigned char, since a byte from outside may be neither 0 nor 1.
    /// Errors: IllegalCast.
    template <typename T>
    ArrayView<const T> ViewAs() const {
        return ViewAs<const T>(*this);
    }
    template <typename T>
    ArrayView<T> ViewAs() {
        return ViewAs<T>(*this);
    }

protected:
    RawData(lumsize_t size, lumsize_t typeSize) noexcept : m_size(size), m_typeSize(typeSize) {}
    RawData(RawData&& other) noexcept
        : m_size(std::exchange(other.m_size, 0)), m_typeSize(other.m_typeSize) {}

private:
    template <typename T, typename Self>
    static ArrayView<T> ViewAs(Self& self);

    lumsize_t m_size;
    lumsize_t m_typeSize;
};

/// A block that knows the type of its elements.
template <typename T>
class LUM_CORE_API TypedRawData : public RawData {
public:
    virtual ArrayView<const T> GetView() const = 0;
    virtual ArrayView<T> GetView() = 0;

protected:
    TypedRawData(lumsize_t size, lumsize_t typeSize) noexcept : RawData(size, typeSize) {}
    TypedRawData(TypedRawData&&) noexcept = default;
};

/// A block that owns its elements in a vector.
/// Errors: OutOfRange from the constructors, plain, beyond 2^32 - 1 elements.
template <typename T>
class LUM_CORE_API VectorRawData final : public TypedRawData<T> {
public:
    explicit VectorRawData(std::vector<T>&& elements)
        : TypedRawData<T>(LumSizeCastSafe(elements.size()), sizeof(T)),
          m_elements(std::move(elements)) {}
    VectorRawData(lumsize_t count, const T& fill)
        : TypedRawData<T>(count, sizeof(T)), m_elements(count, fill) {}
    VectorRawData(VectorRawData&&) noexcept = default;
    ~VectorRawData() override;

    static std::unique_ptr<const VectorRawData> Make(std::vector<T>&& elements) {
        return std::make_unique<const VectorRawData>(std::move(elements));
    }

    ArrayView<const T> GetView() const override;
    ArrayView<T> GetView() override;
    ArrayView<const unsigned char> GetByteView() const override;
    ArrayView<unsigned char> GetByteView() override;

private:
    std::vector<T> m_elements;
};

/// A block that stands in somebody else's memory, which it keeps alive; read-only.
/// `elements` must be aligned for `T`.
/// Errors: ImmutableValue from the views for writing; OutOfRange as above.
template <typename T>
class LUM_CORE_API UnmanagedRawData final : public TypedRawData<T> {
public:
    UnmanagedRawData(const std::shared_ptr<ISharedDataBuffer>& owner, ArrayView<const T> elements)
        : TypedRawData<T>(LumSizeCastSafe(elements.GetSize()), sizeof(T)),
          m_owner(owner),
          m_elements(elements) {}
    ~UnmanagedRawData() override;

    ArrayView<const T> GetView() const override;
    ArrayView<T> GetView() override;
    ArrayView<const unsigned char> GetByteView() const override;
    ArrayView<unsigned char> GetByteView() override;

private:
    std::shared_ptr<ISharedDataBuffer> m_owner;
    ArrayView<const T> m_elements;
};

template <typename T, typename Self>
ArrayView<T> RawData::ViewAs(Self& self) {
    using Element = std::remove_const_t<T>;
    LUM_CHECK_TEXT("(sizeof(T) == m_typeSize)", sizeof(T) == self.m_typeSize,
                   LumError::IllegalCast);
    if constexpr (std::is_trivially_copyable_v<Element> &&
                  (sizeof(T) == 1 || sizeof(T) == 4 || sizeof(T) == 8)) {
        return {reinterpret_cast<T*>(self.GetByteView().GetData()), self.m_size};
    } else {
        // Handles of one width are not one type: a string is as wide as a tuple.
        using Block = std::conditional_t<std::is_const_v<Self>, const TypedRawData<Element>,
                                         TypedRawData<Element>>;
        auto* const block = dynamic_cast<Block*>(&self);
        LUM_CHECK_TEXT("(sizeof(T) == m_typeSize)", block != nullptr, LumError::IllegalCast);
        return block->GetView();
    }
}

#define LUM_EXTERN_RAW_DATA(T)                           \
    extern template class LUM_CORE_API VectorRawData<T>; \
    extern template class LUM_CORE_API VectorRawData<ValueCompositeArrayRange<T>>;
LUM_EXTERN_RAW_DATA(unsigned char)
LUM_EXTERN_RAW_DATA(unsigned int)
LUM_EXTERN_RAW_DATA(unsigned long long)
LUM_EXTERN_RAW_DATA(RIndirectString)
LUM_EXTERN_RAW_DATA(LumTuple)
LUM_EXTERN_RAW_DATA(SV)
#undef LUM_EXTERN_RAW_DATA
extern template class LUM_CORE_API VectorRawData<SpecialKind>;
extern template class LUM_CORE_API UnmanagedRawData<unsigned char>;
extern template class LUM_CORE_API UnmanagedRawData<unsigned int>;
extern template class LUM_CORE_API UnmanagedRawData<unsigned long long>;
extern template class LUM_CORE_API UnmanagedRawData<SpecialKind>;

}  // namespace lum::core
