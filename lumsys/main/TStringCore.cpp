#include "lumsys/TStringCore.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>
#include <ostream>
#include <stdexcept>

#include "lumsys/Hash.h"
#include "lumsys/main/Utf.h"

namespace lumsys {
namespace {

constexpr unsigned int kHashSeed = 0xDEADBEEF;

bool IsBlank(char16_t unit) noexcept {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

template <typename Word>
std::uint64_t Load(const char* bytes) noexcept {
    Word word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

/// At most 12 bytes, the first in the lowest place; 0 behind them.
struct ShortBytes {
    std::uint64_t low;   // 8 of them.
    std::uint64_t high;  // The others.
};

ShortBytes LoadShort(const char* bytes, std::size_t count) noexcept {
    if (count > 8) {
        return {Load<std::uint64_t>(bytes),
                Load<std::uint64_t>(bytes + count - 8) >> (128 - 8 * count)};
    }
    if (count == 8) {
        return {Load<std::uint64_t>(bytes), 0};
    }
    if (count >= 4) {  // The two halves overlap in the same bytes.
        return {Load<std::uint32_t>(bytes) | Load<std::uint32_t>(bytes + count - 4)
                                                 << 8 * (count - 4),
                0};
    }
    std::uint64_t low = 0;
    for (std::size_t i = 0; i < count; ++i) {
        low |= Load<std::uint8_t>(bytes + i) << 8 * i;
    }
    return {low, 0};
}

TStringCore DecodeUtf8(const char* bytes, std::size_t count) {
    TStringCore text;
    AppendUtf8(text, bytes, count);
    if (text.length() <= TStringCore::kInlineCapacity && count > TStringCore::kInlineCapacity) {
        text = TStringCore(text.data(), text.length());  // Fewer units than bytes: it fits inline.
    }
    return text;
}

/// Four bytes, each in 16 bits.
std::uint64_t Widen(std::uint64_t bytes) noexcept {
    bytes = (bytes | bytes << 16) & 0x0000FFFF0000FFFF;
    return (bytes | bytes << 8) & 0x00FF00FF00FF00FF;
}

}  // namespace

TStringCore::TStringCore(const wchar_t* text) : TStringCore() {
    if (text != nullptr) {
        AppendWide(*this, text, std::wcslen(text));
    }
}

TStringCore::TStringCore(std::size_t count, char16_t unit) : TStringCore() {
    std::fill_n(prepareAppend(count), count, unit);
    commitAppend(count);
}

TStringCore::TStringCore(wchar_t character) : TStringCore() {
    AppendWide(*this, &character, 1);
}

TStringCore TStringCore::fromUtf8(const char* bytes, std::size_t count) {
    // Most texts are short and plain.
    if (std::endian::native == std::endian::little && count <= kInlineCapacity) {
        const ShortBytes units = LoadShort(bytes, count);
        if (((units.low | units.high) & 0x8080808080808080) == 0) {
            return FromWords(Widen(units.low & 0xFFFFFFFF), Widen(units.low >> 32),
                             Widen(units.high), count);
        }
    }
    return DecodeUtf8(bytes, count);
}

TStringCore TStringCore::fromUtf8(const std::string& bytes) {
    return fromUtf8(bytes.data(), bytes.size());
}

std::string TStringCore::toStdString() const {
    return ToUtf8(data(), length());
}

void TStringCore::ThrowTooLong() {
    throw std::length_error("TStringCore: text too long");
}

TStringCore::Block* TStringCore::MakeBlock(std::size_t capacity) {
    void* const memory = ::operator new(sizeof(Block) + capacity * sizeof(char16_t));
    return new (memory) Block{1, static_cast<std::uint32_t>(capacity), 0};
}

void TStringCore::FreeBlock(Block* block) noexcept {
    block->~Block();
    ::operator delete(block);
}

char16_t* TStringCore::GrowInNewBlock(std::size_t needed) {
    CheckLength(needed);
    const std::size_t capacity =
        std::min(kMaxLength, std::max(needed, std::size_t{m_length} + m_length / 2));
    Block* const block = MakeBlock(capacity);
    std::memcpy(UnitsOf(block), data(), m_length * sizeof(char16_t));
    Release();
    m_block = block;
    m_shared = 1;
    return UnitsOf(block) + m_length;
}

void TStringCore::reserve(std::size_t capacity) {
    CheckLength(capacity);
    if (capacity > m_length) {
        static_cast<void>(Grow(capacity - m_length));
    }
}

TStringCore& TStringCore::append(const char16_t* units, std::size_t count) {
    CheckLength(count);
    if (count == 0) {
        return *this;
    }
    // The units may be our own, and growing may free them: a copy keeps the block alive.
    const bool isOwn = std::less_equal<>()(data(), units) && std::less<>()(units, end());
    const TStringCore kept = isOwn ? *this : TStringCore();
    const char16_t* const source = isOwn ? kept.data() + (units - data()) : units;
    std::memcpy(Grow(count), source, count * sizeof(char16_t));
    m_length += static_cast<std::uint32_t>(count);
    return *this;
}

TStringCore TStringCore::mid(std::size_t position, std::size_t count) const {
    if (position >= length()) {
        return {};
    }
    const std::size_t taken = std::min(count, length() - position);
    return taken == length() ? *this : TStringCore(data() + position, taken);
}

TStringCore TStringCore::trimmed() const {
    const char16_t* first = begin();
    const char16_t* last = end();
    while (first != last && IsBlank(*first)) {
        ++first;
    }
    while (first != last && IsBlank(last[-1])) {
        --last;
    }
    return mid(static_cast<std::size_t>(first - begin()), static_cast<std::size_t>(last - first));
}

bool TStringCore::startsWith(const TStringCore& text) const noexcept {
    return view().starts_with(text.view());
}

long long TStringCore::find(const TStringCore& text, std::size_t from) const noexcept {
    const std::size_t position = view().find(text.view(), from);
    return position == std::u16string_view::npos ? -1 : static_cast<long long>(position);
}

long long TStringCore::find(char16_t unit, std::size_t from) const noexcept {
    const std::size_t position = view().find(unit, from);
    return position == std::u16string_view::npos ? -1 : static_cast<long long>(position);
}

std::vector<TStringCore> TStringCore::split(char16_t separator) const {
    std::vector<TStringCore> parts;
    std::size_t start = 0;
    for (long long at = find(separator); at >= 0; at = find(separator, start)) {
        parts.push_back(mid(start, static_cast<std::size_t>(at) - start));
        start = static_cast<std::size_t>(at) + 1;
    }
    parts.push_back(mid(start));
    return parts;
}

TStringCore TStringCore::join(const std::vector<TStringCore>& parts, const TStringCore& separator) {
    TStringCore text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i != 0) {
            text += separator;
        }
        text += parts[i];
    }
    return text;
}

int TStringCore::compare(const TStringCore& left, const TStringCore& right,
                         CaseSensitivity /*sensitivity*/) noexcept {
    const int order = left.view().compare(right.view());
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

TStringCore TStringCore::rightJustified(std::size_t width, char16_t fill) const {
    if (width <= length()) {
        return *this;
    }
    TStringCore text(width - length(), fill);
    text += *this;
    return text;
}

TStringCore TStringCore::leftJustified(std::size_t width, char16_t fill) const {
    if (width <= length()) {
        return *this;
    }
    TStringCore text = *this;
    text += TStringCore(width - length(), fill);
    return text;
}

std::size_t TStringCore::hash() const noexcept {
    if (m_shared == 0) {
        return Hash(m_inline, m_length * sizeof(char16_t), kHashSeed);
    }
    std::uint32_t hash = m_block->hash.load(std::memory_order_relaxed);
    if (hash == 0) {
        hash = Hash(UnitsOf(m_block), m_length * sizeof(char16_t), kHashSeed);
        m_block->hash.store(hash, std::memory_order_relaxed);
    }
    return hash;
}

TStringCore operator+(const TStringCore& left, const TStringCore& right) {
    TStringCore text;
    text.reserve(left.length() + right.length());
    text += left;
    text += right;
    return text;
}

std::ostream& operator<<(std::ostream& stream, const TStringCore& text) {
    return stream << text.toStdString();
}

}  // namespace lumsys
