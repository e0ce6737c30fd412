// Releases trees of objects of any depth without recursion.
#pragma once

#include <utility>

#include "core/BasicArray.h"
#include "core/RefPointer.h"

namespace ZEMA {

// Empties `owned`, releasing each object only after everything below it has gone. A tree as deep as a document chooses
// would otherwise exhaust the stack, one destructor inside another. A destructor calls this with its own children.
//
// `childrenOf(node)` gives a pointer to the node's own array of children, or null for a node that never has any.
// Objects that somebody else holds too are let go of and left alone.
//
// Takes no memory and cannot throw: the way back up is kept in the slot that the first child leaves in its parent's
// array, while that child waits in the slot from which its parent was taken.
template <class T, class ChildrenOf>
void ReleaseDeep(BasicArray<RefPointer<T>>& owned, ChildrenOf childrenOf) noexcept {
    BasicArray<RefPointer<T>>* list = &owned;
    RefPointer<T> current;  // whose children `list` is; null for `owned` itself
    for (;;) {
        if (current && list->Size() == 1) {  // only the way back up is left
            RefPointer<T> up = std::move(list->Back());
            list->Clear();
            current = std::move(up);
            list = current ? childrenOf(*current) : &owned;
            continue;
        }
        if (list->Empty()) return;
        RefPointer<T>& last = list->Back();
        BasicArray<RefPointer<T>>* below = last && last->ReferenceCount() == 1 ? childrenOf(*last) : nullptr;
        if (below == nullptr || below->Empty()) {
            list->PopBack();
            continue;
        }
        RefPointer<T> node = std::move(last);
        last = std::move(*below->begin());
        *below->begin() = std::move(current);
        current = std::move(node);
        list = below;
    }
}

}  // namespace ZEMA
