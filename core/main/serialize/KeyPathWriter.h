#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/main/serialize/KeyPathSerializer.h"

namespace lum::core {

// Writes many paths into one text, in the form of AppendKeyPath. Paths that repeat each other share
// their lists of segments where a reader made them, or where one is a copy of the other; such a
// path is copied from where it was written last.
//
// The paths have to live as long as the writer, and what it wrote has to stay where it stands in
// the text. Errors: those of AppendKeyPath.
class KeyPathWriter {
public:
    // `cache` may be null. `pathCount` is about how many paths there will be; one alone does not
    // repeat itself.
    KeyPathWriter(KeyPathSerializerCache* cache, bool includeTypes, std::size_t pathCount)
        : m_cache(cache),
          m_includeTypes(includeTypes),
          m_written(pathCount < 2 ? 0 : std::bit_ceil(std::min(2 * pathCount, kMostPlaces))) {}

    KeyPathSerializerCache* GetCache() const { return m_cache; }

    void Append(TStringCore& out, const KeyPath& path) {
        if (m_written.empty()) {
            AppendKeyPath(out, path, m_includeTypes, m_cache);
            return;
        }
        const std::vector<KeySegment>* const segments = &path.GetSegments();
        const std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(segments) * 0x9E3779B97F4A7C15;
        Written& written = m_written[(mixed >> 32) & (m_written.size() - 1)];
        if (written.segments == segments) {
            char16_t* const room = out.prepareAppend(written.length);
            std::copy_n(out.data() + written.start, written.length, room);
            out.commitAppend(written.length);
            return;
        }
        const std::size_t start = out.length();
        AppendKeyPath(out, path, m_includeTypes, m_cache);
        written = {segments, static_cast<unsigned int>(start),
                   static_cast<unsigned int>(out.length() - start)};
    }

private:
    static constexpr std::size_t kMostPlaces = 8192;

    struct Written {
        const std::vector<KeySegment>* segments = nullptr;
        unsigned int start = 0;
        unsigned int length = 0;
    };

    KeyPathSerializerCache* m_cache;
    bool m_includeTypes;
    std::vector<Written> m_written;
};

}  // namespace lum::core
