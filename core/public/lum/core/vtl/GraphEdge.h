#pragma once

#include <initializer_list>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// The kind of a buffer, as 32 bits, under the letter that programs in transit have for it. What
/// the kinds mean is up to the engine that plans programs.
enum class BufferType : unsigned int { C = 0, I = 1 };

/// One edge of a planned data-flow graph: a buffer, the node that fills it and those that read it.
/// Nodes are numbers that the engine gives out.
///
/// Threads: one object belongs to one thread at a time while it changes.
/// Ownership: owns its parts.
/// Errors: std::bad_alloc.
struct LUM_CORE_API GraphEdge {
    /// The source of an edge without one.
    // NOLINTNEXTLINE(readability-identifier-naming): hosts know it by this name.
    static constexpr lumsize_t NullSourceId = 0xFFFFFFFF;

    /// Without source and sinks.
    GraphEdge(KeyPath edgeKey, BufferType type);
    GraphEdge(KeyPath edgeKey, lumsize_t source, std::vector<lumsize_t> sinks, BufferType type);
    GraphEdge(lumsize_t source, std::initializer_list<lumsize_t> sinks, KeyPath edgeKey,
              BufferType type);

    bool HasSource() const noexcept { return sourceId < NullSourceId; }

    /// Sinks are compared in order, and keys without their types.
    friend bool operator==(const GraphEdge& a, const GraphEdge& b) noexcept = default;

    BufferType bufferType;
    lumsize_t sourceId;
    std::vector<lumsize_t> sinkIds;
    KeyPath key;  ///< What the edge carries.
};

}  // namespace lum::core
