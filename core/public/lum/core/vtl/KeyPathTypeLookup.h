#pragma once

#include "lum/core/Export.h"
#include "lum/core/vtl/ITypeLookup.h"

namespace lum::core {

/// Reads the type that is written in the key itself, on its last segment: "a/b:A<i>" has one, and
/// "a:M/b" has none.
///
/// Threads: any. Ownership: types belong to the library.
/// Errors: EmptyKeyPath for a path without segments, from every operation.
class LUM_CORE_API KeyPathTypeLookup final : public ITypeLookup {
public:
    bool HasType(const KeyPath& path) const override;
    /// Errors: KeyNotFound, with the text of the path as details, where HasType is false.
    const Type* GetType(const KeyPath& path) const override;
    /// Errors: as GetType.
    bool IsKeyMap(const KeyPath& path) const override;
};

}  // namespace lum::core
