#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "core/main/serialize/BinaryBufferReader.h"
#include "lum/core/Check.h"

namespace lum::core {

// The reading side of the table of strings that the payloads of a stream share.
//
// Threads: one at a time.
// Ownership: a string that was handed out stays where it is as long as the table lives.
// Errors: LumRuntimeException with the code named, reported. A failed payload may leave part of its
//   strings behind; the table is then good for nothing more.
class StringTableReader {
public:
    StringTableReader();

    // Takes the strings of the next payload.
    // Errors: Unspecified where it does not begin behind the strings that are known, since payloads
    // are read in the order in which they were written; BufferReadOutOfBounds.
    void AppendPayloadStrings(BinaryBufferReader& indices, BinaryBufferReader& strings);

    // Errors: InvalidStringIndex for 0, where the string that nobody may ask for stands, and from
    // the number of strings on.
    const TStringCore& GetString(unsigned int index) const {
        LUM_CHECK(index > 0 && index < m_strings.size(), LumError::InvalidStringIndex);
        return m_strings[index];
    }

private:
    // Strings in blocks of one size, so that growing moves none and any is found by a shift.
    class Strings {
    public:
        Strings() = default;
        Strings(const Strings&) = delete;
        Strings& operator=(const Strings&) = delete;
        ~Strings();

        std::size_t size() const noexcept { return m_size; }
        const TStringCore& operator[](std::size_t index) const noexcept {
            return m_blocks[index / kBlockSize]->GetPlace(index % kBlockSize)[0];
        }
        // Makes room for `count` more strings, at once: those of a payload are in one piece of
        // memory.
        void Reserve(std::size_t count);
        // Builds the next string in its place as what `make` gives. There must be room.
        template <typename Make>
        void Append(Make make) {
            new (m_blocks[m_size / kBlockSize]->GetPlace(m_size % kBlockSize)) TStringCore(make());
            ++m_size;
        }

    private:
        static constexpr std::size_t kBlockSize = 256;

        // The memory of a block, in which strings are built one by one.
        struct Block {
            TStringCore* GetPlace(std::size_t index) noexcept {
                return reinterpret_cast<TStringCore*>(bytes) + index;
            }
            alignas(TStringCore) std::byte bytes[kBlockSize * sizeof(TStringCore)];
        };

        std::vector<std::unique_ptr<Block[]>> m_memory;
        std::vector<Block*> m_blocks;  // All of them, one after the other.
        std::size_t m_size = 0;
    };

    Strings m_strings;
};

}  // namespace lum::core
