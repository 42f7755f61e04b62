#pragma once

#include <memory>
#include <unordered_map>

#include "lum/core/Export.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"

/// The makers of key maps, the one kind of value that can change: see IStoreMutableCollection.
/// Names are not looked at. A key map that is added below itself makes a cycle whose type and clone
/// never end.
///
/// Threads: any. Ownership: the key map takes over the members.
/// Errors: NullArgument for a member without a value.
namespace lum::core::factory {

LUM_CORE_API SV MakeKeyMap(std::unordered_map<RInternString, SV>&& values);
/// A null pointer makes an empty key map.
LUM_CORE_API SV MakeKeyMap(std::unique_ptr<std::unordered_map<RInternString, SV>> values);
/// The one that costs nothing: the others put the members of theirs into one.
LUM_CORE_API SV MakeKeyMap(MemberMap&& members);

}  // namespace lum::core::factory
