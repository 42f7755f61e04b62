#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "lum/core/store/KeySegment.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core::detail {

/// The children of a node of a prefix tree, in the order in which they came, found by name. Most
/// nodes have one, which stands here itself; a few are looked through; beside many stands an index,
/// a table of open addresses (linear probing). The nodes themselves never move.
///
/// Threads: those of the tree. Ownership: owns the nodes. Units: children.
/// Errors: std::bad_alloc from Add, which then has changed nothing that a caller can see.
/// Cost: an only child takes no memory of its own. A find touches a block or two beside the node,
///   and divides nothing.
template <typename Node>
class PrefixTreeChildren {
public:
    PrefixTreeChildren() noexcept = default;
    PrefixTreeChildren(PrefixTreeChildren&& other) noexcept = default;
    PrefixTreeChildren(const PrefixTreeChildren&) = delete;
    PrefixTreeChildren& operator=(const PrefixTreeChildren&) = delete;
    ~PrefixTreeChildren() = default;

    /// Good until one is added or destroyed.
    std::span<const std::unique_ptr<Node>> GetAll() const noexcept {
        if (m_many != nullptr) {
            return m_many->nodes;
        }
        return {&m_only, m_only == nullptr ? std::size_t{0} : std::size_t{1}};
    }

    /// Null where there is no child of that name.
    Node* Find(const KeySegment& segment) const noexcept {
        const uint64 name = segment.GetHashValue();
        if (m_many == nullptr) {
            return name == m_onlyName ? m_only.get() : nullptr;
        }
        if (!m_many->index.empty()) {
            return FindInIndex(name);
        }
        const std::vector<uint64>& names = m_many->names;
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end()
                   ? nullptr
                   : m_many->nodes[static_cast<std::size_t>(found - names.begin())].get();
    }

    /// Takes a child in; there must be none of that name.
    void Add(const KeySegment& segment, std::unique_ptr<Node>&& node) {
        if (m_many == nullptr && m_only == nullptr) {
            m_onlyName = segment.GetHashValue();
            m_only = std::move(node);
            return;
        }
        if (m_many == nullptr) {
            auto many = std::make_unique<Many>();
            many->Add(m_onlyName, std::move(m_only));
            m_many = std::move(many);
        }
        m_many->Add(segment.GetHashValue(), std::move(node));
    }

    /// Destroys the last child, and drops the index: a tree is taken apart from its ends, and
    /// nothing is looked up in it then.
    void DestroyLast() noexcept {
        if (m_many == nullptr) {
            m_only = nullptr;
            return;
        }
        m_many->index.clear();
        m_many->names.pop_back();
        m_many->nodes.pop_back();
    }

private:
    // A cache line of names.
    static constexpr std::size_t kMostWithoutIndex = 8;

    struct Many {
        std::vector<uint64> names;
        std::vector<std::unique_ptr<Node>> nodes;
        // Numbers of children plus one, 0 in a free place: a power of two, at most half of them
        // taken. Empty where there is no index.
        std::vector<unsigned int> index;

        // Either all of it happens, or the child stays with the caller.
        void Add(uint64 name, std::unique_ptr<Node>&& node) {
            if (nodes.size() == nodes.capacity()) {
                const std::size_t capacity = std::max<std::size_t>(2, nodes.size() * 2);
                names.reserve(capacity);
                nodes.reserve(capacity);
            }
            if (nodes.size() >= kMostWithoutIndex && nodes.size() * 2 >= index.size()) {
                MakeIndex();
            }
            names.push_back(name);
            nodes.push_back(std::move(node));
            if (!index.empty()) {
                Put(index, nodes.size() - 1);
            }
        }

        // An index with room for twice the children.
        void MakeIndex() {
            std::vector<unsigned int> larger(std::bit_ceil(names.size() * 4));
            for (std::size_t number = 0; number < names.size(); ++number) {
                Put(larger, number);
            }
            index = std::move(larger);
        }

        void Put(std::vector<unsigned int>& places, std::size_t number) const noexcept {
            std::size_t place = GetHome(places, names[number]);
            while (places[place] != 0) {
                place = (place + 1) & (places.size() - 1);
            }
            places[place] = static_cast<unsigned int>(number + 1);
        }
    };

    static std::size_t GetHome(const std::vector<unsigned int>& index, uint64 name) noexcept {
        // Fibonacci hashing (Knuth, 1973); ids of names that are made together are neighbours.
        return static_cast<std::size_t>(name * 0x9E3779B97F4A7C15ULL >>
                                        (64 - std::countr_zero(index.size())));
    }

    Node* FindInIndex(uint64 name) const noexcept {
        const std::vector<unsigned int>& index = m_many->index;
        std::size_t place = GetHome(index, name);
        while (index[place] != 0) {
            const std::size_t number = index[place] - 1;
            if (m_many->names[number] == name) {
                return m_many->nodes[number].get();
            }
            place = (place + 1) & (index.size() - 1);
        }
        return nullptr;
    }

    // One of these at most.
    std::unique_ptr<Node> m_only;
    std::unique_ptr<Many> m_many;
    uint64 m_onlyName = 0;
};

}  // namespace lum::core::detail
