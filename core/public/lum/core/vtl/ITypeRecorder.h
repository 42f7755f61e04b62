#pragma once

#include "lum/core/Export.h"

namespace lum::core {

class KeyPath;
class Type;

/// Where an engine notes the types of keys while it plans a program, each once. The type of a
/// collection may be known from the inside out only, so its parts can be recorded by themselves.
/// The library neither implements nor calls it.
///
/// Threads: those of the implementation. Ownership: types belong to the library.
/// Errors: LumRuntimeException with the code named at the operation; what was recorded stays.
class LUM_CORE_API ITypeRecorder {
public:
    virtual ~ITypeRecorder();
    /// The type of the value at the key. Errors: KeyTypeAlreadySet.
    virtual void RecordType(const KeyPath& path, const Type* type) = 0;
    /// The type of the elements of the collection at the key. Errors: ChildTypeAlreadySet.
    virtual void RecordChildType(const KeyPath& path, const Type* type) = 0;
    /// The type of the elements' elements, where the elements are collections too.
    /// Errors: NestedTypeAlreadySet.
    virtual void RecordNestedType(const KeyPath& path, const Type* type) = 0;
    virtual bool HasRecordedType(const KeyPath& path) const = 0;
    /// The whole type of the value at the key. Errors: PathTypeNotFound.
    virtual const Type* GetRecordedType(const KeyPath& path) const = 0;
};

}  // namespace lum::core
