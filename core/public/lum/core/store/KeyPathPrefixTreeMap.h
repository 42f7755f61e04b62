#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "lum/core/store/KeyPath.h"
#include "lum/core/store/KeySegment.h"
#include "lum/core/store/PrefixTreeChildren.h"

namespace lum::core {

/// A set of key paths as a tree of their segments, with a value of a plain type on each node: what
/// lies above a path, below it, or topmost. One object is one node, and the tree the one without a
/// parent; every operation that takes a path reads it from this node on. Nodes that only lead to
/// others have the value `kDefault`. Paths that differ in the types of their segments meet in the
/// same node, which keeps the types that it was first reached with.
///
/// Threads: any number may read while none changes the tree; there is no lock.
/// Ownership: a node owns its children. Nodes stay where they are until the tree is destroyed, so
///   pointers to them are good as long; but the node that a tree is moved to is another one.
/// Units: paths are whole ones, from the root, in results; a path of no segments is this node.
/// Errors: std::bad_alloc; the tree stays as it was, but for CopyFrom, which keeps the paths that
/// it
///   inserted by then.
/// Cost: one look-up by number a segment. A path in a result costs its length, so that what asks
///   for all paths of one long chain costs the square of its length in time and memory. Nothing
///   recurses, destruction included: a path may have any length.
template <typename V, V kDefault>
class KeyPathPrefixTreeMap {
public:
    /// A root.
    KeyPathPrefixTreeMap() : KeyPathPrefixTreeMap(kDefault) {}
    explicit KeyPathPrefixTreeMap(V value) : m_value(value), m_segment(RInternString(), nullptr) {}
    /// Takes the children and copies the rest: a node that is moved out of the middle of a tree
    /// still has its parent, and the parent still has the old, now childless, node.
    KeyPathPrefixTreeMap(KeyPathPrefixTreeMap&& other) noexcept
        : m_children(std::move(other.m_children)),
          m_value(other.m_value),
          m_parent(other.m_parent),
          m_segment(other.m_segment) {
        FixupParents(this);
    }
    KeyPathPrefixTreeMap(const KeyPathPrefixTreeMap&) = delete;
    KeyPathPrefixTreeMap& operator=(const KeyPathPrefixTreeMap&) = delete;
    virtual ~KeyPathPrefixTreeMap();

    /// Makes the node of a path, with the nodes that lead to it. A node that exists already stays
    /// as it is, also one that only leads to others: see InsertOrAssign.
    /// Returns the node, and whether it was made.
    std::pair<KeyPathPrefixTreeMap*, bool> Insert(const KeyPath& path, V value);
    /// The same, but gives the value to a node that exists as well.
    std::pair<KeyPathPrefixTreeMap*, bool> InsertOrAssign(const KeyPath& path, V value);
    /// Inserts those of the paths that lead to a node of `other`, each with that node's value.
    void CopyFrom(const KeyPathPrefixTreeMap& other, const std::vector<KeyPath>& paths);

    /// Null where the path leads out of the tree.
    KeyPathPrefixTreeMap* Find(const KeyPath& path) {
        return const_cast<KeyPathPrefixTreeMap*>(std::as_const(*this).Find(path));
    }
    const KeyPathPrefixTreeMap* Find(const KeyPath& path) const;

    V GetValue() const noexcept { return m_value; }
    /// Null for the root.
    const KeyPathPrefixTreeMap* GetParent() const noexcept { return m_parent; }
    /// Of this node. Cost: a walk up to the root.
    KeyPath GetKeyPath() const;
    /// Of the nodes right below this one, in the order in which they were made.
    std::vector<KeyPath> GetChildren() const;

    /// The nodes above this one that have the value, nearest first.
    std::vector<KeyPath> GetAncestorsWithValue(V value) const;
    /// The nodes below this one that have the value: each before what is below it, and what stands
    /// under one node in the reverse of the order in which it was made.
    std::vector<KeyPath> GetDescendantsWithValue(V value) const;
    /// The topmost of these: none of them is below another. In the same order.
    std::vector<KeyPath> GetEldersOfDescendantsWithValue(V value) const;
    /// The nodes on the way to `path`, at it and below it that have the value, shallowest first;
    /// this node is none of them. Where the path leads out of the tree, those on the way.
    std::vector<KeyPath> FindRelationsWithValue(const KeyPath& path, V value) const;
    bool HasAncestorWithValue(V value) const noexcept;
    /// Whether a node on the way to `path`, or at it, has the value; this node does not count.
    bool HasAncestorWithValue(const KeyPath& path, V value) const noexcept;
    bool HasDescendantWithValue(V value) const;

protected:
    using Nodes = std::vector<const KeyPathPrefixTreeMap*>;

    /// A child, for MakeChild.
    KeyPathPrefixTreeMap(const KeySegment& segment, const KeyPathPrefixTreeMap* parent, V value)
        : m_value(value), m_parent(parent), m_segment(segment) {}

