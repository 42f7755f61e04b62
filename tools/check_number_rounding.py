#!/usr/bin/env python3
"""Proves that scaling by a 128-bit power of ten rounds every real as its exact value would round.

core/main/serialize/NumberWriter.cpp multiplies the 64-bit significand of a value with the leading
128 bits of a power of ten. Where the power has more bits than that, the product is too small, by
less than two units of its bit 64. The digits are wrong only if the exact product reaches a half
above the last digit and the computed one does not, so for every binary exponent and every scale
that goes with it, this looks for significands whose exact product lies on a half or less than the
error above it. There must be none, neither for doubles with 17 digits nor for floats with 8.

usage: check_number_rounding.py
"""

import sys
from fractions import Fraction


def floor_log2_of_power10(n):
    return n * 1741647 >> 19


def floor_log10_of_power2(n):
    return n * 315653 >> 20


def first_multiple_within(factor, modulus, low, high):
    """The smallest j >= 0 with low <= factor * j % modulus <= high, or None.

    As Euclid's algorithm does, reduces the modulus to the factor until a multiple fits directly.
    """
    if low == 0:
        return 0
    factor %= modulus
    if factor == 0:
        return None
    if 2 * factor > modulus:
        return first_multiple_within(modulus - factor, modulus, modulus - high, modulus - low)
    j = -(-low // factor)
    if factor * j <= high:
        return j
    wraps = first_multiple_within(modulus % factor, factor, -high % factor, -low % factor)
    return None if wraps is None else -(-(low + modulus * wraps) // factor)


def first_fraction_within(step, first, last, low, high):
    """The smallest n, first <= n <= last, with low <= frac(n * step) <= high < 1, or None."""
    modulus = step.denominator
    offset = step.numerator * first % modulus
    low = -(-low * modulus // 1) - offset
    high = high * modulus // 1 - offset
    if high < 0:
        ranges = [(low + modulus, high + modulus)]
    elif low < 0:
        ranges = [(0, high), (low + modulus, modulus - 1)]
    else:
        ranges = [(low, high)]
    found = [first_multiple_within(step.numerator, modulus, *bounds)
             for bounds in ranges if bounds[0] <= bounds[1]]
    found = [first + j for j in found if j is not None and first + j <= last]
    return min(found, default=None)


def find_fault(digits, significand_bits, first_exponent, last_exponent, error):
    """A value that could round wrongly, as text, or None.

    A denormal is a multiple of a power of two with fewer bits than a full significand has, so the
    full ones at its exponent include it.
    """
    for exponent in range(first_exponent, last_exponent + 1):
        unit = Fraction(2) ** (exponent - significand_bits + 1)
        estimate = floor_log10_of_power2(exponent)
        if not Fraction(10) ** estimate <= Fraction(2) ** exponent < Fraction(10) ** (estimate + 1):
            return f"floor(log10(2^{exponent})) is not {estimate}"
        for decimal_exponent in (estimate, estimate + 1):
            scale = digits - 1 - decimal_exponent
            log2 = floor_log2_of_power10(scale)
            if not Fraction(2) ** log2 <= Fraction(10) ** scale < Fraction(2) ** (log2 + 1):
                return f"floor(log2(10^{scale})) is not {log2}"
            if scale >= 0 and 5 ** scale < 2 ** 64:
                continue  # The power and the product are exact, and end above bit 64.
            # A value that rounds up to the next power of ten may be scaled as if it had reached it.
            least = Fraction(10) ** decimal_exponent * (1 - Fraction(1, 10 ** digits))
            first = max(2 ** (significand_bits - 1), -(-least // unit))
            last = min(2 ** significand_bits - 1, Fraction(10) ** (decimal_exponent + 1) // unit)
            if first > last:
                continue
            # Bit 64 of the product is this part of the last digit.
            part = Fraction(2) ** (exponent + log2 - 126)
            found = first_fraction_within(unit * Fraction(10) ** scale, first, last,
                                          Fraction(1, 2), Fraction(1, 2) + error * part)
            if found is not None:
                return f"{found} * 2^{exponent - significand_bits + 1} with {digits} digits"
    return None


def main():
    # The search must see a fault where there is one: with a far larger error some values do lie
    # too near to a half.
    if find_fault(17, 53, -1074, 1023, error=2 ** 12) is None:
        sys.exit("the search finds nothing even where it should")
    for digits, significand_bits, first, last in (17, 53, -1074, 1023), (8, 24, -149, 127):
        fault = find_fault(digits, significand_bits, first, last, error=2)
        if fault is not None:
            sys.exit(f"may round wrongly: {fault}")


if __name__ == "__main__":
    main()
