#include "lum/core/functions/BuiltinFunctions.h"

#include "core/main/functions/BuiltinFamilies.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/utility/MetricsFilter.h"

namespace lum::core {

void RegisterAllBuiltinFunctions(FunctionRegistry& registry) {
    const Metrics::Scope scope = MetricsFilter::OpenScope(MetricsFilter::Bits::Functions,
                                                          "lum_core_RegisterAllBuiltinFunctions");
    RegisterFilterFunctions(registry.GetUnaryFunctions());
    RegisterMapFunctions(registry.GetUnaryFunctions());
    RegisterConversionFunctions(registry.GetUnaryFunctions());
    RegisterReduceFunctions(registry.GetBinaryFunctions());
    RegisterCountFunctions(registry.GetBinaryFunctions());
    RegisterSetValueMultiFunctions(registry.GetMultinaryFunctions());
    RegisterZipWithFunctions(registry.GetBinaryFunctions());
}

}  // namespace lum::core
