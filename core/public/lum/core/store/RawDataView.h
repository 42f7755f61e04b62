#pragma once

#include <limits>

#include "lum/core/Check.h"
#include "lum/core/store/RawData.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// Where an element of raw storage stands: a pointer to its bytes. `T` is unsigned char, const for
/// storage that is only read.
template <typename T>
class RawDataValueType {
public:
    explicit RawDataValueType(T* bytes) noexcept : m_bytes(bytes) {}
    T* GetBytes() const noexcept { return m_bytes; }

private:
    T* m_bytes;
};

/// The span of a block that ConstRawDataView (for reading) and RawDataView (for writing) stand for.
///
/// Threads: a plain value. Ownership: none; good while the block lives.
/// Units: indices and lengths are elements.
/// Errors: OutOfBounds where a span does not lie inside its block, or an index outside its span.
template <typename Data, typename Byte>
class RawDataSpan {
public:
    explicit RawDataSpan(Data& data) noexcept : RawDataSpan(Unchecked(), data, 0, data.GetSize()) {}
    RawDataSpan(Data& data, lumsize_t startIndex, lumsize_t length)
        : RawDataSpan(Unchecked(), data, startIndex, length) {
        LUM_CHECK_TEXT(
            "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
            "(m_data.GetSize() >= (startIndex + length)))",
            std::numeric_limits<lumsize_t>::max() - startIndex >= length &&
                data.GetSize() >= startIndex + length,
            LumError::OutOfBounds);
    }

    lumsize_t GetSize() const noexcept { return m_length; }
    lumsize_t GetTypeSize() const noexcept { return m_data->GetTypeSize(); }

    /// The bytes of the element at `index` of the span.
    RawDataValueType<Byte> GetValue(lumsize_t index) const {
        LUM_CHECK_TEXT("(index < m_length && m_startIndex + index < m_data.GetSize())",
                       index < m_length && m_startIndex + index < m_data->GetSize(),
                       LumError::OutOfBounds);
        const uint64 offset = uint64{m_startIndex + index} * m_data->GetTypeSize();
        return RawDataValueType<Byte>(m_data->GetByteView().GetData() + offset);
    }

    /// The elements of the span. Errors: those of RawData::ViewAs.
    template <typename T>
    auto ViewAs() const {
        return m_data->template ViewAs<T>().GetSlice(m_startIndex, m_length);
    }

protected:
    struct Unchecked {};
    RawDataSpan(Unchecked, Data& data, lumsize_t startIndex, lumsize_t length) noexcept
        : m_data(&data), m_startIndex(startIndex), m_length(length) {}

    Data* m_data;
    lumsize_t m_startIndex;
    lumsize_t m_length;
};

/// A span for writing.
class RawDataView : public RawDataSpan<RawData, unsigned char> {
public:
    using RawDataSpan::RawDataSpan;

    /// The span that begins at `startIndex` of this one; it may pass this one's end inside the
    /// block.
    RawDataView GetSlice(lumsize_t startIndex, lumsize_t length) const {
        LUM_CHECK_TEXT(
            "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
            "(m_data.GetSize() >= (startIndex + length)))",
            std::numeric_limits<lumsize_t>::max() - m_startIndex >= startIndex,
            LumError::OutOfBounds);
        return {*m_data, m_startIndex + startIndex, length};
    }

private:
    friend class ConstRawDataView;
};

/// A span for reading.
class ConstRawDataView : public RawDataSpan<const RawData, const unsigned char> {
public:
    using RawDataSpan::RawDataSpan;
    ConstRawDataView(const RawDataView& view) noexcept  // NOLINT(google-explicit-constructor)
        : RawDataSpan(Unchecked(), *view.m_data, view.m_startIndex, view.m_length) {}

    /// The span that begins at `startIndex` of this one; it may pass this one's end inside the
    /// block.
    ConstRawDataView GetSlice(lumsize_t startIndex, lumsize_t length) const {
        LUM_CHECK_TEXT(
            "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
            "(m_data.GetSize() >= (startIndex + length)))",
            std::numeric_limits<lumsize_t>::max() - m_startIndex >= startIndex,
            LumError::OutOfBounds);
        return {*m_data, m_startIndex + startIndex, length};
    }
};

}  // namespace lum::core
