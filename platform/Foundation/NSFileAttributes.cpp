#include "platform/Foundation/NSFileAttributes.h"

#include <sys/stat.h>

namespace Foundation {
namespace {

NSFileType TypeOf(mode_t mode) {
    if (S_ISREG(mode)) return NSFileTypeRegular;
    if (S_ISDIR(mode)) return NSFileTypeDirectory;
    if (S_ISLNK(mode)) return NSFileTypeSymbolicLink;
    if (S_ISSOCK(mode)) return NSFileTypeSocket;
    if (S_ISCHR(mode)) return NSFileTypeCharacterSpecial;
    if (S_ISBLK(mode)) return NSFileTypeBlockSpecial;
    return NSFileTypeUnknown;
}

}  // namespace

NSFileAttributes FileAttributesOf(const struct stat& status) {
#ifdef __APPLE__
    const std::timespec& created = status.st_birthtimespec;
    const std::timespec& modified = status.st_mtimespec;
#else
    const std::timespec& created = status.st_ctim;
    const std::timespec& modified = status.st_mtim;
#endif
    NSFileAttributes attributes;
    attributes.fileType = TypeOf(status.st_mode);
    attributes.filePosixPermissions = status.st_mode & 07777u;
    attributes.fileCreationDate = NSDate::dateWithTimespec(created);
    attributes.fileModificationDate = NSDate::dateWithTimespec(modified);
    attributes.fileSize = static_cast<std::uint64_t>(status.st_size);
    return attributes;
}

}  // namespace Foundation
