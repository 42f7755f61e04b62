#include "lum/core/functions/RegisteredFunctions.h"

#include "lum/core/Check.h"

namespace lum::core {

void RegisteredFunctions::SetFunction(FunctionPointer function) {
    LUM_CHECK_NOT_NULL(function, LumError::NullTransformFunction, m_name);
    m_function = function;
}

void RegisteredFunctions::SetSpecialFunction(FunctionPointer function) {
    LUM_CHECK_NOT_NULL(function, LumError::NullTransformFunction, m_name);
    m_specialFunction = function;
}

}  // namespace lum::core
