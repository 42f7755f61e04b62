#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "core/main/functions/Arithmetic.h"
#include "lum/core/functions/FunctorLoops.h"
#include "lum/core/functions/SpecialRules.h"

namespace lum::core {

// The functions of an accumulator and an element whose folds have a quicker way than an element at
// a time. Each gives the very result of that plain walk, the bits of zeros and NaN included; but a
// special sum makes a signalling NaN a quiet one even where it skips every element.

// accumulator + element.
template <typename T>
struct Sum {
    T operator()(const T& accumulator, const T& element) const { return Add(accumulator, element); }

    // Integers give the same sum in any order, so they are added in several vectors side by side.
    template <bool kForward, bool kEmit>
    LUM_ALWAYS_INLINE void FoldColumn(T& accumulator, const T* inputs, T* /*outputs*/,
                                      uint64 count) const
        requires(kForward && !kEmit && std::is_integral_v<T>) {
        typedef std::make_unsigned_t<T> Vector __attribute__((vector_size(32)));
        constexpr uint64 kWidth = sizeof(Vector) / sizeof(T);
        constexpr uint64 kVectors = 4;
        Vector sums[kVectors] = {};
        uint64 index = 0;
        for (; index + kVectors * kWidth <= count; index += kVectors * kWidth) {
            for (uint64 vector = 0; vector < kVectors; ++vector) {
                Vector elements;
                std::memcpy(&elements, inputs + index + vector * kWidth, sizeof(elements));
                sums[vector] += elements;
            }
        }
        T lanes[kVectors * kWidth];
        std::memcpy(lanes, sums, sizeof(lanes));
        for (const T lane : lanes) {
            accumulator = Add(accumulator, lane);
        }
        for (; index < count; ++index) {
            accumulator = Add(accumulator, inputs[index]);
        }
    }
};

// accumulator + element, where a special element is skipped and the first normal element replaces
// a special accumulator.
template <typename T>
struct SumOfNormal {
    ElementWithKind<T> operator()(const T& accumulator, SpecialKind accumulatorKind,
                                  const T& element, SpecialKind kind) const {
        if (kind != SpecialKind::Normal) {
            return {accumulator, accumulatorKind};
        }
        if (accumulatorKind != SpecialKind::Normal) {
            return {element, SpecialKind::Normal};
        }
        return {Add(accumulator, element), SpecialKind::Normal};
    }

    // Once the accumulator is normal it stays so, and special elements need no branch.
    template <bool kForward, bool kEmit>
    LUM_ALWAYS_INLINE void FoldColumn(T& accumulator, SpecialKind& accumulatorKind, const T* inputs,
                                      const SpecialKind* kinds, T* outputs,
                                      SpecialKind* outputKinds, uint64 count) const {
        const auto indexOf = [count](uint64 step) { return kForward ? step : count - 1 - step; };
        uint64 step = 0;
        for (; step < count && accumulatorKind != SpecialKind::Normal; ++step) {
            const uint64 index = indexOf(step);
            if (kinds[index] == SpecialKind::Normal) {
                accumulator = inputs[index];
                accumulatorKind = SpecialKind::Normal;
            }
            if constexpr (kEmit) {
                outputs[index] = accumulator;
                outputKinds[index] = accumulatorKind;
            }
        }
        if constexpr (!kEmit && kForward) {
            AddColumn(accumulator, inputs + step, kinds + step, count - step);
        } else {
            for (; step < count; ++step) {
                const uint64 index = indexOf(step);
                accumulator = Add(accumulator, GetSummand(inputs[index], kinds[index]));
                if constexpr (kEmit) {
                    outputs[index] = accumulator;
                    outputKinds[index] = SpecialKind::Normal;
                }
            }
        }
    }

private:
    // A special element is added as the number that changes no sum: 0, or -0.0, since 0.0 would
    // turn a sum of -0.0 into 0.0.
    LUM_ALWAYS_INLINE static T GetSummand(const T& element, SpecialKind kind) {
        return Choose(kind == SpecialKind::Normal, element, Negate(T{0}));
    }

