#pragma once

#include <functional>
#include <utility>

#include "lum/core/Export.h"
#include "lum/core/utility/LumTupleData.h"

namespace lum::core {

/// The handle of a packed row that collections store: a LumTupleData, and nothing else.
/// Threads, ownership, errors and cost are those of LumTupleData.
class LumTuple : public TupleOperations<LumTuple> {
public:
    LumTuple() = default;
    explicit LumTuple(const TupleType* type) : m_data(type) {}
    /// A reference to that data, not a copy.
    explicit LumTuple(const LumTupleData& data) : m_data(data.ReferenceTo()) {}

    LumTupleData CloneOfData() const { return m_data.CloneOf(); }
    LumTupleData ReferenceToData() const { return m_data.ReferenceTo(); }

    LumTupleData& GetTupleData() noexcept { return m_data; }
    const LumTupleData& GetTupleData() const noexcept { return m_data; }

private:
    LumTupleData m_data;
};

// The size that columns of rows, and rows' types, count on.
static_assert(sizeof(LumTuple) == 32);

}  // namespace lum::core

template <>
struct std::hash<lum::core::LumTuple> {
    std::size_t operator()(const lum::core::LumTuple& tuple) const { return tuple.GetHashValue(); }
};
