#include "core/main/serialize/NumberWriter.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace lum::core {
namespace {

// Digits travel as the bytes of a word or a vector, the first one in the lowest byte, which is the
// one that memory shows first.
static_assert(std::endian::native == std::endian::little);

__extension__ using Wide = unsigned __int128;

// Powers of ten -----------------------------------------------------------------------------------

// 10^n is (high * 2^64 + low) * 2^(floor(log2(10^n)) - 127), with the top bit of `high` set. The
// bits below the 128 are cut off, so the entry is exact where 5^n fits and a little less than the
// power elsewhere.
struct PowerOfTen {
    std::uint64_t high;
    std::uint64_t low;
};

// The smallest denormal, 4.9e-324, is multiplied by 10^340 to have 17 digits before the point, and
// the powers from 10^-323 on are limits at which the decimal exponent of a value changes.
constexpr std::int64_t kFirstPower = -323;
constexpr std::int64_t kLastPower = 340;

struct PowersOfTen {
    constexpr const PowerOfTen& operator[](std::int64_t n) const {
        return entries[n - kFirstPower];
    }

    PowerOfTen entries[kLastPower - kFirstPower + 1];
};

// An unsigned number of fixed size, as little of one as making the table needs.
class TableNumber {
public:
    constexpr void SetLowestBit() { m_limbs[0] |= 1; }
    constexpr void SetHighestBit() { m_limbs[kLimbs - 1] |= 1u << 31; }

