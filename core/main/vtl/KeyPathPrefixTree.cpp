#include "lum/core/vtl/KeyPathPrefixTree.h"

#include <algorithm>
#include <cstddef>

#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/vtl/Visitors.h"

namespace lum::core {

template class KeyPathPrefixTreeMap<bool, false>;

// All nodes below a tree are made by MakeChild, so they are trees.

KeyPathPrefixTree::KeyPathPrefixTree(const KeySegment& segment, const Map* parent, bool value)
    : Map(segment, parent, value) {}

KeyPathPrefixTree::~KeyPathPrefixTree() = default;

std::unique_ptr<KeyPathPrefixTree::Map> KeyPathPrefixTree::MakeChild(const KeySegment& segment,
                                                                     const Map* parent,
                                                                     bool value) const {
    return std::unique_ptr<Map>(new KeyPathPrefixTree(segment, parent, value));
}

std::unique_ptr<KeyPathPrefixTree> KeyPathPrefixTree::Make() {
    return std::make_unique<KeyPathPrefixTree>();
}

std::unique_ptr<KeyPathPrefixTree> KeyPathPrefixTree::Make(
    const std::unordered_set<KeyPath>& paths) {
    auto tree = Make();
    for (const KeyPath& path : paths) {
        tree->AddImpl(path, true);
    }
    return tree;
}

std::unique_ptr<KeyPathPrefixTree> KeyPathPrefixTree::Make(const IDataStore& store) {
    auto tree = Make();
    const std::shared_ptr<IStoreKeyMap> root = store.GetRootKeyMap();
    // Key maps may nest as deep as a path is long.
    struct Place {
        Map* node;
        const IStoreKeyMap* keyMap;
    };
    std::vector<Place> places;
    if (root != nullptr) {
        places.push_back({tree.get(), root.get()});
    }
    while (!places.empty()) {
        const Place place = places.back();
        places.pop_back();
        for (const auto& [name, value] : place.keyMap->GetEntries()) {
            Map* const node = place.node->InsertOrAssign(KeyPath(name), true).first;
            // A special value has no members, whatever its type.
            if (value->GetStoreType() == StoreType::KeyMap && !value->IsSpecial()) {
                places.push_back({node, &value->AsKeyMap()});
            }
        }
    }
    return tree;
}

std::unique_ptr<KeyPathPrefixTree> KeyPathPrefixTree::Make(
    const std::vector<TransformSpec>& transforms, bool recurse) {
    auto tree = Make();
    const auto add = [&](const KeyPath& key) { tree->AddImpl(key, true); };
    Visitors::PreOrderVisit(nullptr, add, add, transforms, recurse);
    return tree;
}

std::pair<KeyPathPrefixTree*, bool> KeyPathPrefixTree::AddImpl(const KeyPath& path, bool concrete) {
    const auto [node, isNew] = Insert(path, concrete);
    auto* const tree = static_cast<KeyPathPrefixTree*>(node);
    if (isNew) {
        return {tree, true};
    }
    const bool wasConcrete = tree->IsConcrete();
    tree->SetValue(wasConcrete || concrete);
    return {tree, !wasConcrete};
}

const KeyPathPrefixTree* KeyPathPrefixTree::Find(const KeyPath& path) const {
    return static_cast<const KeyPathPrefixTree*>(Map::Find(path));
}

TStringCore KeyPathPrefixTree::PrettyPrint(int indent) const {
    struct Line {
        const KeyPathPrefixTree* tree;
        long long indent;
    };
    TStringCore text;
    std::vector<Line> lines{{this, indent}};
    Nodes children;
    while (!lines.empty()) {
        const auto [tree, blanks] = lines.back();
        lines.pop_back();
        text += TStringCore(static_cast<std::size_t>(std::max(blanks, 0LL)), u' ');
        if (tree->GetParent() == nullptr) {
            text += L"Root Node:";
        } else {
            text += tree->IsConcrete() ? L"Concrete Node: " : L"Prefix Node: ";
            text += tree->GetSegment().GetSegment().GetValue();
        }
        text += u'\n';
        children.clear();
        tree->PushChildren(children);
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            lines.push_back({static_cast<const KeyPathPrefixTree*>(*child), blanks + 2});
        }
    }
    return text;
}

}  // namespace lum::core
