#include "core/main/utility/UnitHash.h"

#include <chrono>
#include <memory>

namespace lum::core {

UnitHash::UnitHash() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const auto block = std::make_unique<char>();
    const auto place = reinterpret_cast<std::uintptr_t>(block.get());
    m_seed = Fold(static_cast<uint64>(now) ^ 0xA0761D6478BD642F, place ^ 0xE7037ED1A0B428DB);
}

}  // namespace lum::core