    constexpr void MultiplyByFive() {
        std::uint64_t carry = 0;
        for (std::uint32_t& limb : m_limbs) {
            carry += 5ull * limb;
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }

    constexpr void DivideByFive() {
        std::uint64_t remainder = 0;
        for (int i = kLimbs - 1; i >= 0; --i) {
            remainder = remainder << 32 | m_limbs[i];
            m_limbs[i] = static_cast<std::uint32_t>(remainder / 5);
            remainder %= 5;
        }
    }

    // The 128 bits from the highest one bit down.
    constexpr PowerOfTen GetLeadingBits() const {
        int top = kLimbs - 1;
        while (m_limbs[top] == 0) {
            --top;
        }
        const int shift = std::countl_zero(m_limbs[top]);
        std::uint64_t limbs[4]{};
        for (int i = 0; i < 4; ++i) {
            const std::uint64_t pair = std::uint64_t{GetLimb(top - i)} << 32 | GetLimb(top - i - 1);
            limbs[i] = pair << shift >> 32;
        }
        return {limbs[0] << 32 | limbs[1], limbs[2] << 32 | limbs[3]};
    }

private:
    static constexpr int kLimbs = 28;  // 896 bits: more than 128 above the 750 bits of 5^323.

    constexpr std::uint32_t GetLimb(int i) const { return i < 0 ? 0 : m_limbs[i]; }

    std::uint32_t m_limbs[kLimbs]{};
};

// The leading bits of 10^n are those of 5^n. Below zero they are those of 2^895 / 5^-n; cutting the
// quotient off after each division by five gives the same as cutting it off once at the end.
constexpr PowersOfTen MakePowersOfTen() {
    PowersOfTen powers{};
    TableNumber up;
    up.SetLowestBit();
    for (std::int64_t n = 0; n <= kLastPower; ++n) {
        powers.entries[n - kFirstPower] = up.GetLeadingBits();
        up.MultiplyByFive();
    }
    TableNumber down;
    down.SetHighestBit();
    for (std::int64_t n = -1; n >= kFirstPower; --n) {
        down.DivideByFive();
        powers.entries[n - kFirstPower] = down.GetLeadingBits();
    }
    return powers;
}

constexpr PowersOfTen kPowersOfTen = MakePowersOfTen();

// floor(log2(10^n)) and floor(log10(2^n)), for all the exponents that occur.
constexpr std::int64_t FloorLog2OfPower10(std::int64_t n) {
    return n * 1741647 >> 19;
}
constexpr std::int64_t FloorLog10OfPower2(std::int64_t n) {
    return n * 315653 >> 20;
}

// Significant digits ------------------------------------------------------------------------------

// Exponents have the width of a pointer throughout: widening them where they index tables and move
// the output is a measurable part of the work on a number.
struct Decimal {
    std::uint64_t digits;   // As many as asked for, the first not zero.
    std::int64_t exponent;  // The first digit counts 10^exponent.
};

template <int kExponent>
constexpr std::uint64_t kPowerOf10 = 10 * kPowerOf10<kExponent - 1>;
template <>
constexpr std::uint64_t kPowerOf10<0> = 1;

// The first kDigits digits of the finite double above zero with these bits, rounded half to even.
//
// The value is scaled by one multiplication with a 128-bit power of ten, as do R. Giulietti, "The
// Schubfach way to render doubles" (2020), and D. Lemire, "Number parsing at a gigabyte per second"
// (2021). From 10^0 to 10^27 the power and so the product are exact. Elsewhere the product is too
// small by less than two units of its bit 64, which never matters: no double (17 digits) and no
// float (8 digits) comes to lie so little above a half, nor on one.
// tools/check_number_rounding.py proves that for every exponent.
template <int kDigits>
Decimal ToDecimal(std::uint64_t bits) {
    const auto biasedExponent = static_cast<std::int64_t>(bits >> 52);
    const std::uint64_t fraction = bits & ((1ull << 52) - 1);

    // The value is significand * 2^(binaryExponent - 63), the top bit of the significand is set.
    std::uint64_t significand = (1ull << 52 | fraction) << 11;
    std::int64_t binaryExponent = biasedExponent - 1023;
    if (biasedExponent == 0) [[unlikely]] {
        const int leadingZeros = std::countl_zero(fraction);
        significand = fraction << leadingZeros;
        binaryExponent = -1011 - leadingZeros;
    }

    // At most one power of ten lies within a binary exponent, and may be reached or not. That goes
    // at random within a column, so it is added up instead of branched upon.
    std::int64_t exponent = FloorLog10OfPower2(binaryExponent);
    const std::int64_t limit = exponent + 1;
    const bool isLimitNear = FloorLog2OfPower10(limit) == binaryExponent;
    const bool isLimitReached = significand >= kPowersOfTen[limit].high;
    exponent += isLimitNear & isLimitReached;

    const std::int64_t scale = kDigits - 1 - exponent;
    const PowerOfTen& power = kPowersOfTen[scale];
    const Wide lowerProduct = Wide{significand} * power.low;
    const Wide upperProduct = Wide{significand} * power.high;
    const auto carried = static_cast<std::uint64_t>(lowerProduct >> 64);
    const std::uint64_t middle = static_cast<std::uint64_t>(upperProduct) + carried;
    const std::uint64_t high = static_cast<std::uint64_t>(upperProduct >> 64) + (middle < carried);

    const std::int64_t shift = 61 - binaryExponent - FloorLog2OfPower10(scale);
    const std::uint64_t halves = high >> shift;
    std::uint64_t digits = (halves + 1) >> 1;
    if (middle == 0 && halves << shift == high) [[unlikely]] {
        // Nothing stands behind the half digit, so if it is one, this is a tie, rounded up by now.
        digits -= halves & digits & 1;
    }
    if (digits == kPowerOf10<kDigits>) [[unlikely]] {
        return {kPowerOf10<kDigits - 1>, exponent + 1};
    }
    return {digits, exponent};
}

// Digits as units ---------------------------------------------------------------------------------

constexpr std::uint32_t kHundredMillion = 100'000'000;
constexpr std::uint64_t kEightZeros = 0x3030303030303030;

// The digits of a number below 10^8 as eight bytes. All of them are divided side by side in one
// word (P. Khuong, "How to print integers really fast", 2017).
constexpr std::uint64_t SpreadEightDigits(std::uint32_t number) {
    const std::uint64_t fours = number / 10000 | std::uint64_t{number % 10000} << 32;
    const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007f0000007f;
    const std::uint64_t pairs = hundreds | (fours - 100 * hundreds) << 16;
    const std::uint64_t tens = (pairs * 103 >> 10) & 0x000f000f000f000f;
    return tens | (pairs - 10 * tens) << 8;
}

inline void StoreUnits(std::uint64_t bytes, char16_t* out) {
    const auto units = std::bit_cast<std::array<unsigned char, 8>>(bytes);
    for (std::size_t i = 0; i < units.size(); ++i) {
        out[i] = units[i];
    }
}

// The sixteen digits of two numbers below 10^8.
#if defined(__SSE2__)
class SixteenDigits {
public:
    // As SpreadEightDigits, with both numbers in one vector. Each step divides the lanes and puts
    // the quotient and the remainder into two lanes of half the width.
    SixteenDigits(std::uint32_t head, std::uint32_t tail) {
        const __m128i numbers = _mm_unpacklo_epi64(_mm_cvtsi32_si128(static_cast<int>(head)),
                                                   _mm_cvtsi32_si128(static_cast<int>(tail)));
        const __m128i tenThousands =
            _mm_srli_epi64(_mm_mul_epu32(numbers, _mm_set1_epi64x(0xd1b71759)), 45);
        const __m128i below =
            _mm_sub_epi64(numbers, _mm_mul_epu32(tenThousands, _mm_set1_epi64x(10000)));
        const __m128i fours = _mm_or_si128(tenThousands, _mm_slli_epi64(below, 32));

        const __m128i upperFours = _mm_slli_epi32(fours, 16);
        const __m128i hundreds = _mm_srli_epi16(
            _mm_mulhi_epu16(_mm_or_si128(fours, upperFours), _mm_set1_epi16(5243)), 3);
        // Both halves of a lane hold the hundreds now: one stays, 100 of the other are taken off.
        const __m128i pairs = _mm_add_epi16(
            upperFours, _mm_mullo_epi16(hundreds, _mm_set1_epi32(-100 * 0x10000 + 1)));

        // (pairs - 10 * tens) << 8 | tens, with one multiplication.
        const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6554));
        m_digits = _mm_sub_epi16(_mm_slli_epi16(pairs, 8),
                                 _mm_mullo_epi16(tens, _mm_set1_epi16(10 * 0x100 - 1)));
    }

