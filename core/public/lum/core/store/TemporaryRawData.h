#pragma once

#include <memory>
#include <utility>

#include "lum/core/store/RawData.h"

namespace lum::core {

namespace detail {
struct TemporaryRawDataAccess;
}

/// A block that the library fills: scratch room for a view of gathered elements, or the storage of
/// a collection that is being made.
///
/// Threads: one at a time. Ownership: owns its block, if it has one.
/// Errors: std::bad_alloc.
class TemporaryRawData {
public:
    TemporaryRawData() noexcept = default;

    /// A block of `count` value-initialised elements: zero bytes for numbers, empty handles.
    template <typename T>
    static TemporaryRawData Make(lumsize_t count) {
        return TemporaryRawData(std::make_unique<VectorRawData<T>>(count, T()));
    }

private:
    friend struct detail::TemporaryRawDataAccess;

    explicit TemporaryRawData(std::unique_ptr<RawData> data) noexcept : m_data(std::move(data)) {}
    RawData& Get() const noexcept { return *m_data; }
    operator RawData&() const noexcept { return *m_data; }  // NOLINT

    std::unique_ptr<RawData> m_data;
};

}  // namespace lum::core
