#pragma once

#include "lum/core/Export.h"

/// The names of the built-in functions. A name stands in the family where it is met first: other
/// families may have functions of the same name, which the inputs of a key tell apart, as NEGATE
/// and SUBTRACT share one text.
///
/// Threads: constants. Ownership: literals, which never go away.
namespace lum::core::FunctionNames {

// NOLINTBEGIN(readability-identifier-naming): hosts know these names in capitals.

// Filters.
LUM_CORE_API inline constexpr const wchar_t* FILTER_NULL_AND_MISSING = L"filterNullAndMissing";
LUM_CORE_API inline constexpr const wchar_t* KEEP_ONLY = L"keepOnly";
LUM_CORE_API inline constexpr const wchar_t* KEEP_ONLY_FALSE = L"keepOnlyFalse";
LUM_CORE_API inline constexpr const wchar_t* KEEP_ONLY_FIRST = L"keepOnlyFirst";
LUM_CORE_API inline constexpr const wchar_t* KEEP_ONLY_NORMAL = L"keepOnlyNormal";
LUM_CORE_API inline constexpr const wchar_t* KEEP_ONLY_TRUE = L"keepOnlyTrue";

// Functions of an element.
LUM_CORE_API inline constexpr const wchar_t* ABS = L"abs";
LUM_CORE_API inline constexpr const wchar_t* ADD_CONSTANT = L"addConstant";
LUM_CORE_API inline constexpr const wchar_t* ASSIGN = L"=";
LUM_CORE_API inline constexpr const wchar_t* DEC = L"dec";
LUM_CORE_API inline constexpr const wchar_t* DIVIDE_CONSTANT = L"divideConstant";
LUM_CORE_API inline constexpr const wchar_t* EQUAL_TO_VALUE = L"equalToValue";
LUM_CORE_API inline constexpr const wchar_t* EXP = L"exp";
LUM_CORE_API inline constexpr const wchar_t* FLOOR = L"floor";
LUM_CORE_API inline constexpr const wchar_t* GET_ISO_WEEK = L"getISOWeek";
LUM_CORE_API inline constexpr const wchar_t* GET_ISO_YEAR = L"getISOYear";
LUM_CORE_API inline constexpr const wchar_t* GET_MONTH = L"getMonth";
LUM_CORE_API inline constexpr const wchar_t* GET_YEAR = L"getYear";
LUM_CORE_API inline constexpr const wchar_t* GREATER_THAN = L">";
LUM_CORE_API inline constexpr const wchar_t* GREATER_THAN_OR_EQUAL = L">=";
LUM_CORE_API inline constexpr const wchar_t* INC = L"inc";
LUM_CORE_API inline constexpr const wchar_t* IS_IN_SET = L"isInSet";
LUM_CORE_API inline constexpr const wchar_t* IS_NOT_IN_SET = L"isNotInSet";
LUM_CORE_API inline constexpr const wchar_t* LESS_THAN = L"<";
LUM_CORE_API inline constexpr const wchar_t* LN = L"ln";
LUM_CORE_API inline constexpr const wchar_t* MULTIPLY_CONSTANT = L"multiplyConstant";
LUM_CORE_API inline constexpr const wchar_t* NEGATE = L"-";
LUM_CORE_API inline constexpr const wchar_t* NORMALIZE = L"normalize";
LUM_CORE_API inline constexpr const wchar_t* SQRT = L"sqrt";
LUM_CORE_API inline constexpr const wchar_t* SYMLOG = L"symlog";
LUM_CORE_API inline constexpr const wchar_t* SYMLOGINV = L"symloginv";
LUM_CORE_API inline constexpr const wchar_t* TO_COLOR = L"toColor";
LUM_CORE_API inline constexpr const wchar_t* TO_DATETIME = L"toDateTime";
LUM_CORE_API inline constexpr const wchar_t* TO_INT32 = L"toInt32";
LUM_CORE_API inline constexpr const wchar_t* TO_INT64 = L"toInt64";
LUM_CORE_API inline constexpr const wchar_t* TO_REAL32 = L"toReal32";
LUM_CORE_API inline constexpr const wchar_t* TO_REAL64 = L"toReal64";

// Functions of an accumulator and an element.
LUM_CORE_API inline constexpr const wchar_t* AND = L"and";
LUM_CORE_API inline constexpr const wchar_t* COUNT = L"count";
LUM_CORE_API inline constexpr const wchar_t* COUNT_ALL = L"countAll";
LUM_CORE_API inline constexpr const wchar_t* COUNT_NEGATIVES = L"countNegatives";
LUM_CORE_API inline constexpr const wchar_t* COUNT_NULLS = L"countNulls";
LUM_CORE_API inline constexpr const wchar_t* COUNT_SPECIALS = L"countSpecials";
LUM_CORE_API inline constexpr const wchar_t* MAX = L"max";
LUM_CORE_API inline constexpr const wchar_t* MIN = L"min";
LUM_CORE_API inline constexpr const wchar_t* OR = L"or";
LUM_CORE_API inline constexpr const wchar_t* SUM = L"sum";
LUM_CORE_API inline constexpr const wchar_t* XOR = L"xor";

// Functions of two elements.
LUM_CORE_API inline constexpr const wchar_t* ADD = L"+";
LUM_CORE_API inline constexpr const wchar_t* SUBTRACT = L"-";
LUM_CORE_API inline constexpr const wchar_t* MULTIPLY = L"*";
LUM_CORE_API inline constexpr const wchar_t* DIVIDE = L"/";
LUM_CORE_API inline constexpr const wchar_t* BITOR = L"bitor";

// Functions of a list of values.
LUM_CORE_API inline constexpr const wchar_t* EQUAL_TO = L"==";
LUM_CORE_API inline constexpr const wchar_t* NOT_EQUAL_TO = L"!=";
LUM_CORE_API inline constexpr const wchar_t* LESS_THAN_OR_EQUAL = L"<=";
LUM_CORE_API inline constexpr const wchar_t* IS_TRUE = L"isTrue";
LUM_CORE_API inline constexpr const wchar_t* IS_FALSE = L"isFalse";

// Orders, which a host may define: the library has no function of these names.
LUM_CORE_API inline constexpr const wchar_t* COMPARE = L"compare";
LUM_CORE_API inline constexpr const wchar_t* COMPARE_DESC = L"compareDesc";

// NOLINTEND(readability-identifier-naming)

}  // namespace lum::core::FunctionNames
