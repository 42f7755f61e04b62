#include "lum/core/Check.h"
#include "lum/core/functions/IBinaryFunctor.h"
#include "lum/core/functions/IUnaryFunctor.h"

namespace lum::core {

IRawUnaryFunctor::~IRawUnaryFunctor() = default;

void IRawUnaryFunctor::ApplyRaw(const ConstRawDataView& /*inputs*/,
                                const RawDataView& /*outputs*/) {
    LUM_FAIL(LumError::NotImplemented);
}

void IRawUnaryFunctor::ApplyRaw(const ConstRawDataView& /*inputs*/,
                                const ConstRawDataView& /*specialInputs*/,
                                const RawDataView& /*outputs*/,
                                const RawDataView& /*specialOutputs*/) {
    LUM_FAIL(LumError::NotImplemented);
}

IRawBinaryFunctor::~IRawBinaryFunctor() = default;

void IRawBinaryFunctor::ApplyRaw(const ConstRawDataView& /*inputs1*/,
                                 const ConstRawDataView& /*inputs2*/,
                                 const RawDataView& /*outputs*/) {
    LUM_FAIL(LumError::NotImplemented);
}

void IRawBinaryFunctor::ApplyRaw(const ConstRawDataView& /*inputs1*/,
                                 const ConstRawDataView& /*specialInputs1*/,
                                 const ConstRawDataView& /*inputs2*/,
                                 const ConstRawDataView& /*specialInputs2*/,
                                 const RawDataView& /*outputs*/,
                                 const RawDataView& /*specialOutputs*/) {
    LUM_FAIL(LumError::NotImplemented);
}

void IRawBinaryFunctor::FoldRaw(const RawDataView& /*accumulator*/,
                                const ConstRawDataView& /*inputs*/, const RawDataView& /*outputs*/,
                                FoldDirection /*direction*/) {
    LUM_FAIL(LumError::NotImplemented);
}

void IRawBinaryFunctor::FoldRaw(const RawDataView& /*accumulator*/,
                                const RawDataView& /*accumulatorSpecial*/,
                                const ConstRawDataView& /*inputs*/,
                                const ConstRawDataView& /*specialInputs*/,
                                const RawDataView& /*outputs*/,
                                const RawDataView& /*specialOutputs*/,
                                FoldDirection /*direction*/) {
    LUM_FAIL(LumError::NotImplemented);
}

}  // namespace lum::core
