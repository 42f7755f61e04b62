#include "Utf8.h"

#include <cstdint>
#include <cstring>

namespace lumhost {
namespace {

// The length of the sequence at the front of `text`, 0 where it is ill-formed. The second byte has
// a narrower range behind four lead bytes: it shuts out overlong forms, surrogates, and what lies
// above U+10FFFF.
std::size_t SequenceLength(std::string_view text) {
    const auto byteAt = [text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
    };
    const unsigned lead = byteAt(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byteAt(1) < lowest || byteAt(1) > highest) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if ((byteAt(index) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

}  // namespace

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        std::uint64_t word;
        if (text.size() >= sizeof(word)) {
            std::memcpy(&word, text.data(), sizeof(word));
            if ((word & 0x8080808080808080ULL) == 0) {
                text.remove_prefix(sizeof(word));
                continue;
            }
        }
        const std::size_t length = SequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace lumhost
