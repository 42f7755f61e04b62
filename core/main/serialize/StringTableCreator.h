#pragma once

#include <memory>
#include <vector>

#include "core/main/serialize/BinaryBufferCreator.h"

namespace lum::core {

// The writing side of the table of strings that the payloads of a stream share. Each string has an
// index from 1 on; a payload carries the strings that are new in it.
//
// Threads: one at a time.
class StringTableCreator {
public:
    StringTableCreator();

    // The index of `text`, which is appended to the buffers where it is new.
    unsigned int Add(const TStringCore& text);

    // The UTF-8 bytes of the new strings, one behind the other.
    const std::shared_ptr<BinaryBufferCreator>& GetStringsBuffer() const { return m_strings; }
    // The index that the first new string has or would get, then where in the other buffer each new
    // string begins.
    const std::shared_ptr<BinaryBufferCreator>& GetIndicesBuffer() const { return m_indices; }
    // New buffers for the next payload.
    void ResetBuffers();

private:
    // A place of the hash map: open addressing, since most writes find a known string, and each
    // then costs one look at a place and one at a string.
    struct Place {
        unsigned int hash = 0;
        unsigned int index = 0;  // 0 where the place is free.
    };

    // Where the handle itself is not known.
    unsigned int AddText(const TStringCore& text);
    unsigned int GetNextIndex() const { return LumSizeCastSafe(m_known.size() + 1); }
    // The place of `text`, or the free one where it belongs.
    Place& FindPlace(const TStringCore& text, unsigned int hash);
    void Grow();

    // Indices by the bytes of handles: copies of one handle, as columns are full of, are the same
    // bytes, whether the text stands in them or in a block, which a known string keeps from
    // changing. Two places are tried, and the second one is taken over.
    std::vector<unsigned int> m_byHandle;
    std::vector<Place> m_places;  // A power of two, at least twice as many as there are strings.
    std::vector<TStringCore> m_known;  // By index, from 1 on.
    std::shared_ptr<BinaryBufferCreator> m_strings;
    std::shared_ptr<BinaryBufferCreator> m_indices;
};

}  // namespace lum::core
