#include "platform/Foundation/NSDirectoryEnumerator.h"

#include <sys/stat.h>

#include <string>
#include <system_error>

#include "platform/Foundation/NSPathUtilities.h"

namespace Foundation {
namespace fs = std::filesystem;

NSDirectoryEnumerator::NSDirectoryEnumerator(CFStringRef path) {
    const std::optional<std::string> start = FileSystemRepresentation(path);
    if (!start) return;
    start_ = *start;
    // The library would enter a start that is a link.
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(start_, error))) return;
    walk_ = fs::recursive_directory_iterator(start_, fs::directory_options::skip_permission_denied, error);
}

CFPointer<CFStringRef> NSDirectoryEnumerator::nextObject() {
    for (; walk_ != fs::recursive_directory_iterator();) {
        std::error_code error;  // an error ends the walk
        if (begun_) walk_.increment(error);
        begun_ = true;
        if (walk_ == fs::recursive_directory_iterator()) break;
        const fs::path below = walk_->path().lexically_relative(start_);
        if (auto name = StringWithFileSystemRepresentation(below.native())) return name;
        walk_.disable_recursion_pending();
    }
    return {};
}

std::optional<NSFileAttributes> NSDirectoryEnumerator::fileAttributes() const {
    struct stat status = {};
    if (walk_ == fs::recursive_directory_iterator() || lstat(walk_->path().c_str(), &status) != 0) return {};
    return FileAttributesOf(status);
}

}  // namespace Foundation
