// Walking through all that is below a directory.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSFileAttributes.h"
#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// Depth first, a directory before its contents. Links are listed and not entered; a directory that may not be read is
// listed and passed over, and so is whatever cannot be named.
//
//     for (auto item = enumerator.nextObject(); item; item = enumerator.nextObject()) ...
//
// A directory is read only when the walk goes on behind it, so its permissions may be changed before.
class FOUNDATION_EXPORT NSDirectoryEnumerator {
public:
    // The next path, relative to the start; null at the end.
    CFPointer<CFStringRef> nextObject();

    // Of the present item itself; empty when it has gone meanwhile.
    std::optional<NSFileAttributes> fileAttributes() const;

private:
    friend class NSFileManager;
    explicit NSDirectoryEnumerator(CFStringRef path);

    std::filesystem::path start_;
    std::filesystem::recursive_directory_iterator walk_;
    bool begun_ = false;
};

}  // namespace Foundation
