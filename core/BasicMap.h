// The ordered map of the system.
#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "core/Less.h"
#include "core/MemoryBlocks.h"

namespace ZEMA {

// Unique keys in ascending order under Cmp; a face over the standard library's red-black tree, one allocation a node.
// With a MemoryBlocks, which must outlive the map, the nodes come from there. Positions are the standard iterators:
// `position->first` is the key, `position->second` the value.
template <class K, class V, class Cmp = Less<K>>
class BasicMap {
public:
    using Tree = std::map<K, V, Cmp, BlockAllocator<std::pair<const K, V>>>;
    using Position = typename Tree::iterator;
    using ConstPosition = typename Tree::const_iterator;

    BasicMap() = default;
    explicit BasicMap(MemoryBlocks& nodes) : tree_(typename Tree::allocator_type(&nodes)) {}
    BasicMap(const BasicMap&) = default;
    BasicMap(BasicMap&&) noexcept = default;
    BasicMap& operator=(const BasicMap&) = default;
    BasicMap& operator=(BasicMap&&) noexcept = default;
    virtual ~BasicMap() = default;

    // The end position when the key is absent.
    Position Find(const K& key) { return tree_.find(key); }
    ConstPosition Find(const K& key) const { return tree_.find(key); }

    // The first position whose key is not less than `key`.
    Position LowerBound(const K& key) { return tree_.lower_bound(key); }
    ConstPosition LowerBound(const K& key) const { return tree_.lower_bound(key); }

    bool Contains(const K& key) const { return tree_.find(key) != tree_.end(); }

    // Inserts a default value when the key is absent.
    V& operator[](const K& key) { return tree_[key]; }

    // False, and no change, when the key exists.
    bool Insert(const K& key, const V& value) { return tree_.emplace(key, value).second; }

    // For a key that is absent and whose place is known to be just before `position`: without a search.
    Position InsertBefore(Position position, const K& key, const V& value) {
        return tree_.emplace_hint(position, key, value);
    }

    Position Erase(Position position) { return tree_.erase(position); }

    std::size_t Size() const { return tree_.size(); }
    bool Empty() const { return tree_.empty(); }
    void Clear() { tree_.clear(); }

    Position begin() { return tree_.begin(); }
    Position end() { return tree_.end(); }
    ConstPosition begin() const { return tree_.begin(); }
    ConstPosition end() const { return tree_.end(); }

private:
    Tree tree_;
};

}  // namespace ZEMA
