#pragma once

#include <utility>
#include <vector>

#include "lum/core/store/RawDataView.h"
#include "lum/core/store/TemporaryRawData.h"

namespace lum::core::detail {

/// What the library's own classes may do with a TemporaryRawData.
struct TemporaryRawDataAccess {
    static RawData& Get(const TemporaryRawData& temporary) { return temporary.Get(); }

    /// Puts `elements` into `scratch`, in place of what stood there, and gives a view of them all.
    template <typename T>
    static ConstRawDataView Fill(TemporaryRawData& scratch, std::vector<T>&& elements) {
        scratch = TemporaryRawData(std::make_unique<VectorRawData<T>>(std::move(elements)));
        return ConstRawDataView(scratch.Get());
    }
};

}  // namespace lum::core::detail
