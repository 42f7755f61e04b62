#include "lum/core/store/RawData.h"

#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

ISharedDataBuffer::~ISharedDataBuffer() = default;
RawData::~RawData() = default;

template <typename T>
VectorRawData<T>::~VectorRawData() = default;

template <typename T>
ArrayView<const T> VectorRawData<T>::GetView() const {
    return m_elements;
}

template <typename T>
ArrayView<T> VectorRawData<T>::GetView() {
    return m_elements;
}

template <typename T>
ArrayView<const unsigned char> VectorRawData<T>::GetByteView() const {
    return {reinterpret_cast<const unsigned char*>(m_elements.data()), m_elements.size()};
}

template <typename T>
ArrayView<unsigned char> VectorRawData<T>::GetByteView() {
    return {reinterpret_cast<unsigned char*>(m_elements.data()), m_elements.size()};
}

template <typename T>
UnmanagedRawData<T>::~UnmanagedRawData() = default;

template <typename T>
ArrayView<const T> UnmanagedRawData<T>::GetView() const {
    return m_elements;
}

template <typename T>
ArrayView<T> UnmanagedRawData<T>::GetView() {
    LUM_FAIL(LumError::ImmutableValue);
}

template <typename T>
ArrayView<const unsigned char> UnmanagedRawData<T>::GetByteView() const {
    return {reinterpret_cast<const unsigned char*>(m_elements.GetData()), m_elements.GetSize()};
}

template <typename T>
ArrayView<unsigned char> UnmanagedRawData<T>::GetByteView() {
    LUM_FAIL(LumError::ImmutableValue);
}

#define LUM_INSTANTIATE_RAW_DATA(T)  \
    template class VectorRawData<T>; \
    template class VectorRawData<ValueCompositeArrayRange<T>>;
LUM_INSTANTIATE_RAW_DATA(unsigned char)
LUM_INSTANTIATE_RAW_DATA(unsigned int)
LUM_INSTANTIATE_RAW_DATA(unsigned long long)
LUM_INSTANTIATE_RAW_DATA(RIndirectString)
LUM_INSTANTIATE_RAW_DATA(LumTuple)
LUM_INSTANTIATE_RAW_DATA(SV)
#undef LUM_INSTANTIATE_RAW_DATA
template class VectorRawData<SpecialKind>;
template class UnmanagedRawData<unsigned char>;
template class UnmanagedRawData<unsigned int>;
template class UnmanagedRawData<unsigned long long>;
template class UnmanagedRawData<SpecialKind>;

}  // namespace lum::core
