#include "storage/local/MacOSXFileHandle.h"

#include <sys/stat.h>

namespace ZEMA {

using Foundation::NSFileHandle;

std::unique_ptr<NSFileHandle> FileHandleAtPath(CFStringRef path, AccessStyle style) {
    constexpr mode_t kAnyWriteOrExecute = 0333;
    const bool reads = style.read || style.shareRead;
    const bool writes = style.write || style.shareWrite;
    if (!writes) return reads ? NSFileHandle::fileHandleForReadingAtPath(path) : nullptr;
    std::unique_ptr<NSFileHandle> handle =
        reads ? NSFileHandle::fileHandleForUpdatingAtPath(path) : NSFileHandle::fileHandleForWritingAtPath(path);
    struct stat status = {};
    if (handle == nullptr || fstat(handle->fileDescriptor(), &status) != 0) return nullptr;
    if ((status.st_mode & kAnyWriteOrExecute) == 0) return nullptr;
    return handle;
}

}  // namespace ZEMA
