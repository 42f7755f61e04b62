#pragma once

#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/KeyPathPrefixTreeMap.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

class IDataStore;
class TransformSpec;

extern template class LUM_CORE_API KeyPathPrefixTreeMap<bool, false>;

/// A set of key paths as a tree of their segments. A node is concrete where its path was added as
/// such; the others only lead to these.
///
/// Threads, ownership, units, errors, cost: those of KeyPathPrefixTreeMap.
class LUM_CORE_API KeyPathPrefixTree final : public KeyPathPrefixTreeMap<bool, false> {
public:
    KeyPathPrefixTree() = default;
    KeyPathPrefixTree(KeyPathPrefixTree&& other) noexcept = default;
    ~KeyPathPrefixTree() override;

    static std::unique_ptr<KeyPathPrefixTree> Make();
    /// A tree in which these are concrete.
    static std::unique_ptr<KeyPathPrefixTree> Make(const std::unordered_set<KeyPath>& paths);
    /// A tree of all members of the store's key maps, each of them concrete, key maps included.
    /// What stands in tables, key sets and arrays is left out. A key map below itself never ends.
    static std::unique_ptr<KeyPathPrefixTree> Make(const IDataStore& store);
    /// A tree in which the outputs and inputs of the transforms are concrete, the keys among the
    /// arguments of functions included; with `recurse` also of the transforms below them. An empty
    /// list of segments makes the root concrete.
    /// Errors: ValueSpec::IsKey's for an argument that is neither key nor literal.
    /// Cost: recursion as deep as the transforms nest.
    static std::unique_ptr<KeyPathPrefixTree> Make(const std::vector<TransformSpec>& transforms,
                                                   bool recurse);

    /// Makes the node of a path, with the nodes that lead to it. A node that exists becomes
    /// concrete where that is asked for, and never stops being so.
    /// Returns the node, and whether it is new or was not concrete before.
    std::pair<const KeyPathPrefixTree*, bool> Add(const KeyPath& path, bool concrete) {
        return AddImpl(path, concrete);
    }
    /// Null where the path leads out of the tree.
    const KeyPathPrefixTree* Find(const KeyPath& path) const;

    bool IsConcrete() const noexcept { return GetValue(); }
    std::vector<KeyPath> FindConcreteRelations(const KeyPath& path) const {
        return FindRelationsWithValue(path, true);
    }
    std::vector<KeyPath> GetConcreteAncestors() const { return GetAncestorsWithValue(true); }
    std::vector<KeyPath> GetConcreteDescendants() const { return GetDescendantsWithValue(true); }
    std::vector<KeyPath> GetEldersOfDescendants() const {
        return GetEldersOfDescendantsWithValue(true);
    }
    bool HasConcreteAncestor() const noexcept { return HasAncestorWithValue(true); }
    bool HasConcreteAncestor(const KeyPath& path) const noexcept {
        return HasAncestorWithValue(path, true);
    }
    bool HasConcreteDescendant() const { return HasDescendantWithValue(true); }

    /// A line for this node and each below it, in the order in which they were made, two blanks
    /// further in a level: "Root Node:", "Concrete Node: NAME" or "Prefix Node: NAME".
    /// Cost: the text of one long chain grows with the square of its length.
    TStringCore PrettyPrint(int indent) const;

private:
    using Map = KeyPathPrefixTreeMap<bool, false>;

    KeyPathPrefixTree(const KeySegment& segment, const Map* parent, bool value);

    std::unique_ptr<Map> MakeChild(const KeySegment& segment, const Map* parent,
                                   bool value) const override;
    std::pair<KeyPathPrefixTree*, bool> AddImpl(const KeyPath& path, bool concrete);
};

}  // namespace lum::core
