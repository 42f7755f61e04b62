#include "core/main/serialize/StringTableCreator.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace lum::core {
namespace {

constexpr std::size_t kFirstPlaceCount = 256;
constexpr std::size_t kHandlesAPlace = 2;

// Products with odd numbers of no pattern carry each bit upwards; the folds bring it down.
constexpr uint64 kOdd = 0x9E3779B97F4A7C15;
constexpr uint64 kLastOdd = 0xD6E8FEB86659FD93;

unsigned int Fold(uint64 hash) {
    return static_cast<unsigned int>((hash ^ hash >> 32) * kLastOdd >> 32);
}

// Word by word. A text of more than 12 units has three words at least, and the last one overlaps.
unsigned int HashOfLong(const TStringCore& text) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t byteCount = text.length() * sizeof(char16_t);
    uint64 hash = byteCount;
    const auto add = [&](const unsigned char* from) {
        uint64 word;
        std::memcpy(&word, from, sizeof(word));
        hash = (hash ^ word) * kOdd;
        hash ^= hash >> 32;
    };
    for (std::size_t i = 0; i + sizeof(uint64) < byteCount; i += sizeof(uint64)) {
        add(bytes + i);
    }
    add(bytes + byteCount - sizeof(uint64));
    return Fold(hash);
}

// Of the units. Short text is hashed as three words, whatever its length.
unsigned int HashOf(const TStringCore& text) {
    if (text.length() > TStringCore::kInlineCapacity) {
        return HashOfLong(text);
    }
    std::array<uint64, 3> words{};
    static_assert(sizeof(words) == TStringCore::kInlineCapacity * sizeof(char16_t));
    if (static_cast<const void*>(text.data()) == &text) {
        // The units stand in the object itself, with zeros behind them.
        std::memcpy(words.data(), text.data(), sizeof(words));
    } else {
        std::memcpy(words.data(), text.data(), text.length() * sizeof(char16_t));
    }
    return Fold(words[0] * kOdd ^ (words[1] ^ text.length()) * 0xC2B2AE3D27D4EB4F ^
                words[2] * 0x165667B19E3779F9);
}

}  // namespace

StringTableCreator::StringTableCreator()
    : m_byHandle(kHandlesAPlace * kFirstPlaceCount), m_places(kFirstPlaceCount) {
    ResetBuffers();
}

unsigned int StringTableCreator::Add(const TStringCore& text) {
    static_assert(sizeof(TStringCore) == 32);
    std::array<uint64, 4> words;
    std::memcpy(words.data(), static_cast<const void*>(&text), sizeof(words));
    const unsigned int hash = Fold(words[0] * kOdd ^ words[1] * 0xC2B2AE3D27D4EB4F ^
                                   words[2] * 0x165667B19E3779F9 ^ words[3]);
    const std::size_t slot = hash & (m_byHandle.size() - 1);
    for (const std::size_t tried : {slot, slot ^ 1}) {
        const unsigned int index = m_byHandle[tried];
        if (index != 0 && std::memcmp(static_cast<const void*>(&m_known[index - 1]), words.data(),
                                      sizeof(words)) == 0) {
            return index;
        }
    }
    const unsigned int index = AddText(text);
    const std::size_t newSlot = hash & (m_byHandle.size() - 1);  // It may have grown.
    m_byHandle[m_byHandle[newSlot] == 0 ? newSlot : newSlot ^ 1] = index;
    return index;
}

unsigned int StringTableCreator::AddText(const TStringCore& text) {
    const unsigned int hash = HashOf(text);
    const unsigned int known = FindPlace(text, hash).index;
    if (known != 0) {
        return known;
    }
    const unsigned int index = GetNextIndex();
    const buffersize_t start = m_strings->GetLength();
    if ((m_known.size() + 1) * 2 > m_places.size()) {
        Grow();
    }
    m_known.push_back(text);
    m_strings->AppendString(text);
    m_indices->Append(start);
    FindPlace(text, hash) = {hash, index};
    return index;
}

StringTableCreator::Place& StringTableCreator::FindPlace(const TStringCore& text,
                                                         unsigned int hash) {
    const std::size_t mask = m_places.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        Place& place = m_places[i];
        if (place.index == 0 || (place.hash == hash && m_known[place.index - 1] == text)) {
            return place;
        }
    }
}

void StringTableCreator::Grow() {
    std::vector<Place> places(2 * m_places.size());
    const std::size_t mask = places.size() - 1;
    for (const Place& place : m_places) {
        if (place.index != 0) {
            std::size_t i = place.hash & mask;
            while (places[i].index != 0) {
                i = (i + 1) & mask;
            }
            places[i] = place;
        }
    }
    m_places = std::move(places);
    m_byHandle.assign(kHandlesAPlace * m_places.size(), 0);
}

void StringTableCreator::ResetBuffers() {
    m_strings = std::make_shared<BinaryBufferCreator>();
    m_indices = std::make_shared<BinaryBufferCreator>();
    m_indices->Append(GetNextIndex());
}

}  // namespace lum::core
