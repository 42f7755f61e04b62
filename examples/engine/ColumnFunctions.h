#pragma once

#include <optional>
#include <vector>

#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/IBinaryFunctor.h"
#include "lum/core/functions/IFunctionLookup.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/RInternString.h"

/// Registered functions over whole columns, as an engine runs them: a function is found by its name
/// and the types of what it is given, and drives the storage of the columns through raw views.
///
/// The special form is taken where an element, or the initial value of a fold, is special, and
/// where there is no regular form; else the regular form. A function without a special form is
/// given the normal elements alone:
///
///   apply   a special element is special in the result, of the same kind; of two specials, the
///           first column's kind counts
///   fold    a special element leaves the accumulator as it stands, as the special forms of sum,
///           min and max do. countAll counts elements, whatever they are, and is given all of them
///
/// Results have kinds only where some are not Normal.
///
/// Threads: any, beside readers of the registry. Each call makes a functor of its own, so state is
///   never shared.
/// Ownership: results own their storage.
/// Units: elements.
/// Errors: LumRuntimeException. FunctionNotFound, AmbiguousOverload with the text of the query;
///   NonCreatorCalledAsCreator, CreatorInputCount, CreatorInputType with the function's name where
///   the constants are not those that the function is made from; ExpectedArray and its kin where a
///   value is no column; what the function's own factory and the function throw. Nothing is changed
///   then.
namespace lumengine {

/// What a call of `name` on these columns looks up.
lum::core::FunctionKey MakeQuery(const lum::core::RInternString& name,
                                 const std::vector<lum::core::SV>& columns);
/// What a fold of `name` over the column looks up.
lum::core::FunctionKey MakeFoldQuery(const lum::core::RInternString& name,
                                     const lum::core::Type* accumulatorType,
                                     const lum::core::SV& column);

/// The results of `name` for the elements of one column, or for those of two pair by pair.
/// `constants` are the values that a creator is made from.
/// Errors: also InvalidInputCount for another number of columns; VectorFunctionSize for columns of
/// different lengths.
lum::core::SV ApplyFunction(const lum::core::IFunctionLookup& lookup,
                            const lum::core::RInternString& name,
                            const std::vector<lum::core::SV>& columns,
                            const std::vector<lum::core::SV>& constants);

/// `initial` with each element of the column folded into it, from the first to the last. With
/// `steps`, the accumulator as it stands behind each element on the way in that direction, as a
/// column.
/// Errors: also FunctionOutputMismatch, with the function's name, where the result is not of the
/// type of `initial`; ExpectedInt32 and its kin where `initial` is special and there is no special
/// form.
lum::core::SV FoldColumn(const lum::core::IFunctionLookup& lookup,
                         const lum::core::RInternString& name, const lum::core::SV& column,
                         const lum::core::SV& initial,
                         std::optional<lum::core::FoldDirection> steps = std::nullopt);

/// The type that the initial value of a fold of `name` over the column must have: the column's own
/// element type where such a function is registered, else that of the first one that takes its
/// elements.
const lum::core::Type* FindAccumulatorType(const lum::core::IFunctionLookup& lookup,
                                           const lum::core::RInternString& name,
                                           const lum::core::SV& column);

}  // namespace lumengine
