#pragma once

#include <algorithm>
#include <cmath>

#include "lum/core/functions/InstructionSet.h"
#include "lum/core/functions/SpecialRules.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

// Functions over the reals as NullOutOfDomain takes them: the elements that they accept, and
// whether the compiler knows a vector instruction for it, where else it calls the standard library.

struct NaturalLogarithm {
    static constexpr bool kIsInstruction = false;
    static constexpr bool Accepts(auto element) { return element > 0; }
    static double Compute(double x) { return std::log(x); }
};

struct InverseHyperbolicSine {
    static constexpr bool kIsInstruction = false;
    static constexpr bool Accepts(auto /*element*/) { return true; }
    static double Compute(double x) { return std::asinh(x); }
};

struct HyperbolicSine {
    static constexpr bool kIsInstruction = false;
    static constexpr bool Accepts(auto /*element*/) { return true; }
    static double Compute(double x) { return std::sinh(x); }
};

struct Exponential {
    static constexpr bool kIsInstruction = false;
    static constexpr bool Accepts(auto /*element*/) { return true; }
    static double Compute(double x) { return std::exp(x); }
};

struct SquareRoot {
    static constexpr bool kIsInstruction = true;
    // NaN is not below 0, and neither is -0.0, whose root is -0.0.
    static constexpr bool Accepts(auto element) { return !(element < 0); }
    static auto Compute(auto x) { return std::sqrt(x); }
};

// The special form of a real function: an element outside its domain, and any special, gives Null
// out. The element is made a real of the output's width first.
template <FunctionElement In, FunctionElement Out, typename Function>
class NullOutOfDomain {
public:
    ElementWithKind<Out> operator()(const In& input, SpecialKind kind) const {
        const bool isInDomain = IsInDomain(input, kind);
        return OrNull(Out{Function::Compute(GetArgument(input, isInDomain))}, isInDomain);
    }

    // Around a call into the standard library nothing is computed side by side, so what surrounds
    // the calls is done for a block at a time.
    static void ApplyColumns(const In* inputs, const SpecialKind* specialInputs, Out* outputs,
                             SpecialKind* specialOutputs,
                             uint64 count) requires(!Function::kIsInstruction) {
        constexpr uint64 kBlock = 128;
        Out block[kBlock];
        for (uint64 start = 0; start < count; start += kBlock) {
            const uint64 length = std::min(kBlock, count - start);
            for (uint64 index = 0; index < length; ++index) {
                const bool isInDomain =
                    IsInDomain(inputs[start + index], specialInputs[start + index]);
                block[index] = GetArgument(inputs[start + index], isInDomain);
                specialOutputs[start + index] = static_cast<SpecialKind>(!isInDomain);
            }
            for (uint64 index = 0; index < length; ++index) {
                block[index] = Function::Compute(block[index]);
            }
            for (uint64 index = 0; index < length; ++index) {
                outputs[start + index] =
                    Choose(specialOutputs[start + index] == SpecialKind::Normal, block[index],
                           ZeroOf<Out>());
            }
        }
    }

private:
    // What is computed with in place of an element outside the domain. Every function takes its
    // usual path there; at 0 or 1 some take another, which the processor cannot foresee.
    static constexpr Out kHarmless = 2;

    static bool IsInDomain(const In& input, SpecialKind kind) {
        return static_cast<bool>(static_cast<int>(kind == SpecialKind::Normal) &
                                 static_cast<int>(Function::Accepts(input)));
    }
    static Out GetArgument(const In& input, bool isInDomain) {
        return Choose(isInDomain, static_cast<Out>(input), kHarmless);
    }
};

}  // namespace lum::core
