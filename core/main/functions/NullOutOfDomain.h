#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <type_traits>

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
        Out arguments[kBlock];
        for (uint64 start = 0; start < count; start += kBlock) {
            const uint64 length = std::min(kBlock, count - start);
            const In* const from = inputs + start;
            SpecialKind* const kinds = specialOutputs + start;
            long long isAllAccepted = 1;  // As wide as what it is made from.
            for (uint64 index = 0; index < length; ++index) {
                isAllAccepted &= static_cast<long long>(Function::Accepts(from[index]));
            }
            if (isAllAccepted != 0) {
                for (uint64 index = 0; index < length; ++index) {
                    kinds[index] = NullUnless(specialInputs[start + index] == SpecialKind::Normal);
                }
                ComputeBlock(from, kinds, outputs + start, length);
                continue;
            }
            for (uint64 index = 0; index < length; ++index) {
                const bool isInDomain = IsInDomain(from[index], specialInputs[start + index]);
                arguments[index] = GetArgument(from[index], isInDomain);
                kinds[index] = NullUnless(isInDomain);
            }
            ComputeBlock(arguments, kinds, outputs + start, length);
        }
    }

private:
    using Bits =
        std::conditional_t<sizeof(Out) == sizeof(unsigned int), unsigned int, unsigned long long>;

    static SpecialKind NullUnless(bool isNormal) { return static_cast<SpecialKind>(!isNormal); }

    // Zero where the kind is Null. A mask costs less beside a call than a choice or a pass of its
    // own.
    static void ComputeBlock(const auto* arguments, const SpecialKind* kinds, Out* outputs,
                             uint64 count) {
        constexpr Bits kMasks[] = {~Bits{0}, 0};  // By kind.
        for (uint64 index = 0; index < count; ++index) {
            const Out value = Function::Compute(static_cast<Out>(arguments[index]));
            outputs[index] = std::bit_cast<Out>(std::bit_cast<Bits>(value) &
                                                kMasks[static_cast<unsigned>(kinds[index])]);
        }
    }

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
