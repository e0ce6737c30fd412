// Looking at and changing the file system by path.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSDate.h"
#include "platform/Foundation/NSDirectoryEnumerator.h"
#include "platform/Foundation/NSFileAttributes.h"
#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// The calls of the shared file manager that are in use.
//
// Paths are platform strings. One that cannot be a path of the file system (null, empty, with a zero unit or half a
// surrogate pair) names nothing: every call answers as for a missing item. A name on the disk that is not UTF-8 cannot
// become a platform string and is left out.
//
// Errors:  false, null or an empty optional; no error objects. errno tells the reason right after the call.
// Threads: holds no state, and may be used from several threads.
class FOUNDATION_EXPORT NSFileManager {
public:
    static NSFileManager& defaultManager();

    // Follows links: a dangling link does not exist.
    bool fileExistsAtPath(CFStringRef path, bool* isDirectory = nullptr) const;

    // Of the item itself: a link in last place is not followed.
    std::optional<NSFileAttributes> attributesOfItemAtPath(CFStringRef path) const;

    // Sets those attributes that are present among permissions and the two dates; follows links. The modification date
    // sets the date of access too. A creation date that the file system cannot store is left alone.
    bool setAttributes(const NSFileAttributes& attributes, CFStringRef ofItemAtPath) const;

    // Fails when the item exists or its parent is missing. Mode 0777 less the umask.
    bool createDirectoryAtPath(CFStringRef path) const;

    // An empty file, mode 0666 less the umask. A file or link that stands there is replaced by renaming, so that one
    // that may not be written is replaced too; a directory or a special file is left alone, and the answer is false.
    bool createFileAtPath(CFStringRef path) const;

    // A directory goes with all that is below it, a link without its target.
    bool removeItemAtPath(CFStringRef path) const;

    // Fails when anything stands at the target; never crosses file systems.
    bool moveItemAtPath(CFStringRef path, CFStringRef toPath) const;

    // The names in a directory, strings in no particular order, without "." and ".."; null when it cannot be read.
    CFPointer<CFArrayRef> contentsOfDirectoryAtPath(CFStringRef path) const;

    // All that is below a directory; no items for anything else, a link to a directory included.
    NSDirectoryEnumerator enumeratorAtPath(CFStringRef path) const;

    // The link's own text; null for whatever is no link.
    CFPointer<CFStringRef> destinationOfSymbolicLinkAtPath(CFStringRef path) const;

    // Null when it cannot be told.
    CFPointer<CFStringRef> currentDirectoryPath() const;
};

}  // namespace Foundation
