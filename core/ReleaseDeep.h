// Releases trees of objects of any depth without recursion.
#pragma once

#include <utility>

#include "core/BasicArray.h"
#include "core/RefPointer.h"

namespace ZEMA {

// Empties `owned` from its end to its front, releasing each object only after everything below it has gone. A tree as
// deep as a document chooses would otherwise exhaust the stack, one destructor inside another. A destructor calls this
// with its own children.
//
// `childrenOf(node)` gives a pointer to the node's own array of children, or null for a node that never has any.
// Objects that somebody else holds too are let go of and left alone. While a node is released, the arrays of the nodes
// above it are not in order: its destructor must not look at them.
//
// Takes no memory and cannot throw: the last slot of an array, from which a child was taken to be emptied first, keeps
// the way back up from that array meanwhile.
template <class T, class ChildrenOf>
void ReleaseDeep(BasicArray<RefPointer<T>>& owned, ChildrenOf childrenOf) noexcept {
    BasicArray<RefPointer<T>>* list = &owned;
    RefPointer<T> node;    // whose children `list` holds; null while that is `owned`
    RefPointer<T> parent;  // of `node`; null when `node` came from `owned`
    for (;;) {
        if (list->Empty()) {
            if (!node) return;
            node = std::move(parent);  // lets go of the emptied node
            list = node ? childrenOf(*node) : &owned;
            parent = std::move(list->Back());
            list->PopBack();
            continue;
        }
        RefPointer<T>& last = list->Back();
        BasicArray<RefPointer<T>>* const below = last && last->ReferenceCount() == 1 ? childrenOf(*last) : nullptr;
        if (below == nullptr || below->Empty()) {
            list->PopBack();
            continue;
        }
        RefPointer<T> child = std::move(last);
        last = std::move(parent);
        parent = std::move(node);
        node = std::move(child);
        list = below;
    }
}

}  // namespace ZEMA
