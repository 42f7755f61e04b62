#include "core/main/utility/StandardErrors.h"

#include <stdexcept>

namespace lum::core {

void ThrowInvalidMapKey() {
    throw std::out_of_range("invalid unordered_map<K, T> key");
}

void ThrowInvalidVectorSubscript() {
    throw std::out_of_range("invalid vector subscript");
}

}  // namespace lum::core
