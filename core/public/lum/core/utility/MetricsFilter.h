#pragma once

#include "lummetrics/Metrics.h"

namespace lum::core {

namespace Metrics = lummetrics::Metrics;

/// Which scopes of the library a host can observe; see lummetrics/Metrics.h for how it does.
///
/// Threads: any number at once. Ownership: none. Errors: none.
namespace MetricsFilter {

/// The kinds of scopes, as bits that a sink can ask for.
enum class Bits : unsigned int {
    None = 0,
    Functions = 1,  ///< "lum_core_RegisterAllBuiltinFunctions"
    Vtl = 2,        ///< "lum_core_MakeVtlPayload", "lum_core_ParseVtlPayload"
};

/// Whether there is anything to observe: any bit is set.
constexpr bool PassesFilter(Bits bits) noexcept {
    return bits != Bits::None;
}

/// The scope `name`, a literal, of one of the kinds in `bits`, which lasts until the end of the
/// block:
///
///     const Metrics::Scope scope = MetricsFilter::OpenScope(MetricsFilter::Bits::Vtl, "NAME");
///
/// Cost: one load and one branch where no sink asks for such scopes.
inline Metrics::Scope OpenScope(Bits bits, const char* name) {
    if (PassesFilter(bits) && Metrics::TestBitsAndContext(static_cast<unsigned int>(bits))) {
        return Metrics::Scope(name);
    }
    return Metrics::Scope();
}

}  // namespace MetricsFilter
}  // namespace lum::core
