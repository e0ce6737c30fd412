#include "storage/Directory.h"

#include "storage/ElementFacts.h"
#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

// Another directory may have been entered under the same name since; its entry stays.
void EraseEntry(Directory::OpenChildren& openChildren, const String& name, const Directory* directory) {
    const auto position = openChildren.Find(name);
    if (position != openChildren.end() && position->second == directory) openChildren.Erase(position);
}

}  // namespace

Directory::Directory(const String& name, Directory* parent)
    : DirectoryElement(name, parent), foundPosition_(found_.end()) {
    const StorageLock lock;
    if (parent != nullptr) parent->openChildren_[name] = this;
}

// A directory whose construction failed further down never came to its last release, and must not be found any more.
Directory::~Directory() {
    const StorageLock lock;
    LeaveParent();
}

void Directory::OnLastRelease() {
    LeaveParent();
    DirectoryElement::OnLastRelease();
}

void Directory::ForgetOpenChild(const String& name) {
    const auto position = openChildren_.Find(name);
    if (position != openChildren_.end()) openChildren_.Erase(position);
}

void Directory::LeaveParent() {
    Directory* const parent = Parent();
    if (parent == nullptr) return;
    for (const String& alias : aliases_) EraseEntry(parent->openChildren_, alias, this);
    EraseEntry(parent->openChildren_, Name(), this);
}

void AddAlias(Directory& directory, const String& alias) {
    const StorageLock lock;
    directory.aliases_.PushBack(alias);
    if (Directory* const parent = directory.Parent()) parent->openChildren_[alias] = &directory;
}

ElementFlags Directory::GetFlags() {
    return {ElementFlags::kDirectory | ElementFlags::kReadable};
}

bool Directory::SetTimes(const ElementTimes*) {
    return false;
}

ElementTimes Directory::GetTimes() {
    return {};
}

bool Directory::SetAttributes(const ElementFlags* flags, const ElementTimes* times) {
    return SetTimes(times) && SetFlags(flags);
}

Directory* Directory::CreateChildObject(const String&) {
    return nullptr;
}

bool Directory::CreateDirectory(const String&) {
    return false;
}

File* Directory::OpenFile(const String&, const AccessStyle*, bool, const std::uint64_t*) {
    return nullptr;
}

bool Directory::Remove(const String&, bool) {
    return false;
}

bool Directory::Rename(const String& oldName, const String& newName) {
    return Move(oldName, this, newName, false, false);
}

bool Directory::Move(const String& name, Directory* target, const String& newName, bool overwrite, bool force) {
    auto* const facts = dynamic_cast<ElementFacts*>(this);
    if (facts != nullptr && !facts->ShowsAllOf(name)) return false;
    return Copy(name, target, newName, overwrite, force) && Remove(name, true);
}

bool Directory::GetChildFlags(const String&, ElementFlags*) {
    return false;
}

bool Directory::SetChildFlags(const String&, const ElementFlags*) {
    return false;
}

bool Directory::GetChildTimes(const String&, ElementTimes*) {
    return false;
}

bool Directory::SetChildTimes(const String&, const ElementTimes*) {
    return false;
}

bool Directory::IsEmpty() {
    return true;
}

bool Directory::HasDirectoryPath(const BasicArray<String>&) {
    return false;
}

bool Directory::HasFile(const String&) {
    return false;
}

bool Directory::List(const String&, Listing*) {
    return false;
}

void Directory::FindFirstFile() {
    found_.Clear();
    ZEMA::List(*this, String("*"), &found_);
    findActive_ = true;
    foundPosition_ = found_.begin();
    SkipFoundDirectories();
}

RefPointer<File> Directory::OpenFoundFile(const AccessStyle* style, const std::uint64_t* truncateTo) {
    if (Directory::IsFindDone()) return nullptr;
    return OpenFile(foundPosition_->name, style, false, truncateTo);
}

void Directory::FindNextFile() {
    if (Directory::IsFindDone()) return;
    ++foundPosition_;
    SkipFoundDirectories();
}

bool Directory::IsFindDone() {
    return foundPosition_ == found_.end();
}

bool Directory::IsFindActive() {
    return findActive_;
}

void Directory::EndFind() {
    findActive_ = false;
    found_.Clear();
    foundPosition_ = found_.end();
}

void Directory::SkipFoundDirectories() {
    while (foundPosition_ != found_.end() && foundPosition_->flags.IsDirectory()) ++foundPosition_;
}

}  // namespace ZEMA
