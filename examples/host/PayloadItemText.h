#pragma once

#include <string>

#include "lum/core/serialize/BinaryProtocol.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumSize.h"

namespace lumhost {

// Items of a payload in words. Each may be any byte or word at all.

std::string NameOf(lum::core::BinaryContainerType container);
std::string Describe(lum::core::BinaryListType list);
std::string Describe(lum::core::SpecialKind kind);

/// A word that stores an element of the type, as the cell of a column shows it.
std::string Describe(const lum::core::Type& type, unsigned char word);
std::string Describe(const lum::core::Type& type, unsigned int word);
std::string Describe(const lum::core::Type& type, lum::core::uint64 word);

/// Bytes of the word that stores an element; 0 where elements have a form of their own.
unsigned int WordSizeOf(const lum::core::Type& type);

}  // namespace lumhost
