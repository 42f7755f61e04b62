#pragma once

#include <memory>

#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// What all values of one cell share: a count of 1, and a Clone that copies the object.
template <typename Derived>
class ScalarValue : public StoreValue {
public:
    lumsize_t GetCount() const final { return 1; }
    std::unique_ptr<StoreValue> Clone() const final {
        return std::make_unique<Derived>(static_cast<const Derived&>(*this));
    }
};

}  // namespace lum::core
