#pragma once

#include <vector>

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/TransformSpec.h"

/// Programs from Vtl text. A statement stands on a line of its own:
///
///   inputs -> operator :literal:type (function arguments) -> outputs
///
/// Inputs and outputs are key paths with blanks between them, as KeyPath::ParseString reads them;
/// there may be none. Literal and function are optional. An argument is a key path, or
/// ":literal:type"; a colon that touches the key before it begins a type, one behind a blank a
/// literal. Which operators take a literal, and which of them need its type, the operator says.
/// What follows the outputs is not looked at. A line that begins with "//" is a comment.
///
/// Threads: any. Ownership: nothing of the text is kept. Keys that are written alike may share
///   their list of segments.
/// Errors: LumRuntimeException, reported but for unknown operators; nothing partial is given.
///   UnexpectedToken, with the line as details, where a part is missing or is something else,
///   without details where that is the operator; UnknownTypeName for an unknown operator;
///   KeyTypeNeeded for a function's literal without a type, ValueSpecHoldsValue for an argument
///   whose last name is empty; OperatorTypeSpecMissing, OperatorTypeSpecMismatch with the
///   operator's name, and UnexpectedOperatorArgument for an operator's literal; CannotParseBool and
///   its kin, those of hexadecimal text and of LumDateTime's constructor for a literal of another
///   form than its type's; CannotMakeValueForKey for a literal of a type that has none; those of
///   KeyPath::ParseString, with the line as details.
/// Cost: linear in the text, in time and memory.
namespace lum::core {

/// The statement, or the comment line, of one line.
LUM_CORE_API TransformSpec ParseVtlLine(const TStringCore& text);

/// The statements of a text. A line that stands two blanks further right than another stands below
/// it; blank lines are skipped. Without `keepComments` comment lines are dropped wherever they
/// stand; with it they count as statements, so that one below an operator that takes none fails.
/// A line feed within quotes ends no line.
/// Errors: also InvalidNesting where the first statement is indented, and beyond 1000 levels;
///   Unspecified, with a report, where one stands more than one level below the one before it;
///   UnexpectedChildTransform below an operator that takes none.
LUM_CORE_API std::vector<TransformSpec> ParseVtlList(const TStringCore& text, bool keepComments);

}  // namespace lum::core
