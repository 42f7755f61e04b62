#pragma once

#include "lum/core/Export.h"
#include "lum/core/functions/ElementTypes.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/RawDataView.h"

namespace lum::core {

/// A function of one input, applied to one value or to a whole column, for callers that know the
/// types of the elements only at run time. The regular form takes plain elements, and the special
/// form elements with their kinds; each implements one of the two ApplyRaw.
///
/// Threads: a functor without state may be used by any number of threads at once; one with state
///   belongs to one column, to whose elements it is applied in order.
/// Ownership: whoever made the functor owns it. A functor owns nothing of its columns and allocates
///   no output: the caller makes room.
/// Units: sizes are elements.
/// Errors, of all functors: VectorFunctionSize where views that belong together have not the same
///   size, before anything is written; and what the function itself throws, where the outputs
///   before that element are written.
class LUM_CORE_API IRawUnaryFunctor {
public:
    virtual ~IRawUnaryFunctor();

    /// The regular form. Errors: IllegalCast where a view has not the element's width;
    /// ImmutableValue where `outputs` is read-only; NotImplemented from a special functor.
    virtual void ApplyRaw(const ConstRawDataView& inputs, const RawDataView& outputs);
    /// The special form. Errors: likewise, with NotImplemented from a regular functor.
    virtual void ApplyRaw(const ConstRawDataView& inputs, const ConstRawDataView& specialInputs,
                          const RawDataView& outputs, const RawDataView& specialOutputs);
};

/// The regular form for callers that know the types of the elements.
template <FunctionElement In, FunctionElement Out>
class IUnaryFunctor : public IRawUnaryFunctor {
public:
    using IRawUnaryFunctor::ApplyRaw;

    virtual Out Apply(const In& input) = 0;
    /// outputs[i] becomes Apply(inputs[i]), from index 0 up. The two may be the same memory where
    /// they have cells of one type or of one width, but must not overlap otherwise.
    virtual void ApplyVector(ArrayView<const CellT<In>> inputs, ArrayView<CellT<Out>> outputs) = 0;
};

/// The special form for callers that know the types of the elements.
template <FunctionElement In, FunctionElement Out>
class IUnarySpecialFunctor : public IRawUnaryFunctor {
public:
    using IRawUnaryFunctor::ApplyRaw;

    virtual ElementWithKind<Out> Apply(const In& input, SpecialKind kind) = 0;
    /// As in the regular form, with the kinds at the same indices.
    virtual void ApplyVector(ArrayView<const CellT<In>> inputs,
                             ArrayView<const SpecialKind> specialInputs,
                             ArrayView<CellT<Out>> outputs,
                             ArrayView<SpecialKind> specialOutputs) = 0;
};

}  // namespace lum::core
