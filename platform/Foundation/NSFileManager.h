// Looking at and changing the file system by path.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSDate.h"
#include "platform/Foundation/NSObjCRuntime.h"

struct stat;

namespace Foundation {

// What an item is. A pipe is none of these: the framework calls it unknown.
enum class NSFileType {
    NSFileTypeRegular,
    NSFileTypeDirectory,
    NSFileTypeSymbolicLink,
    NSFileTypeSocket,
    NSFileTypeCharacterSpecial,
    NSFileTypeBlockSpecial,
    NSFileTypeUnknown,
};
using enum NSFileType;

// The dictionary of attributes, with the keys in use as fields. Read ones are all present; to set some, fill in those.
struct NSFileAttributes {
    std::optional<NSFileType> fileType;
    std::optional<std::uint32_t> filePosixPermissions;  // the low bits of the mode, 07777
    std::optional<NSDate> fileCreationDate;             // of the last change of status where none is kept
    std::optional<NSDate> fileModificationDate;
    std::optional<std::uint64_t> fileSize;  // bytes
};

// The attributes that a stat structure holds.
FOUNDATION_EXPORT NSFileAttributes FileAttributesOf(const struct stat& status);

// Depth first, a directory before its contents. Links are listed and not entered; a directory that may not be read is
// listed and passed over, and so is whatever cannot be named.
//
//     for (auto item = enumerator.nextObject(); item; item = enumerator.nextObject()) ...
//
// A directory is read only when the walk goes on behind it, so its permissions may be changed before.
class FOUNDATION_EXPORT NSDirectoryEnumerator {
public:
    ~NSDirectoryEnumerator();

    // The next path, relative to the start; null at the end.
    CFPointer<CFStringRef> nextObject();

    // Of the present item itself; empty when it has gone meanwhile.
    std::optional<NSFileAttributes> fileAttributes() const;

private:
    friend class NSFileManager;
    explicit NSDirectoryEnumerator(CFStringRef path);

    struct Walk;
    std::unique_ptr<Walk> walk_;  // null where there is nothing to walk through
};

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