    // The digits up to the last one that is not zero.
    std::uint32_t CountUsed() const {
        const __m128i zeros = _mm_cmpeq_epi8(m_digits, _mm_setzero_si128());
        const auto used = static_cast<std::uint32_t>(_mm_movemask_epi8(zeros)) ^ 0xffff;
        return std::bit_width(used << 1 | 1) - 1;
    }

    void Store(char16_t* out) const { StoreVector(GetCharacters(), out); }

    // With a point before the digit `position` (0 to 16): 17 units.
    void StoreWithPoint(std::int64_t position, char16_t* out) const {
        alignas(32) static constexpr unsigned char kBefore[32] = {
            0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
            0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
        const __m128i digits = GetCharacters();
        const __m128i isBefore =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(kBefore + 16 - position));
        const __m128i before = _mm_and_si128(isBefore, digits);
        const __m128i behind = _mm_andnot_si128(isBefore, _mm_slli_si128(digits, 1));
        // The last digit falls off the vector, so it is stored first.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 9),
                         _mm_unpackhi_epi8(digits, _mm_setzero_si128()));
        StoreVector(_mm_or_si128(before, behind), out);
        out[position] = u'.';
    }

private:
    __m128i GetCharacters() const { return _mm_or_si128(m_digits, _mm_set1_epi8('0')); }

    static void StoreVector(__m128i bytes, char16_t* out) {
        const __m128i zero = _mm_setzero_si128();
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(bytes, zero));
    }

    __m128i m_digits;
};
#else
class SixteenDigits {
public:
    SixteenDigits(std::uint32_t head, std::uint32_t tail)
        : m_head(SpreadEightDigits(head)), m_tail(SpreadEightDigits(tail)) {}

    // The digits up to the last one that is not zero.
    std::uint32_t CountUsed() const {
        const int unused = std::countl_zero(m_tail != 0 ? m_tail : m_head) / 8;
        return static_cast<std::uint32_t>((m_tail != 0 ? 16 : 8) - unused);
    }

    void Store(char16_t* out) const {
        StoreUnits(m_head | kEightZeros, out);
        StoreUnits(m_tail | kEightZeros, out + 8);
    }

    // With a point before the digit `position` (0 to 16): 17 units.
    void StoreWithPoint(std::int64_t position, char16_t* out) const {
        Store(out);
        std::copy_backward(out + position, out + 16, out + 17);
        out[position] = u'.';
    }

private:
    std::uint64_t m_head;
    std::uint64_t m_tail;
};
#endif

inline char16_t* WriteExponent(std::int64_t exponent, char16_t* out) {
    const auto magnitude = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
    const unsigned hundreds = magnitude / 100;
    const unsigned rest = magnitude % 100;
    out[0] = u'e';
    out[1] = exponent < 0 ? u'-' : u'+';
    out[2] = static_cast<char16_t>(u'0' + hundreds);
    out += hundreds == 0 ? 2 : 3;
    out[0] = static_cast<char16_t>(u'0' + rest / 10);
    out[1] = static_cast<char16_t>(u'0' + rest % 10);
    return out + 2;
}

