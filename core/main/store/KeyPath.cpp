#include "lum/core/store/KeyPath.h"

#include <algorithm>

#include "lum/core/Check.h"
#include "lum/core/utility/Fnv.h"

namespace lum::core {
namespace {

std::vector<KeySegment> Untyped(std::initializer_list<RInternString> names) {
    std::vector<KeySegment> segments;
    segments.reserve(names.size());
    for (const RInternString& name : names) {
        segments.emplace_back(name, nullptr);
    }
    return segments;
}

}  // namespace

KeyPath::KeyPath(const RInternString& name) : KeyPath(KeySegment(name, nullptr)) {}

KeyPath::KeyPath(const KeySegment& segment) : KeyPath(std::vector<KeySegment>{segment}) {}

KeyPath::KeyPath(std::initializer_list<RInternString> names) : KeyPath(Untyped(names)) {}

KeyPath::KeyPath(std::vector<KeySegment>&& segments)
    : KeyPath(std::make_shared<std::vector<KeySegment>>(std::move(segments)), 0) {}

const KeyPath& KeyPath::Empty() {
    // Paths may be made until the very end of the process, so this one is never destroyed.
    static const KeyPath& s_empty = *new KeyPath(std::vector<KeySegment>());
    return s_empty;
}

const RInternString& KeyPath::GetLeaf() const {
    return GetLeafSegment().GetSegment();
}

const KeySegment& KeyPath::GetLeafSegment() const {
    LUM_CHECK_NOT(m_segments->empty(), LumError::EmptyKeyPath);
    return m_segments->back();
}

KeyPath KeyPath::GetParent() const {
    LUM_CHECK_NOT(m_segments->empty(), LumError::EmptyKeyPath);
    if (m_segments->size() == 1) {
        return Empty();
    }
    return KeyPath(std::vector<KeySegment>(m_segments->begin(), m_segments->end() - 1));
}

KeyPath KeyPath::GetTail() const {
    LUM_CHECK_NOT(m_segments->empty(), LumError::EmptyKeyPath);
    if (m_segments->size() == 1) {
        return Empty();
    }
    return KeyPath(std::vector<KeySegment>(m_segments->begin() + 1, m_segments->end()));
}

KeyPath KeyPath::Add(const KeySegment& segment) const {
    std::vector<KeySegment> segments;
    segments.reserve(m_segments->size() + 1);
    segments.insert(segments.end(), m_segments->begin(), m_segments->end());
    segments.push_back(segment);
    return KeyPath(std::move(segments));
}

KeyPath KeyPath::Add(const KeyPath& other) const {
    if (IsEmpty()) {
        return other;
    }
    std::vector<KeySegment> segments;
    segments.reserve(m_segments->size() + other.m_segments->size());
    segments.insert(segments.end(), m_segments->begin(), m_segments->end());
    segments.insert(segments.end(), other.m_segments->begin(), other.m_segments->end());
    return KeyPath(std::move(segments));
}

KeyPath KeyPath::AddVersion(unsigned int version) const {
    const KeySegment leaf = GetLeafSegment().AddVersion(version);
    std::vector<KeySegment> segments(*m_segments);
    segments.back() = leaf;
    return KeyPath(std::move(segments));
}

bool KeyPath::IsPrefixOf(const KeyPath& other) const noexcept {
    return m_segments->size() <= other.m_segments->size() &&
           std::equal(m_segments->begin(), m_segments->end(), other.m_segments->begin());
}

uint64 KeyPath::ComputeHash() const noexcept {
    uint64 hash = 0;
    for (const KeySegment& segment : *m_segments) {
        hash = HashCombine(hash, segment.GetHashValue());
    }
    m_hash.store(hash, std::memory_order_relaxed);
    return hash;
}

bool KeyPath::Compare::operator()(const KeyPath& a, const KeyPath& b) const noexcept {
    const std::vector<KeySegment>& left = a.GetSegments();
    const std::vector<KeySegment>& right = b.GetSegments();
    if (left.size() != right.size()) {
        return left.size() < right.size();
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i] == right[i]) {
            continue;
        }
        const int order = TStringCore::compare(left[i].GetSegment(), right[i].GetSegment(),
                                               CaseSensitivity::Sensitive);
        if (order != 0) {
            return order < 0;
        }
    }
    return false;
}

}  // namespace lum::core