    LUM_ALWAYS_INLINE static void AddColumn(T& accumulator, const T* inputs,
                                            const SpecialKind* kinds, uint64 count) {
        if constexpr (std::is_integral_v<T>) {
            for (uint64 index = 0; index < count; ++index) {
                accumulator = Add(accumulator, GetSummand(inputs[index], kinds[index]));
            }
        } else {
            // Reals are added one by one, since another order would give another sum. The summands
            // are made side by side, for so few elements at once that the processor makes the next
            // ones while it still adds.
            constexpr uint64 kBlock = 32;
            uint64 start = 0;
            for (; start + kBlock <= count; start += kBlock) {
                T summands[kBlock];
                for (uint64 index = 0; index < kBlock; ++index) {
                    summands[index] = GetSummand(inputs[start + index], kinds[start + index]);
                }
                for (const T& summand : summands) {
                    accumulator += summand;
                }
            }
            for (; start < count; ++start) {
                accumulator += GetSummand(inputs[start], kinds[start]);
            }
        }
    }
};

// How minima and maxima differ: which of two numbers is the better one.
enum class BestOf { Least, Greatest };

template <BestOf kOrder, typename T>
constexpr bool IsBetter(const T& a, const T& b) {
    return kOrder == BestOf::Least ? a < b : a > b;
}

namespace detail {

template <typename T>
struct BestOfColumn {
    T best;
    bool hasNaN;
};

// The best of `count` numbers, found in several lanes side by side that all begin with `first`, and
// whether there was a NaN, which is passed over. Which of the zeros 0.0 and -0.0 it is, is left
// open.
template <BestOf kOrder, typename T>
LUM_ALWAYS_INLINE inline BestOfColumn<T> FindBest(T first, const T* inputs, uint64 count) {
    // Vectors of the compiler, since it does not make them of loops with this many variables.
    typedef T Vector __attribute__((vector_size(32)));
    using Bits = BitsOf<T>;
    typedef decltype(Vector() != Vector()) Mask;
    constexpr uint64 kWidth = sizeof(Vector) / sizeof(T);
    constexpr uint64 kVectors = 4;

    Vector best[kVectors];
    Mask isNaN[kVectors] = {};
    for (Vector& lanes : best) {
        lanes = first - Vector();
    }
    uint64 index = 0;
    for (; index + kVectors * kWidth <= count; index += kVectors * kWidth) {
        for (uint64 vector = 0; vector < kVectors; ++vector) {
            Vector elements;
            std::memcpy(&elements, inputs + index + vector * kWidth, sizeof(elements));
            isNaN[vector] |= elements != elements;
            const Mask isBetter =
                kOrder == BestOf::Least ? elements < best[vector] : elements > best[vector];
            best[vector] = isBetter ? elements : best[vector];
        }
    }
    BestOfColumn<T> result = {first, false};
    const auto take = [&result](T element) LUM_ALWAYS_INLINE {
        result.hasNaN |= element != element;
        result.best = IsBetter<kOrder>(element, result.best) ? element : result.best;
    };
    for (; index < count; ++index) {
        take(inputs[index]);
    }
    T lanes[kVectors * kWidth];
    std::memcpy(lanes, best, sizeof(lanes));
    for (const T lane : lanes) {
        take(lane);
    }
    Bits bits[kVectors * kWidth];
    std::memcpy(bits, isNaN, sizeof(bits));
    for (const Bits lane : bits) {
        result.hasNaN |= lane != 0;
    }
    return result;
}

}  // namespace detail

// The better of accumulator and element; the element where neither is better, which a NaN is not.
// So a NaN takes the accumulator's place, and gives it to whatever follows.
template <typename T, BestOf kOrder>
struct BestElement {
    T operator()(const T& accumulator, const T& element) const {
        return IsBetter<kOrder>(accumulator, element) ? accumulator : element;
    }

