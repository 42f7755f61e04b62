#pragma once

#include <functional>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/vtl/TransformSpec.h"

/// Walks over the keys of programs. Each takes the transforms of a list in order; `recurse` says
/// whether the statements below one are walked as well.
///
/// Threads: those of the transforms. Ownership: callbacks are called and not kept.
/// Errors: whatever a callback throws, and ValueSpec::IsKey for an argument that is neither key nor
///   literal. What was overwritten until then stays overwritten; transforms that were only read
///   stay as they were.
/// Cost: linear in the program; recursion as deep as it nests.
// NOLINTNEXTLINE(readability-identifier-naming): hosts know it by this name.
namespace lum::core::Visitors {

/// Changes keys in place: of each transform, first everything below it, then its outputs, then its
/// inputs and the keys among the function's arguments. An empty callback leaves its keys alone.
/// With an `inputFn` a transform's function is replaced by a new one, even where no argument is a
/// key: others may share the old one, which never changes.
LUM_CORE_API void OverwriteKeys(const std::function<void(KeyPath&)>& outputFn,
                                const std::function<void(KeyPath&)>& inputFn,
                                std::vector<TransformSpec>& transforms, bool recurse);
LUM_CORE_API void OverwriteKeys(const std::function<void(KeyPath&)>& outputFn,
                                const std::function<void(KeyPath&)>& inputFn,
                                TransformSpec& transform, bool recurse);

/// Shows each transform and its keys: first everything below it, in spite of the name, then the
/// transform itself, its outputs, its inputs and the keys among the function's arguments. Empty
/// callbacks are left out.
LUM_CORE_API void PreOrderVisit(const std::function<void(const TransformSpec&)>& transformFn,
                                const std::function<void(const KeyPath&)>& outputKeyFn,
                                const std::function<void(const KeyPath&)>& inputKeyFn,
                                const std::vector<TransformSpec>& transforms, bool recurse);
LUM_CORE_API void PreOrderVisit(const std::function<void(const TransformSpec&)>& transformFn,
                                const std::function<void(const KeyPath&)>& outputKeyFn,
                                const std::function<void(const KeyPath&)>& inputKeyFn,
                                const TransformSpec& transform, bool recurse);

/// The list with other keys: of each transform, first what stands below it, then its outputs, then
/// its inputs and the keys among the function's arguments. Literals are shared. A NoOp is copied
/// with everything in and below it, and every other transform loses its comment. Without `recurse`
/// children are copied as they are.
/// Errors: also std::bad_function_call at the first key without a callback, and ValueSpecHoldsValue
/// where an argument's key becomes an empty one.
LUM_CORE_API std::vector<TransformSpec> RewriteKeys(
    const std::function<KeyPath(const KeyPath&)>& outputFn,
    const std::function<KeyPath(const KeyPath&)>& inputFn,
    const std::vector<TransformSpec>& transforms, bool recurse);

}  // namespace lum::core::Visitors
