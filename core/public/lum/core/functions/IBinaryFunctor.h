#pragma once

#include "lum/core/Export.h"
#include "lum/core/functions/ElementTypes.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/RawDataView.h"

namespace lum::core {

/// The way that a fold walks; any number but 0 is backward.
enum class FoldDirection : int {
    Forward = 0,   ///< From index 0 up.
    Backward = 1,  ///< From the last index down.
};

/// A function of two inputs, applied to one pair of values or to two whole columns, or folded over
/// one column; for callers that know the types of the elements only at run time. The regular form
/// takes plain elements, and the special form elements with their kinds; each implements one of the
/// two ApplyRaw and one of the two FoldRaw.
///
/// A fold replaces an accumulator, the caller's, by the function of itself and an element, for each
/// element in turn. Outputs are either empty, then the accumulator alone is the result, or as many
/// as the inputs, then each step is written at the element's index as well.
///
/// Threads, ownership, units, errors: as in IRawUnaryFunctor. A fold that fails leaves the
///   accumulator as it stood before that element.
class LUM_CORE_API IRawBinaryFunctor {
public:
    virtual ~IRawBinaryFunctor();

    /// The regular form. Errors: IllegalCast where a view has not the element's width;
    /// ImmutableValue where a view for writing is read-only; NotImplemented from a special functor.
    virtual void ApplyRaw(const ConstRawDataView& inputs1, const ConstRawDataView& inputs2,
                          const RawDataView& outputs);
    /// The special form. Errors: likewise, with NotImplemented from a regular functor.
    virtual void ApplyRaw(const ConstRawDataView& inputs1, const ConstRawDataView& specialInputs1,
                          const ConstRawDataView& inputs2, const ConstRawDataView& specialInputs2,
                          const RawDataView& outputs, const RawDataView& specialOutputs);
    /// The fold of the regular form. The accumulator is the view's first element.
    /// Errors: as above; OutOfBounds where the view has no element; NotImplemented where the first
    /// input is not of the type of the output.
    virtual void FoldRaw(const RawDataView& accumulator, const ConstRawDataView& inputs,
                         const RawDataView& outputs, FoldDirection direction);
    /// The fold of the special form.
    virtual void FoldRaw(const RawDataView& accumulator, const RawDataView& accumulatorSpecial,
                         const ConstRawDataView& inputs, const ConstRawDataView& specialInputs,
                         const RawDataView& outputs, const RawDataView& specialOutputs,
                         FoldDirection direction);
};

/// The regular form for callers that know the types of the elements.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
class IBinaryFunctor : public IRawBinaryFunctor {
public:
    using IRawBinaryFunctor::ApplyRaw;
    using IRawBinaryFunctor::FoldRaw;

    virtual Out Apply(const In1& input1, const In2& input2) = 0;
    /// outputs[i] becomes Apply(inputs1[i], inputs2[i]), from index 0 up. The outputs may be the
    /// memory of an input with cells of their type or width, but must not overlap one otherwise.
    virtual void ApplyVector(ArrayView<const CellT<In1>> inputs1,
                             ArrayView<const CellT<In2>> inputs2,
                             ArrayView<CellT<Out>> outputs) = 0;
    /// Errors: NotImplemented where `In1` is not `Out`.
    virtual void Fold(CellT<Out>& accumulator, ArrayView<const CellT<In2>> inputs,
                      ArrayView<CellT<Out>> outputs, FoldDirection direction) = 0;
};

/// The special form for callers that know the types of the elements.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out>
class IBinarySpecialFunctor : public IRawBinaryFunctor {
public:
    using IRawBinaryFunctor::ApplyRaw;
    using IRawBinaryFunctor::FoldRaw;

    virtual ElementWithKind<Out> Apply(const In1& input1, SpecialKind kind1, const In2& input2,
                                       SpecialKind kind2) = 0;
    /// As in the regular form, with the kinds at the same indices.
    virtual void ApplyVector(ArrayView<const CellT<In1>> inputs1,
                             ArrayView<const SpecialKind> specialInputs1,
                             ArrayView<const CellT<In2>> inputs2,
                             ArrayView<const SpecialKind> specialInputs2,
                             ArrayView<CellT<Out>> outputs,
                             ArrayView<SpecialKind> specialOutputs) = 0;
    /// Errors: NotImplemented where `In1` is not `Out`.
    virtual void Fold(CellT<Out>& accumulator, SpecialKind& accumulatorSpecial,
                      ArrayView<const CellT<In2>> inputs,
                      ArrayView<const SpecialKind> specialInputs, ArrayView<CellT<Out>> outputs,
                      ArrayView<SpecialKind> specialOutputs, FoldDirection direction) = 0;
};

}  // namespace lum::core
