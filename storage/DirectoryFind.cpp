#include "storage/Directory.h"
#include "storage/PathOperations.h"

namespace ZEMA {

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
