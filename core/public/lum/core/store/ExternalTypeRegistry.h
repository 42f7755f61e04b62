#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/ValueExternal.h"
#include "lum/core/utility/LumString.h"

/// The kinds of values that a host adds to the library: each has an id, a name, and two functions
/// that turn a value into bytes and back. GetExternalTypeId and GetExternalTypeName stand with
/// ExternalType.
///
/// Threads: registering and clearing belong to start-up and shutdown; look-ups then run on any
///   threads at once. Ownership: the registry holds copies of the functions.
/// Errors: std::out_of_range, "invalid unordered_map<K, T> key", for a kind that is not registered;
///   what the host's functions throw.
namespace lum::core {

using serializeValueFunction = std::function<std::vector<unsigned char>(const ValueExternal&)>;
using deserializeValueFunction =
    std::function<std::shared_ptr<ValueExternal>(const ArrayView<const unsigned char>&)>;

/// Errors: ExternalTypeExists where the name or the id is taken; EmptyTypeName;
/// NullSerializeFunction; NullDeserializeFunction.
LUM_CORE_API void RegisterExternalType(unsigned short typeId, const TStringCore& typeName,
                                       serializeValueFunction serialize,
                                       deserializeValueFunction deserialize);
/// The bytes of a value, by the function of its kind.
LUM_CORE_API std::vector<unsigned char> SerializeExternalType(const ValueExternal& value);
/// The value of bytes, by the function of the kind.
LUM_CORE_API std::shared_ptr<ValueExternal> DeserializeExternalType(
    unsigned short typeId, const ArrayView<const unsigned char>& bytes);
/// Forgets all kinds. Their types stay, but without names.
LUM_CORE_API void ClearExternalTypes();

}  // namespace lum::core
