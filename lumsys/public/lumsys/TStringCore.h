#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "lumsys/Export.h"

namespace lumsys {

/// How TStringCore::compare weighs letters. The number is part of the interface of collators.
enum class CaseSensitivity : int { Sensitive = 1 };

/// Text as a sequence of UTF-16 code units, on every platform; the string of the whole library.
///
/// Up to 12 units stand in the object itself; longer text stands in one block of the heap that
/// copies share. The text may hold any units, zeros and lone surrogates among them, and is not
/// null-terminated. Every comparison, search and hash works on code units.
///
/// Threads: objects are independent; two of them may share a block and still be used, changed and
///   destroyed on different threads. One object belongs to one thread at a time while it changes.
/// Ownership: an object owns its text alone or shares it by an atomic count; a shared block is
///   never written, so a change of one copy is not seen in another.
/// Units: positions and lengths are code units, never bytes or characters.
/// Errors: std::length_error beyond 2^30 units, std::bad_alloc; the object stays as it was.
///   Positions are not checked by operator[]; the other operations clamp them.
/// Cost: a copy allocates nothing, and for short text touches nothing but the object; an append to
///   text that nobody shares grows in place, with capacity growing by half.
class LUM_CORE_API TStringCore {
public:
    /// Units that stand in the object itself.
    static constexpr std::size_t kInlineCapacity = 12;
    /// The longest text.
    static constexpr std::size_t kMaxLength = std::size_t{1} << 30;

    TStringCore() noexcept : m_inline{}, m_length(0), m_shared(0) {}
    TStringCore(const TStringCore& other) noexcept {
        CopyBits(other);
        if (m_shared != 0) {
            m_block->references.fetch_add(1, std::memory_order_relaxed);
        }
    }
    TStringCore(TStringCore&& other) noexcept {
        CopyBits(other);
        other.ResetToEmpty();
    }
    /// The text of a null-terminated wide literal; null counts as empty text. Where wide characters
    /// have 32 bits, those above U+FFFF become surrogate pairs and those above U+10FFFF U+FFFD.
    TStringCore(const wchar_t* text);  // NOLINT(google-explicit-constructor)
    TStringCore(const char16_t* units, std::size_t count) : TStringCore() { append(units, count); }
    /// `count` copies of `unit`.
    TStringCore(std::size_t count, char16_t unit);
    /// One character, which takes two units above U+FFFF.
    explicit TStringCore(wchar_t character);
    explicit TStringCore(std::u16string_view units) : TStringCore(units.data(), units.size()) {}
    ~TStringCore() { Release(); }

    TStringCore& operator=(const TStringCore& other) noexcept {
        TStringCore copy(other);
        swap(copy);
        return *this;
    }
    TStringCore& operator=(TStringCore&& other) noexcept {
        if (this != &other) {
            Release();
            CopyBits(other);
            other.ResetToEmpty();
        }
        return *this;
    }
    void swap(TStringCore& other) noexcept {
        TStringCore kept;
        kept.CopyBits(other);
        other.CopyBits(*this);
        CopyBits(kept);
        kept.ResetToEmpty();
    }

    /// The text of UTF-8 bytes. Each maximal invalid part becomes U+FFFD; zeros are ordinary.
    static TStringCore fromUtf8(const char* bytes, std::size_t count);
    static TStringCore fromUtf8(const std::string& bytes);
    /// The text as UTF-8; a lone surrogate becomes U+FFFD.
    std::string toStdString() const;

    std::size_t length() const noexcept { return m_length; }
    bool isEmpty() const noexcept { return m_length == 0; }
    /// The units, good until this object changes or dies.
    const char16_t* data() const noexcept { return m_shared != 0 ? UnitsOf(m_block) : m_inline; }
    std::u16string_view view() const noexcept { return {data(), m_length}; }
    char16_t operator[](std::size_t position) const noexcept { return data()[position]; }
    const char16_t* begin() const noexcept { return data(); }
    const char16_t* end() const noexcept { return data() + m_length; }

    /// Makes room for `capacity` units in all, so that appends up to there do not allocate.
    void reserve(std::size_t capacity);
    void clear() noexcept {
        Release();
        ResetToEmpty();
    }

