// The ordered sets of the system.
#pragma once

#include <cstddef>
#include <set>
#include <utility>

#include "core/Less.h"

namespace ZEMA {

// What BasicSet and BasicMultiset share: a face over one of the standard library's trees.
template <class T, class Tree>
class BasicKeyTree {
public:
    using Position = typename Tree::iterator;
    using ConstPosition = typename Tree::const_iterator;

    BasicKeyTree() = default;
    BasicKeyTree(const BasicKeyTree&) = default;
    BasicKeyTree(BasicKeyTree&&) noexcept = default;
    BasicKeyTree& operator=(const BasicKeyTree&) = default;
    BasicKeyTree& operator=(BasicKeyTree&&) noexcept = default;
    virtual ~BasicKeyTree() = default;

    // The end position when the key is absent.
    Position Find(const T& key) const { return tree_.find(key); }
    bool Contains(const T& key) const { return tree_.find(key) != tree_.end(); }
    std::size_t Count(const T& key) const { return tree_.count(key); }

    Position Erase(ConstPosition position) { return tree_.erase(position); }

    std::size_t Size() const { return tree_.size(); }
    bool Empty() const { return tree_.empty(); }
    void Clear() { tree_.clear(); }

    Position begin() const { return tree_.begin(); }
    Position end() const { return tree_.end(); }

protected:
    Tree tree_;
};

// Unique keys in ascending order under Cmp.
template <class T, class Cmp = Less<T>>
class BasicSet : public BasicKeyTree<T, std::set<T, Cmp>> {
public:
    // False, and no change, when an equal key exists. Keys that come in ascending order cost no search.
    bool Insert(const T& key) {
        const std::size_t size = this->tree_.size();
        this->tree_.insert(this->tree_.end(), key);
        return this->tree_.size() != size;
    }
};

// Keeps every equal key, in the order in which they came.
template <class T, class Cmp = Less<T>>
class BasicMultiset : public BasicKeyTree<T, std::multiset<T, Cmp>> {
public:
    void Insert(const T& key) { this->tree_.insert(key); }
};

}  // namespace ZEMA
