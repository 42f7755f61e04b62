#pragma once

#include <vector>

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/FunctionSpec.h"
#include "lum/core/vtl/TransformSpec.h"

/// Programs as Vtl text, which ParseVtlList reads back. A statement is
///
///   inputs -> operator :literal (function arguments) -> outputs
///
/// with one blank between any two parts, and stands on a line of its own; those below it follow,
/// two blanks further right. Keys have their types behind them. A string that is no word, and every
/// date and colour, is written in quotes, as is a function whose name is no word; a text with a
/// zero unit ends there. A literal's type is written behind it among the arguments of a function,
/// and behind the operators that do not know the type of their literal.
///
/// A NoOp is written as its comment alone; whatever else it has is lost, but for the statements
/// below it. The comment of any other operator stands before its inputs on the same line, which
/// then reads back as a comment; a parsed program has no such statement.
///
/// Threads: no state but the cache; programs are only read.
/// Errors: OperatorTypeNotPrimitive for a literal that is a row or a collection, or a special value
///   of such a type; OperatorTypeExternal for a literal of the host's own kinds, both reported;
///   InvalidDateTime for a date out of range; InvalidOperatorValue for an operator without a name;
///   those of ValueSpec::IsKey; std::out_of_range for the type of a key that is an external one and
///   is not registered; std::length_error beyond 2^30 units.
/// Cost: linear in the text; recursion as deep as the statements nest.
namespace lum::core {

class KeyPathSerializerCache;

/// The name and the arguments, without parentheses.
LUM_CORE_API TStringCore FunctionToString(const FunctionSpec& function);

/// The statement and those below it, without a line feed at the end. The second form appends to
/// `out`; where it fails, `out` holds what was written so far.
LUM_CORE_API TStringCore TransformToString(const TransformSpec& transform);
LUM_CORE_API void TransformToString(TStringCore& out, const TransformSpec& transform);

/// The statements, each with a line feed behind it. Without `includeComments` the NoOps of the list
/// are left out; those below other statements are written. `cache` may be null; whoever writes many
/// programs passes one to write each key but once.
LUM_CORE_API TStringCore TransformsToString(const std::vector<TransformSpec>& transforms,
                                            bool includeComments,
                                            KeyPathSerializerCache* cache = nullptr);
/// TransformsToString without comments: the program as it is sent elsewhere.
LUM_CORE_API TStringCore TransformsToPayloadString(const std::vector<TransformSpec>& transforms,
                                                   KeyPathSerializerCache* cache = nullptr);

}  // namespace lum::core