    TStringCore& append(const TStringCore& text) {
        if (text.m_shared == 0) {
            if (char16_t* const room = FindRoomInBlock(kInlineCapacity)) {
                // A copy of fixed size, of which the units behind the text count for nothing.
                std::memcpy(room, text.m_inline, sizeof(text.m_inline));
                m_length += text.m_length;
                return *this;
            }
        }
        return append(text.data(), text.m_length);
    }
    TStringCore& append(char16_t unit) {
        char16_t* const room = Grow(1);
        *room = unit;
        m_length += 1;
        return *this;
    }
    /// Appends `count` units, which may lie in this text.
    TStringCore& append(const char16_t* units, std::size_t count);
    TStringCore& append(const wchar_t* text) { return append(TStringCore(text)); }
    TStringCore& operator+=(const TStringCore& text) { return append(text); }
    TStringCore& operator+=(char16_t unit) { return append(unit); }
    TStringCore& operator+=(const wchar_t* text) { return append(text); }

    /// Room for `count` more units behind the text, for writers that know a bound but not the exact
    /// length: they write there, then call commitAppend with what they used. Nothing else may be
    /// called in between.
    char16_t* prepareAppend(std::size_t count) {
        CheckLength(count);
        return Grow(count);
    }
    /// Takes over `count` units that were written at prepareAppend's pointer, `count` being at most
    /// what was asked for there.
    void commitAppend(std::size_t count) noexcept {
        m_length += static_cast<std::uint32_t>(count);
        if (m_shared == 0) {
            std::memset(m_inline + m_length, 0, (kInlineCapacity - m_length) * sizeof(char16_t));
        }
    }

    /// Up to `count` units from `position` on; empty where `position` is not below length().
    TStringCore mid(std::size_t position, std::size_t count = kMaxLength) const;
    TStringCore left(std::size_t count) const { return mid(0, count); }
    /// The text without blank, tab, line feed, vertical tab, form feed, carriage return at its
    /// ends.
    TStringCore trimmed() const;
    bool startsWith(const TStringCore& text) const noexcept;
    /// The first position at or after `from` where `text` stands, or -1.
    long long find(const TStringCore& text, std::size_t from = 0) const noexcept;
    long long find(char16_t unit, std::size_t from = 0) const noexcept;
    bool contains(const TStringCore& text) const noexcept { return find(text) >= 0; }
    /// The parts between the separators: one more than there are separators, empty parts included.
    std::vector<TStringCore> split(char16_t separator) const;
    static TStringCore join(const std::vector<TStringCore>& parts, const TStringCore& separator);

    /// -1, 0 or 1, by code unit; the shorter of two texts that agree comes first.
    static int compare(const TStringCore& left, const TStringCore& right,
                       CaseSensitivity sensitivity = CaseSensitivity::Sensitive) noexcept;
    int compare(const TStringCore& other,
                CaseSensitivity sensitivity = CaseSensitivity::Sensitive) const noexcept {
        return compare(*this, other, sensitivity);
    }

    /// `value` in `base` 2 to 36 (any other counts as 10), lower-case digits, "-" before the
    /// magnitude in every base.
    static TStringCore number(short value, int base = 10);
    static TStringCore number(unsigned short value, int base = 10);
    static TStringCore number(int value, int base = 10);
    static TStringCore number(unsigned int value, int base = 10);
    static TStringCore number(long value, int base = 10);
    static TStringCore number(unsigned long value, int base = 10);
    static TStringCore number(long long value, int base = 10);
    static TStringCore number(unsigned long long value, int base = 10);
    /// `value` as printf in the C locale writes it by the conversion `format`, one of e E f F g G
    /// (any other counts as g), with `precision` (negative counts as 6), and with printf's '#'
    /// where `keepPoint` is set: the decimal point, and for g the trailing zeros, are kept.
    static TStringCore number(double value, char format = 'g', int precision = 6,
                              bool keepPoint = false);

    /// The text padded with `fill` to at least `width` units; longer text stays as it is.
    TStringCore rightJustified(std::size_t width, char16_t fill) const;
    TStringCore leftJustified(std::size_t width, char16_t fill) const;

