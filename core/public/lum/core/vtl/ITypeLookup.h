#pragma once

#include "lum/core/Export.h"

namespace lum::core {

class KeyPath;
class Type;

/// Answers what type the value at a key has, or will have once the program has run: what is asked
/// before a function is chosen for its operands.
///
/// Threads: those of the implementation. Ownership: types belong to the library.
/// Errors: those of the implementation; KeyPathTypeLookup's are the model.
class LUM_CORE_API ITypeLookup {
public:
    virtual ~ITypeLookup();
    virtual bool HasType(const KeyPath& path) const = 0;
    /// Never null. Errors: where HasType is false.
    virtual const Type* GetType(const KeyPath& path) const = 0;
    /// Whether a key map stands at the key. Errors: as GetType.
    virtual bool IsKeyMap(const KeyPath& path) const = 0;
};

}  // namespace lum::core
