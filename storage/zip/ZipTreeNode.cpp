#include "storage/zip/ZipTreeNode.h"

#include <iterator>

namespace ZEMA {

// Goes down along first children and up again by the parent pointers, so that no destructor runs inside another one's
// and nothing is allocated.
ZipTreeNode::~ZipTreeNode() {
    ZipTreeNode* node = this;
    while (node != this || !children_.Empty()) {
        if (node->children_.Empty()) {
            node = node->parent_;
            node->children_.Erase(node->children_.begin());
            continue;
        }
        ZipTreeNode& first = *node->children_.begin()->second;
        if (first.ReferenceCount() == 1) {
            node = &first;
        } else {  // somebody else keeps it
            first.parent_ = nullptr;
            node->children_.Erase(node->children_.begin());
        }
    }
}

ElementFlags ZipTreeNode::Flags() const {
    return header_ ? header_->elementFlags : ElementFlags{ElementFlags::kDirectory};
}

ElementTimes ZipTreeNode::Times() const {
    return header_ ? header_->times : ElementTimes();
}

std::uint32_t ZipTreeNode::Size() const {
    return header_ ? header_->uncompressedSize : 0;
}

bool ZipTreeNode::SetFlags(ElementFlags flags) {
    if (header_) header_->elementFlags = flags;
    return header_ != nullptr;
}

bool ZipTreeNode::SetTimes(const ElementTimes& times) {
    if (header_) header_->times = times;
    return header_ != nullptr;
}

ZipTreeNode* ZipTreeNode::FindChild(const String& name) const {
    const auto position = children_.Find(name);
    return position == children_.end() ? nullptr : position->second.Get();
}

void ZipTreeNode::CollectSubtree(BasicArray<RefPointer<ZipTreeNode>>& nodes) {
    nodes.PushBack(this);
    for (std::size_t i = nodes.Size() - 1; i < nodes.Size(); ++i) {
        const RefPointer<ZipTreeNode> node = nodes[i];
        for (const auto& child : node->children_) nodes.PushBack(child.second);
    }
}

void ZipTreeNode::Erase(BasicArray<RefPointer<ZipTreeNode>>& subtree) {
    if (parent_ != nullptr) parent_->EraseChild(parent_->children_.Find(name_));
    for (const RefPointer<ZipTreeNode>& node : subtree) {
        node->EndFind();
        node->children_.Clear();
        node->header_.Reset();
        node->parent_ = nullptr;
        node->erased_ = true;
    }
}

void ZipTreeNode::EraseChild(Children::Position position) {
    const bool found = findActive_ && findPosition_ == position;
    const Children::Position next = children_.Erase(position);
    if (!found) return;
    findPosition_ = next;
    SkipFoundDirectories();
}

void ZipTreeNode::FindFirst() {
    findPosition_ = children_.begin();
    findActive_ = true;
    SkipFoundDirectories();
}

void ZipTreeNode::FindNext() {
    if (FoundChild() == nullptr) return;
    ++findPosition_;
    SkipFoundDirectories();
}

ZipTreeNode* ZipTreeNode::FoundChild() const {
    if (!findActive_ || Children::ConstPosition(findPosition_) == children_.end()) return nullptr;
    return findPosition_->second.Get();
}

void ZipTreeNode::EndFind() {
    findActive_ = false;
}

void ZipTreeNode::SkipFoundDirectories() {
    while (findPosition_ != children_.end() && findPosition_->second->Flags().IsDirectory()) ++findPosition_;
}

ZipTreeNode& GetOrAddChild(ZipTreeNode& node, const String& name, ZipFileHeader* header) {
    ZipTreeNode::Children& children = node.children_;
    // Archives are often sorted: a name behind the last one needs no search.
    auto position = children.end();
    if (!children.Empty() && !std::prev(position)->first.LessNoCase(name)) {
        position = children.LowerBound(name);
        if (!name.LessNoCase(position->first)) return *position->second;
    }
    return *children.InsertBefore(position, name, New<ZipTreeNode>(name, header, &node))->second;
}

}  // namespace ZEMA