    friend bool operator==(const TStringCore& left, const TStringCore& right) noexcept {
        if (left.m_shared == 0 && right.m_shared == 0) {
            return std::memcmp(&left, &right, sizeof(TStringCore)) == 0;
        }
        return left.m_length == right.m_length &&
               std::memcmp(left.data(), right.data(), left.m_length * sizeof(char16_t)) == 0;
    }
    friend std::strong_ordering operator<=>(const TStringCore& left,
                                            const TStringCore& right) noexcept {
        return compare(left, right) <=> 0;
    }

    /// The hash of the text's units, which std::hash gives: the block hash with seed 0xDEADBEEF.
    std::size_t hash() const noexcept;

private:
    struct Block {
        std::atomic<std::uint32_t> references;
        std::uint32_t capacity;
        std::atomic<std::uint32_t> hash;  // Of the text; 0 where it is not known.
    };

    static char16_t* UnitsOf(Block* block) noexcept {
        return reinterpret_cast<char16_t*>(block + 1);
    }
    static Block* MakeBlock(std::size_t capacity);
    static void FreeBlock(Block* block) noexcept;

    static void CheckLength(std::size_t length) {
        if (length > kMaxLength) {
            ThrowTooLong();
        }
    }
    [[noreturn]] static void ThrowTooLong();

    /// The text of `count` units, at most kInlineCapacity, that stand in three words as they would
    /// in the memory of a little-endian machine; those behind them are 0.
    static TStringCore FromWords(std::uint64_t first, std::uint64_t second, std::uint64_t third,
                                 std::size_t count) noexcept {
        static_assert(kInlineCapacity == 12);
        // Stored as copies load them, by 16 bytes: a load that spans two stores waits for both.
        using Pair [[gnu::vector_size(16)]] = std::uint64_t;
        const Pair pairs[] = {{first, second}, {third, count}};
        TStringCore text;
        std::memcpy(static_cast<void*>(&text), pairs, sizeof(text));
        return text;
    }
    void CopyBits(const TStringCore& other) noexcept {
        std::memcpy(static_cast<void*>(this), static_cast<const void*>(&other), sizeof(*this));
    }
    void ResetToEmpty() noexcept { std::memset(static_cast<void*>(this), 0, sizeof(*this)); }
    void Release() noexcept {
        if (m_shared != 0 && m_block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            FreeBlock(m_block);
        }
    }
    /// The place behind the text, with room for `count` units that nobody else sees.
    char16_t* Grow(std::size_t count) {
        const std::size_t needed = m_length + count;
        if (m_shared == 0 && needed <= kInlineCapacity) {
            return m_inline + m_length;
        }
        char16_t* const room = FindRoomInBlock(count);
        return room != nullptr ? room : GrowInNewBlock(needed);
    }
    /// The same, null where the text stands inline or its block is too small or shared.
    char16_t* FindRoomInBlock(std::size_t count) noexcept {
        if (m_shared == 0 || m_length + count > m_block->capacity ||
            m_block->references.load(std::memory_order_acquire) != 1) {
            return nullptr;
        }
        m_block->hash.store(0, std::memory_order_relaxed);
        return UnitsOf(m_block) + m_length;
    }
    char16_t* GrowInNewBlock(std::size_t needed);

    // Inline units behind the text are zero, so that two short texts compare as 32 plain bytes and
    // all-zero bytes are the empty string. The block's text is as long as that of each object
    // sharing it, since only an object that has the block alone writes to it.
    union {
        char16_t m_inline[kInlineCapacity];
        Block* m_block;  // Where m_shared is 1.
    };
    std::uint32_t m_length;
    std::uint32_t m_shared;
};

static_assert(sizeof(TStringCore) == 32 && alignof(TStringCore) == 8);

LUM_CORE_API TStringCore operator+(const TStringCore& left, const TStringCore& right);
/// Writes the text as UTF-8.
LUM_CORE_API std::ostream& operator<<(std::ostream& stream, const TStringCore& text);

}  // namespace lumsys

template <>
struct std::hash<lumsys::TStringCore> {
    // Not marked noexcept: the standard tables then keep the hash codes beside the keys.
    std::size_t operator()(const lumsys::TStringCore& text) const { return text.hash(); }
};
