#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "lum/core/store/SharedBuffer.h"

namespace lum::test {

/// The bytes of a payload in a block of just their size, so that AddressSanitizer sees a read past
/// the end; from the address on that is `shift` behind a multiple of 16.
class PayloadBytes final : public core::ISharedArrayBuffer {
public:
    PayloadBytes(const unsigned char* bytes, std::size_t size, std::size_t shift)
        : m_block(std::make_unique<unsigned char[]>(size + shift)), m_shift(shift), m_size(size) {
        if (size != 0) {
            std::memcpy(m_block.get() + shift, bytes, size);
        }
    }

    core::ArrayView<const unsigned char> GetView() const override {
        return {m_block.get() + m_shift, m_size};
    }

private:
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_shift;
    std::size_t m_size;
};

inline std::shared_ptr<PayloadBytes> MakePayload(const std::vector<unsigned char>& bytes,
                                                 std::size_t shift = 0) {
    return std::make_shared<PayloadBytes>(bytes.data(), bytes.size(), shift);
}

/// Bytes from hexadecimal digits; blanks and lines are for the reader.
inline std::vector<unsigned char> FromHex(const std::string& digits) {
    std::vector<unsigned char> bytes;
    int high = -1;
    for (const char digit : digits) {
        if (digit == ' ' || digit == '\n') {
            continue;
        }
        const int value = digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<unsigned char>(high * 16 + value));
            high = -1;
        }
    }
    return bytes;
}

/// As hexadecimal digits, a blank behind each four bytes.
template <typename Bytes>
std::string ToHex(const Bytes& bytes) {
    const char* const digits = "0123456789abcdef";
    std::string text;
    std::size_t count = 0;
    for (const unsigned char byte : bytes) {
        if (count % 4 == 0 && count != 0) {
            text += ' ';
        }
        text += digits[byte / 16];
        text += digits[byte % 16];
        ++count;
    }
    return text;
}

}  // namespace lum::test