    /// A new child of `parent`, which it does not yet have. A class whose nodes are all of its own
    /// kind makes that kind.
    virtual std::unique_ptr<KeyPathPrefixTreeMap> MakeChild(const KeySegment& segment,
                                                            const KeyPathPrefixTreeMap* parent,
                                                            V value) const {
        return std::unique_ptr<KeyPathPrefixTreeMap>(
            new KeyPathPrefixTreeMap(segment, parent, value));
    }

    void SetValue(V value) noexcept { m_value = value; }
    /// The step from the parent; an empty name at the root.
    const KeySegment& GetSegment() const noexcept { return m_segment; }
    /// Appends the children, in the order in which they were made.
    void PushChildren(Nodes& nodes) const;

private:
    enum class Next { Below, Beside, Stop };

    void FixupParents(const KeyPathPrefixTreeMap* parent) noexcept;
    template <typename Visit>
    void VisitDescendants(const Visit& visit) const;

    // First, beside the table of virtual functions: what a walk needs of a node that it passes.
    detail::PrefixTreeChildren<KeyPathPrefixTreeMap> m_children;
    V m_value;
    const KeyPathPrefixTreeMap* m_parent = nullptr;
    KeySegment m_segment;
};

// A path from outside may be long, and destroying its nodes one inside the other would run out of
// stack. So each goes when its children have gone, which takes no memory either.
template <typename V, V kDefault>
KeyPathPrefixTreeMap<V, kDefault>::~KeyPathPrefixTreeMap() {
    KeyPathPrefixTreeMap* node = this;
    while (true) {
        if (!node->m_children.GetAll().empty()) {
            node = node->m_children.GetAll().back().get();
        } else if (node == this) {
            return;
        } else {
            // What has children can be changed: only such a node was ever given one.
            node = const_cast<KeyPathPrefixTreeMap*>(node->m_parent);
            node->m_children.DestroyLast();
        }
    }
}

template <typename V, V kDefault>
void KeyPathPrefixTreeMap<V, kDefault>::FixupParents(const KeyPathPrefixTreeMap* parent) noexcept {
    for (const auto& child : m_children.GetAll()) {
        child->m_parent = parent;
    }
}

template <typename V, V kDefault>
std::pair<KeyPathPrefixTreeMap<V, kDefault>*, bool> KeyPathPrefixTreeMap<V, kDefault>::Insert(
    const KeyPath& path, V value) {
    const std::vector<KeySegment>& segments = path.GetSegments();
    auto step = segments.begin();
    KeyPathPrefixTreeMap* node = this;
    for (; step != segments.end(); ++step) {
        KeyPathPrefixTreeMap* const child = node->m_children.Find(*step);
        if (child == nullptr) {
            break;
        }
        node = child;
    }
    if (step == segments.end()) {
        return {node, false};
    }
    // The missing nodes are put together first and then hung into the tree in one step.
    const KeySegment& first = *step;
    std::unique_ptr<KeyPathPrefixTreeMap> chain = MakeChild(first, node, kDefault);
    KeyPathPrefixTreeMap* last = chain.get();
    for (++step; step != segments.end(); ++step) {
        std::unique_ptr<KeyPathPrefixTreeMap> child = MakeChild(*step, last, kDefault);
        KeyPathPrefixTreeMap* const next = child.get();
        last->m_children.Add(*step, std::move(child));
        last = next;
    }
    last->m_value = value;
    node->m_children.Add(first, std::move(chain));
    return {last, true};
}

template <typename V, V kDefault>
std::pair<KeyPathPrefixTreeMap<V, kDefault>*, bool>
KeyPathPrefixTreeMap<V, kDefault>::InsertOrAssign(const KeyPath& path, V value) {
    const std::pair<KeyPathPrefixTreeMap*, bool> inserted = Insert(path, value);
    inserted.first->m_value = value;
    return inserted;
}

template <typename V, V kDefault>
void KeyPathPrefixTreeMap<V, kDefault>::CopyFrom(const KeyPathPrefixTreeMap& other,
                                                 const std::vector<KeyPath>& paths) {
    for (const KeyPath& path : paths) {
        const KeyPathPrefixTreeMap* const node = other.Find(path);
        if (node != nullptr) {
            Insert(path, node->m_value);
        }
    }
}

template <typename V, V kDefault>
const KeyPathPrefixTreeMap<V, kDefault>* KeyPathPrefixTreeMap<V, kDefault>::Find(
    const KeyPath& path) const {
    const KeyPathPrefixTreeMap* node = this;
    for (const KeySegment& segment : path.GetSegments()) {
        node = node->m_children.Find(segment);
        if (node == nullptr) {
            return nullptr;
        }
    }
    return node;
}

template <typename V, V kDefault>
KeyPath KeyPathPrefixTreeMap<V, kDefault>::GetKeyPath() const {
    std::size_t count = 0;
    for (const KeyPathPrefixTreeMap* node = this; node->m_parent != nullptr;
         node = node->m_parent) {
        ++count;
    }
    if (count == 0) {
        return KeyPath::Empty();
    }
    std::vector<KeySegment> segments;
    segments.reserve(count);
    for (const KeyPathPrefixTreeMap* node = this; node->m_parent != nullptr;
         node = node->m_parent) {
        segments.push_back(node->m_segment);
    }
    std::reverse(segments.begin(), segments.end());
    return KeyPath(std::move(segments));
}

template <typename V, V kDefault>
std::vector<KeyPath> KeyPathPrefixTreeMap<V, kDefault>::GetChildren() const {
    std::vector<KeyPath> paths;
    paths.reserve(m_children.GetAll().size());
    for (const auto& child : m_children.GetAll()) {
        paths.push_back(child->GetKeyPath());
    }
    return paths;
}

template <typename V, V kDefault>
void KeyPathPrefixTreeMap<V, kDefault>::PushChildren(Nodes& nodes) const {
    for (const auto& child : m_children.GetAll()) {
        nodes.push_back(child.get());
    }
}

// Calls `visit` with each node below this one, depth first. It answers whether to go on below the
// node, only with the others, or not at all.
template <typename V, V kDefault>
template <typename Visit>
void KeyPathPrefixTreeMap<V, kDefault>::VisitDescendants(const Visit& visit) const {
    Nodes nodes;
    PushChildren(nodes);
    while (!nodes.empty()) {
        const KeyPathPrefixTreeMap* const node = nodes.back();
        nodes.pop_back();
        const Next next = visit(*node);
        if (next == Next::Stop) {
            return;
        }
        if (next == Next::Below) {
            node->PushChildren(nodes);
        }
    }
}

template <typename V, V kDefault>
std::vector<KeyPath> KeyPathPrefixTreeMap<V, kDefault>::GetAncestorsWithValue(V value) const {
    std::vector<KeyPath> paths;
    for (const KeyPathPrefixTreeMap* node = m_parent; node != nullptr; node = node->m_parent) {
        if (node->m_value == value) {
            paths.push_back(node->GetKeyPath());
        }
    }
    return paths;
}

template <typename V, V kDefault>
std::vector<KeyPath> KeyPathPrefixTreeMap<V, kDefault>::GetDescendantsWithValue(V value) const {
    std::vector<KeyPath> paths;
    VisitDescendants([&](const KeyPathPrefixTreeMap& node) {
        if (node.m_value == value) {
            paths.push_back(node.GetKeyPath());
        }
        return Next::Below;
    });
    return paths;
}

template <typename V, V kDefault>
std::vector<KeyPath> KeyPathPrefixTreeMap<V, kDefault>::GetEldersOfDescendantsWithValue(
    V value) const {
    std::vector<KeyPath> paths;
    VisitDescendants([&](const KeyPathPrefixTreeMap& node) {
        if (node.m_value != value) {
            return Next::Below;
        }
        paths.push_back(node.GetKeyPath());
        return Next::Beside;
    });
    return paths;
}

template <typename V, V kDefault>
std::vector<KeyPath> KeyPathPrefixTreeMap<V, kDefault>::FindRelationsWithValue(const KeyPath& path,
                                                                               V value) const {
    std::vector<KeyPath> paths;
    const KeyPathPrefixTreeMap* node = this;
    for (const KeySegment& segment : path.GetSegments()) {
        node = node->m_children.Find(segment);
        if (node == nullptr) {
            return paths;
        }
        if (node->m_value == value) {
            paths.push_back(node->GetKeyPath());
        }
    }
    const std::vector<KeyPath> below = node->GetDescendantsWithValue(value);
    paths.insert(paths.end(), below.begin(), below.end());
    return paths;
}

template <typename V, V kDefault>
bool KeyPathPrefixTreeMap<V, kDefault>::HasAncestorWithValue(V value) const noexcept {
    for (const KeyPathPrefixTreeMap* node = m_parent; node != nullptr; node = node->m_parent) {
        if (node->m_value == value) {
            return true;
        }
    }
    return false;
}

template <typename V, V kDefault>
bool KeyPathPrefixTreeMap<V, kDefault>::HasAncestorWithValue(const KeyPath& path,
                                                             V value) const noexcept {
    const KeyPathPrefixTreeMap* node = this;
    for (const KeySegment& segment : path.GetSegments()) {
        node = node->m_children.Find(segment);
        if (node == nullptr) {
            return false;
        }
        if (node->m_value == value) {
            return true;
        }
    }
    return false;
}

template <typename V, V kDefault>
bool KeyPathPrefixTreeMap<V, kDefault>::HasDescendantWithValue(V value) const {
    bool isFound = false;
    VisitDescendants([&](const KeyPathPrefixTreeMap& node) {
        isFound = node.m_value == value;
        return isFound ? Next::Stop : Next::Below;
    });
    return isFound;
}

}  // namespace lum::core
