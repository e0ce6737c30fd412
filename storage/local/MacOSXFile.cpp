#include "storage/local/MacOSXFile.h"

#include <sys/stat.h>

#include <utility>

#include "platform/Foundation/NSFileHandle.h"
#include "storage/local/MacOSXAttributes.h"

namespace ZEMA {

using Foundation::NSException;
using Foundation::NSFileHandle;

MacOSXFile::MacOSXFile(const String& name, Directory* parent, CFStringRef nativePath,
                       std::unique_ptr<NSFileHandle> handle)
    : File(name, parent), handle_(std::move(handle)), path_(nativePath) {}

MacOSXFile::~MacOSXFile() = default;

bool MacOSXFile::SetFlags(const ElementFlags* flags) {
    return WriteFlags(path_.NativePath(), *flags);
}

ElementFlags MacOSXFile::GetFlags() {
    ElementFlags flags;
    ReadFlags(path_.NativePath(), &flags);
    return flags;
}

bool MacOSXFile::SetTimes(const ElementTimes* times) {
    return WriteTimes(path_.NativePath(), *times);
}

ElementTimes MacOSXFile::GetTimes() {
    ElementTimes times;
    ReadTimes(path_.NativePath(), &times);
    return times;
}

bool MacOSXFile::ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    return ZEMA::Seek(*this, offset) && ZEMA::Read(*this, size, buffer, done);
}

bool MacOSXFile::WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    return ZEMA::Seek(*this, offset) && ZEMA::Write(*this, size, buffer, done);
}

bool MacOSXFile::Read(std::uint64_t size, void* buffer, std::uint64_t* done) {
    std::uint64_t count = 0;
    try {
        handle_->readBytes(buffer, size, &count);
    } catch (const NSException&) {
        // `count` tells how far it came.
    }
    if (done != nullptr) *done = count;
    return count == size;
}

bool MacOSXFile::Write(std::uint64_t size, const void* buffer, std::uint64_t* done) {
    bool written = false;
    try {
        handle_->writeData(buffer, size);
        written = true;
    } catch (const NSException&) {
    }
    if (done != nullptr) *done = written ? size : 0;
    return written;
}

std::uint64_t MacOSXFile::GetSize() {
    struct stat status = {};
    if (fstat(handle_->fileDescriptor(), &status) != 0) return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

bool MacOSXFile::SetSize(std::uint64_t size) {
    const std::uint64_t position = handle_->offsetInFile();
    try {
        handle_->truncateFileAtOffset(size);  // which leaves the position at the new end
        if (position < size) handle_->seekToFileOffset(position);
        return true;
    } catch (const NSException&) {
        handle_->seekToFileOffset(position);
        return false;
    }
}

std::uint64_t MacOSXFile::GetPosition() {
    return handle_->offsetInFile();
}

bool MacOSXFile::Seek(std::uint64_t position) {
    if (position > GetSize()) return false;
    handle_->seekToFileOffset(position);
    return true;
}

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
