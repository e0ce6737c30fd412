#include "storage/zip/ZipStorageDirectory.h"

#include <algorithm>

#include "storage/PathOperations.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

ZipStorageDirectory::ZipStorageDirectory(const String& name, Directory* parent, ZipStorageVolume* volume,
                                         ZipTreeNode* node)
    : Directory(name, parent), volume_(volume), node_(node) {}

ZipStorageDirectory::~ZipStorageDirectory() {
    if (volume_->RootDirectory() == this) volume_->SetRootDirectory(nullptr);
}

bool ZipStorageDirectory::SetFlags(const ElementFlags* flags) {
    return node_->SetFlags(*flags);
}

ElementFlags ZipStorageDirectory::GetFlags() {
    return node_->Flags();
}

bool ZipStorageDirectory::SetTimes(const ElementTimes* times) {
    return node_->SetTimes(*times);
}

ElementTimes ZipStorageDirectory::GetTimes() {
    return node_->Times();
}

Directory* ZipStorageDirectory::CreateChildObject(const String& name) {
    ZipTreeNode* child = node_->FindChild(name);
    if (child == nullptr || !child->Flags().IsDirectory()) return nullptr;
    return new ZipStorageDirectory(child->Name(), this, volume_.Get(), child);
}

bool ZipStorageDirectory::CreateDirectory(const String& name) {
    return volume_->AddMember(*node_, name, true) != nullptr;
}

File* ZipStorageDirectory::OpenFile(const String& name, const AccessStyle* style, bool create,
                                    const std::uint64_t* truncateTo) {
    RefPointer<ZipTreeNode> child = node_->FindChild(name);
    if (!child && create) child = volume_->AddMember(*node_, name, false);
    if (!child) return nullptr;
    return ZipStorageFile::Open(*volume_, *child, this, *style, truncateTo);
}

bool ZipStorageDirectory::Remove(const String& name, bool force) {
    ZipTreeNode* child = node_->FindChild(name);
    if (child == nullptr || !volume_->IsWritable()) return false;
    // All are asked before one is removed: a refusal leaves the archive as it was.
    BasicArray<RefPointer<ZipTreeNode>> subtree;
    child->CollectSubtree(subtree);
    BasicArray<RefPointer<ZipFileHeader>> members;
    for (const RefPointer<ZipTreeNode>& node : subtree) {
        ZipFileHeader* member = node->Header();
        if (member == nullptr) continue;
        if (member->openCount != 0) return false;
        if (!force && !member->elementFlags.Has(ElementFlags::kEntriesWritable)) return false;
        members.PushBack(member);
    }
    if (!volume_->RemoveMembers(members)) return false;
    child->Erase(subtree);
    // Not an archive that is mounted under this name, as "x.zip" is under "x": it is still there.
    const auto open = GetOpenChildren().Find(name);
    if (open == GetOpenChildren().end()) return true;
    const auto* directory = dynamic_cast<const ZipStorageDirectory*>(open->second);
    if (directory != nullptr && directory->Node().IsErased()) ForgetOpenChild(name);
    return true;
}

bool ZipStorageDirectory::GetChildFlags(const String& name, ElementFlags* flags) {
    const ZipTreeNode* child = node_->FindChild(name);
    if (child == nullptr) return false;
    *flags = child->Flags();
    return true;
}

bool ZipStorageDirectory::SetChildFlags(const String& name, const ElementFlags* flags) {
    ZipTreeNode* child = node_->FindChild(name);
    return child != nullptr && child->SetFlags(*flags);
}

bool ZipStorageDirectory::GetChildTimes(const String& name, ElementTimes* times) {
    const ZipTreeNode* child = node_->FindChild(name);
    if (child == nullptr) return false;
    *times = child->Times();
    return true;
}

bool ZipStorageDirectory::SetChildTimes(const String& name, const ElementTimes* times) {
    ZipTreeNode* child = node_->FindChild(name);
    return child != nullptr && child->SetTimes(*times);
}

bool ZipStorageDirectory::IsEmpty() {
    return !node_->IsErased() && node_->GetChildren().Empty();
}

bool ZipStorageDirectory::HasDirectoryPath(const BasicArray<String>& components) {
    const ZipTreeNode* node = node_.Get();
    for (const String& component : components) {
        node = node->FindChild(component);
        if (node == nullptr || !node->Flags().IsDirectory()) return false;
    }
    return !node_->IsErased();
}

bool ZipStorageDirectory::HasFile(const String& name) {
    const ZipTreeNode* child = node_->FindChild(name);
    return child != nullptr && !child->Flags().IsDirectory();
}

bool ZipStorageDirectory::List(const String& pattern, Listing* listing) {
    if (node_->IsErased()) return false;
    for (const auto& [name, child] : node_->GetChildren()) {
        if (!MatchPattern(name, pattern)) continue;
        listing->Insert({child->Name(), child->Flags(), child->Times(), child->Size()});
    }
    return true;
}

bool ZipStorageDirectory::ShowsAllOf(const String& name) {
    BasicArray<RefPointer<ZipTreeNode>> nodes;
    if (ZipTreeNode* const child = node_->FindChild(name)) child->CollectSubtree(nodes);
    return std::all_of(nodes.begin(), nodes.end(), [](const RefPointer<ZipTreeNode>& node) {
        return node->Flags().IsDirectory() || node->GetChildren().Empty();
    });
}

void ZipStorageDirectory::FindFirstFile() {
    node_->FindFirst();
}

RefPointer<File> ZipStorageDirectory::OpenFoundFile(const AccessStyle* style, const std::uint64_t* truncateTo) {
    ZipTreeNode* child = node_->FoundChild();
    if (child == nullptr) return nullptr;
    return ZipStorageFile::Open(*volume_, *child, this, *style, truncateTo);
}

void ZipStorageDirectory::FindNextFile() {
    node_->FindNext();
}

bool ZipStorageDirectory::IsFindDone() {
    return node_->FoundChild() == nullptr;
}

bool ZipStorageDirectory::IsFindActive() {
    return node_->IsFindActive();
}

void ZipStorageDirectory::EndFind() {
    node_->EndFind();
}

}  // namespace ZEMA
