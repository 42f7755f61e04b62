#include "lum/core/vtl/GraphEdge.h"

#include <utility>

namespace lum::core {

GraphEdge::GraphEdge(KeyPath edgeKey, BufferType type)
    : GraphEdge(std::move(edgeKey), NullSourceId, std::vector<lumsize_t>(), type) {}

GraphEdge::GraphEdge(KeyPath edgeKey, lumsize_t source, std::vector<lumsize_t> sinks,
                     BufferType type)
    : bufferType(type), sourceId(source), sinkIds(std::move(sinks)), key(std::move(edgeKey)) {}

GraphEdge::GraphEdge(lumsize_t source, std::initializer_list<lumsize_t> sinks, KeyPath edgeKey,
                     BufferType type)
    : GraphEdge(std::move(edgeKey), source, std::vector<lumsize_t>(sinks), type) {}

}  // namespace lum::core