    // What stands before the last NaN has no say in the result, and behind it the order matters
    // only to the sign of a zero.
    template <bool kForward, bool kEmit>
    LUM_ALWAYS_INLINE void FoldColumn(T& accumulator, const T* inputs, T* /*outputs*/,
                                      uint64 count) const
        requires(kForward && !kEmit && std::is_floating_point_v<T>) {
        constexpr uint64 kBlock = 1024;
        for (uint64 start = 0; start < count; start += kBlock) {
            FoldBlock(accumulator, inputs + start, std::min(kBlock, count - start));
        }
    }

private:
    LUM_ALWAYS_INLINE static void FoldBlock(T& accumulator, const T* inputs, uint64 count) {
        const auto column = detail::FindBest<kOrder>(inputs[0], inputs, count);
        if (!column.hasNaN) {
            return Replace(accumulator, column.best, inputs, count);
        }
        uint64 end = count;
        while (inputs[end - 1] == inputs[end - 1]) {
            --end;
        }
        accumulator = inputs[end - 1];
        if (end < count) {
            const T* const rest = inputs + end;
            const auto restColumn = detail::FindBest<kOrder>(rest[0], rest, count - end);
            Replace(accumulator, restColumn.best, rest, count - end);
        }
    }

    // The accumulator after `count` elements without a NaN, the best of which is `best`.
    LUM_ALWAYS_INLINE static void Replace(T& accumulator, T best, const T* inputs, uint64 count) {
        if (IsBetter<kOrder>(accumulator, best)) {
            return;
        }
        accumulator = best;
        if (best == 0) {
            // Of equal zeros the last one stays.
            while (inputs[count - 1] != 0) {
                --count;
            }
            accumulator = inputs[count - 1];
        }
    }
};

// The same over elements with kinds: a special element is skipped, the first normal element
// replaces a special accumulator. Here the accumulator stays where neither is better.
template <typename T, BestOf kOrder>
struct BestOfNormal {
    ElementWithKind<T> operator()(const T& accumulator, SpecialKind accumulatorKind,
                                  const T& element, SpecialKind kind) const {
        if (kind != SpecialKind::Normal) {
            return {accumulator, accumulatorKind};
        }
        if (accumulatorKind != SpecialKind::Normal || IsBetter<kOrder>(element, accumulator)) {
            return {element, SpecialKind::Normal};
        }
        return {accumulator, SpecialKind::Normal};
    }

    template <bool kForward, bool kEmit>
    LUM_ALWAYS_INLINE void FoldColumn(T& accumulator, SpecialKind& accumulatorKind, const T* inputs,
                                      const SpecialKind* kinds, T* /*outputs*/,
                                      SpecialKind* /*outputKinds*/, uint64 count) const
        requires(kForward && !kEmit && std::is_arithmetic_v<T>) {
        uint64 start = 0;
        for (; start < count && accumulatorKind != SpecialKind::Normal; ++start) {
            if (kinds[start] == SpecialKind::Normal) {
                accumulator = inputs[start];
                accumulatorKind = SpecialKind::Normal;
            }
        }
        // A NaN as accumulator is never replaced, and as element is never better.
        const T first = accumulator;
        T best = first;
        constexpr uint64 kBlock = 256;
        for (uint64 block = start; block < count; block += kBlock) {
            const uint64 length = std::min(kBlock, count - block);
            T elements[kBlock];
            for (uint64 index = 0; index < length; ++index) {
                elements[index] = Choose(kinds[block + index] == SpecialKind::Normal,
                                         inputs[block + index], first);
            }
            best = detail::FindBest<kOrder>(best, elements, length).best;
        }
        if (!IsBetter<kOrder>(best, first)) {
            return;
        }
        accumulator = best;
        if (std::is_floating_point_v<T> && best == 0) {
            // Of equal zeros the first one stays.
            while (kinds[start] != SpecialKind::Normal || inputs[start] != 0) {
                ++start;
            }
            accumulator = inputs[start];
        }
    }
};

}  // namespace lum::core