// Lays out kDigits digits as "%.<kDigits>g" does: the first one, and sixteen with zeros filled up.
template <int kDigits>
char16_t* WriteDecimal(const Decimal& decimal, char16_t* out) {
    const std::uint64_t all = decimal.digits * kPowerOf10<17 - kDigits>;
    const auto upper = static_cast<std::uint32_t>(all / kHundredMillion);
    const auto lower = static_cast<std::uint32_t>(all % kHundredMillion);
    const auto first = static_cast<char16_t>(u'0' + upper / kHundredMillion);
    const SixteenDigits rest(upper % kHundredMillion, lower);
    const std::int64_t count = 1 + rest.CountUsed();

    const std::int64_t exponent = decimal.exponent;
    out[0] = first;
    if (exponent >= 0 && exponent < kDigits) {
        rest.StoreWithPoint(exponent, out + 1);
        const std::int64_t whole = exponent + 1;
        return out + std::max(whole, count + (count > whole));
    }
    if (exponent < 0 && exponent >= -4) {
        StoreUnits(kEightZeros, out);
        out[1] = u'.';
        out += 1 - exponent;
        out[0] = first;
        rest.Store(out + 1);
        return out + count;
    }
    out[1] = u'.';
    rest.Store(out + 2);
    return WriteExponent(exponent, out + count + (count > 1));
}

template <int kDigits>
char16_t* WriteReal(double value, char16_t* out) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t magnitude = bits & ~(1ull << 63);
    out[0] = u'-';
    out += bits >> 63;
    if (magnitude == 0) {
        out[0] = u'0';
        return out + 1;
    }
    return WriteDecimal<kDigits>(ToDecimal<kDigits>(magnitude), out);
}

// Integers ----------------------------------------------------------------------------------------

// A number below 10^8 without leading zeros.
inline char16_t* WriteUpToEightDigits(std::uint32_t number, char16_t* out) {
    const std::uint64_t digits = SpreadEightDigits(number);
    const int zeros = std::countr_zero(digits | 1ull << 56) / 8;  // The last digit always stays.
    StoreUnits((digits | kEightZeros) >> 8 * zeros, out);
    return out + (8 - zeros);
}

template <typename T>
char16_t* WriteUnsigned(T value, char16_t* out) {
    if (value < kHundredMillion) {
        return WriteUpToEightDigits(static_cast<std::uint32_t>(value), out);
    }
    const T upper = value / kHundredMillion;
    const auto lower = static_cast<std::uint32_t>(value % kHundredMillion);
    if constexpr (sizeof(T) > sizeof(std::uint32_t)) {
        out = WriteUnsigned(upper, out);
    } else {
        // One digit or two: a full-range column has both at random, so without a branch.
        out[0] = static_cast<char16_t>(u'0' + upper / 10);
        out += upper >= 10;
        *out++ = static_cast<char16_t>(u'0' + upper % 10);
    }
    StoreUnits(SpreadEightDigits(lower) | kEightZeros, out);
    return out + 8;
}

template <typename T>
char16_t* WriteSigned(T value, char16_t* out) {
    // Negated as unsigned, the smallest value is right as well.
    const auto magnitude = static_cast<std::make_unsigned_t<T>>(value);
    out[0] = u'-';
    out += value < 0;
    return WriteUnsigned(value < 0 ? 0 - magnitude : magnitude, out);
}

}  // namespace

char16_t* WriteReal64(double value, char16_t* out) noexcept {
    return WriteReal<17>(value, out);
}

char16_t* WriteReal32(float value, char16_t* out) noexcept {
    return WriteReal<8>(value, out);
}

char16_t* WriteInt32(int value, char16_t* out) noexcept {
    return WriteSigned(value, out);
}

char16_t* WriteInt64(long long value, char16_t* out) noexcept {
    return WriteSigned(value, out);
}

char16_t* WriteHex2(unsigned char byte, char16_t* out) noexcept {
    constexpr char16_t kDigits[] = u"0123456789abcdef";
    out[0] = kDigits[byte >> 4];
    out[1] = kDigits[byte & 15];
    return out + 2;
}

}  // namespace lum::core
