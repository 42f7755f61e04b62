#include "lumsys/main/Utf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "lumsys/TStringCore.h"

namespace lumsys {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char32_t code) noexcept {
    return code >= 0xD800 && code <= 0xDFFF;
}

char16_t* WriteCodePoint(char32_t code, char16_t* out) noexcept {
    if (code < 0x10000) {
        *out++ = static_cast<char16_t>(code);
    } else {
        *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
        *out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
    return out;
}

/// One decoded code point and the bytes that it took: the whole sequence, or, for bytes that cannot
/// be one, the maximal part of them that begins like one.
struct Decoded {
    char32_t code;
    std::size_t bytes;
};

Decoded DecodeUtf8(const unsigned char* bytes, std::size_t count) noexcept {
    const unsigned char lead = bytes[0];
    if (lead < 0x80) {
        return {lead, 1};
    }
    // The range of the second byte depends on the first: no overlong form, no surrogate, nothing
    // above U+10FFFF.
    std::size_t length;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    char32_t code;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0F;
        low = lead == 0xE0 ? 0xA0 : low;
        high = lead == 0xED ? 0x9F : high;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07;
        low = lead == 0xF0 ? 0x90 : low;
        high = lead == 0xF4 ? 0x8F : high;
    } else {
        return {kReplacement, 1};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i == count || bytes[i] < low || bytes[i] > high) {
            return {kReplacement, i};
        }
        code = code << 6 | (bytes[i] & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {code, length};
}

/// How many units below 0x80 stand in front. Texts are mostly such, so they are looked at in
/// blocks.
std::size_t CountAscii(const char16_t* units, std::size_t count) noexcept {
    constexpr std::size_t kBlock = 32;
    std::size_t i = 0;
    for (; i + kBlock <= count; i += kBlock) {
        char16_t seen = 0;
        for (std::size_t k = 0; k < kBlock; ++k) {
            seen = static_cast<char16_t>(seen | units[i + k]);
        }
        if (seen >= 0x80) {
            break;
        }
    }
    while (i < count && units[i] < 0x80) {
        ++i;
    }
    return i;
}

constexpr std::size_t kWord = 8;

bool IsAsciiWord(const unsigned char* bytes) noexcept {
    std::uint64_t word;
    std::memcpy(&word, bytes, kWord);
    return (word & 0x8080808080808080u) == 0;
}

}  // namespace

void AppendUtf8(TStringCore& text, const char* bytes, std::size_t count) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    const auto* const end = in + count;
    // A byte gives at most one unit: four bytes give two, and an invalid part has at least one
    // byte.
    char16_t* const start = text.prepareAppend(count);
    char16_t* out = start;
    const bool hasWord = count >= kWord;
    while (in != end) {
        const auto left = static_cast<std::size_t>(end - in);
        if (left >= kWord && IsAsciiWord(in)) {
            out = std::copy(in, in + kWord, out);
            in += kWord;
        } else if (left < kWord && hasWord && IsAsciiWord(end - kWord)) {
            // The last word begins among bytes that are done, and writes their units once more.
            out = std::copy(end - kWord, end, out + left - kWord);
            in = end;
        } else if (in[0] < 0x80) {
            *out++ = *in++;
        } else {
            const Decoded decoded = DecodeUtf8(in, left);
            out = WriteCodePoint(decoded.code, out);
            in += decoded.bytes;
        }
    }
    text.commitAppend(static_cast<std::size_t>(out - start));
}

void AppendWide(TStringCore& text, const wchar_t* characters, std::size_t count) {
    // Exactly the room that is needed, so that short text stays inline.
    std::size_t length = count;
    for (std::size_t i = 0; i < count; ++i) {
        const auto code = static_cast<char32_t>(characters[i]);
        length += code > 0xFFFF && code <= 0x10FFFF ? 1 : 0;
    }
    char16_t* out = text.prepareAppend(length);
    for (std::size_t i = 0; i < count; ++i) {
        const auto code = static_cast<char32_t>(characters[i]);
        out = WriteCodePoint(code > 0x10FFFF ? kReplacement : code, out);
    }
    text.commitAppend(length);
}

std::string ToUtf8(const char16_t* units, std::size_t count) {
    // So much at once that it is still at hand when it is read for the second time.
    constexpr std::size_t kNear = 4096;
    std::string bytes;
    bytes.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (units[i] < 0x80) {
            const std::size_t run = CountAscii(units + i, std::min(count - i, kNear));
            const std::size_t start = bytes.size();
            bytes.resize(start + run);
            std::transform(units + i, units + i + run, bytes.data() + start,
                           [](char16_t unit) { return static_cast<char>(unit); });
            i += run - 1;
            continue;
        }
        char32_t code = units[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00u);
        }
        if (IsSurrogate(code)) {
            code = kReplacement;
        }
        if (code < 0x800) {
            bytes.push_back(static_cast<char>(0xC0 | code >> 6));
            bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code < 0x10000) {
            bytes.push_back(static_cast<char>(0xE0 | code >> 12));
            bytes.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        } else {
            bytes.push_back(static_cast<char>(0xF0 | code >> 18));
            bytes.push_back(static_cast<char>(0x80 | (code >> 12 & 0x3F)));
            bytes.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        }
    }
    return bytes;
}

}  // namespace lumsys
