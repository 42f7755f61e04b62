#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"

namespace lum::core {

/// Keeps a block of memory alive as long as a share of it is held; that is the whole contract.
/// Columns that are read in place hold one.
/// Threads: shares may be taken and dropped on any threads at once.
class LUM_CORE_API ISharedDataBuffer {
public:
    virtual ~ISharedDataBuffer();
};

/// The block of a payload, for instance a mapped file or a vector. The host supplies it.
/// Threads: the memory is only read while a column stands on it.
class LUM_CORE_API ISharedArrayBuffer : public ISharedDataBuffer {
public:
    /// The bytes of the block; the same at each call.
    virtual ArrayView<const unsigned char> GetView() const = 0;
};

}  // namespace lum::core
